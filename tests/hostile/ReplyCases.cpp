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
        {"GetTarnVersion", "ST", status, getVersion},
        {.name = "StopTarnDaemon", .code = "SD", .fields = reply({}), .call = stop, .success = 1, .failure = 0},
        {.name = "AuthenticateUser",
         .code = "LS",
         .fields = loginReply({{"sl", map}}),
         .call = logIn,
         .failureLine = "Unknown exception occured, setting status to -1. GetLastError() : "},
        {"VerifyLarchConfig", "VC", reply({{"ec", map}}), verify},
        {"EncryptEnvelopeOnline", "BE", envelope, encrypt},
        {"DecryptEnvelope", "DE", payload, decrypt},
        {.name = "GetPayloadStatus", .code = "DE", .fields = payload, .call = getPayloadStatus, .failureLine = ""},
        {"GetRecipients", "DE", payload, getRecipients},
        {"GetLockExpireStatus", "MI", information, getLocks},
        {"SetLockExpireStatus", "SI", loginReply({}), setLocks},
        {"GetRecipientEntries", "MI", information, getEntries},
        {"SetRecipientEntries", "SI", loginReply({}), setEntries},
        {"GetKeyServerInfo", "KV", reply({{"kd", map}}), getFeatures},
        {"GetSupportedLocales", "LT", texts, getLocales},
        {"GetLocalizedMessageBody", "LT", texts, getBodies},
        {"GetEnrollParameters", "EP", form, getEnrollParameters},
        {"UserEnroll", "EU", reply({{"ve", map}, {"el", int32(1)}}), enroll}};
    return all;
}

const ReplyCase& replyCaseOf(const std::string& name)
{
    return *std::ranges::find(replyCases(), name, &ReplyCase::name);
}
