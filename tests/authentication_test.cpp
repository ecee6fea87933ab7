// What breaks in version, login and configuration check.
#include "support/ExportTest.h"
#include "support/ReplyCase.h"

using namespace wire;

namespace {

const ReplyCases authenticationReplies{
    {"GetTarnVersion", "ST", statusReply({{"v ", "7.6"}, {"bn", int32(1)}, {"mm", int64(2)}, {"sa", float64(.5)}}),
     [](char* log) { return GetTarnVersion(room<char>(), log); }},
    {.name = "AuthenticateUser",
     .code = "LS",
     .fields = loginReply({{"sl", twoEntries()}}),
     .call = [](char* log) { return AuthenticateUser("u@x", "secret", wide(u"/c").c_str(), room<char>(), log); },
     .failureLine = "Unknown exception occured, setting status to -1. GetLastError() : "},
    {"VerifyLarchConfig", "VC", statusReply({{"ec", twoEntries()}}),
     [](char* log) { return VerifyLarchConfig("s@x", wide(u"/c").c_str(), log); }},
};

} // namespace

TEST_F(ExportTest, VersionAndFigures)
{
    daemon.play(message("ST", {{"v ", "7.6.1"},
                               {"bn", int32(42)},
                               {"mm", int64(4294967296)},
                               {"mt", int64(3000000000)},
                               {"mf", int64(5)},
                               {"em", "fine"},
                               {"st", shortInt(0)}}));
    Output<char> version;
    EXPECT_EQ(GetTarnVersion(version, log), 0);
    EXPECT_EQ(request(0), message("ST"));
    EXPECT_EQ(version.text(), "7.6.1-42");
    EXPECT_EQ(lines(),
              (Lines{"Got socket: #", "Starting RemoteGetStatus...", "Status code: 0", "Status message: fine",
                     "Version: 7.6.1", "Build: 42", "Max memory: 0", "Total memory: -1294967296", "Free memory: 5"}));
    daemon.play(message("ST", {{"st", shortInt(-2)}, {"v ", "new"}}));
    Output<char> other;
    EXPECT_EQ(GetTarnVersion(other, log), -2);
    EXPECT_TRUE(other.untouched());
    EXPECT_EQ(lines().back(), "Status message: ");
}

TEST_F(ExportTest, LoginRequestAndResultTexts)
{
    struct Case
    {
        int status;
        std::string result;
    };
    const auto path = wide(u"C:\\K\u00F6nfig \U0001F512.cfg");
    const std::string path8 = "C:\\K\u00F6nfig \U0001F512.cfg";
    Output<char> result;
    daemon.play(message("LS", {{"st", shortInt(0)}, {"sl", sequence({"k", "v"})}, {"em", "ok"}}));
    EXPECT_EQ(AuthenticateUser("u@x", "secret", path.c_str(), result, log), 0);
    EXPECT_EQ(request(0), message("LS", {{"tc", ""}, {"to", "u@x"}, {"ky", "secret"}, {"ep", path8}}));
    EXPECT_EQ(lines(),
              (Lines{"Got socket: #", "Setting config file: " + path8, "Status code: 0", "Status message: \nok"}));

    learnVersion();
    for (const Case& one : {Case{25, "link"}, {18, "-5000000000"}, {2, ""}, {0, ""}}) {
        daemon.play(message("LS", {{"lk", "link"}, {"se", int64(-5'000'000'000)}, {"st", shortInt(one.status)}}));
        EXPECT_EQ(AuthenticateUser("", "", wide(u"").c_str(), result, log), one.status);
        EXPECT_EQ(result.text(), one.result) << one.status;
    }
    EXPECT_EQ(request(2), message("LS", {{"tc", clientVersion}, {"to", ""}, {"ky", ""}}));
    EXPECT_EQ(lines().size(), 3u);

    daemon.play(message("ST"));
    Output<char> untouched;
    EXPECT_EQ(AuthenticateUser("u@x", "secret", nullptr, untouched, log), -1);
    EXPECT_TRUE(untouched.untouched());
    EXPECT_EQ(failureLine(), "Unknown exception occured, setting status to -1. GetLastError() : N");
    EXPECT_EQ(log.text().find("secret"), std::string::npos);
}

TEST_F(ExportTest, ConfigurationCheck)
{
    daemon.play(message("VC", {{"ec", sequence({"key", "bad"})}, {"st", shortInt(-1)}, {"em", "see there"}}));
    EXPECT_EQ(VerifyLarchConfig("s@x", wide(u"/\u00E4").c_str(), log), -1);
    EXPECT_EQ(request(0), message("VC", {{"ep", "/\u00E4"}, {"fm", "s@x"}}));
    EXPECT_EQ(lines(), (Lines{"Got socket: #", "Starting RemoteVerifyConfiguration...", "Setting config file: /\u00E4",
                              "Setting sender field: s@x", "Status code: -1", "Status message:\nsee there"}));
    daemon.play(message("VC", {{"st", shortInt(7)}}));
    EXPECT_EQ(VerifyLarchConfig("", nullptr, log), 7);
    EXPECT_EQ(request(1), message("VC", {{"fm", ""}}));
    daemon.play(message("VC", {{"st", shortInt(7)}, {"zz", ""}}));
    EXPECT_EQ(VerifyLarchConfig("", nullptr, log), -1);
    EXPECT_EQ(failureLine(), unexpected);
}
