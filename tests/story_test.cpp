// The whole story of a user, through all exports, against the stand-in daemon: tests/story/run starts that and this.
#include "support/Entries.h"
#include "support/ExportTest.h"

namespace {

using Text = Output<char>;
using WideTextOut = Output<TarnWideChar>;

constexpr std::size_t roomy = 1 << 20;
constexpr const TarnWideChar* noFile = nullptr;
constexpr const char* alice = "alice@example.com";
constexpr const char* bob = "bob@example.com";
constexpr const char* nora = "nora@example.com";
constexpr const char* noraPassword = "s\u00E9same42";
constexpr const char* greeting = "Gr\u00FC\u00DFe \U0001F512";
const std::string binary("\0\1\r\n\x80\xFE\xFF\0", 8);
constexpr const char* binaryInBase64 = "AAENCoD+/wA=";

std::string narrow(const std::u16string& text)
{
    return {text.begin(), text.end()};
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

// The story's chapters, told in order by the test below.
class Story : public testing::Test
{
protected:
    void logIn()
    {
        EXPECT_EQ(StartTarnDaemon("tarn.jar", log), 0) << "no Java at its fixed place";
        ASSERT_EQ(GetTarnVersion(text, log), 0) << log.text();
        EXPECT_NE(text.text().find('-'), std::string::npos);
        EXPECT_EQ(AuthenticateUser(alice, "wrong", noFile, text, log), 2);
        EXPECT_EQ(AuthenticateUser(alice, "wonderland", noFile, text, log), 0);
        EXPECT_EQ(VerifyLarchConfig(alice, noFile, log), 0);
    }

    void askTheKeyServer()
    {
        std::uint8_t readBy = 0, expiration = 0, localized = 0;
        EXPECT_EQ(GetKeyServerInfo(noFile, &readBy, &expiration, &localized, log), 0);
        EXPECT_EQ(readBy + expiration + localized, 3);
        WideTextOut locales(roomy);
        EXPECT_EQ(GetSupportedLocales(noFile, locales, log), 0);
        EXPECT_NE(locales.text().find(u"ja: \u65E5\u672C\u8A9E; "), std::u16string::npos);
        Text body(roomy), html(roomy);
        EXPECT_EQ(GetLocalizedMessageBody(noFile, "ja", body, html, log), 0);
        EXPECT_FALSE(body.text().empty() || html.text().empty());
    }

    void encrypt()
    {
        const std::string mime =
            "From: alice@example.com\r\nTo: bob@example.com, nora@example.com\r\nSubject: Story\r\n"
            "Sensitivity: Private\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n"
            "--b\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n" +
            std::string(greeting) +
            "\r\n--b\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n"
            "Content-Disposition: attachment; filename*=UTF-8''%E2%82%AC.bin\r\n\r\n" +
            binaryInBase64 + "\r\n--b--\r\n";
        WideTextOut envelope(roomy), tb(roomy), th(roomy), an;
        ASSERT_EQ(EncryptEnvelopeOnline("bob@example.com;nora@example.com", "", "", alice, "wonderland", mime.c_str(),
                                        noFile, envelope, tb, th, an, "", "1", log),
                  0)
            << log.text();
        sealed = narrow(envelope.text());
        EXPECT_EQ(sealed.find(binaryInBase64), std::string::npos) << "the message is not in it";

        WideTextOut recipients(roomy);
        std::uint32_t sensitivity = 9;
        EXPECT_EQ(GetRecipients(sealed.c_str(), recipients, &sensitivity, log), 0);
        EXPECT_EQ(recipients.text(), u"bob@example.com;nora@example.com;");
        EXPECT_EQ(sensitivity, 2u);
    }

    void decryptAsBob()
    {
        EXPECT_EQ(decrypt(bob, "wrong"), 2);
        EXPECT_TRUE(takeItems().empty());
        ASSERT_EQ(decrypt(bob, "builder"), 0) << log.text();
        EXPECT_EQ(from.text(), u"alice@example.com");
        const std::vector<Item> items = takeItems();
        ASSERT_EQ(items.size(), 2u);
        EXPECT_EQ(items[0].data, greeting);
        EXPECT_EQ(items[1].name, "\u20AC.bin");
        EXPECT_EQ(items[1].data, binary);
    }

    // Nora has no account yet: she enrolls with the id that comes with the status, and opens what waited for her.
    void enrollNora()
    {
        WideTextOut texts(roomy);
        Text enrollId, codes;
        std::int32_t level = 9;
        EXPECT_EQ(GetPayloadStatus(sealed.c_str(), noFile, "bob@example.com;nora@example.com", texts, enrollId, sender,
                                   codes, &level),
                  11);
        EXPECT_EQ(codes.text(), "5;11");
        EXPECT_EQ(level, 2);
        std::int32_t saml = 9, oneClick = 9, questions = 9, editable = 9;
        WideTextOut locales(roomy), choices(roomy);
        EXPECT_EQ(GetEnrollParameters(nora, "https://keys.example.com", wide(u"de").c_str(), &saml, &oneClick,
                                      &questions, &editable, locales, choices, log),
                  0);
        EXPECT_EQ((std::array{saml, oneClick, questions}), (std::array{0, 0, 3}));
        EXPECT_EQ(enroll(0, "no such id"), 107);
        EXPECT_EQ(enroll(0, enrollId.text().c_str()), 0) << text.text();
        EXPECT_NE(text.text().find("enrollmentStage: 1; "), std::string::npos);
        EXPECT_EQ(decrypt(nora, noraPassword), 25) << "not confirmed yet";
        EXPECT_EQ(enroll(1, enrollId.text().c_str()), 0);
        EXPECT_EQ(log.text().find("same42"), std::string::npos);
        EXPECT_EQ(AuthenticateUser(nora, noraPassword, noFile, text, log), 0);
        EXPECT_EQ(decrypt(nora, noraPassword), 0) << log.text();
        EXPECT_EQ(takeItems().size(), 2u);
    }

    void lockAndExpire()
    {
        const std::string former = readLocks();
        EXPECT_EQ(former, "0{plugin_delimiter}0");
        const std::int32_t lock = 1;
        const Wide reason = wide(u"Erst anrufen \u2706");
        const TarnWideChar* reasons[] = {reason.c_str()};
        const std::int64_t never = 0;
        EXPECT_EQ(SetLockExpireStatus("wonderland", sealed.c_str(), noFile, &bob, &lock, reasons, &never, 1, log), 0);
        EXPECT_EQ(readLocks(), addresses.text().starts_with("bob") ? "1{plugin_delimiter}0" : "0{plugin_delimiter}1");
        EXPECT_EQ(decrypt(bob, "builder"), 20);

        const std::string id = messageId.text();
        const char* fields[] = {"msgId", "to"};
        const char* values[] = {id.c_str(), bob};
        EXPECT_EQ(SetRecipientEntries("wonderland", noFile, fields, values, 2, 0, nullptr, 1000, log), 0);
        EXPECT_EQ(decrypt(bob, "builder"), 19) << "unlocked, and expired in 1970";
        EXPECT_EQ(SetRecipientEntries("wonderland", noFile, fields, values, 2, 0, nullptr, 0, log), 0);
        EXPECT_EQ(decrypt(bob, "builder"), 0);
    }

    void track()
    {
        TarnRecipientEntry* entries = nullptr;
        const std::uint32_t most = 10;
        std::uint32_t count = 0, total = 0;
        EXPECT_EQ(GetRecipientEntries(alice, "wonderland", noFile, &entries, 0, &most, &count, &total, "to", 1, log),
                  0);
        ASSERT_EQ(count, 2u);
        EXPECT_EQ(total, 2u);
        EXPECT_EQ(Wide(entries[0].recipient), wide(u"bob@example.com"));
        EXPECT_GE(entries[0].numTries, 5) << "refused attempts count";
        EXPECT_GE(entries[0].firstOpenDate, entries[0].createDate);
        std::vector<TarnRecipientEntry> grown(entries, entries + count);
        grown.resize(count + 1);
        TarnRecipientEntry again = entries[1];
        EXPECT_EQ(AddOrUpdateRemoteRecipientEntries(grown.data(), &count, &again), 0);
        releaseEntries(entries, count);
    }

    void stop()
    {
        EXPECT_EQ(StopTarnDaemon(log), 1);
        EXPECT_EQ(GetTarnVersion(text, log), -1) << "nobody listens any more";
    }

private:
    std::int32_t decrypt(const char* recipient, const char* password)
    {
        return DecryptEnvelope(password, sealed.c_str(), noFile, recipient, nullptr, config, 0, ku, from, log);
    }

    std::int32_t enroll(std::int32_t stage, const char* id)
    {
        return UserEnroll(nora, "https://keys.example.com", wide(u"Nora").c_str(), wide(u"N\u00F6ll").c_str(),
                          wide(u"s\u00E9same42").c_str(), wide(u"de").c_str(), id, sender.text().c_str(), 0, stage,
                          nullptr, wide(u"Pet?").c_str(), wide(u"Town?").c_str(), wide(u"Song?").c_str(),
                          wide(u"Rex").c_str(), wide(u"K\u00F6ln").c_str(), wide(u"\U0001F512").c_str(), 60, "24h",
                          text, log);
    }

    std::string readLocks()
    {
        Text locks(roomy), dates(roomy);
        WideTextOut messages(roomy);
        std::uint32_t count = 0;
        EXPECT_EQ(GetLockExpireStatus("wonderland", sealed.c_str(), noFile, addresses, locks, messages, dates,
                                      messageId, &count, log),
                  0);
        return locks.text();
    }

    Text log{TARN_LOG_SIZE}, text, config{roomy}, sender, addresses{roomy}, messageId;
    WideTextOut ku, from;
    std::string sealed;
};

} // namespace

TEST_F(Story, FromTheFirstLoginToTheStop)
{
    ASSERT_NO_FATAL_FAILURE(logIn());
    askTheKeyServer();
    ASSERT_NO_FATAL_FAILURE(encrypt());
    ASSERT_NO_FATAL_FAILURE(decryptAsBob());
    enrollNora();
    lockAndExpire();
    ASSERT_NO_FATAL_FAILURE(track());
    stop();
}
