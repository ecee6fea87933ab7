// What breaks when reply objects read their replies.
#include "protocol/CommandException.h"
#include "remote/RemoteEnrollment.h"
#include "remote/RemoteEnvelope.h"
#include "remote/RemoteLogin.h"
#include "remote/RemoteMessageInformation.h"
#include "remote/RemotePayload.h"
#include "remote/RemoteStatus.h"
#include "support/MemoryStreams.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

using namespace Merrow;
using namespace std::string_literals;
using wire::int32;
using wire::int64;
using wire::message;
using wire::parameters;
using wire::sequence;
using wire::shortInt;

namespace {

template <class Reply>
std::string failureOf(const std::string& bytes)
{
    MemoryInput in(bytes);
    try {
        const Reply reply(in);
    } catch (CommandException* exception) {
        const std::string text = exception->what();
        delete exception;
        return text + "|" + std::to_string(in.rest.size());
    }
    return "no failure";
}

template <class Reply>
Reply read(const std::string& bytes)
{
    MemoryInput in(bytes, 1);
    return Reply(in);
}

// The three kinds of item share their loops; each names its own mismatch, and each leaves an unknown value unread.
template <class Reply>
void checkCollection(const char* code, const char* collection, const std::string& collectionText,
                     const std::string& itemText)
{
    const auto withValue = [&](const std::string& value, std::int64_t length) {
        return wire::framed(code, collection + int32(length) + value);
    };
    const auto failure = [&](const std::string& value, std::int64_t length) {
        const std::string text = failureOf<Reply>(withValue(value, length));
        return text.substr(0, text.find('|'));
    };
    EXPECT_EQ(failure("", 0), "no failure");
    EXPECT_EQ(failure("", -1), collectionText);
    EXPECT_EQ(failure(int32(0), 4), "no failure") << "one empty item";
    EXPECT_EQ(failure(int32(0), 3), collectionText) << "items longer than the collection";
    EXPECT_EQ(failure(int32(-1), 4), itemText);
    EXPECT_EQ(failureOf<Reply>(withValue(int32(1) + "zz" + int32(0), 5)), itemText + "|6") << "longer than the item";
    EXPECT_EQ(failure(int32(5) + "zz" + int32(0), 1), itemText) << "one byte is enough to begin an item";
    EXPECT_EQ(failure(int32(9) + "zz" + int32(3), 13), "no failure") << "three bytes counted, none consumed";
    EXPECT_EQ(failureOf<Reply>(withValue(int32(9) + "zz" + int32(3) + "abc", 13)), "Unknown parameter: 24930|3")
        << "the unread bytes are read as the next tag and length";
    EXPECT_EQ(failure(int32(INT32_MAX) + "zz" + int32(INT32_MIN), INT32_MAX), itemText)
        << "no overflow, no endless walk";
}

} // namespace

TEST(Response, StatusDefaultsOrderAndRepetition)
{
    const auto empty = read<RemoteStopStatus>(message("SD"));
    EXPECT_EQ(empty.statusCode, -1);
    EXPECT_EQ(empty.getStatusMessage() + empty.codeText, "");
    const auto full = read<RemoteStopStatus>(
        message("SD", {{"em", "first"}, {"st", shortInt(7)}, {"cd", "code"}, {"st", shortInt(-2)}, {"em", "second"}}));
    EXPECT_EQ(full.statusCode, -2);
    EXPECT_EQ(full.statusMessage, "second");
    EXPECT_EQ(full.codeText, "code");
}

TEST(Response, WrongCodesAndUnknownTagsStopTheReadingThere)
{
    EXPECT_EQ(failureOf<RemoteDaemonStatus>(message("SD")), "Invalid command code: 21316|6");
    EXPECT_EQ(failureOf<RemoteStopStatus>(message("SD", {{"bn", int32(1)}})), "Unknown parameter: 25198|10");
    EXPECT_EQ(failureOf<RemoteDaemonStatus>(message("ST", {{"vn", ""}})), "Unknown parameter: 30318|6");
    EXPECT_EQ(failureOf<RemotePayload>(message("DE", {{"zz", "x"}})), "Unknown parameter: 31354|7");
}

TEST(Response, FixedSizeValuesIgnoreTheirLength)
{
    const auto reply =
        read<RemoteStopStatus>(wire::framed("SD", "st" + int32(4) + shortInt(9) + "em" + int32(2) + "ok"));
    EXPECT_EQ(reply.statusCode, 9);
    EXPECT_EQ(reply.statusMessage, "ok");
}

TEST(DaemonStatus, EveryFigure)
{
    const auto status = read<RemoteDaemonStatus>(message("ST", {{"v ", "7.6.1"},
                                                                {"bn", int32(-42)},
                                                                {"bt", int64(1)},
                                                                {"ct", int32(2)},
                                                                {"ca", int32(3)},
                                                                {"mf", int64(4)},
                                                                {"mt", int64(1LL << 40)},
                                                                {"mm", int64(6)},
                                                                {"bs", int64(7)},
                                                                {"bf", int64(8)},
                                                                {"ss", int64(9)},
                                                                {"sa", wire::float64(1.5)},
                                                                {"sd", wire::float64(2.5)},
                                                                {"es", int64(10)},
                                                                {"ea", wire::float64(3.5)},
                                                                {"ed", wire::float64(-4.5)},
                                                                {"st", shortInt(0)}}));
    EXPECT_EQ(status.getText(), "7.6.1");
    EXPECT_EQ(status.build, -42);
    EXPECT_EQ((std::vector<std::int64_t>{status.bt, status.ct, status.ca, status.freeMemory, status.totalMemory,
                                         status.maxMemory, status.bs, status.bf, status.ss, status.es}),
              (std::vector<std::int64_t>{1, 2, 3, 4, 1LL << 40, 6, 7, 8, 9, 10}));
    EXPECT_EQ((std::vector<double>{status.sa, status.sd, status.ea, status.ed}),
              (std::vector<double>{1.5, 2.5, 3.5, -4.5}));
}

TEST(Response, NumbersThatAreLeftOutAreZero)
{
    const auto status = read<RemoteDaemonStatus>(message("ST"));
    EXPECT_EQ(
        (std::vector<std::int64_t>{status.build, status.bt, status.ct, status.ca, status.freeMemory, status.totalMemory,
                                   status.maxMemory, status.bs, status.bf, status.ss, status.es}),
        std::vector<std::int64_t>(11));
    EXPECT_EQ((std::vector<double>{status.sa, status.sd, status.ea, status.ed}), std::vector<double>(4));
    const auto login = read<RemoteLoginSession>(message("LS"));
    EXPECT_EQ((std::vector<std::int64_t>{login.se, login.we, login.wd}), std::vector<std::int64_t>(3));
    const auto information = read<RemoteMessageInformation>(message("MI"));
    EXPECT_EQ(information.si, 0);
    EXPECT_EQ(information.mx, 0);
    EXPECT_EQ(read<RemoteEnrollUserResponse>(message("EU")).el, 0);
}

TEST(Login, BaseFieldsReachEveryDerivedReply)
{
    const wire::Params base{
        {"lk", "link"}, {"se", int64(-1)}, {"we", int32(2)}, {"wd", int32(3)}, {"st", shortInt(25)}};
    const auto check = [](const RemoteLoginResponse& reply) {
        EXPECT_EQ(reply.getText(), "link");
        EXPECT_EQ(reply.se, -1);
        EXPECT_EQ(reply.we, 2);
        EXPECT_EQ(reply.wd, 3);
        EXPECT_EQ(reply.statusCode, 25);
    };
    check(read<RemoteSetInformationResponse>(message("SI", base)));
    check(read<RemoteMessageInformation>(message("MI", base)));
    check(read<RemotePayload>(message("DE", base)));
    auto session = base;
    session.emplace_back("sl", sequence({"former", "f"}));
    session.emplace_back("sl", sequence({"token", "t", "user", "u"}));
    check(read<RemoteLoginSession>(message("LS", session)));
    EXPECT_EQ(read<RemoteLoginSession>(message("LS", session)).getSessionMap(),
              (StringMap{{"token", "t"}, {"user", "u"}}));
}

TEST(Envelope, LocalizedItems)
{
    const std::string first = parameters(
        {{"lc", "de"}, {"rc", sequence({"a@x", "b@x"})}, {"en", "E"}, {"ct", "C"}, {"tb", "T"}, {"th", "H"}});
    const auto envelope = read<RemoteEnvelope>(message("BE", {{"le", sequence({first, ""})},
                                                              {"en", "1"},
                                                              {"ct", "2"},
                                                              {"id", "3"},
                                                              {"an", "4"},
                                                              {"lc", "5"},
                                                              {"th", "6"},
                                                              {"tb", "7"},
                                                              {"le", sequence({""})}}));
    ASSERT_EQ(envelope.items.size(), 3u);
    const LocalizedEnvelope& item = *envelope.items[0];
    EXPECT_EQ(item.lc + item.en + item.ct + item.tb + item.th, "deECTH");
    EXPECT_EQ(item.rc, (std::vector<std::string>{"a@x", "b@x"}));
    EXPECT_EQ(envelope.en + envelope.ct + envelope.id + envelope.getAn() + envelope.lc + envelope.getTh() +
                  envelope.getTb(),
              "1234567");
}

TEST(Collections, CountsThatDoNotAddUp)
{
    checkCollection<RemoteEnvelope>("BE", "le", "Length of items in Collection mismatch",
                                    "Length of localized envelope mismatch");
    checkCollection<RemotePayload>("DE", "da", "Length of items in Collection mismatch", "Length of TOC mismatch");
    checkCollection<RemoteMessageInformation>("MI", "ri", "Length of RecipientInformation array mismatch",
                                              "Length of RecipientInformation mismatch by");
}

TEST(MessageInformation, RecipientsAndTheirTypedFields)
{
    const auto recipient = [](const StringMap& fields) {
        std::vector<std::string> texts;
        for (const auto& [key, value] : fields) {
            texts.insert(texts.end(), {key, value});
        }
        return parameters({{"da", sequence(texts)}});
    };
    const auto information = read<RemoteMessageInformation>(
        message("MI", {{"id", "old"},
                       {"id", "m1"},
                       {"si", int32(5)},
                       {"mx", int32(-7)},
                       {"ri", sequence({recipient({{"to", "a@x"},
                                                   {"FLAGS", "12abc"},
                                                   {"numTries", "-3"},
                                                   {"expiryDate", "1300000000000"},
                                                   {"createDate", "99999999999999999999"},
                                                   {"msgId", "m"},
                                                   {"subject", "s"},
                                                   {"statusMsg", "t"},
                                                   {"firstOpenDate", "x"}})})},
                       {"ri", sequence({""})}}));
    EXPECT_EQ(information.id, "m1");
    EXPECT_EQ(information.si, 5);
    EXPECT_EQ(information.mx, -7);
    const auto recipients = information.getRecipients();
    ASSERT_EQ(recipients.size(), 2u);
    const RemoteRecipientInformation& first = *recipients.front();
    EXPECT_EQ(first.getTo() + first.getMsgId() + first.getSubject() + first.getStatusMsg(), "a@xmst");
    EXPECT_EQ(first.getFlags(), 12);
    EXPECT_EQ(first.getNumTries(), -3);
    EXPECT_EQ(first.getExpiryDate(), 1300000000000);
    EXPECT_EQ(first.getCreateDate(), INT64_MAX);
    EXPECT_EQ(first.getFirstOpenDate(), 0);
    EXPECT_EQ(recipients.back()->getTo(), "");
    EXPECT_EQ(first.fields.size(), 9u) << "looking a missing field up adds nothing";
}

TEST(Payload, EveryField)
{
    const std::string entry = parameters(
        {{"ty", int32(1)}, {"fl", int32(-1)}, {"da", "\0data"s}, {"fn", "f"}, {"on", "name"}, {"fc", "text/plain"}});
    const auto payload = read<RemotePayload>(message("DE", {{"da", sequence({entry})},
                                                            {"da", sequence({parameters({{"fn", "second"}})})},
                                                            {"tr", sequence({"former"})},
                                                            {"id", "i"},
                                                            {"ms", int32(2)},
                                                            {"kt", sequence({"k", "t"})},
                                                            {"ku", "u"},
                                                            {"uu", "e"},
                                                            {"ec", sequence({"b", "2", "a", "1"})},
                                                            {"fm", "f"},
                                                            {"sj", "s"},
                                                            {"tr", sequence({"a", "b"})},
                                                            {"tc", sequence({"c"})}}));
    ASSERT_EQ(payload.getToc().size(), 2u) << "a second collection adds its items";
    EXPECT_EQ(payload.getToc()[1]->fn, "second");
    const TocEntry& item = *payload.getToc()[0];
    EXPECT_EQ(item.ty, 1);
    EXPECT_EQ(item.fl, -1);
    EXPECT_EQ(item.getDa(), "\0data"s);
    EXPECT_EQ(item.fn + item.getOn() + item.getFc(), "fnametext/plain");
    EXPECT_EQ(payload.ms, 2);
    EXPECT_EQ(payload.id + payload.getKu() + payload.getUu() + payload.getFm() + payload.sj, "iuefs");
    EXPECT_EQ(payload.getEc(), (StringMap{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(payload.kt, (StringMap{{"k", "t"}}));
    EXPECT_EQ(payload.getTr(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(payload.getTc(), std::vector<std::string>{"c"});
}
