#include "Exports.h"

#include "Replies.h"
#include "TarnRemoteClient.h"

#include <cstdlib>

namespace Bench {

namespace {

char logText[TARN_LOG_SIZE];
char out[1 << 20];
TarnWideChar wideOut[12 << 20];
TarnWideChar smallOut[3][1000];
const char* const sender = "ann@example.org";
const char* const password = "secret";
const TarnWideChar* const configFile = u"config.xml";

std::int32_t encrypt(const std::string& recipients, const std::string& message)
{
    return EncryptEnvelopeOnline(recipients.c_str(), "", "", sender, password, message.c_str(), configFile, wideOut,
                                 smallOut[0], smallOut[1], smallOut[2], "", "0", logText);
}

std::int32_t decrypt()
{
    return DecryptEnvelope(password, "envelope", configFile, sender, "", out, 0, smallOut[0], smallOut[1], logText);
}

std::int32_t payloadStatus(const std::string& recipients)
{
    static char enrollId[100];
    static char from[100];
    std::int32_t sensitivity = 0;
    return GetPayloadStatus("envelope", configFile, recipients.c_str(), wideOut, enrollId, from, out, &sensitivity);
}

// Also releases what it returns.
std::int32_t recipientEntries()
{
    TarnRecipientEntry* entries = nullptr;
    const std::uint32_t wanted = 1'000'000;
    std::uint32_t count = 0;
    std::uint32_t total = 0;
    const std::int32_t status = GetRecipientEntries(sender, password, configFile, &entries, 0, &wanted, &count, &total,
                                                    "createDate", 1, logText);
    for (std::uint32_t i = 0; i < count; ++i) {
        for (TarnWideChar* text :
             {entries[i].subject, entries[i].recipient, entries[i].statusMessage, entries[i].messageId}) {
            std::free(text);
        }
    }
    std::free(entries);
    return status;
}

std::int32_t lockExpireStatus()
{
    return GetLockExpireStatus(password, "envelope", configFile, out, out + 1000, wideOut, out + 2000, nullptr, nullptr,
                               logText);
}

std::int32_t lock()
{
    const std::int32_t locked = 1;
    const TarnWideChar* const message = u"recalled";
    const std::int64_t expiry = 0;
    return SetLockExpireStatus(password, "envelope", configFile, &sender, &locked, &message, &expiry, 1, logText);
}

std::int32_t lockRecord()
{
    const char* const names[] = {"msgId", "to"};
    const char* const values[] = {"message-1", "bob@example.org"};
    return SetRecipientEntries(password, configFile, names, values, 2, 1, u"recalled", 0, logText);
}

std::int32_t recipients()
{
    std::uint32_t sensitivity = 0;
    return GetRecipients("envelope", wideOut, &sensitivity, logText);
}

std::int32_t keyServerInfo()
{
    std::uint8_t flags[3] = {};
    return GetKeyServerInfo(configFile, &flags[0], &flags[1], &flags[2], logText);
}

std::int32_t supportedLocales()
{
    return GetSupportedLocales(configFile, wideOut, logText);
}

std::int32_t messageBody()
{
    return GetLocalizedMessageBody(configFile, "en", out, out + 1000, logText);
}

std::int32_t enrollForm()
{
    std::int32_t numbers[4] = {};
    return GetEnrollParameters(sender, "https://keys.example.org", u"en", &numbers[0], &numbers[1], &numbers[2],
                               &numbers[3], smallOut[0], smallOut[1], logText);
}

std::int32_t enroll()
{
    return UserEnroll(sender, "https://keys.example.org", u"Ann", u"Example", u"secret", u"en", "id-1",
                      "bob@example.org", 0, 0, u"phrase", u"1", u"2", u"3", u"a", u"b", u"c", 60, "HH:mm", out,
                      logText);
}

std::string recipientList(std::size_t count)
{
    std::string list;
    for (std::size_t i = 0; i < count; ++i) {
        list += (i == 0 ? "r" : ";r") + std::to_string(100'000 + i) + "@example.org";
    }
    return list;
}

Exchange encryption(const std::string& name, std::size_t recipientCount, std::size_t messageSize,
                    const std::string& reply)
{
    return {name, reply, 0, [list = recipientList(recipientCount), message = std::string(messageSize, 'm')] {
                return encrypt(list, message);
            }};
}

Exchange statuses(const std::string& name, std::size_t recipientCount)
{
    return {name, lockedPayload(), 20, [list = recipientList(recipientCount)] { return payloadStatus(list); }};
}

} // namespace

std::vector<Exchange> exportExchanges()
{
    const std::string envelope200 = paddedTo(200, smallEnvelope);
    return {
        // Comes first: it builds the client version that the others send.
        {"GetTarnVersion", daemonStatus(), 0, [] { return GetTarnVersion(out, logText); }},
        // This message fills the request to 200 bytes.
        encryption("EncryptEnvelopeOnline 200 B", 1, 81, envelope200),
        encryption("EncryptEnvelopeOnline 1 MB", 1, 1'000'000, envelope200),
        encryption("EncryptEnvelopeOnline 10 MB", 1, 10'000'000, envelope200),
        {"DecryptEnvelope 200 B", paddedTo(200, smallPayload), 0, decrypt},
        {"DecryptEnvelope 1 MB", payload(1, 1'000'000), 0, decrypt},
        {"DecryptEnvelope 10 MB", payload(1, 10'000'000), 0, decrypt},
        encryption("EncryptEnvelopeOnline 10 MB envelope back", 1, 100, envelope(10'000'000)),
        encryption("EncryptEnvelopeOnline 200 recipients", 200, 100, envelope200),
        {"GetRecipientEntries 10,000 records", trackingRecords(10'000), 0, recipientEntries},
        {"GetSupportedLocales 10,000 entries", localizedTexts(10'000), 0, supportedLocales},
        {"AuthenticateUser", loginSession(), 0,
         [] { return AuthenticateUser(sender, password, configFile, out, logText); }},
        {"VerifyLarchConfig", configErrors(3), 0, [] { return VerifyLarchConfig(sender, configFile, logText); }},
        statuses("GetPayloadStatus", 1),
        {"GetRecipients", paddedTo(200, smallPayload), 0, recipients},
        {"GetLockExpireStatus", trackingRecords(1), 0, lockExpireStatus},
        {"SetLockExpireStatus", plainReply("SI"), 0, lock},
        {"GetRecipientEntries", trackingRecords(1), 0, recipientEntries},
        {"SetRecipientEntries", plainReply("SI"), 0, lockRecord},
        {"GetKeyServerInfo", keyServer(5), 0, keyServerInfo},
        {"GetSupportedLocales", localizedTexts(5), 0, supportedLocales},
        {"GetLocalizedMessageBody", localizedTexts(5), 0, messageBody},
        {"GetEnrollParameters", enrollParameters(5), 0, enrollForm},
        {"UserEnroll", enrolled(1), 0, enroll},
    };
}

std::vector<Exchange> growthExchanges()
{
    std::vector<Exchange> exchanges;
    const auto name = [](const char* what, std::size_t size) {
        return "growth/" + std::string(what) + "/" + std::to_string(size);
    };
    for (const std::size_t size : {10u, 100u, 1'000u, 10'000u, 100'000u}) {
        exchanges.push_back(statuses(name("recipient (GetPayloadStatus)", size), size));
        exchanges.push_back({name("item (DecryptEnvelope)", size), payload(size, 10), 0, decrypt});
        exchanges.push_back({name("map entry (GetSupportedLocales)", size), localizedTexts(size), 0, supportedLocales});
        exchanges.push_back({name("record (GetRecipientEntries)", size), trackingRecords(size), 0, recipientEntries});
    }
    // The log's bound ends this walk.
    for (const std::size_t size : {10u, 100u, 400u}) {
        exchanges.push_back(encryption(name("recipient (EncryptEnvelopeOnline)", size), size, 100, envelope(20)));
    }
    return exchanges;
}

} // namespace Bench
