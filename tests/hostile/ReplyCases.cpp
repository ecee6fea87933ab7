#include "ReplyCases.h"

#include "Entries.h"
#include "TarnRemoteClient.h"
#include "Wire.h"

#include <algorithm>

using namespace wire;

namespace {

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

} // namespace

const std::vector<ReplyCase>& replyCases()
{
    const std::string map = sequence({"key", "one", "next", "two"});
    const std::string list = sequence({"a@x", "b@x"});
    const auto reply = [](Params own) {
        own.insert(own.begin(), {{"cd", "ok"}, {"st", shortInt(0)}, {"em", "fine"}});
        return own;
    };
    const auto loginReply = [&](Params own) {
        own.insert(own.begin(), {{"lk", "link"}, {"se", int64(7)}, {"we", int32(1)}});
        return reply(own);
    };
    const std::string localized = parameters({{"lc", "en"}, {"rc", list}, {"en", "ENV"}, {"tb", "TEXT"}});
    const std::string item =
        parameters({{"ty", int32(1)}, {"fl", int32(2)}, {"da", "data"}, {"on", "name"}, {"fc", "text/plain"}});
    const std::string tracked = parameters({{"da", sequence({"msgId", "m1", "to", "r@x"})}});
    const Params status = reply({{"v ", "7.6"}, {"bn", int32(1)}, {"mm", int64(2)}, {"sa", float64(.5)}});
    const Params envelope = reply({{"en", "ENV"},
                                   {"ct", "tt"},
                                   {"le", sequence({localized, localized})},
                                   {"an", "AN"},
                                   {"th", "HTML"},
                                   {"tb", "TEXT"}});
    const Params payload = loginReply({{"da", sequence({item, item})},
                                       {"ms", int32(1)},
                                       {"kt", map},
                                       {"ku", "key"},
                                       {"ec", map},
                                       {"fm", "s@x"},
                                       {"tr", list},
                                       {"tc", list}});
    const Params information =
        loginReply({{"id", "m1"}, {"si", int32(0)}, {"mx", int32(1)}, {"ri", sequence({tracked, tracked})}});
    const Params texts = reply({{"sl", map}, {"th", map}, {"tb", map}});
    const Params form = reply({{"su", int32(0)}, {"qn", int32(3)}, {"al", map}, {"sq", map}});
    static const std::vector<ReplyCase> all{
        {"GetTarnVersion", "ST", status, [](char* log) { return GetTarnVersion(narrow(), log); }},
        {.name = "StopTarnDaemon",
         .code = "SD",
         .fields = reply({}),
         .call = [](char* log) -> std::int32_t { return StopTarnDaemon(log); },
         .success = 1,
         .failure = 0},
        {.name = "AuthenticateUser",
         .code = "LS",
         .fields = loginReply({{"sl", map}}),
         .call = [](char* log) { return AuthenticateUser("u@x", "secret", u"/c", narrow(), log); },
         .failureLine = "Unknown exception occured, setting status to -1. GetLastError() : "},
        {"VerifyLarchConfig", "VC", reply({{"ec", map}}),
         [](char* log) { return VerifyLarchConfig("s@x", u"/c", log); }},
        {"EncryptEnvelopeOnline", "BE", envelope,
         [](char* log) {
             return EncryptEnvelopeOnline("a;b", "", "", "s@x", "secret", "message", u"/c", wide(0), wide(1), wide(2),
                                          wide(3), "", "0", log);
         }},
        {"DecryptEnvelope", "DE", payload,
         [](char* log) {
             return DecryptEnvelope("secret", "ENVELOPE", nullptr, "r@x", nullptr, narrow(), 0, wide(0), wide(1), log);
         }},
        {.name = "GetPayloadStatus",
         .code = "DE",
         .fields = payload,
         .call =
             [](char*) {
                 std::int32_t sensitivity = 0;
                 return GetPayloadStatus("ENVELOPE", nullptr, "r@x", wide(0), narrow(), narrow(), narrow(),
                                         &sensitivity);
             },
         .failureLine = ""},
        {"GetRecipients", "DE", payload,
         [](char* log) {
             std::uint32_t sensitivity = 0;
             return GetRecipients("ENVELOPE", wide(0), &sensitivity, log);
         }},
        {"GetLockExpireStatus", "MI", information,
         [](char* log) {
             std::uint32_t count = 0;
             return GetLockExpireStatus("secret", "ENVELOPE", nullptr, narrow(), narrow(), wide(0), narrow(), narrow(),
                                        &count, log);
         }},
        {"SetLockExpireStatus", "SI", loginReply({}),
         [](char* log) {
             const char* recipient = "r@x";
             const std::int32_t lock = 1;
             const TarnWideChar* message = u"locked";
             const std::int64_t expiryDate = 5;
             return SetLockExpireStatus("secret", "ENVELOPE", nullptr, &recipient, &lock, &message, &expiryDate, 1,
                                        log);
         }},
        {"GetRecipientEntries", "MI", information,
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
        {"SetRecipientEntries", "SI", loginReply({}),
         [](char* log) {
             const char* name = "to";
             const char* value = "r@x";
             return SetRecipientEntries("secret", nullptr, &name, &value, 1, 1, u"locked", 5, log);
         }},
        {"GetKeyServerInfo", "KV", reply({{"kd", map}}),
         [](char* log) {
             std::uint8_t flags[3] = {};
             return GetKeyServerInfo(u"/c", &flags[0], &flags[1], &flags[2], log);
         }},
        {"GetSupportedLocales", "LT", texts, [](char* log) { return GetSupportedLocales(u"/c", wide(0), log); }},
        {"GetLocalizedMessageBody", "LT", texts,
         [](char* log) { return GetLocalizedMessageBody(u"/c", "en", narrow(), narrow(), log); }},
        {"GetEnrollParameters", "EP", form,
         [](char* log) {
             std::int32_t numbers[4];
             return GetEnrollParameters("u@x", "https://k", u"en", &numbers[0], &numbers[1], &numbers[2], &numbers[3],
                                        wide(0), wide(1), log);
         }},
        {"UserEnroll", "EU", reply({{"ve", map}, {"el", int32(1)}}), [](char* log) {
             return UserEnroll("u@x", "https://k", u"F", u"L", u"secret", u"en", "id", "s@x", 0, 1, u"phrase", u"q1",
                               u"q2", u"q3", u"a1", u"a2", u"a3", 60, "", narrow(), log);
         }}};
    return all;
}

const ReplyCase& replyCaseOf(const std::string& name)
{
    return *std::ranges::find(replyCases(), name, &ReplyCase::name);
}
