// What breaks when sent messages are tracked, locked and expired.
#include "support/Entries.h"
#include "support/ExportTest.h"
#include "support/ReplyCase.h"

using namespace wire;

namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

std::string record(const Fields& fields)
{
    std::vector<std::string> texts;
    for (const auto& [key, value] : fields) {
        texts.insert(texts.end(), {key, value});
    }
    return parameters({{"da", sequence(texts)}});
}

std::string information(int status, const std::vector<std::string>& records, const Params& more = {})
{
    Params params{{"st", shortInt(status)}, {"ri", sequence(records)}};
    params.insert(params.end(), more.begin(), more.end());
    return message("MI", params);
}

class Tracking : public ExportTest
{
protected:
    std::int32_t entriesOf(const char* user, const char* password, const TarnWideChar* config, const char* sortBy,
                           std::uint8_t ascending)
    {
        const std::uint32_t maxResults = 0xFFFFFFFE;
        return GetRecipientEntries(user, password, config, &entries, 3, &maxResults, &entryCount, &totalCount, sortBy,
                                   ascending, log);
    }

    TarnRecipientEntry* entries = nullptr;
    std::uint32_t entryCount = 9;
    std::uint32_t totalCount = 9;
};

const TarnWideChar* const noTexts[] = {nullptr, nullptr};

Params fullInformation()
{
    const std::string tracked = record({{"msgId", "m1"}, {"to", "r@x"}});
    return loginReply({{"id", "m1"}, {"si", int32(0)}, {"mx", int32(1)}, {"ri", sequence({tracked, tracked})}});
}

const ReplyCases trackingReplies{
    {"GetLockExpireStatus", "MI", fullInformation(),
     [](char* log) {
         std::uint32_t count = 0;
         return GetLockExpireStatus("secret", "ENVELOPE", nullptr, room<char>(), room<char>(), room<TarnWideChar>(),
                                    room<char>(), room<char>(), &count, log);
     }},
    {"SetLockExpireStatus", "SI", loginReply(),
     [](char* log) {
         const char* recipient = "r@x";
         const std::int32_t lock = 1;
         const Wide message = wide(u"locked");
         const TarnWideChar* text = message.c_str();
         const std::int64_t expiryDate = 5;
         return SetLockExpireStatus("secret", "ENVELOPE", nullptr, &recipient, &lock, &text, &expiryDate, 1, log);
     }},
    {"GetRecipientEntries", "MI", fullInformation(),
     [](char* log) {
         TarnRecipientEntry* entries = nullptr;
         const std::uint32_t wanted = 10;
         std::uint32_t count = 0;
         std::uint32_t total = 0;
         const std::int32_t result =
             GetRecipientEntries("u@x", "secret", nullptr, &entries, 0, &wanted, &count, &total, "", 1, log);
         releaseEntries(entries, count);
         return result;
     }},
    {"SetRecipientEntries", "SI", loginReply(),
     [](char* log) {
         const char* name = "to";
         const char* value = "r@x";
         return SetRecipientEntries("secret", nullptr, &name, &value, 1, 1, wide(u"locked").c_str(), 5, log);
     }},
};

} // namespace

TEST_F(Tracking, SettingIsOneExchangeForEachRecipient)
{
    learnVersion();
    const char* recipients[] = {"a@x", "", "c@x"};
    const std::int32_t locks[] = {0, -1, 2};
    const Wide texts[] = {wide(u"k\u00F6"), wide(u""), wide(u"\U0001F512")};
    const TarnWideChar* messages[] = {texts[0].c_str(), texts[1].c_str(), texts[2].c_str()};
    const std::int64_t dates[] = {0, -1, 1300000000000};
    for (const int status : {4, 0, -6}) {
        daemon.play(message("SI", {{"st", shortInt(status)}, {"em", "m"}}));
    }
    EXPECT_EQ(SetLockExpireStatus("secret", "ENV", wide(u"/c").c_str(), recipients, locks, messages, dates, 3, log),
              -6);
    const Params head{{"tc", clientVersion}, {"ky", "secret"}, {"en", "ENV"}, {"ep", "/c"}};
    const auto expected = [&](const Params& rest) {
        Params all = head;
        all.insert(all.end(), rest.begin(), rest.end());
        return message("SI", all);
    };
    EXPECT_EQ(request(1), expected({{"to", "a@x"}, {"ls", integer(0, 1)}, {"sm", "k\u00F6"}, {"ed", int64(0)}}));
    EXPECT_EQ(request(2), expected({{"to", ""}, {"ls", "\1"}, {"sm", ""}, {"ed", int64(-1)}}));
    EXPECT_EQ(request(3), expected({{"to", "c@x"}, {"ls", "\1"}, {"sm", "\U0001F512"}, {"ed", int64(1300000000000)}}));
    const Lines all = lines();
    ASSERT_EQ(all.size(), 2u + 3 * 11);
    EXPECT_EQ(Lines(all.begin(), all.begin() + 13),
              (Lines{"Got socket #", "Recipients count: 3", "Starting RemoteSetMessageInformation...",
                     "Setting client type to: " + clientVersion, "Setting password.", "Setting envelope, size: 3",
                     "Setting config file: /c", "Adding recipient.", "Setting lock status.", "Setting status message.",
                     "Setting expiry date.", "Status code: 4", "Status message: m"}));
    EXPECT_EQ(log.text().find("secret"), std::string::npos);
    EXPECT_EQ(daemon.connections(), 1u);
}

TEST_F(Tracking, SettingStopsAtTheFirstFailure)
{
    const char* recipients[] = {"a", "b"};
    const std::int32_t locks[] = {0, 0};
    const std::int64_t dates[] = {0, 0};
    EXPECT_EQ(SetLockExpireStatus("", "", nullptr, recipients, locks, noTexts, dates, 0, log), -1);
    EXPECT_EQ(lines(), (Lines{"Got socket #", "Recipients count: 0"}));
    daemon.play(message("SI", {{"st", shortInt(0)}}));
    daemon.play(message("SI", {{"st", shortInt(8)}, {"zz", ""}}));
    EXPECT_EQ(SetLockExpireStatus("", nullptr, nullptr, recipients, locks, noTexts, dates, 2, log), 0)
        << "the last status that was read whole";
    EXPECT_EQ(failureLine(), unexpected);
    EXPECT_EQ(request(0),
              message("SI", {{"tc", ""}, {"to", "a"}, {"ls", integer(0, 1)}, {"sm", ""}, {"ed", int64(0)}}));
}

TEST_F(Tracking, ReadingOneEnvelopeGivesFourLists)
{
    Output<char> recipients, locks, dates, id;
    Output<TarnWideChar> messages;
    std::uint32_t count = 9;
    learnVersion();
    daemon.play(
        information(0,
                    {record({{"to", "a"}, {"FLAGS", "6"}, {"statusMsg", "k\u00F6"}, {"expiryDate", "1300000000000"}}),
                     record({{"to", "b"}, {"FLAGS", "5"}}), ""},
                    {{"id", "m1"}}));
    EXPECT_EQ(GetLockExpireStatus("p", "ENV", wide(u"/c").c_str(), recipients, locks, messages, dates, id, &count, log),
              0);
    EXPECT_EQ(request(1), message("MI", {{"tc", clientVersion}, {"ky", "p"}, {"en", "ENV"}, {"ep", "/c"}}));
    const std::string delimiter = "{plugin_delimiter}";
    EXPECT_EQ(recipients.text(), "a" + delimiter + "b" + delimiter);
    EXPECT_EQ(locks.text(), "1" + delimiter + "0" + delimiter + "0");
    EXPECT_EQ(messages.text(), u"k\u00F6{plugin_delimiter}{plugin_delimiter}");
    EXPECT_EQ(dates.text(), "1300000000000" + delimiter + "0" + delimiter + "0");
    EXPECT_EQ(id.text(), "m1");
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(lines(), (Lines{"Setting password", "Setting envelope, size: 3", "Setting config file: /c",
                              "Retrieving RemoteMessageInformation.", "Status code: 0",
                              "Status message: ", "Processing recipient.", "Processing recipient.",
                              "Processing recipient.", "Filling output data."}));

    daemon.play(information(3, {record({{"to", "a"}})}));
    EXPECT_EQ(GetLockExpireStatus("", "", nullptr, recipients, locks, messages, dates, nullptr, nullptr, log), 3);
    EXPECT_EQ(recipients.text() + locks.text() + dates.text(), "") << "a refusal empties the lists";
    EXPECT_EQ(messages.text(), u"");
    EXPECT_EQ(request(2), message("MI", {{"tc", clientVersion}}));
    EXPECT_EQ(lines().back(), "Filling output data.");
    daemon.play(information(3, {record({{"to", "a"}})}, {{"id", "m2"}}));
    EXPECT_EQ(GetLockExpireStatus("", "", nullptr, recipients, locks, messages, dates, id, &count, log), 3);
    EXPECT_EQ(id.text(), "m2");
    EXPECT_EQ(count, 0u);
}

TEST_F(Tracking, EntriesAreFoldedByMessageAndRecipient)
{
    daemon.play(information(0,
                            {record({{"msgId", "m"}, {"to", "a"}, {"subject", "old"}, {"numTries", "1"}}),
                             record({{"msgId", "m"},
                                     {"to", "b"},
                                     {"subject", "k\u00F6\U0001F512"},
                                     {"statusMsg", "s"},
                                     {"FLAGS", "2"},
                                     {"numTries", "010"},
                                     {"createDate", "5000000001"},
                                     {"firstOpenDate", "5000000002"},
                                     {"lastModifiedDate", "-5000000003"},
                                     {"expiryDate", "9223372036854775807"}}),
                             record({{"msgId", "m"}, {"to", "a"}, {"subject", "new"}, {"numTries", "2"}}),
                             record({{"msgId", "ma"}, {"to", ""}}), record({{"msgId", "m\1"}, {"to", "a"}}),
                             record({{"msgId", "m"}, {"to", "\1a"}})},
                            {{"mx", int32(-2)}}));
    EXPECT_EQ(entriesOf("u@x", "secret", wide(u"/c").c_str(), "createDate", 7), 0);
    EXPECT_EQ(request(0), message("MI", {{"tc", clientVersion},
                                         {"fm", "u@x"},
                                         {"ky", "secret"},
                                         {"ep", "/c"},
                                         {"sf", "createDate"},
                                         {"as", "\1"},
                                         {"si", int32(3)},
                                         {"mx", int32(-2)}}))
        << "the client version is sent without having been asked for";
    EXPECT_EQ(lines(), (Lines{"Got socket #", "Starting RemoteGetMessageInformation...",
                              "Setting client type to: " + clientVersion, "Setting username", "Setting password",
                              "Setting config file: /c", "Retrieving RemoteMessageInformation.", "Status code: 0",
                              "Status message: "}));
    ASSERT_EQ(entryCount, 5u);
    EXPECT_EQ(totalCount, 0xFFFFFFFEu);
    EXPECT_EQ(entries[0].numTries, 2);
    EXPECT_EQ((std::array{entries[1].createDate, entries[1].firstOpenDate, entries[1].lastModifiedDate,
                          entries[1].expiryDate}),
              (std::array<std::int64_t, 4>{5'000'000'001, 5'000'000'002, -5'000'000'003, INT64_MAX}));
    EXPECT_EQ(entries[1].flags, TARN_FLAG_LOCKED);
    EXPECT_EQ(entries[1].numTries, 10);
    const auto texts = [&](int i) {
        const Wide all = Wide(entries[i].messageId) + wide(u"|") + entries[i].recipient + wide(u"|") +
                         entries[i].subject + wide(u"|") + entries[i].statusMessage;
        return std::u16string(all.begin(), all.end());
    };
    EXPECT_EQ(texts(0), u"m|a|new|") << "the later record, in the earlier one's place";
    EXPECT_EQ(texts(1), u"m|b|k\u00F6\U0001F512|s");
    EXPECT_EQ(texts(2), u"ma|||") << "ids and recipients are not run together";
    EXPECT_EQ(texts(3), u"m\1|a||");
    EXPECT_EQ(texts(4), u"m|\1a||");
    releaseEntries(entries, entryCount);
}

TEST_F(Tracking, EntriesOfARefusalAFailureAndAnEmptyPage)
{
    daemon.play(information(12, {record({{"to", "a"}})}, {{"mx", int32(5)}}));
    EXPECT_EQ(entriesOf("", "", nullptr, "", 0), 12);
    EXPECT_EQ(entries, nullptr);
    EXPECT_EQ((std::array{entryCount, totalCount}), (std::array{0u, 5u}));
    EXPECT_EQ(request(0),
              message("MI", {{"tc", clientVersion}, {"as", integer(0, 1)}, {"si", int32(3)}, {"mx", int32(-2)}}));
    daemon.play(information(0, {}, {{"mx", int32(5)}}));
    EXPECT_EQ(entriesOf(nullptr, nullptr, nullptr, nullptr, 1), 0);
    EXPECT_EQ((std::array{entryCount, totalCount}), (std::array{0u, 5u}));
    releaseEntries(entries, entryCount);
    daemon.play(information(0, {record({{"to", "a"}}), "zz" + int32(5)}));
    EXPECT_EQ(entriesOf("", "", nullptr, "", 0), -1);
    EXPECT_EQ(entries, nullptr);
    EXPECT_EQ((std::array{entryCount, totalCount}), (std::array{0u, 0u}));
    EXPECT_EQ(failureLine(), unexpected);
}

TEST_F(Tracking, SettingByAMapOfFields)
{
    learnVersion();
    const char* names[] = {"to", "msgId", "to"};
    const char* values[] = {"first", "m\u00E4", nullptr};
    daemon.play(message("SI", {{"st", shortInt(0)}, {"em", "set"}}));
    EXPECT_EQ(SetRecipientEntries("p", wide(u"/c").c_str(), names, values, 3, 1, wide(u"\u00FC").c_str(),
                                  -5'000'000'000, log),
              0);
    EXPECT_EQ(request(1), message("SI", {{"tc", clientVersion},
                                         {"ky", "p"},
                                         {"ep", "/c"},
                                         {"ri", sequence({"msgId", "m\u00E4", "to", ""})},
                                         {"ls", "\1"},
                                         {"sm", "\u00FC"},
                                         {"ed", int64(-5'000'000'000)}}));
    EXPECT_EQ(lines(), (Lines{"Setting config file: /c", "Status code: 0", "Status message: set"}));
    daemon.play(message("SI", {{"st", shortInt(1)}}));
    EXPECT_EQ(SetRecipientEntries("", nullptr, nullptr, nullptr, 0, 0, nullptr, 0, log), 1);
    EXPECT_EQ(request(2),
              message("SI", {{"tc", clientVersion}, {"ri", ""}, {"ls", integer(0, 1)}, {"sm", ""}, {"ed", int64(0)}}));
}

TEST(Folding, AppendsOrSwapsExactMatches)
{
    Wide m = wide(u"m"), a = wide(u"a"), capital = wide(u"A"), alsoA = wide(u"a"), alsoM = wide(u"m");
    const auto make = [](Wide& id, Wide& recipient, int tries) {
        TarnRecipientEntry entry{};
        entry.messageId = id.data();
        entry.recipient = recipient.data();
        entry.numTries = tries;
        return entry;
    };
    TarnRecipientEntry entries[4] = {make(m, a, 1)};
    std::uint32_t count = 1;
    TarnRecipientEntry other = make(m, capital, 2);
    EXPECT_EQ(AddOrUpdateRemoteRecipientEntries(entries, &count, &other), 1);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(entries[1].recipient, capital.data());
    TarnRecipientEntry same = make(alsoM, alsoA, 3);
    EXPECT_EQ(AddOrUpdateRemoteRecipientEntries(entries, &count, &same), 0);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(entries[0].numTries, 3);
    EXPECT_EQ(entries[0].recipient, alsoA.data());
    EXPECT_EQ(same.numTries, 1) << "the former contents are the caller's";
    EXPECT_EQ(same.recipient, a.data());
    TarnRecipientEntry ofAnotherMessage = make(a, a, 4);
    EXPECT_EQ(AddOrUpdateRemoteRecipientEntries(entries, &count, &ofAnotherMessage), 1);
    TarnRecipientEntry empty{};
    EXPECT_EQ(AddOrUpdateRemoteRecipientEntries(entries, &count, &empty), 1) << "missing texts count as empty";
    EXPECT_EQ(AddOrUpdateRemoteRecipientEntries(entries, &count, &empty), 0);
}
