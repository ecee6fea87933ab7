// What the exports do when memory runs out. Linked with the library's objects, so that this program's own operators
// new and delete serve them.
#include "client/DaemonConnection.h"
#include "support/Entries.h"
#include "support/ExportTest.h"

#include <cstdlib>
#include <new>
#include <thread>

namespace {

bool outOfMemory = false;

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

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

TEST_F(ExportTest, NoMemoryForTheReplyIsLoggedAndNothingIsRead)
{
    Output<char> text;
    Output<TarnWideChar> wideText;
    std::uint32_t number = 9;
    std::uint32_t count = 9;
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
    EXPECT_EQ(GetRecipients("", wideText, &number, log), -1);
    EXPECT_EQ(GetRecipientEntries("", "", nullptr, &entries, 0, &number, &number, &count, "", 0, log), -1);
    EXPECT_EQ(entries, nullptr);
    EXPECT_TRUE(text.untouched() && wideText.untouched());
    outOfMemory = false;

    while (daemon.requests().size() < 7) { // the test's time limit ends the waiting
        std::this_thread::yield();
    }
    EXPECT_EQ(request(6).substr(0, 4), std::string("\0\7MI", 4)) << "every request has left";
    EXPECT_EQ(daemon.connections(), 2u) << "the stop has closed its connection all the same";
}

#ifndef _WIN32
namespace {

// Of this thread: how many allocations succeed before one fails, and how many blocks it has.
thread_local std::size_t successesLeft = SIZE_MAX;
thread_local int blocks = 0;

} // namespace

// The linker gives this program's objects these in the place of the system's.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size)
{
    if (successesLeft != SIZE_MAX && successesLeft-- == 0) {
        return nullptr;
    }
    ++blocks;
    return __real_malloc(size);
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

TEST_F(ExportTest, AnAllocationThatFailsFailsTheCallAndLeaksNothing)
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
