#include "Subjects.h"

#include "TarnRemoteClient.h"
#include "Wire.h"

#include <algorithm>
#include <cstdlib>

using wire::float64;
using wire::int32;
using wire::int64;
using wire::shortInt;

namespace {

void append(Piece& whole, const std::string& head, const Piece& value, bool ignored)
{
    whole.bytes += head;
    whole.lengths.push_back({whole.bytes.size(), ignored});
    whole.bytes += int32(static_cast<std::int64_t>(value.bytes.size()));
    for (const Piece::Length& length : value.lengths) {
        whole.lengths.push_back({whole.bytes.size() + length.at, false});
    }
    whole.bytes += value.bytes;
}

// Room for whatever a reply here may hold.
char* narrow(std::size_t i)
{
    static std::vector<std::vector<char>> buffers(4, std::vector<char>(1 << 22));
    buffers[i][0] = '\0';
    return buffers[i].data();
}

TarnWideChar* wide(std::size_t i)
{
    static std::vector<std::vector<TarnWideChar>> buffers(4, std::vector<TarnWideChar>(1 << 22));
    return buffers[i].data();
}

std::int32_t decrypt(char* log)
{
    return DecryptEnvelope("secret", "ENVELOPE", nullptr, "r@x", nullptr, narrow(0), 0, wide(0), wide(1), log);
}

std::int32_t encrypt(char* log)
{
    return EncryptEnvelopeOnline("a;b", "", "", "s@x", "secret", "message", u"/c", wide(0), wide(1), wide(2), wide(3),
                                 "", "0", log);
}

std::int32_t track(char* log)
{
    TarnRecipientEntry* entries = nullptr;
    const std::uint32_t wanted = 10;
    std::uint32_t count = 0;
    std::uint32_t total = 0;
    const std::int32_t status =
        GetRecipientEntries("u@x", "secret", nullptr, &entries, 0, &wanted, &count, &total, "", 1, log);
    for (std::uint32_t i = 0; i < count; ++i) {
        for (TarnWideChar* text :
             {entries[i].subject, entries[i].recipient, entries[i].statusMessage, entries[i].messageId}) {
            std::free(text);
        }
    }
    std::free(entries);
    return status;
}

std::int32_t set(char* log)
{
    const char* name = "to";
    const char* value = "r@x";
    return SetRecipientEntries("secret", nullptr, &name, &value, 1, 1, u"locked", 5, log);
}

std::int32_t keyServer(char* log)
{
    std::uint8_t flags[3] = {};
    return GetKeyServerInfo(u"/c", &flags[0], &flags[1], &flags[2], log);
}

std::int32_t enrollParameters(char* log)
{
    std::int32_t numbers[4];
    return GetEnrollParameters("u@x", "https://k", u"en", &numbers[0], &numbers[1], &numbers[2], &numbers[3], wide(0),
                               wide(1), log);
}

std::int32_t enroll(char* log)
{
    return UserEnroll("u@x", "https://k", u"F", u"L", u"secret", u"en", "id", "s@x", 0, 1, u"phrase", u"q1", u"q2",
                      u"q3", u"a1", u"a2", u"a3", 60, "", narrow(0), log);
}

} // namespace

Piece text(std::string bytes)
{
    return {.bytes = std::move(bytes), .lengths = {}};
}

Piece number(std::string bytes)
{
    return {.bytes = std::move(bytes), .lengths = {}, .fixedSize = true};
}

Piece sequence(const std::vector<Piece>& items)
{
    Piece whole;
    for (const Piece& item : items) {
        append(whole, "", item, false);
    }
    return whole;
}

Piece parameters(const std::vector<std::pair<std::string, Piece>>& all)
{
    Piece whole;
    for (const auto& [tag, value] : all) {
        append(whole, tag, value, value.fixedSize);
    }
    return whole;
}

std::string framed(const std::string& code, const std::string& parameters)
{
    const std::string bytes = std::string("\0\7", 2) + code + parameters + "\xCE\xDE";
    return bytes + int32(wire::crc(bytes));
}

const std::vector<Subject>& subjects()
{
    const Piece map = sequence({text("key"), text("one"), text("next"), text("two")});
    const Piece list = sequence({text("a@x"), text("b@x")});
    const auto reply = [](std::int64_t status, std::vector<std::pair<std::string, Piece>> own) {
        own.insert(own.begin(), {{"cd", text("ok")}, {"st", number(shortInt(status))}, {"em", text("fine")}});
        return parameters(own);
    };
    const auto loginReply = [&](std::vector<std::pair<std::string, Piece>> own) {
        own.insert(own.begin(), {{"lk", text("link")}, {"se", number(int64(7))}, {"we", number(int32(1))}});
        return reply(0, own);
    };
    const Piece localized = parameters({{"lc", text("en")}, {"rc", list}, {"en", text("ENV")}, {"tb", text("TEXT")}});
    const Piece item = parameters({{"ty", number(int32(1))},
                                   {"fl", number(int32(2))},
                                   {"da", text("data")},
                                   {"on", text("name")},
                                   {"fc", text("text/plain")}});
    const Piece tracked = parameters({{"da", sequence({text("msgId"), text("m1"), text("to"), text("r@x")})}});
    static const std::vector<Subject> all{
        {.code = "ST",
         .fields = reply(
             0, {{"v ", text("7.6")}, {"bn", number(int32(1))}, {"mm", number(int64(2))}, {"sa", number(float64(.5))}}),
         .call = [](char* log) { return GetTarnVersion(narrow(0), log); }},
        {.code = "SD",
         .fields = reply(0, {}),
         .call = [](char* log) { return StopTarnDaemon(log); },
         .success = 1,
         .failure = 0},
        {.code = "LS",
         .fields = loginReply({{"sl", map}}),
         .call = [](char* log) { return AuthenticateUser("u@x", "secret", u"/c", narrow(0), log); },
         .failureLine = "Unknown exception occured, setting status to -1. GetLastError() : "},
        {.code = "VC",
         .fields = reply(0, {{"ec", map}}),
         .call = [](char* log) { return VerifyLarchConfig("s@x", u"/c", log); }},
        {.code = "BE",
         .fields = reply(0, {{"en", text("ENV")},
                             {"ct", text("tt")},
                             {"le", sequence({localized, localized})},
                             {"an", text("AN")},
                             {"th", text("HTML")},
                             {"tb", text("TEXT")}}),
         .call = encrypt},
        {.code = "DE",
         .fields = loginReply({{"da", sequence({item, item})},
                               {"ms", number(int32(1))},
                               {"kt", map},
                               {"ku", text("key")},
                               {"ec", map},
                               {"fm", text("s@x")},
                               {"tr", list},
                               {"tc", list}}),
         .call = decrypt},
        {.code = "MI",
         .fields = loginReply({{"id", text("m1")},
                               {"si", number(int32(0))},
                               {"mx", number(int32(1))},
                               {"ri", sequence({tracked, tracked})}}),
         .call = track},
        {.code = "SI", .fields = loginReply({}), .call = set},
        {.code = "KV", .fields = reply(0, {{"kd", map}}), .call = keyServer},
        {.code = "LT",
         .fields = reply(0, {{"sl", map}, {"th", map}, {"tb", map}}),
         .call = [](char* log) { return GetSupportedLocales(u"/c", wide(0), log); }},
        {.code = "EP",
         .fields = reply(0, {{"su", number(int32(0))}, {"qn", number(int32(3))}, {"al", map}, {"sq", map}}),
         .call = enrollParameters},
        {.code = "EU", .fields = reply(0, {{"ve", map}, {"el", number(int32(1))}}), .call = enroll}};
    return all;
}

const Subject& subjectOf(const std::string& code)
{
    return *std::ranges::find(subjects(), code, &Subject::code);
}
