// The whole story of a user, through all 21 exports, against the stand-in daemon: tests/story/run starts that and this.
#include "support/ExportTest.h"

#include <numeric>

#ifdef _WIN32
#include <objbase.h>
#endif

namespace {

using Text = Output<char>;
using WideTextOut = Output<TarnWideChar>;

constexpr std::size_t roomy = 1 << 20;

std::string base64(const std::string& bytes)
{
    static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i + 2 < bytes.size(); i += 3) {
        const auto at = [&](std::size_t k) { return static_cast<unsigned char>(bytes[i + k]); };
        const unsigned group = static_cast<unsigned>(at(0) << 16 | at(1) << 8 | at(2));
        for (int shift = 18; shift >= 0; shift -= 6) {
            text += digits[group >> shift & 63];
        }
        text += i % 57 == 54 ? "\r\n" : "";
    }
    return text;
}

std::string allBytes()
{
    std::string bytes(768, '\0'); // a multiple of three
    std::iota(bytes.begin(), bytes.end(), '\0');
    return bytes;
}

struct Item
{
    std::string name, contentType, data;
};

std::vector<Item> takeItems()
{
    std::vector<Item> items;
    std::uint32_t nameSize = 0, typeLength = 0, dataSize = 0, flags = 0, type = 0;
    while (GetNextDecryptedItemInfo(&nameSize, &typeLength, &dataSize) == 1) {
        std::vector<std::uint8_t> name(nameSize + 1), data(dataSize + 1);
        std::vector<char> contentType(typeLength + 1);
        EXPECT_EQ(GetNextDecryptedItem(&flags, &type, name.data(), contentType.data(), data.data()), 1u);
        items.push_back({{name.begin(), name.end() - 1}, contentType.data(), {data.begin(), data.end() - 1}});
    }
    return items;
}

std::string narrow(const std::u16string& text)
{
    return {text.begin(), text.end()};
}

void release(void* memory)
{
#ifdef _WIN32
    CoTaskMemFree(memory);
#else
    std::free(memory);
#endif
}

} // namespace

TEST(Story, FromTheFirstLoginToTheStop)
{
    const TarnWideChar* const noFile = nullptr;
    const Wide nothing;
    Text log(TARN_LOG_SIZE), text, config(roomy);
    WideTextOut envelope(roomy), tb(roomy), th(roomy), an, ku, from;
    EXPECT_EQ(StartTarnDaemon("tarn.jar", log), 0) << "no Java at its fixed place";
    ASSERT_EQ(GetTarnVersion(text, log), 0) << log.text();
    EXPECT_NE(text.text().find('-'), std::string::npos);
    EXPECT_EQ(AuthenticateUser("alice@example.com", "wrong", noFile, text, log), 2);
    EXPECT_EQ(AuthenticateUser("alice@example.com", "wonderland", noFile, text, log), 0);
    EXPECT_EQ(VerifyLarchConfig("alice@example.com", noFile, log), 0);

    std::uint8_t readBy = 0, expiration = 0, localized = 0;
    EXPECT_EQ(GetKeyServerInfo(nothing.c_str(), &readBy, &expiration, &localized, log), 0);
    EXPECT_EQ(readBy + expiration + localized, 3);
    WideTextOut locales(roomy);
    EXPECT_EQ(GetSupportedLocales(noFile, locales, log), 0);
    EXPECT_NE(locales.text().find(u"ja: \u65E5\u672C\u8A9E; "), std::u16string::npos);
    Text body(roomy), html(roomy);
    EXPECT_EQ(GetLocalizedMessageBody(noFile, "ja", body, html, log), 0);
    EXPECT_FALSE(body.text().empty() || html.text().empty());

    const std::string mime =
        "From: alice@example.com\r\nTo: bob@example.com, nora@example.com\r\nSubject: Story\r\n"
        "Sensitivity: Private\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n"
        "--b\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nGr\xC3\xBC\xC3\x9F"
        "e \xF0\x9F\x94\x92\r\n"
        "--b\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n"
        "Content-Disposition: attachment; filename*=UTF-8''%E2%82%AC.bin\r\n\r\n" +
        base64(allBytes()) + "\r\n--b--\r\n";
    ASSERT_EQ(EncryptEnvelopeOnline("bob@example.com;nora@example.com", "", "", "alice@example.com", "wonderland",
                                    mime.c_str(), noFile, envelope, tb, th, an, "", "1", log),
              0)
        << log.text();
    const std::string sealed = narrow(envelope.text());
    EXPECT_EQ(sealed.find(base64(allBytes()).substr(0, 40)), std::string::npos) << "the message is not in the envelope";

    WideTextOut recipients(roomy);
    std::uint32_t sensitivity = 9;
    EXPECT_EQ(GetRecipients(sealed.c_str(), recipients, &sensitivity, log), 0);
    EXPECT_EQ(recipients.text(), u"bob@example.com;nora@example.com;");
    EXPECT_EQ(sensitivity, 2u);

    const auto decrypt = [&](const char* recipient, const char* password) {
        return DecryptEnvelope(password, sealed.c_str(), noFile, recipient, nullptr, config, 0, ku, from, log);
    };
    EXPECT_EQ(decrypt("bob@example.com", "wrong"), 2);
    EXPECT_TRUE(takeItems().empty());
    ASSERT_EQ(decrypt("bob@example.com", "builder"), 0) << log.text();
    EXPECT_EQ(from.text(), u"alice@example.com");
    const std::vector<Item> items = takeItems();
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].data, "Gr\xC3\xBC\xC3\x9F"
                             "e \xF0\x9F\x94\x92");
    EXPECT_EQ(items[1].name, "\xE2\x82\xAC.bin");
    EXPECT_EQ(items[1].data, allBytes());

    // Nora has no account yet: she enrolls with the id that comes with the status, and opens what waited for her.
    WideTextOut texts(roomy);
    Text enrollId, sender, codes;
    std::int32_t level = 9;
    EXPECT_EQ(GetPayloadStatus(sealed.c_str(), noFile, "bob@example.com;nora@example.com", texts, enrollId, sender,
                               codes, &level),
              11);
    EXPECT_EQ(codes.text(), "5;11");
    EXPECT_EQ(level, 2);
    std::int32_t saml = 9, oneClick = 9, questions = 9, editable = 9;
    WideTextOut formLocales(roomy), choices(roomy);
    EXPECT_EQ(GetEnrollParameters("nora@example.com", "https://keys.example.com", wide(u"de").c_str(), &saml, &oneClick,
                                  &questions, &editable, formLocales, choices, log),
              0);
    EXPECT_EQ((std::array{saml, oneClick, questions}), (std::array{0, 0, 3}));
    const auto enroll = [&](std::int32_t stage, const char* id) {
        return UserEnroll("nora@example.com", "https://keys.example.com", wide(u"Nora").c_str(),
                          wide(u"N\u00F6ll").c_str(), wide(u"s\u00E9same42").c_str(), wide(u"de").c_str(), id,
                          sender.text().c_str(), 0, stage, nothing.c_str(), wide(u"Pet?").c_str(),
                          wide(u"Town?").c_str(), wide(u"Song?").c_str(), wide(u"Rex").c_str(),
                          wide(u"K\u00F6ln").c_str(), wide(u"\U0001F512").c_str(), 60, "24h", text, log);
    };
    EXPECT_EQ(enroll(0, "no such id"), 107);
    EXPECT_EQ(enroll(0, enrollId.text().c_str()), 0) << text.text();
    EXPECT_NE(text.text().find("enrollmentStage: 1; "), std::string::npos);
    EXPECT_EQ(decrypt("nora@example.com", "s\xC3\xA9same42"), 25) << "not confirmed yet";
    EXPECT_EQ(enroll(1, enrollId.text().c_str()), 0);
    EXPECT_EQ(log.text().find("same42"), std::string::npos);
    EXPECT_EQ(AuthenticateUser("nora@example.com", "s\xC3\xA9same42", noFile, text, log), 0);
    EXPECT_EQ(decrypt("nora@example.com", "s\xC3\xA9same42"), 0) << log.text();
    EXPECT_EQ(takeItems().size(), 2u);

    // Alice follows, locks and expires what she sent.
    Text addresses(roomy), locks(roomy), dates(roomy), messageId;
    WideTextOut messages(roomy);
    std::uint32_t count = 0;
    const auto readTracking = [&] {
        EXPECT_EQ(GetLockExpireStatus("wonderland", sealed.c_str(), noFile, addresses, locks, messages, dates,
                                      messageId, &count, log),
                  0);
        return locks.text();
    };
    EXPECT_EQ(readTracking(), "0{plugin_delimiter}0");
    const char* whom[] = {"bob@example.com"};
    const std::int32_t lock[] = {1};
    const Wide reason = wide(u"Erst anrufen \u2706");
    const TarnWideChar* reasons[] = {reason.c_str()};
    const std::int64_t never[] = {0};
    EXPECT_EQ(SetLockExpireStatus("wonderland", sealed.c_str(), noFile, whom, lock, reasons, never, 1, log), 0);
    EXPECT_EQ(readTracking(), addresses.text().starts_with("bob") ? "1{plugin_delimiter}0" : "0{plugin_delimiter}1");
    EXPECT_EQ(decrypt("bob@example.com", "builder"), 20);

    const std::string id = messageId.text();
    const char* fields[] = {"msgId", "to"};
    const char* values[] = {id.c_str(), "bob@example.com"};
    EXPECT_EQ(SetRecipientEntries("wonderland", noFile, fields, values, 2, 0, nothing.c_str(), 1000, log), 0);
    EXPECT_EQ(decrypt("bob@example.com", "builder"), 19) << "unlocked, and expired in 1970";
    EXPECT_EQ(SetRecipientEntries("wonderland", noFile, fields, values, 2, 0, nothing.c_str(), 0, log), 0);
    EXPECT_EQ(decrypt("bob@example.com", "builder"), 0);

    TarnRecipientEntry* entries = nullptr;
    const std::uint32_t most = 10;
    std::uint32_t entryCount = 0, totalCount = 0;
    EXPECT_EQ(GetRecipientEntries("alice@example.com", "wonderland", noFile, &entries, 0, &most, &entryCount,
                                  &totalCount, "to", 1, log),
              0);
    ASSERT_EQ(entryCount, 2u);
    EXPECT_EQ(totalCount, 2u);
    EXPECT_EQ(Wide(entries[0].recipient), wide(u"bob@example.com"));
    EXPECT_GE(entries[0].numTries, 5) << "refused attempts count";
    EXPECT_GT(entries[0].firstOpenDate, entries[0].createDate - 1);
    std::vector<TarnRecipientEntry> grown(entries, entries + entryCount);
    grown.resize(entryCount + 1);
    TarnRecipientEntry again = entries[1];
    EXPECT_EQ(AddOrUpdateRemoteRecipientEntries(grown.data(), &entryCount, &again), 0);
    for (std::uint32_t i = 0; i < entryCount; ++i) {
        for (TarnWideChar* one :
             {entries[i].subject, entries[i].recipient, entries[i].statusMessage, entries[i].messageId}) {
            release(one);
        }
    }
    release(entries);

    EXPECT_EQ(StopTarnDaemon(log), 1);
    EXPECT_EQ(GetTarnVersion(text, log), -1) << "nobody listens any more";
}
