// What breaks when an envelope is decrypted or asked about.
#include "support/ExportTest.h"
#include "support/ReplyCase.h"

#include <numeric>

using namespace wire;
using namespace std::string_literals;

namespace {

std::string item(const std::string& name, const std::string& contentType, const std::string& data, int type = 1,
                 int flags = 2)
{
    return parameters({{"ty", int32(type)}, {"fl", int32(flags)}, {"da", data}, {"on", name}, {"fc", contentType}});
}

std::string payload(int status, const std::vector<std::string>& items, const Params& more = {})
{
    Params params{{"st", shortInt(status)}, {"da", sequence(items)}};
    params.insert(params.end(), more.begin(), more.end());
    return message("DE", params);
}

class Decryption : public ExportTest
{
protected:
    std::int32_t decrypt(const char* password = "")
    {
        return DecryptEnvelope(password, nullptr, nullptr, nullptr, nullptr, config, 0, ku, from, log);
    }

    Output<char> config;
    Output<TarnWideChar> ku, from;
    std::uint32_t nameSize = 77, typeLength = 77, dataSize = 77;
};

Params fullPayload()
{
    const std::string entry = item("name", "text/plain", "data");
    return loginReply({{"da", sequence({entry, entry})},
                       {"ms", int32(1)},
                       {"kt", twoEntries()},
                       {"ku", "key"},
                       {"ec", twoEntries()},
                       {"fm", "s@x"},
                       {"tr", twoTexts()},
                       {"tc", twoTexts()}});
}

const ReplyCases decryptionReplies{
    {"DecryptEnvelope", "DE", fullPayload(),
     [](char* log) {
         return DecryptEnvelope("secret", "ENVELOPE", nullptr, "r@x", nullptr, room<char>(), 0, room<TarnWideChar>(),
                                room<TarnWideChar, 1>(), log);
     }},
    {.name = "GetPayloadStatus",
     .code = "DE",
     .fields = fullPayload(),
     .call =
         [](char*) {
             std::int32_t sensitivity = 0;
             return GetPayloadStatus("ENVELOPE", nullptr, "r@x", room<TarnWideChar>(), room<char>(), room<char>(),
                                     room<char>(), &sensitivity);
         },
     .failureLine = ""},
    {"GetRecipients", "DE", fullPayload(),
     [](char* log) {
         std::uint32_t sensitivity = 0;
         return GetRecipients("ENVELOPE", room<TarnWideChar>(), &sensitivity, log);
     }},
};

} // namespace

TEST_F(Decryption, RequestOutputsAndLog)
{
    daemon.play(
        payload(0, {}, {{"em", "open"}, {"ec", sequence({"b", "2\xE9", "a", "1"})}, {"ku", "k\u00E9"}, {"fm", "f"}}));
    EXPECT_EQ(DecryptEnvelope("secret", "ENVELOPE", wide(u"/c").c_str(), "r@x", "KEY", config, 2, ku, from, log), 0);
    EXPECT_EQ(
        request(0),
        message("DE",
                {{"ky", "secret"}, {"en", "ENVELOPE"}, {"ep", "/c"}, {"to", "r@x"}, {"sk", "KEY"}, {"po", "\1"}}));
    EXPECT_EQ(lines(), (Lines{"Got socket: #", "Starting RemoteEnvelopeDecrypter...", "Setting not NULL password",
                              "Setting envelope, size: 8", "Setting config file: /c", "Setting recipient e-mail: r@x",
                              "Setting session key: KEY", "Status code: 0", "Status message: open",
                              "getEnvelopeConfig: a: 1; b: 2\xE9; "}));
    EXPECT_EQ(config.text(), "97&58&32&49&59&32&98&58&32&50&-23&59&32&");
    EXPECT_EQ(ku.text(), u"k\u00E9");
    EXPECT_EQ(from.text(), u"f");

    daemon.play(payload(0, {}));
    EXPECT_EQ(decrypt(), 0);
    EXPECT_EQ(request(1), message("DE", {{"ky", ""}})) << "the password is always sent, the rest when there is any";
    EXPECT_EQ(lines()[2], "Setting NULL password");
    EXPECT_EQ(config.text(), "");
    EXPECT_EQ(GetNextDecryptedItemInfo(&nameSize, &typeLength, &dataSize), 0u) << "an empty list is exhausted";
}

TEST_F(Decryption, ItemsInTurnAndPastTheEnd)
{
    std::string bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    daemon.play(payload(0, {item("na\0me"s, "text/plain", bytes, -1, -2), ""}), {.packet = 100});
    EXPECT_EQ(decrypt(), 0);
    std::uint32_t flags = 0;
    std::uint32_t type = 0;
    Output<unsigned char> name, data;
    char contentType[32] = "x";
    for (int twice = 0; twice < 2; ++twice) {
        EXPECT_EQ(GetNextDecryptedItemInfo(&nameSize, &typeLength, &dataSize), 1u) << "asking does not move on";
        EXPECT_EQ((std::array{nameSize, typeLength, dataSize}), (std::array{5u, 10u, 256u}));
    }
    EXPECT_EQ(GetNextDecryptedItem(&flags, &type, name, contentType, data), 1u);
    EXPECT_EQ(flags, 0xFFFFFFFEu);
    EXPECT_EQ(type, 0xFFFFFFFFu);
    EXPECT_STREQ(contentType, "xtext/plain") << "appended to what was there";
    EXPECT_EQ(name.first(6), (std::basic_string<unsigned char>{'n', 'a', 0, 'm', 'e', '~'})) << "no terminator";
    EXPECT_EQ(data.first(256), std::basic_string<unsigned char>(bytes.begin(), bytes.end()));

    Output<unsigned char> untouched;
    EXPECT_EQ(GetNextDecryptedItem(&flags, &type, untouched, contentType, untouched), 1u);
    EXPECT_TRUE(untouched.untouched()) << "no name and no data";
    EXPECT_EQ((std::array{flags, type}), (std::array{0u, 0u}));
    typeLength = 77;
    flags = 77;
    EXPECT_EQ(GetNextDecryptedItemInfo(&nameSize, &typeLength, &dataSize), 0u);
    EXPECT_EQ((std::array{nameSize, typeLength, dataSize}), (std::array{0u, 77u, 0u}));
    EXPECT_EQ(GetNextDecryptedItem(&flags, &type, untouched, contentType, untouched), 0u);
    EXPECT_EQ(flags, 77u);
}

TEST_F(Decryption, FailuresKeepTheFormerItems)
{
    daemon.play(payload(0, {item("1", "", "one"), item("2", "", "two")}));
    EXPECT_EQ(decrypt(), 0);
    std::uint32_t flags = 0;
    std::uint32_t type = 0;
    Output<unsigned char> name, data;
    char contentType[8] = "";
    EXPECT_EQ(GetNextDecryptedItem(&flags, &type, name, contentType, data), 1u);

    const Output<char> fresh;
    for (const int status : {2, 17, 200, 7}) {
        daemon.play(payload(status, {item("3", "", "three")}, {{"em", "daemon's text"}, {"ku", "new"}}));
        config = fresh;
        EXPECT_EQ(decrypt("wrong"), status);
        EXPECT_EQ(lines().back(), status == 7 ? "Status message: daemon's text"
                                              : "Status message: User entered an incorrect username or password");
        EXPECT_TRUE(config.untouched());
    }
    std::string damaged = payload(0, {item("3", "", "three")});
    damaged.back() = static_cast<char>(damaged.back() ^ 1);
    daemon.play(damaged);
    EXPECT_EQ(decrypt(), -1);
    EXPECT_EQ(failureLine(), unexpected);
    EXPECT_EQ(GetNextDecryptedItemInfo(&nameSize, &typeLength, &dataSize), 1u);
    EXPECT_EQ(dataSize, 3u) << "the second item is still next";

    daemon.play(payload(0, {item("4", "", "fourth")}));
    EXPECT_EQ(decrypt(), 0);
    EXPECT_EQ(GetNextDecryptedItemInfo(&nameSize, &typeLength, &dataSize), 1u);
    EXPECT_EQ(dataSize, 6u) << "the new items replace the former ones, and begin at the first";
    EXPECT_EQ(GetNextDecryptedItem(&flags, &type, name, contentType, data), 1u);
    EXPECT_EQ(GetNextDecryptedItem(&flags, &type, name, contentType, data), 0u);
}

TEST_F(Decryption, RecipientsWhateverTheStatus)
{
    Output<TarnWideChar> recipients;
    std::uint32_t sensitivity = 0;
    daemon.play(payload(4, {}, {{"tr", sequence({"a", "\u00E4"})}, {"tc", sequence({"c"})}, {"ms", int32(-3)}}));
    EXPECT_EQ(GetRecipients("ENV", recipients, &sensitivity, log), 4);
    EXPECT_EQ(request(0), message("DE", {{"en", "ENV"}, {"po", "\1"}}));
    EXPECT_EQ(recipients.text(), u"a;\u00E4;c;");
    EXPECT_EQ(sensitivity, 0xFFFFFFFDu);
    EXPECT_EQ(lines(), (Lines{"Got socket: #", "Starting RemoteEnvelopeDecrypter...", "Setting envelope, size: 3",
                              "Message sensitivity: -3"}));
    daemon.play(payload(0, {}));
    EXPECT_EQ(GetRecipients("ENV", recipients, &sensitivity, log), 0);
    EXPECT_EQ(sensitivity, 0u) << "left out";
}

TEST_F(Decryption, PayloadStatusRecipientByRecipient)
{
    Output<TarnWideChar> texts;
    Output<char> enrollId, sender, codes;
    std::int32_t sensitivity = 9;
    daemon.play(payload(5, {}, {{"ms", int32(-1)}}));
    daemon.play(payload(11, {}, {{"ms", int32(2)}, {"lk", "l\u00E4nk"}, {"uu", "id-1"}, {"fm", "s@x"}}));
    daemon.play(payload(20, {}, {{"ms", int32(3)}, {"em", "please wait"}}));
    daemon.play(payload(18, {}, {{"se", int64(5'000'000'000)}}));
    daemon.play(payload(34, {}, {{"em", "unused"}}));
    EXPECT_EQ(GetPayloadStatus("ENV", wide(u"/c").c_str(), "a;b;;d;e", texts, enrollId, sender, codes, &sensitivity),
              34);
    EXPECT_EQ(request(0), message("DE", {{"en", "ENV"}, {"ep", "/c"}, {"to", "a"}}));
    EXPECT_EQ(request(2), message("DE", {{"en", "ENV"}, {"ep", "/c"}})) << "an empty recipient is asked for, unnamed";
    const std::u16string delimiter = u"{plugin_delimiter}";
    EXPECT_EQ(texts.text(),
              delimiter + u"l\u00E4nk" + delimiter + u"please wait" + delimiter + u"5000000000" + delimiter);
    EXPECT_EQ(codes.text(), "5;11;20;18;34");
    EXPECT_EQ(enrollId.text(), "id-1");
    EXPECT_EQ(sender.text(), "s@x");
    EXPECT_EQ(sensitivity, 2) << "the first that is not -1";
}

TEST_F(Decryption, PayloadStatusEndsAtAnUndefinedStatusOrAFailure)
{
    Output<TarnWideChar> texts;
    Output<char> enrollId, sender, codes;
    std::int32_t sensitivity = 9;
    daemon.play(payload(25, {}, {{"lk", "L"}, {"uu", "U"}}));
    daemon.play(payload(0, {}, {{"ms", int32(4)}}));
    EXPECT_EQ(GetPayloadStatus(nullptr, nullptr, "a;b;c", texts, enrollId, sender, codes, &sensitivity), 0);
    EXPECT_EQ(daemon.requests().size(), 2u);
    EXPECT_EQ(texts.text(), u"L{plugin_delimiter}");
    EXPECT_EQ(codes.text(), "25;0");
    EXPECT_EQ(sender.text(), "");

    Output<TarnWideChar> untouchedTexts;
    Output<char> untouchedCodes;
    daemon.play(payload(6, {}, {{"ms", int32(1)}}));
    daemon.play(message("ST"));
    EXPECT_EQ(GetPayloadStatus("E", nullptr, "a;b", untouchedTexts, enrollId, sender, untouchedCodes, &sensitivity), 6);
    EXPECT_EQ(sensitivity, 1);
    EXPECT_TRUE(untouchedTexts.untouched() && untouchedCodes.untouched());
}

TEST_F(Decryption, PayloadStatusOfManyRecipientsInEveryStatusThatHasNoText)
{
    Output<TarnWideChar> texts(200'000);
    Output<char> enrollId, sender, codes(200'000);
    std::int32_t sensitivity = 0;
    constexpr std::array statuses{5, 6, 7, 15, 16, 17, 19, 21, 26, 34};
    std::string expected;
    for (std::size_t i = 0; i < 500; ++i) {
        const int status = statuses[i % statuses.size()];
        daemon.play(payload(status, {}, {{"em", "not a text for the caller"}}));
        expected += (i > 0 ? ";" : "") + std::to_string(status);
    }
    EXPECT_EQ(
        GetPayloadStatus("E", nullptr, std::string(499, ';').c_str(), texts, enrollId, sender, codes, &sensitivity),
        34);
    EXPECT_EQ(codes.text(), expected) << "its log is copied nowhere, so no bound applies";
    EXPECT_EQ(texts.text().size(), 499 * std::string_view(TARN_LIST_DELIMITER).size()) << "delimiters and no text";
    EXPECT_TRUE(enrollId.untouched() && sender.untouched());
}
