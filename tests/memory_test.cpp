// What only a program linked with the library's objects can bring about or see: memory that runs out, a log that is
// copied nowhere.
#include "client/DaemonConnection.h"
#include "client/OperationLog.h"
#include "support/Entries.h"
#include "support/ExportTest.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <thread>

namespace {

bool outOfMemory = false;

class Inside : public ExportTest
{
protected:
    // The latest call's log where the call did not hand it out.
    Lines copiedLog()
    {
        std::strcpy(log, Client::operationLog().c_str());
        return lines();
    }
};

} // namespace

void* operator new(std::size_t size)
{
    void* block = std::malloc(size);
    return block != nullptr ? block : throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return outOfMemory ? nullptr : std::malloc(size);
}

// Not inlined, or gcc takes the pair of new and free for a mistake.
[[gnu::noinline]] void operator delete(void* block) noexcept
{
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, const std::nothrow_t&) noexcept
{
    std::free(block);
}

TEST_F(Inside, NoMemoryForTheReplyIsLoggedAndNothingIsRead)
{
    Output<char> text;
    Output<TarnWideChar> wideText;
    std::uint32_t number = 9;
    std::uint32_t count = 9;
    std::int32_t sensitivity = 9;
    TarnRecipientEntry* entries = nullptr;
    outOfMemory = true;
    EXPECT_EQ(StopTarnDaemon(log), 0);
    EXPECT_EQ(lines().back(), "Error. Status object is NULL. Operation failed");
    EXPECT_EQ(GetTarnVersion(text, log), -1);
    EXPECT_EQ(lines().back(), "Error. Status object is NULL. Operation failed.");
    EXPECT_EQ(VerifyLarchConfig("a", nullptr, log), 0) << "taken for success";
    EXPECT_EQ(lines().back(), "RemoteResponse object is null. Operation failed.");
    EXPECT_EQ(
        EncryptEnvelopeOnline("", "", "", "", "", "", nullptr, wideText, wideText, wideText, wideText, "", "0", log),
        -1);
    EXPECT_EQ(lines().back(), "Error. Evnelope object is NULL. Operation failed.");
    EXPECT_EQ(DecryptEnvelope("", "", nullptr, "", "", text, 0, wideText, wideText, log), -1);
    EXPECT_EQ(lines().back(), "ERROR: Payload object is NULL");
    EXPECT_TRUE(text.untouched() && wideText.untouched());
    EXPECT_EQ(GetRecipients("", wideText, &number, log), -1);
    EXPECT_EQ(GetPayloadStatus("", nullptr, "a;b", wideText, text, text, text, &sensitivity), -1);
    EXPECT_EQ(copiedLog().back(), "Error. Payload object is null. Operation failed");
    EXPECT_EQ(wideText.text() + u"|", u"|") << "its lists are written, empty";
    EXPECT_EQ(text.text(), "");
    EXPECT_EQ(GetRecipientEntries("", "", nullptr, &entries, 0, &number, &number, &count, "", 0, log), -1);
    EXPECT_EQ(entries, nullptr);
    outOfMemory = false;

    while (daemon.requests().size() < 8) { // the test's time limit ends the waiting
        std::this_thread::yield();
    }
    EXPECT_EQ(request(7).substr(0, 4), std::string("\0\7MI", 4)) << "every request has left";
    EXPECT_EQ(daemon.connections(), 2u) << "the stop has closed its connection all the same";
}

TEST_F(Inside, TheLogOfPayloadStatus)
{
    Output<char> text;
    Output<TarnWideChar> wideText;
    std::int32_t sensitivity = 9;
    const auto payload = [](int status) {
        return wire::message("DE", {{"st", wire::shortInt(status)}, {"em", "m"}, {"uu", "id"}, {"ms", wire::int32(2)}});
    };
    daemon.play(payload(11));
    daemon.play(payload(3));
    EXPECT_EQ(GetPayloadStatus("ENV", wide(u"/c").c_str(), "a;b", wideText, text, text, text, &sensitivity), 3);
    EXPECT_EQ(copiedLog(), (Lines{"Got socket: #", "Starting RemoteEnvelopeDecrypter...", "Setting envelope, size: 3",
                                  "Setting envelope config file /c", "Setting recipient e-mail: a", "Status code: 11",
                                  "Status message: m", "Returned EnrollUUID: id", "Message sensitivity: 2",
                                  "Starting RemoteEnvelopeDecrypter...", "Setting envelope, size: 3",
                                  "Setting envelope config file /c", "Setting recipient e-mail: b", "Status code: 3",
                                  "Status message: m", "ERROR. Undefined status code. Message cannot be decrypted."}));
}

#ifndef _WIN32
namespace {

// Of this thread: how many allocations succeed before one fails, and how many blocks it has.
thread_local std::size_t successesLeft = SIZE_MAX;
thread_local int blocks = 0;

template <class Allocate>
void* counted(Allocate allocate)
{
    if (successesLeft != SIZE_MAX && successesLeft-- == 0) {
        return nullptr;
    }
    ++blocks;
    return allocate();
}

} // namespace

// The linker gives this program's objects these in the place of the system's.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size)
{
    return counted([&] { return __real_malloc(size); });
}

// What the compiler makes of a malloc that is followed by zeros.
void* __wrap_calloc(std::size_t count, std::size_t size)
{
    return counted([&] { return __real_calloc(count, size); });
}

void* __wrap_realloc(void* block, std::size_t size)
{
    blocks += block == nullptr ? 1 : 0;
    return __real_realloc(block, size);
}

void __wrap_free(void* block)
{
    blocks -= block != nullptr ? 1 : 0;
    __real_free(block);
}
}

TEST_F(Inside, AnAllocationThatFailsFailsTheCallAndLeaksNothing)
{
    const auto record = [](const std::string& id, const std::string& to) {
        return wire::parameters({{"da", wire::sequence({"msgId", id, "to", to, "subject", std::string(100, 's')})}});
    };
    const std::string reply =
        wire::message("MI", {{"st", wire::shortInt(0)},
                             {"ri", wire::sequence({record("m", "a"), record("m", "b"), record("m", "a")})}});
    TarnRecipientEntry* entries = nullptr;
    std::uint32_t count = 0;
    std::uint32_t total = 0;
    // Returns the number of blocks that the call leaves.
    const auto track = [&](std::size_t successes) {
        daemon.play(reply);
        const int before = blocks;
        successesLeft = successes;
        GetRecipientEntries("u@x", "p", nullptr, &entries, 0, &total, &count, &total, "to", 1, log);
        successesLeft = SIZE_MAX;
        return blocks - before;
    };
    track(SIZE_MAX); // makes what the process keeps
    std::size_t failures = 0;
    while (true) {
        releaseEntries(entries, count);
        const int left = track(failures);
        if (entries != nullptr) {
            EXPECT_EQ(left, 1 + 2 * 4) << "the array and the texts of two records";
            break;
        }
        ASSERT_EQ(left, 0) << "allocation " << failures;
        Client::closeConnection(); // it may be out of step
        ++failures;
    }
    EXPECT_EQ(count, 2u);
    EXPECT_GT(failures, 20u);
    releaseEntries(entries, count);
}
#endif
