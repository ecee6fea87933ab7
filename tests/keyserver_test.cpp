// What breaks in key server information, localized texts and enrollment.
#include "support/ExportTest.h"
#include "support/ReplyCase.h"

using namespace wire;

namespace {

Params fullTexts()
{
    return statusReply({{"sl", twoEntries()}, {"th", twoEntries()}, {"tb", twoEntries()}});
}

const ReplyCases keyServerReplies{
    {"GetKeyServerInfo", "KV", statusReply({{"kd", twoEntries()}}),
     [](char* log) {
         std::uint8_t flags[3] = {};
         return GetKeyServerInfo(wide(u"/c").c_str(), &flags[0], &flags[1], &flags[2], log);
     }},
    {"GetSupportedLocales", "LT", fullTexts(),
     [](char* log) { return GetSupportedLocales(wide(u"/c").c_str(), room<TarnWideChar>(), log); }},
    {"GetLocalizedMessageBody", "LT", fullTexts(),
     [](char* log) { return GetLocalizedMessageBody(wide(u"/c").c_str(), "en", room<char>(), room<char>(), log); }},
    {"GetEnrollParameters", "EP",
     statusReply({{"su", int32(0)}, {"qn", int32(3)}, {"al", twoEntries()}, {"sq", twoEntries()}}),
     [](char* log) {
         std::int32_t numbers[4];
         return GetEnrollParameters("u@x", "https://k", wide(u"en").c_str(), &numbers[0], &numbers[1], &numbers[2],
                                    &numbers[3], room<TarnWideChar>(), room<TarnWideChar, 1>(), log);
     }},
    {"UserEnroll", "EU", statusReply({{"ve", twoEntries()}, {"el", int32(1)}}),
     [](char* log) {
         return UserEnroll("u@x", "https://k", wide(u"F").c_str(), wide(u"L").c_str(), wide(u"secret").c_str(),
                           wide(u"en").c_str(), "id", "s@x", 0, 1, wide(u"phrase").c_str(), wide(u"q1").c_str(),
                           wide(u"q2").c_str(), wide(u"q3").c_str(), wide(u"a1").c_str(), wide(u"a2").c_str(),
                           wide(u"a3").c_str(), 60, "", room<char>(), log);
     }},
};

} // namespace

TEST_F(ExportTest, KeyServerFeatures)
{
    std::uint8_t readBy = 0, expiration = 0, localized = 0;
    const auto ask = [&](const std::vector<std::string>& table, int status) {
        readBy = expiration = localized = 0;
        daemon.play(message("KV", {{"st", shortInt(status)}, {"kd", sequence(table)}, {"em", "m"}}));
        return GetKeyServerInfo(wide(u"/\u00E4").c_str(), &readBy, &expiration, &localized, log);
    };
    EXPECT_EQ(
        ask({"version", "", "other", "x: y", "feature.readByEnabled", "TRUE", "feature.localizedText", "true"}, 0), 0);
    EXPECT_EQ(request(0), message("KV", {{"ep", "/\u00E4"}}));
    EXPECT_EQ((std::array<int, 3>{readBy, expiration, localized}), (std::array<int, 3>{0, 1, 1}));
    EXPECT_EQ(lines(), (Lines{"GetKeyServerInfo is called.", "Setting envelope config file /\u00E4", "Status code: 0",
                              "Status message: m", "feature.localizedText: true", "feature.readByEnabled: TRUE",
                              "other: x: y", "version: ", "bReadByEnabled = 0; bExpirationSupported = 1"}));
    EXPECT_EQ(ask({"feature.readByEnabled", "true", "Version", "1"}, 0), 0);
    EXPECT_EQ((std::array<int, 3>{readBy, expiration, localized}), (std::array<int, 3>{1, 0, 0}));
    EXPECT_EQ(ask({"feature.localizedText", "TRUE"}, 0), 0);
    EXPECT_EQ(localized, 0);
    EXPECT_EQ(ask({"feature.readByEnabled", "true", "version", "1"}, 4), 4);
    EXPECT_EQ((std::array<int, 3>{readBy, expiration, localized}), (std::array<int, 3>{0, 0, 0}));
    EXPECT_EQ(lines().back(), "Status message: m");
    daemon.play(message("KV", {{"st", shortInt(0)}}));
    readBy = 2;
    expiration = 1;
    EXPECT_EQ(GetKeyServerInfo(wide(u"").c_str(), &readBy, &expiration, &localized, log), 0);
    EXPECT_EQ(request(4), message("KV", {{"ep", ""}})) << "the path is sent even when empty";
    EXPECT_EQ(lines().back(), "bReadByEnabled = 1; bExpirationSupported = 1") << "the caller's flags are logged";
    EXPECT_EQ((std::array<int, 3>{readBy, expiration, localized}), (std::array<int, 3>{2, 1, 0})) << "never cleared";
}

TEST_F(ExportTest, LocalesAndBodies)
{
    const std::string texts = message("LT", {{"st", shortInt(0)},
                                             {"sl", sequence({"ja", "\u65E5\u672C\u8A9E", "de", "Deutsch"})},
                                             {"tb", sequence({"de", "Gr\u00FC\u00DFe", "en", "hi \U0001F512"})},
                                             {"th", sequence({"en", "<p>hi</p>"})}});
    Output<TarnWideChar> locales;
    daemon.play(texts);
    EXPECT_EQ(GetSupportedLocales(nullptr, locales, log), 0);
    EXPECT_EQ(request(0), message("LT"));
    EXPECT_EQ(locales.text(), u"de: Deutsch; ja: \u65E5\u672C\u8A9E; ");
    EXPECT_EQ(lines(), (Lines{"GetSupportedLocales is called.", "Status code: 0", "Status message: "}));

    Output<char> text, html;
    const auto body = [&](const char* locale) {
        daemon.play(texts);
        EXPECT_EQ(GetLocalizedMessageBody(wide(u"/c").c_str(), locale, text, html, log), 0);
        return text.text() + "|" + html.text();
    };
    EXPECT_EQ(body(nullptr), "hi \U0001F512|<p>hi</p>");
    EXPECT_EQ(body(""), "hi \U0001F512|<p>hi</p>");
    EXPECT_EQ(body("de"), "Gr\u00FC\u00DFe|");
    EXPECT_EQ(body("xx"), "|");
    EXPECT_EQ(request(1), message("LT", {{"ep", "/c"}}));
    EXPECT_EQ(lines(), (Lines{"GetLocalizedMessageBody is called.", "Setting envelope config file /c", "Status code: 0",
                              "Status message: "}));
    Output<char> untouched;
    Output<TarnWideChar> untouchedLocales;
    for (int i = 0; i < 2; ++i) {
        daemon.play(message("LT", {{"st", shortInt(3)}, {"sl", sequence({"en", "E"})}, {"tb", sequence({"en", "E"})}}));
    }
    EXPECT_EQ(GetSupportedLocales(nullptr, untouchedLocales, log), 3);
    EXPECT_EQ(GetLocalizedMessageBody(nullptr, "en", untouched, untouched, log), 3);
    EXPECT_TRUE(untouched.untouched() && untouchedLocales.untouched());
}

TEST_F(ExportTest, EnrollmentParameters)
{
    std::int32_t saml = 9, oneClick = 9, questions = 9, editable = 9;
    Output<TarnWideChar> locales, choices;
    daemon.play(message("EP", {{"su", int32(1)},
                               {"ou", int32(-2)},
                               {"qn", int32(3)},
                               {"qe", int32(4)},
                               {"st", shortInt(6)},
                               {"al", sequence({"b", "2", "a", "1"})},
                               {"sq", sequence({"q", "\u00E4?"})},
                               {"em", "m"}}));
    EXPECT_EQ(GetEnrollParameters("a@x", "https://k", wide(u"\u00E9").c_str(), &saml, &oneClick, &questions, &editable,
                                  locales, choices, log),
              6);
    EXPECT_EQ(
        request(0),
        message("EP",
                {{"tc", ""}, {"ec", sequence({"external.secure.url", "https://k"})}, {"ea", "a@x"}, {"ul", "\u00E9"}}));
    EXPECT_EQ((std::array{saml, oneClick, questions, editable}), (std::array{1, -2, 3, 4}));
    EXPECT_EQ(locales.text(), u"a: 1; b: 2; ");
    EXPECT_EQ(choices.text(), u"q: \u00E4?; ");
    EXPECT_EQ(lines(),
              (Lines{"GetEnrollParameters is called.", "Setting FullClientName ", "Setting keyServer https://k",
                     "Setting emailAddress a@x", "Setting locale \u00E9", "Status code: 6", "Status message: m",
                     "Recieved samlUser: 1", "Recieved isOneClickUser: -2", "Recieved securityQuestionsNumber: 3",
                     "Recieved isSecurityQuestionsEditable: 4"}));
    daemon.play(message("EP", {{"st", shortInt(0)}}));
    EXPECT_EQ(GetEnrollParameters("", nullptr, nullptr, &saml, &oneClick, &questions, &editable, locales, choices, log),
              0);
    EXPECT_EQ((std::array{saml, oneClick, questions, editable}), (std::array{0, 0, 0, 0})) << "what is left out";
    EXPECT_EQ(request(1), message("EP", {{"tc", ""}, {"ec", sequence({"external.secure.url", ""})}, {"ea", ""}}));
    daemon.play(message("EP", {{"su", int32(5)}, {"zz", ""}}));
    saml = 9;
    EXPECT_EQ(GetEnrollParameters("", "", nullptr, &saml, &oneClick, &questions, &editable, locales, choices, log), -1);
    EXPECT_EQ(saml, 9) << "what a failed reply held does not count";
}

TEST_F(ExportTest, EnrollmentSendsSecretsAndLogsNone)
{
    const auto enroll = [&](std::u16string_view passPhrase, std::u16string_view locale, char* result) {
        return UserEnroll("a@x", "https://k", wide(u"F\u00E9").c_str(), wide(u"L").c_str(), wide(u"PaSsWoRd").c_str(),
                          wide(locale).c_str(), "uuid", "s@x", 1, 2, wide(passPhrase).c_str(), wide(u"Q1").c_str(),
                          wide(u"Q2").c_str(), wide(u"Q3").c_str(), wide(u"AnSwEr1").c_str(), wide(u"AnSwEr2").c_str(),
                          wide(u"AnSwEr3").c_str(), -60, "24h", result, log);
    };
    Output<char> result;
    learnVersion();
    daemon.play(
        message("EU", {{"st", shortInt(-1)}, {"ve", sequence({"b", "2", "a", "1"})}, {"el", int32(1)}, {"em", "m"}}));
    EXPECT_EQ(enroll(u"PhRaSe", u"de", result), -1);
    const std::string map =
        sequence({"securityAnswer1", "AnSwEr1", "securityAnswer2", "AnSwEr2", "securityAnswer3", "AnSwEr3",
                  "securityQuestion1", "Q1", "securityQuestion2", "Q2", "securityQuestion3", "Q3"});
    const Params common{{"tc", clientVersion}, {"ec", sequence({"external.secure.url", "https://k"})},
                        {"ea", "a@x"},         {"fn", "F\u00E9"},
                        {"ln", "L"},           {"pw", "PaSsWoRd"},
                        {"pc", "uuid"},        {"es", "s@x"}};
    Params full = common;
    full.insert(full.end(), {{"ul", "de"},
                             {"or", int32(1)},
                             {"el", int32(2)},
                             {"zo", int32(-60)},
                             {"pp", "PhRaSe"},
                             {"pe", int32(1)},
                             {"qa", map}});
    EXPECT_EQ(request(1), message("EU", full));
    EXPECT_EQ(result.text(), "a: 1; b: 2; ");
    EXPECT_EQ(lines(), (Lines{"EnrollUser is called.",
                              "Setting FullClientName " + clientVersion,
                              "Setting keyServer https://k",
                              "Setting emailAddress a@x",
                              "Setting first name F\u00E9",
                              "Setting last name L",
                              "Setting enrollUuid uuid",
                              "Setting senderEmailAddress s@x",
                              "Setting locale de",
                              "Setting isSimpleRegistration 1",
                              "Setting enrollmentStage 2",
                              "Setting timeZone -60",
                              "Setting personalPassPhrase ",
                              "Setting securityQuestion1 Q1",
                              "Setting securityQuestion2 Q2",
                              "Setting securityQuestion3 Q3",
                              "Setting securityAnswer1 ",
                              "Setting securityAnswer2 ",
                              "Setting securityAnswer3 ",
                              "Setting timeFormat 24h",
                              "Status code: -1",
                              "Status message: m",
                              "getEnvelopeConfig: a: 1; b: 2; "}));
    for (const char* secret : {"PaSsWoRd", "PhRaSe", "AnSwEr"}) {
        EXPECT_EQ(log.text().find(secret), std::string::npos) << secret;
    }
    daemon.play(message("EU"));
    EXPECT_EQ(enroll(u"", u"", result), -1);
    Params bare = common;
    bare.insert(bare.end(), {{"or", int32(1)}, {"el", int32(2)}, {"zo", int32(-60)}, {"qa", map}});
    EXPECT_EQ(request(2), message("EU", bare));
    EXPECT_EQ(result.text(), "");
}
