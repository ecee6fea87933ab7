// What breaks when a message is encrypted.
#include "support/ExportTest.h"
#include "support/ReplyCase.h"

using namespace wire;

namespace {

const std::string loginOk =
    message("LS", {{"st", shortInt(0)}, {"em", "welcome"}, {"sl", sequence({"b", "2", "a", "1"})}});
const std::string envelopeOk =
    message("BE", {{"st", shortInt(0)}, {"en", "E\u00E9"}, {"tb", "T"}, {"th", ""}, {"an", "A\U0001F512"}});

class Encryption : public ExportTest
{
protected:
    std::int32_t encrypt(const char* to, const char* cc, const char* bcc, const char* mime, const TarnWideChar* config,
                         const char* encodedConfig, const char* loginFlag)
    {
        return EncryptEnvelopeOnline(to, cc, bcc, "s@x", "secret", mime, config, envelope, tb, th, an, encodedConfig,
                                     loginFlag, log);
    }

    Output<TarnWideChar> envelope, tb, th, an;
};

Params fullEnvelope()
{
    const std::string localized = parameters({{"lc", "en"}, {"rc", twoTexts()}, {"en", "ENV"}, {"tb", "TEXT"}});
    return statusReply({{"en", "ENV"},
                        {"ct", "tt"},
                        {"le", sequence({localized, localized})},
                        {"an", "AN"},
                        {"th", "HTML"},
                        {"tb", "TEXT"}});
}

const ReplyCases encryptionReplies{
    {"EncryptEnvelopeOnline", "BE", fullEnvelope(),
     [](char* log) {
         return EncryptEnvelopeOnline("a;b", "", "", "s@x", "secret", "message", wide(u"/c").c_str(),
                                      room<TarnWideChar>(), room<TarnWideChar, 1>(), room<TarnWideChar, 2>(),
                                      room<TarnWideChar, 3>(), "", "0", log);
     }},
};

} // namespace

TEST_F(Encryption, LoginThenEnvelopeOnOneConnection)
{
    learnVersion();
    daemon.play(loginOk);
    daemon.play(envelopeOk);
    EXPECT_EQ(encrypt("a@x;;b@x", "", "c@x;", "MIME \u00E4", wide(u"/c").c_str(), "", "1"), 0);
    EXPECT_EQ(request(1), message("LS", {{"tc", clientVersion}, {"to", "s@x"}, {"ky", "secret"}, {"ep", "/c"}}));
    EXPECT_EQ(request(2), message("BE", {{"tc", clientVersion},
                                         {"sl", sequence({"a", "1", "b", "2"})},
                                         {"fm", "s@x"},
                                         {"to", "a@x"},
                                         {"to", ""},
                                         {"to", "b@x"},
                                         {"cc", ""},
                                         {"bc", "c@x"},
                                         {"bc", ""},
                                         {"ep", "/c"},
                                         {"mm", "MIME \u00E4"}}));
    EXPECT_EQ(lines(), (Lines{"Got socket: #", "Setting config file: /c", "Authentication status: 0",
                              "Authentication message: \nwelcome", "Starting builder",
                              "Setting client type to: " + clientVersion, "Setting login session.",
                              "Setting From field: s@x", "Setting To recipient: a@x", "Setting To recipient: ",
                              "Setting To recipient: b@x", "Setting CC recipient: ", "Setting BCC recipient: c@x",
                              "Setting BCC recipient: ", "Setting config file: /c", "Setting mime message, size:\n7",
                              "Building the envelope...", "Status code: 0", "Status message:\n"}));
    EXPECT_EQ(envelope.text(), u"E\u00E9");
    EXPECT_EQ(tb.text(), u"T");
    EXPECT_EQ(th.text(), u"");
    EXPECT_EQ(an.text(), u"A\U0001F512");
    EXPECT_EQ(daemon.connections(), 1u);
}

TEST_F(Encryption, WhatSuppressesTheLogin)
{
    daemon.play(envelopeOk);
    EXPECT_EQ(encrypt("a,b c", "", "", "m", wide(u"/c").c_str(), "107&58&32&118&59&32&", "1"), 0) << "k: v; ";
    EXPECT_EQ(request(0), message("BE", {{"tc", ""},
                                         {"fm", "s@x"},
                                         {"to", "a,b c"},
                                         {"cc", ""},
                                         {"bc", ""},
                                         {"ec", sequence({"k", "v"})},
                                         {"ep", "/c"},
                                         {"mm", "m"}}));
    daemon.play(envelopeOk);
    EXPECT_EQ(encrypt("a", "", "", "m", nullptr, "107&58&32&118", "1"), 0);
    EXPECT_EQ(request(1),
              message("BE", {{"tc", ""}, {"fm", "s@x"}, {"to", "a"}, {"cc", ""}, {"bc", ""}, {"ec", ""}, {"mm", "m"}}))
        << "a configuration without entries is sent as an empty map";
    daemon.play(envelopeOk);
    EXPECT_EQ(encrypt("a", "", "", "", nullptr, "", "0"), 0);
    EXPECT_EQ(request(2), message("BE", {{"tc", ""}, {"fm", "s@x"}, {"to", "a"}, {"cc", ""}, {"bc", ""}, {"mm", ""}}));
    for (const char* otherFlag : {"", "00"}) {
        daemon.play(loginOk);
        daemon.play(envelopeOk);
        EXPECT_EQ(encrypt("a", "", "", "m", nullptr, "", otherFlag), 0);
    }
    EXPECT_EQ(daemon.requests().size(), 7u) << "only \"0\" suppresses it";
}

TEST_F(Encryption, WhatEachFailureReturnsAndWrites)
{
    daemon.play(message("LS", {{"st", shortInt(3)}}));
    EXPECT_EQ(encrypt("a", "", "", "m", nullptr, "", "1"), 3);
    EXPECT_EQ(daemon.requests().size(), 1u) << "no envelope is asked for";
    EXPECT_TRUE(log.untouched()) << "after a refused login the log is not copied";

    daemon.play(loginOk);
    daemon.play(message("BE", {{"st", shortInt(9)}, {"en", "E"}, {"em", "no"}}));
    EXPECT_EQ(encrypt("a", "", "", "m", nullptr, "", "1"), 9);
    EXPECT_EQ(lines().back(), "Status message:\nno");

    daemon.play(loginOk);
    daemon.play(message("BE", {{"le", int32(1)}, {"st", shortInt(9)}}));
    EXPECT_EQ(encrypt("a", "", "", "m", nullptr, "", "1"), 0) << "the login's status stands";
    EXPECT_EQ(failureLine(), unexpected);
    EXPECT_TRUE(envelope.untouched() && tb.untouched() && th.untouched() && an.untouched());
}

TEST_F(Encryption, LargeMessage)
{
    std::string mime(4'000'000, 'x');
    for (std::size_t i = 0; i < mime.size(); i += 7) {
        mime[i] = static_cast<char>(1 + i % 255);
    }
    daemon.play(envelopeOk);
    EXPECT_EQ(encrypt("a", "", "", mime.c_str(), nullptr, "", "0"), 0);
    const std::string sent = request(0);
    EXPECT_TRUE(sent == message("BE", {{"tc", ""}, {"fm", "s@x"}, {"to", "a"}, {"cc", ""}, {"bc", ""}, {"mm", mime}}));
}
