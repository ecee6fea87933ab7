// What breaks in the C++ wrapper. Requests and outputs of the functions beneath it have tests of their own.
#include "support/ScriptedDaemon.h"
#include "support/Wire.h"

#include <TarnRemoteClient.h>
#include <gtest/gtest.h>
#include <tarn/Client.h>

using namespace tarn;
using namespace wire;

namespace {

// What the library logs last when an exchange has failed, as a text of the daemon's.
const std::string failureLine = "\n[TarnRemoteClient:31] Unexpected exception occured. GetLastError() : 104";

std::string answer(std::string_view code, int status, Params more = {})
{
    more.insert(more.begin(), {"st", shortInt(status)});
    return message(code, more);
}

class CppClient : public testing::Test
{
protected:
    // A connection that is known to be open.
    void connect()
    {
        daemon.play(answer("ST", 0, {{"v ", "7"}, {"bn", int32(1)}}));
        client.version();
    }

    ScriptedDaemon daemon;
    Client client;
};

template <class Thrown, class Call>
Thrown thrownBy(Call call)
{
    try {
        call();
    } catch (const Thrown& thrown) {
        return thrown;
    }
    throw std::runtime_error("no such exception");
}

} // namespace

TEST_F(CppClient, TextsThatLookLikeAFailureAreAnswers)
{
    daemon.play(answer("VC", 3, {{"em", "no" + failureLine}}));
    const auto refused = thrownBy<StatusError>([&] { client.verifyConfig("a@b", ""); });
    EXPECT_EQ(refused.status(), 3);
    EXPECT_EQ(refused.message(), "no");

    daemon.play(answer("VC", -1, {{"em", failureLine}}));
    EXPECT_EQ(thrownBy<StatusError>([&] { client.verifyConfig("a@b", ""); }).status(), -1);

    daemon.play(answer("LT", 0, {{"em", failureLine}, {"sl", sequence({"de", "Deutsch", "x", "y; z"})}}));
    const auto locales = client.locales("");
    ASSERT_EQ(locales.size(), 2u);
    EXPECT_EQ(locales[0].key + "=" + locales[0].value, "de=Deutsch");
    EXPECT_EQ(locales[1].value, "y; z");

    daemon.play(answer("SD", 5, {{"em", "x\n[TarnRemoteClient:60] Status code: 0"}}));
    EXPECT_EQ(thrownBy<StatusError>([&] { client.stopDaemon(); }).status(), 5);
}

TEST_F(CppClient, NothingIsCalledAfterABrokenExchange)
{
    connect();
    const std::string refusal = answer("LS", 2);
    // The status has arrived, but the reply's CRC is wrong.
    daemon.play(refusal.substr(0, refusal.size() - 4) + std::string(4, '\0'));
    EXPECT_THROW(client.login("a@b", {"p", ""}), ExchangeError);
    const auto requests = daemon.requests().size();
    Client another;
    for (const auto& call : std::vector<std::function<void()>>{[&] { client.version(); }, [&] { another.stopDaemon(); },
                                                               [&] { another.payloadStatus("e", "", {"a@b"}); }}) {
        EXPECT_THROW(call(), OutOfStep);
    }
    EXPECT_EQ(daemon.requests().size(), requests);
}

TEST_F(CppClient, AnEncryptionThatBreaksDownAfterItsLoginGivesNoEnvelope)
{
    daemon.play(answer("LS", 0, {{"sl", sequence({"k", "v"})}}));
    daemon.play("HTTP/1.1 400 Bad Request");
    EXPECT_THROW(client.encrypt({.from = "a@b", .to = {"c@d"}, .message = "m"}, {"p", ""}), ExchangeError);
    EXPECT_THROW(client.version(), OutOfStep);
}

TEST_F(CppClient, ARefusedLoginWithinAnEncryptionHasItsStatus)
{
    for (const int status : {2, -1}) {
        daemon.play(answer("LS", status));
        const auto refused = thrownBy<StatusError>([&] {
            client.encrypt({.from = "a@b", .to = {"c@d"}, .message = "m"}, {"p", ""});
        });
        EXPECT_EQ(refused.status(), status);
        EXPECT_EQ(refused.log(), "");
    }
}

TEST_F(CppClient, LoginTellsItsDetail)
{
    daemon.play(answer("LS", 18, {{"se", int64(30)}, {"em", "too often"}}));
    const auto refused = thrownBy<StatusError>([&] { client.login("a@b", {"p", ""}); });
    EXPECT_EQ(refused.detail(), "30");
    EXPECT_EQ(refused.message(), "too often");
    EXPECT_EQ(refused.log(), client.lastLog());
}

TEST_F(CppClient, ListsWhoseTextsHoldTheDelimiterAreRefused)
{
    connect();
    const std::string delimiter = TARN_LIST_DELIMITER;
    daemon.play(answer("DE", 20, {{"em", "Call" + delimiter + "me"}}));
    daemon.play(answer("DE", 5));
    EXPECT_THROW(client.payloadStatus("e", "", {"a@b", "c@d"}), MalformedAnswer);
    daemon.play(answer("DE", 20, {{"em", "Call me"}}));
    daemon.play(answer("DE", 5));
    const PayloadStatus found = client.payloadStatus("e", "", {"a@b", "c@d"});
    EXPECT_EQ(found.recipients.at(0).text, "Call me");
    EXPECT_EQ(found.recipients.at(1).recipient, "c@d");
    EXPECT_EQ(found.lastStatus, 5);
    daemon.play(answer("DE", 0));
    const auto record = parameters({{"da", sequence({"statusMsg", "a" + delimiter})}});
    daemon.play(answer("MI", 0, {{"ri", sequence({record})}}));
    EXPECT_THROW(client.tracking("e", {}), MalformedAnswer);

    const auto requests = daemon.requests().size();
    EXPECT_THROW(client.setTracking("e", {"a@b", true, "x" + delimiter, 0}, {}), std::invalid_argument);
    EXPECT_THROW(client.setRecords({{"to", "a@b"}}, {"", true, delimiter, 0}, {}), std::invalid_argument);
    EXPECT_THROW(client.payloadStatus("e", "", {"a@b;c@d"}), std::invalid_argument);
    EXPECT_THROW(client.payloadStatus("e", "", {delimiter}), std::invalid_argument);
    EXPECT_THROW(client.login(std::string("a\0b", 3), {}), std::invalid_argument);
    EXPECT_EQ(daemon.requests().size(), requests);
}

TEST_F(CppClient, RecipientsAreCountedBeforeTheirTrackingIsAskedFor)
{
    daemon.play(answer("DE", 0, {{"tr", sequence(std::vector<std::string>(400, "a@b"))}}));
    EXPECT_THROW(client.tracking("e", {}), LogTooSmall);
    daemon.play(answer("DE", 0));
    EXPECT_THROW(client.tracking("e", {"", std::string(TARN_LOG_SIZE, 'x')}), LogTooSmall);
}

TEST_F(CppClient, WideTextsComeThrough)
{
    const std::string text = "Gr\xC3\xBC\xC3\x9F"
                             "e \xF0\x9F\x94\x92 \xEF\xBF\xBD \xE2\x82\xAC";
    daemon.play(answer("SI", 0));
    client.setTracking("e", {"a@b", true, text, 7}, {});
    EXPECT_NE(daemon.requests().at(0).find(text), std::string::npos);
    daemon.play(answer("MI", 0,
                       {{"mx", int32(1)},
                        {"ri", sequence({parameters({{"da", sequence({"to", "a@b", "statusMsg", text, "msgId", "m",
                                                                      "subject", text, "expiryDate", "9"})}})})}}));
    const SentPage page = client.sent({.user = "a@b", .max = 1}, {});
    ASSERT_EQ(page.records.size(), 1u);
    EXPECT_EQ(page.records[0].subject, text);
    EXPECT_EQ(page.records[0].state.expiry, 9);

    // Ill-formed input: each byte of it, and a lone surrogate.
    daemon.play(answer("SI", 0));
    client.setTracking("e", {"a@b", true, "<\xFF\xC3|\xED\xA0\x80>", 7}, {});
    const std::string replacement = "\xEF\xBF\xBD";
    std::string expected = "<";
    expected += replacement + replacement + "|" + replacement + replacement + replacement + ">";
    EXPECT_NE(daemon.requests().at(2).find(expected), std::string::npos);
}

TEST(CppClientAlone, EachTextThatCouldOverflowTheLogIsRefused)
{
    Client client;
    for (std::size_t large = 0; large < 9; ++large) {
        SCOPED_TRACE(large);
        // One of a call's texts is large, and another one each time.
        const auto text = [large](std::size_t index, std::size_t count) {
            return std::string(index == large % count ? TARN_LOG_SIZE - TARN_LOG_RESERVE : 0, 'x');
        };
        const auto of3 = [text](std::size_t index) { return text(index, 3); };
        EXPECT_THROW(client.startDaemon(text(0, 1)), LogTooSmall);
        EXPECT_THROW(client.login(text(0, 2), {"", text(1, 2)}), LogTooSmall);
        EXPECT_THROW(client.verifyConfig(text(0, 2), text(1, 2)), LogTooSmall);
        EXPECT_THROW(client.features(text(0, 1)), LogTooSmall);
        EXPECT_THROW(client.locales(text(0, 1)), LogTooSmall);
        EXPECT_THROW(client.messageBody(text(0, 2), text(1, 2)), LogTooSmall);
        EXPECT_THROW(client.encrypt({.from = of3(0), .cc = {of3(1)}}, {"", of3(2)}), LogTooSmall);
        EXPECT_THROW(client.encrypt({.to = {text(0, 2)}, .bcc = {text(1, 2)}}, {}), LogTooSmall);
        EXPECT_THROW(client.decrypt({.recipient = of3(0), .sessionKey = of3(1)}, {"", of3(2)}), LogTooSmall);
        EXPECT_THROW(client.setTracking("", {.recipient = of3(0), .message = of3(1)}, {"", of3(2)}), LogTooSmall);
        EXPECT_THROW(client.sent({.user = of3(0), .sortBy = of3(1)}, {"", of3(2)}), LogTooSmall);
        EXPECT_THROW(client.setRecords({{of3(0), of3(1)}}, {.message = of3(2)}, {}), LogTooSmall);
        EXPECT_THROW(client.setRecords({}, {}, {"", text(0, 1)}), LogTooSmall);
        EXPECT_THROW(client.enrollParameters(of3(0), of3(1), of3(2)), LogTooSmall);
        Enrollment form;
        std::string* const texts[] = {&form.address, &form.keyServer,  &form.enrollId,
                                      &form.sender,  &form.firstName,  &form.lastName,
                                      &form.locale,  &form.timeFormat, &form.questions[2]};
        *texts[large] = text(0, 1);
        EXPECT_THROW(client.enroll(form), LogTooSmall);
    }
    // Each recipient takes a line, and the configuration file two.
    EXPECT_THROW(client.encrypt({.bcc = std::vector<std::string>(400, "a@b")}, {}), LogTooSmall);
    EXPECT_THROW(client.encrypt({}, {"", std::string(TARN_LOG_SIZE / 2, 'x')}), LogTooSmall);
}

TEST(CppClientAlone, WithoutADaemonALaterCallMayReachOne)
{
    Client client;
    EXPECT_THROW(client.version(), NoDaemon);
    EXPECT_THROW(client.enrollParameters("a@b", "https://k", ""), NoDaemon);
    ScriptedDaemon daemon;
    daemon.play(answer("ST", 0, {{"v ", "7"}, {"bn", int32(1)}}));
    EXPECT_EQ(client.version(), "7-1");
}
