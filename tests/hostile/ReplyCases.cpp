#include "ReplyCases.h"

#include "Entries.h"
#include "TarnRemoteClient.h"
#include "Wire.h"

#include <algorithm>

using wire::float64;
using wire::int32;
using wire::int64;
using wire::shortInt;

namespace {

void append(Value& whole, const std::string& head, const Value& value, bool ignored)
{
    whole.bytes += head;
    whole.lengths.push_back({whole.bytes.size(), ignored});
    whole.bytes += int32(static_cast<std::int64_t>(value.bytes.size()));
    for (const Value::Length& length : value.lengths) {
        whole.lengths.push_back({whole.bytes.size() + length.at, false});
    }
    whole.bytes += value.bytes;
}

// Room for whatever a reply here may hold.
char* narrow()
{
    static std::vector<char> buffer(1 << 22);
    return buffer.data();
}

TarnWideChar* wide(std::size_t i)
{
    static std::vector<std::vector<TarnWideChar>> buffers(4, std::vector<TarnWideChar>(1 << 22));
    return buffers[i].data();
}

std::int32_t getVersion(char* log)
{
    return GetTarnVersion(narrow(), log);
}

std::int32_t stop(char* log)
{
    return StopTarnDaemon(log);
}

std::int32_t logIn(char* log)
{
    return AuthenticateUser("u@x", "secret", u"/c", narrow(), log);
}

std::int32_t verify(char* log)
{
    return VerifyLarchConfig("s@x", u"/c", log);
}

std::int32_t encrypt(char* log)
{
    return EncryptEnvelopeOnline("a;b", "", "", "s@x", "secret", "message", u"/c", wide(0), wide(1), wide(2), wide(3),
                                 "", "0", log);
}

std::int32_t decrypt(char* log)
{
    return DecryptEnvelope("secret", "ENVELOPE", nullptr, "r@x", nullptr, narrow(), 0, wide(0), wide(1), log);
}

std::int32_t getPayloadStatus(char*)
{
    std::int32_t sensitivity = 0;
    return GetPayloadStatus("ENVELOPE", nullptr, "r@x", wide(0), narrow(), narrow(), narrow(), &sensitivity);
}

std::int32_t getRecipients(char* log)
{
    std::uint32_t sensitivity = 0;
    return GetRecipients("ENVELOPE", wide(0), &sensitivity, log);
}

std::int32_t getLocks(char* log)
{
    std::uint32_t count = 0;
    return GetLockExpireStatus("secret", "ENVELOPE", nullptr, narrow(), narrow(), wide(0), narrow(), narrow(), &count,
                               log);
}

std::int32_t setLocks(char* log)
{
    const char* recipient = "r@x";
    const std::int32_t lock = 1;
    const TarnWideChar* message = u"locked";
    const std::int64_t expiryDate = 5;
    return SetLockExpireStatus("secret", "ENVELOPE", nullptr, &recipient, &lock, &message, &expiryDate, 1, log);
}

std::int32_t getEntries(char* log)
{
    TarnRecipientEntry* entries = nullptr;
    const std::uint32_t wanted = 10;
    std::uint32_t count = 0;
    std::uint32_t total = 0;
    const std::int32_t status =
        GetRecipientEntries("u@x", "secret", nullptr, &entries, 0, &wanted, &count, &total, "", 1, log);
    releaseEntries(entries, count);
    return status;
}

std::int32_t setEntries(char* log)
{
    const char* name = "to";
    const char* value = "r@x";
    return SetRecipientEntries("secret", nullptr, &name, &value, 1, 1, u"locked", 5, log);
}

std::int32_t getFeatures(char* log)
{
    std::uint8_t flags[3] = {};
    return GetKeyServerInfo(u"/c", &flags[0], &flags[1], &flags[2], log);
}

std::int32_t getLocales(char* log)
{
    return GetSupportedLocales(u"/c", wide(0), log);
}

std::int32_t getBodies(char* log)
{
    return GetLocalizedMessageBody(u"/c", "en", narrow(), narrow(), log);
}

std::int32_t getEnrollParameters(char* log)
{
    std::int32_t numbers[4];
    return GetEnrollParameters("u@x", "https://k", u"en", &numbers[0], &numbers[1], &numbers[2], &numbers[3], wide(0),
                               wide(1), log);
}

std::int32_t enroll(char* log)
{
    return UserEnroll("u@x", "https://k", u"F", u"L", u"secret", u"en", "id", "s@x", 0, 1, u"phrase", u"q1", u"q2",
                      u"q3", u"a1", u"a2", u"a3", 60, "", narrow(), log);
}

} // namespace

Value text(std::string bytes)
{
    return {.bytes = std::move(bytes), .lengths = {}};
}

Value number(std::string bytes)
{
    return {.bytes = std::move(bytes), .lengths = {}, .isNumber = true};
}

Value sequence(const std::vector<Value>& items)
{
    Value whole;
    for (const Value& item : items) {
        append(whole, "", item, false);
    }
    return whole;
}

Value parameters(const std::vector<std::pair<std::string, Value>>& all)
{
    Value whole;
    for (const auto& [tag, value] : all) {
        append(whole, tag, value, value.isNumber);
    }
    return whole;
}

std::string ReplyCase::goodReply() const
{
    return wire::framed(code, fields.bytes);
}

const std::vector<ReplyCase>& replyCases()
{
    const Value map = sequence({text("key"), text("one"), text("next"), text("two")});
    const Value list = sequence({text("a@x"), text("b@x")});
    const auto reply = [](std::int64_t status, std::vector<std::pair<std::string, Value>> own) {
        own.insert(own.begin(), {{"cd", text("ok")}, {"st", number(shortInt(status))}, {"em", text("fine")}});
        return parameters(own);
    };
    const auto loginReply = [&](std::vector<std::pair<std::string, Value>> own) {
        own.insert(own.begin(), {{"lk", text("link")}, {"se", number(int64(7))}, {"we", number(int32(1))}});
        return reply(0, own);
    };
    const Value localized = parameters({{"lc", text("en")}, {"rc", list}, {"en", text("ENV")}, {"tb", text("TEXT")}});
    const Value item = parameters({{"ty", number(int32(1))},
                                   {"fl", number(int32(2))},
                                   {"da", text("data")},
                                   {"on", text("name")},
                                   {"fc", text("text/plain")}});
    const Value tracked = parameters({{"da", sequence({text("msgId"), text("m1"), text("to"), text("r@x")})}});
    const Value status = reply(
        0, {{"v ", text("7.6")}, {"bn", number(int32(1))}, {"mm", number(int64(2))}, {"sa", number(float64(.5))}});
    const Value envelope = reply(0, {{"en", text("ENV")},
                                     {"ct", text("tt")},
                                     {"le", sequence({localized, localized})},
                                     {"an", text("AN")},
                                     {"th", text("HTML")},
                                     {"tb", text("TEXT")}});
    const Value payload = loginReply({{"da", sequence({item, item})},
                                      {"ms", number(int32(1))},
                                      {"kt", map},
                                      {"ku", text("key")},
                                      {"ec", map},
                                      {"fm", text("s@x")},
                                      {"tr", list},
                                      {"tc", list}});
    const Value information = loginReply(
        {{"id", text("m1")}, {"si", number(int32(0))}, {"mx", number(int32(1))}, {"ri", sequence({tracked, tracked})}});
    const Value texts = reply(0, {{"sl", map}, {"th", map}, {"tb", map}});
    const Value form = reply(0, {{"su", number(int32(0))}, {"qn", number(int32(3))}, {"al", map}, {"sq", map}});
    static const std::vector<ReplyCase> all{
        {"GetTarnVersion", "ST", status, getVersion},
        {.name = "StopTarnDaemon", .code = "SD", .fields = reply(0, {}), .call = stop, .success = 1, .failure = 0},
        {.name = "AuthenticateUser",
         .code = "LS",
         .fields = loginReply({{"sl", map}}),
         .call = logIn,
         .failureLine = "Unknown exception occured, setting status to -1. GetLastError() : "},
        {"VerifyLarchConfig", "VC", reply(0, {{"ec", map}}), verify},
        {"EncryptEnvelopeOnline", "BE", envelope, encrypt},
        {"DecryptEnvelope", "DE", payload, decrypt},
        {.name = "GetPayloadStatus", .code = "DE", .fields = payload, .call = getPayloadStatus, .failureLine = ""},
        {"GetRecipients", "DE", payload, getRecipients},
        {"GetLockExpireStatus", "MI", information, getLocks},
        {"SetLockExpireStatus", "SI", loginReply({}), setLocks},
        {"GetRecipientEntries", "MI", information, getEntries},
        {"SetRecipientEntries", "SI", loginReply({}), setEntries},
        {"GetKeyServerInfo", "KV", reply(0, {{"kd", map}}), getFeatures},
        {"GetSupportedLocales", "LT", texts, getLocales},
        {"GetLocalizedMessageBody", "LT", texts, getBodies},
        {"GetEnrollParameters", "EP", form, getEnrollParameters},
        {"UserEnroll", "EU", reply(0, {{"ve", map}, {"el", number(int32(1))}}), enroll}};
    return all;
}

const ReplyCase& replyCaseOf(const std::string& name)
{
    return *std::ranges::find(replyCases(), name, &ReplyCase::name);
}
