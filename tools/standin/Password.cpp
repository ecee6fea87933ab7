#include "Password.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <glib.h>
#include <sys/random.h>
#include <system_error>

namespace standin {

namespace {

// Enough to make a stolen store tedious, few enough that a test of hundreds of logins stays quick.
constexpr int rounds = 1000;

using Digest = std::array<guint8, 32>;

Digest finish(GHmac* hmac)
{
    Digest digest{};
    gsize size = digest.size();
    g_hmac_get_digest(hmac, digest.data(), &size);
    g_hmac_unref(hmac);
    return digest;
}

std::string hex(const std::uint8_t* bytes, std::size_t count)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text;
}

std::string derive(std::string_view password, std::string_view salt)
{
    GHmac* keyed = g_hmac_new(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(password.data()), password.size());
    const auto digestOf = [keyed](const void* bytes, std::size_t size) {
        GHmac* hmac = g_hmac_copy(keyed);
        g_hmac_update(hmac, static_cast<const guchar*>(bytes), static_cast<gssize>(size));
        return finish(hmac);
    };
    const std::string firstBlock = std::string(salt) + std::string("\0\0\0\1", 4);
    Digest block = digestOf(firstBlock.data(), firstBlock.size());
    Digest result = block;
    for (int round = 1; round < rounds; ++round) {
        block = digestOf(block.data(), block.size());
        for (std::size_t i = 0; i < result.size(); ++i)
            result[i] ^= block[i];
    }
    g_hmac_unref(keyed);
    return hex(result.data(), result.size());
}

const std::string& prefix()
{
    static const std::string text = "pbkdf2-sha256$" + std::to_string(rounds) + "$";
    return text;
}

} // namespace

std::string hashPassword(std::string_view password)
{
    const auto salt = randomId();
    return prefix() + salt + "$" + derive(password, salt);
}

bool verifyPassword(std::string_view password, const std::string& stored)
{
    const auto end = stored.rfind('$');
    if (!stored.starts_with(prefix()) || end < prefix().size())
        return false;
    return stored.substr(end + 1) == derive(password, stored.substr(prefix().size(), end - prefix().size()));
}

std::string randomId()
{
    std::array<std::uint8_t, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw std::system_error(errno, std::generic_category(), "no random numbers");
    return hex(bytes.data(), bytes.size());
}

} // namespace standin
