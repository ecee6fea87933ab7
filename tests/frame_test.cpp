// What breaks in the frame that every export runs in: connection, log, failures.
#include "support/ExportTest.h"
#include "support/ReplyCase.h"

#include <functional>

using namespace wire;

namespace {

const ReplyCases frameReplies{
    {.name = "StopTarnDaemon",
     .code = "SD",
     .fields = statusReply(),
     .call = [](char* log) -> std::int32_t { return StopTarnDaemon(log); },
     .success = 1,
     .failure = 0},
};

} // namespace

TEST_F(ExportTest, OneConnectionForAllCallsUntilStop)
{
    for (int i = 0; i < 3; ++i) {
        learnVersion();
    }
    EXPECT_EQ(daemon.connections(), 1u);
    daemon.play(message("SD", {{"st", shortInt(5)}, {"em", "busy"}}));
    EXPECT_EQ(StopTarnDaemon(log), 0);
    EXPECT_EQ(request(3), message("SD"));
    EXPECT_EQ(lines(), (Lines{"Got socket: #", "Starting RemoteStopDaemon...", "Executing daemon stop command...",
                              "Status code: 5", "Status message: \nbusy"}))
        << "and nothing of the calls before";
    EXPECT_EQ(std::ranges::adjacent_find(sourceLines, std::ranges::greater_equal()), sourceLines.end())
        << "each line names its own statement";
    daemon.play(message("SD"));
    EXPECT_EQ(StopTarnDaemon(log), 0) << "no status in the reply";
    EXPECT_EQ(lines()[3], "Status code: -1");
    daemon.play(message("SD", {{"st", shortInt(0)}}));
    EXPECT_EQ(StopTarnDaemon(log), 1);
    learnVersion();
    EXPECT_EQ(daemon.connections(), 4u) << "a stop closes the connection whatever its status";
}

TEST_F(ExportTest, SeveralRepliesInOnePacketAndOneReplyInMany)
{
    const std::string reply = message("ST", {{"st", shortInt(0)}, {"v ", "1"}, {"bn", int32(2)}});
    daemon.play(reply + reply); // the second one unasked
    Output<char> version;
    EXPECT_EQ(GetTarnVersion(version, log), 0);
    EXPECT_EQ(GetTarnVersion(version, log), 0) << "nothing was read ahead and lost";
    daemon.play(reply, {.packet = 1});
    EXPECT_EQ(GetTarnVersion(version, log), 0);
    EXPECT_EQ(version.text(), "1-2");
}

TEST_F(ExportTest, BadRepliesEndInTheCatchAllAndKeepTheConnection)
{
    const std::string good = message("ST", {{"st", shortInt(0)}});
    std::string badCrc = good;
    badCrc.back() = static_cast<char>(badCrc.back() ^ 0x40);
    daemon.play(badCrc);
    Output<char> version;
    EXPECT_EQ(GetTarnVersion(version, log), -1) << "a status whose reply then fails does not count";
    EXPECT_EQ(failureLine(), unexpected);
    EXPECT_TRUE(version.untouched());
    daemon.play(message("LS", {{"st", shortInt(0)}}));
    EXPECT_EQ(AuthenticateUser("", "", nullptr, version, log), 0);
    EXPECT_EQ(request(1), message("LS", {{"tc", clientVersion}, {"to", ""}, {"ky", ""}}))
        << "the client version is known after a failure as well";
    EXPECT_EQ(daemon.connections(), 1u);
    daemon.play(message("SD", {{"st", shortInt(0)}}).replace(1, 1, "\x8"));
    EXPECT_EQ(StopTarnDaemon(log), 0);
    EXPECT_EQ(failureLine(), unexpected);
    daemon.play("");
    EXPECT_EQ(GetTarnVersion(version, log), -1) << "the rest of the bad reply is still there: nothing was drained";
    EXPECT_EQ(daemon.connections(), 1u) << "a failed stop closes nothing";
}

#ifndef _WIN32 // Wine reports an orderly end where a connection is reset, and the call waits for ever, as it must then
TEST_F(ExportTest, ResetConnectionFailsTheCallAndRaisesNoSignal)
{
    learnVersion();
    daemon.play(message("ST", {{"st", shortInt(0)}, {"em", "long enough to be cut"}}), {.resetAfter = 20});
    Output<char> version;
    EXPECT_EQ(GetTarnVersion(version, log), -1);
    EXPECT_EQ(failureLine(), unexpected);
    EXPECT_EQ(GetTarnVersion(version, log), -1) << "a broken connection is not replaced, and fails at once";
}
#endif

TEST(Header, TheVersionMacrosAgree)
{
    EXPECT_EQ(std::to_string(TARN_REMOTE_CLIENT_VERSION_MAJOR) + "." +
                  std::to_string(TARN_REMOTE_CLIENT_VERSION_MINOR) + "." +
                  std::to_string(TARN_REMOTE_CLIENT_VERSION_PATCH) + "." +
                  std::to_string(TARN_REMOTE_CLIENT_VERSION_TWEAK),
              TARN_REMOTE_CLIENT_VERSION);
}

TEST(NoDaemon, CallsReturnTheirFailureValues)
{
    Output<char> log(TARN_LOG_SIZE);
    Output<char> text;
    Output<TarnWideChar> wideText;
    std::int32_t number = 7;
    std::uint32_t count = 7;
    std::uint8_t flag = 7;
#ifdef _WIN32
    const std::string refused = "10061\n";
#else
    const std::string refused = "111\n";
#endif
    const std::function<std::int32_t()> calls[]{
        [&] { return GetTarnVersion(text, log); }, // even a process's first failure knows its error number
        [&] { return StopTarnDaemon(log) - 1; },
        [&] { return VerifyLarchConfig("a", nullptr, log); },
        [&] {
            return EncryptEnvelopeOnline("", "", "", "", "", "", nullptr, wideText, wideText, wideText, wideText, "",
                                         "0", log);
        },
        [&] { return GetLockExpireStatus("", "", nullptr, text, text, wideText, text, text, &count, log); },
        [&] { return SetRecipientEntries("", nullptr, nullptr, nullptr, 0, 0, nullptr, 0, log); },
        [&] { return GetKeyServerInfo(nullptr, &flag, &flag, &flag, log); },
        [&] { return GetSupportedLocales(nullptr, wideText, log); },
        [&] {
            return GetEnrollParameters("", "", nullptr, &number, &number, &number, &number, wideText, wideText, log);
        },
        [&] {
            return UserEnroll("", "", nullptr, nullptr, nullptr, nullptr, "", "", 0, 0, nullptr, nullptr, nullptr,
                              nullptr, nullptr, nullptr, nullptr, 0, "", text, log);
        }};
    for (const auto& call : calls) {
        EXPECT_EQ(call(), -1);
        EXPECT_TRUE(log.text().ends_with("] Unexpected exception occured. GetLastError() : " + refused)) << log.text();
    }
    EXPECT_EQ(AuthenticateUser("a", "b", nullptr, text, log), -1);
    EXPECT_TRUE(log.text().ends_with("] Unknown exception occured, setting status to -1. GetLastError() : " + refused));
    EXPECT_EQ(GetPayloadStatus("e", nullptr, "a", wideText, text, text, text, &number), -1);
    EXPECT_EQ(number, -1);
    EXPECT_TRUE(text.untouched() && wideText.untouched());
}

TEST(Start, NoProgramAtTheJavaPathIsLoggedAsTwo)
{
    Output<char> log(TARN_LOG_SIZE);
    EXPECT_EQ(StartTarnDaemon("c:\\daemon files\\tarn.jar", log), 0);
    EXPECT_NE(log.text().find("] Starting Tarn daemon, jarDaemon: c:\\daemon files\\tarn.jar\n"), std::string::npos);
    EXPECT_TRUE(log.text().ends_with("] ShellExecute returned: 2\n")) << log.text();
    EXPECT_EQ(StartTarnDaemon(nullptr, log), 0);
}

// The log's bound is the caller's to keep: what goes beyond it ends the process.
TEST(LogBoundDeathTest, LogThatDoesNotFitEndsTheProcess)
{
#ifdef _WIN32
    const testing::ExitedWithCode ended(static_cast<int>(0xC0000417)); // as the run-time ends it
#else
    const testing::KilledBySignal ended(SIGABRT);
#endif
    Output<char> log(TARN_LOG_SIZE);
    StartTarnDaemon("", log);
    const std::string longest(TARN_LOG_SIZE - 1 - log.text().size(), 'x');
    StartTarnDaemon(longest.c_str(), log);
    EXPECT_EQ(log.text().size(), static_cast<std::size_t>(TARN_LOG_SIZE - 1)) << "the last log that fits";
    EXPECT_EXIT(StartTarnDaemon((longest + "x").c_str(), log), ended, "");
    EXPECT_EXIT(StartTarnDaemon("x", nullptr), ended, "");
}
