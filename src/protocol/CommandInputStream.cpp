#include "protocol/CommandInputStream.h"

#include "protocol/BigEndian.h"
#include "protocol/CommandException.h"

#include <algorithm>
#include <bit>
#include <cstdio>

namespace Merrow {

namespace {

// A long text passes the scratch block in pieces that fit the processor's cache: each is still there when the CRC and
// the text take it, and the rest of the block stays untouched.
constexpr std::size_t pieceSize = std::size_t{128} * 1024;

std::string hexadecimal(std::uint32_t value)
{
    char digits[9];
    std::snprintf(digits, sizeof digits, "%x", value);
    return digits;
}

} // namespace

void CommandInputStream::fail(std::string message)
{
    failure_ = std::move(message);
    raise(failure_.c_str());
}

std::uint16_t CommandInputStream::beginReply()
{
    crc_ = crcStart;
    const std::uint16_t version = readShort();
    if (version != protocolVersion) {
        fail("Version mismatch 0x" + hexadecimal(version) + " != " + hexadecimal(protocolVersion));
    }
    return readCode();
}

void CommandInputStream::endReply()
{
    crcOn_ = false;
    const auto received = static_cast<std::uint32_t>(readInt());
    crcOn_ = true;
    const std::uint32_t expected = ~crc_;
    crc_ = crcStart;
    // What a failed receive leaves out reads as ones, which may be what the missing bytes of the CRC were.
    if (broken_ || received != expected) {
        fail("CRC mismatch: Got 0x" + hexadecimal(received) + ", expected 0x" + hexadecimal(expected));
    }
}

std::uint16_t CommandInputStream::readCode()
{
    return readShort();
}

Tag CommandInputStream::readTag()
{
    return readShort();
}

std::int32_t CommandInputStream::readLength()
{
    return readInt();
}

// The block only grows. Its memory is not touched here: a length that is never followed by its bytes costs address
// space (and, on Windows, as much of the commit limit) until the call ends.
void CommandInputStream::growScratch(std::int32_t capacity)
{
    auto* block = static_cast<char*>(std::realloc(scratch_.get(), static_cast<std::size_t>(std::max(capacity, 1))));
    if (block == nullptr) {
        raise("Insufficient memory available");
    }
    static_cast<void>(scratch_.release());
    scratch_.reset(block);
    scratchCapacity_ = capacity;
}

std::string CommandInputStream::readString(std::int32_t length)
{
    if (length < 0) {
        raise("Insufficient memory available");
    }
    if (scratch_ == nullptr || length > scratchCapacity_) {
        growScratch(length);
    }
    std::string text;
    const auto size = static_cast<std::size_t>(length);
    while (text.size() < size && !broken_) {
        const std::size_t piece = std::min(size - text.size(), pieceSize);
        const std::int32_t received = readFully(scratch_.get(), static_cast<std::int32_t>(piece));
        if (!broken_) { // a length that was a lie gets no room
            text.reserve(size);
        }
        text.append(scratch_.get(), static_cast<std::size_t>(received));
    }
    return text;
}

std::vector<std::string> CommandInputStream::readStringArray(std::int32_t total)
{
    std::vector<std::string> texts;
    std::int64_t remaining = total;
    while (remaining >= 1) {
        const std::int32_t length = readLength();
        texts.push_back(readString(length));
        remaining -= 4 + std::int64_t{length};
    }
    if (remaining != 0) {
        raise("Length of string array mismatch");
    }
    return texts;
}

StringMap CommandInputStream::readStringMap(std::int32_t total)
{
    StringMap entries;
    std::int64_t remaining = total;
    while (remaining >= 1) {
        const std::int32_t keyLength = readLength();
        std::string key = readString(keyLength);
        const std::int32_t valueLength = readLength();
        std::string value = readString(valueLength);
        remaining -= 8 + std::int64_t{keyLength} + std::int64_t{valueLength};
        // Entries mostly arrive in key order.
        entries.insert_or_assign(entries.end(), std::move(key), std::move(value));
    }
    // An overrun is accepted, unlike in an array.
    return entries;
}

std::int32_t CommandInputStream::readFully(char* buffer, std::int32_t count)
{
    std::int32_t offset = 0;
    while (offset < count && !broken_) {
        const std::int32_t received = receiveRaw(buffer + offset, count - offset);
        if (received < 0) {
            broken_ = true;
            break;
        }
        if (crcOn_) {
            crc_ = updateCrc(crc_, buffer + offset, static_cast<std::size_t>(received));
        }
        offset += received;
    }
    return offset;
}

// What a failed receive leaves out reads as ones, an unknown tag and a negative length, so that the reply's own checks
// fail at the next step.
template <class Integer>
Integer CommandInputStream::readInteger()
{
    BigEndianBytes<Integer> bytes;
    bytes.fill(static_cast<char>(0xFF));
    readFully(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    return fromBigEndian<Integer>(bytes);
}

std::uint16_t CommandInputStream::readShort()
{
    return readInteger<std::uint16_t>();
}

std::int32_t CommandInputStream::readInt()
{
    return readInteger<std::int32_t>();
}

std::int64_t CommandInputStream::readLong()
{
    return readInteger<std::int64_t>();
}

double CommandInputStream::readDouble()
{
    return std::bit_cast<double>(readInteger<std::uint64_t>());
}

bool CommandInputStream::readBool()
{
    return readInteger<std::uint8_t>() != 0;
}

} // namespace Merrow
