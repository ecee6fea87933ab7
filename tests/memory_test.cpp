// What the exports do when there is no memory for their reply object. Linked with the library's objects, so that this
// program's own operator new serves them.
#include "support/ExportTest.h"

#include <new>
#include <thread>

#ifndef _WIN32
#include <sys/syscall.h>
#endif

namespace {

bool outOfMemory = false;
#ifndef _WIN32
std::vector<std::size_t> sendSizes;
#endif

} // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return outOfMemory ? nullptr : ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

#ifndef _WIN32
// Stands in for the system's: the library's sends come by here, and the scripted daemon's from its own thread.
extern "C" ssize_t send(int socket, const void* bytes, std::size_t count, int flags)
{
    if (getpid() == gettid()) {
        sendSizes.push_back(count);
    }
    return syscall(SYS_sendto, socket, bytes, count, flags, nullptr, 0);
}
#endif

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
}

#ifndef _WIN32
TEST_F(ExportTest, EachPrimitiveWriteIsOneSendOfTheSystem)
{
    learnVersion();
    EXPECT_EQ(sendSizes, (std::vector<std::size_t>{2, 2, 2, 4})) << "version, code, end marker, CRC";
}
#endif
