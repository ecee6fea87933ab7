#include "Replies.h"

#include "Wire.h"

namespace Bench {

using wire::int32;
using wire::int64;
using wire::Params;

namespace {

std::string reply(const std::string& code, const Params& params, const std::string& statusMessage = "OK",
                  std::int16_t status = 0)
{
    Params all{{"st", wire::shortInt(status)}, {"em", statusMessage}};
    all.insert(all.end(), params.begin(), params.end());
    return wire::message(code, all);
}

std::string mapOf(const Params& entries)
{
    std::vector<std::string> texts;
    for (const auto& [key, value] : entries) {
        texts.insert(texts.end(), {key, value});
    }
    return wire::sequence(texts);
}

// Keys in ascending order.
std::string map(std::size_t entries)
{
    Params made;
    for (std::size_t i = 0; i < entries; ++i) {
        made.emplace_back("key." + std::to_string(1'000'000 + i), "value " + std::to_string(i));
    }
    return mapOf(made);
}

std::string collection(std::size_t items, std::string (*makeItem)(std::size_t i))
{
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < items; ++i) {
        texts.push_back(makeItem(i));
    }
    return wire::sequence(texts);
}

std::string localizedForm(std::size_t)
{
    return wire::parameters({{"lc", "de"},
                             {"en", "envelope"},
                             {"tb", "text"},
                             {"th", "HTML"},
                             {"rc", wire::sequence({"ann@example.org"})}});
}

std::string trackingRecord(std::size_t i)
{
    const std::string number = std::to_string(1'000'000 + i);
    const std::string fields = mapOf({{"FLAGS", "0"},
                                      {"createDate", "1262304000000"},
                                      {"expiryDate", "1293840000000"},
                                      {"firstOpenDate", "1262304100000"},
                                      {"lastModifiedDate", "1262304200000"},
                                      {"msgId", "message-" + number},
                                      {"numTries", "2"},
                                      {"statusMsg", ""},
                                      {"subject", "Figures of the quarter " + number},
                                      {"to", "person." + number + "@example.org"}});
    return wire::parameters({{"da", fields}});
}

} // namespace

std::string plainReply(const std::string& code)
{
    return reply(code, {});
}

std::string daemonStatus()
{
    Params params{{"v ", "7.6.1"}, {"bn", int32(42)}};
    for (const char* tag : {"bt", "mf", "mt", "mm", "bs", "bf", "ss", "es"}) {
        params.emplace_back(tag, int64(123'456'789));
    }
    return reply("ST", params);
}

std::string loginSession()
{
    return reply("LS", {{"sl", map(5)}});
}

std::string configErrors(std::size_t entries)
{
    return reply("VC", {{"ec", map(entries)}});
}

std::string envelope(std::size_t size, std::size_t localized)
{
    return reply("BE", {{"en", std::string(size, 'e')},
                        {"tb", "text body"},
                        {"th", "<p>HTML body</p>"},
                        {"an", "securedoc.html"},
                        {"id", "message-1"},
                        {"le", collection(localized, localizedForm)}});
}

std::string payload(std::size_t items, std::size_t size)
{
    const std::string data(size, 'd');
    std::vector<std::string> list;
    for (std::size_t i = 0; i < items; ++i) {
        list.push_back(wire::parameters({{"ty", int32(1)},
                                         {"fl", int32(0)},
                                         {"on", "item-" + std::to_string(i) + ".dat"},
                                         {"fc", "application/octet-stream"},
                                         {"da", data}}));
    }
    return reply(
        "DE",
        {{"ku", "key"}, {"fm", "ann@example.org"}, {"ms", int32(1)}, {"ec", map(3)}, {"da", wire::sequence(list)}});
}

std::string lockedPayload()
{
    return reply("DE", {{"ms", int32(1)}}, "The message is locked.", 20);
}

std::string trackingRecords(std::size_t count)
{
    return reply("MI", {{"id", "message-1"},
                        {"si", int32(0)},
                        {"mx", int32(static_cast<std::int64_t>(count))},
                        {"ri", collection(count, trackingRecord)}});
}

std::string keyServer(std::size_t entries)
{
    return reply("KV", {{"kd", map(entries)}});
}

std::string localizedTexts(std::size_t entries)
{
    return reply("LT", {{"sl", map(entries)}});
}

std::string enrollParameters(std::size_t entries)
{
    return reply("EP", {{"su", int32(0)},
                        {"ou", int32(0)},
                        {"qn", int32(3)},
                        {"qe", int32(1)},
                        {"al", map(entries)},
                        {"sq", map(entries)}});
}

std::string enrolled(std::size_t entries)
{
    return reply("EU", {{"ve", map(entries)}});
}

std::string paddedTo(std::size_t size, std::string (*make)(const std::string& statusMessage))
{
    return make(std::string(size - make("").size(), 's'));
}

std::string smallEnvelope(const std::string& statusMessage)
{
    return reply(
        "BE",
        {{"en", "<html>envelope</html>"}, {"tb", "text body"}, {"th", "<p>HTML body</p>"}, {"an", "securedoc.html"}},
        statusMessage);
}

std::string smallPayload(const std::string& statusMessage)
{
    const std::string item = wire::parameters({{"on", "note.txt"}, {"fc", "text/plain"}, {"da", "A line of text."}});
    return reply("DE", {{"fm", "ann@example.org"}, {"da", wire::sequence({item})}}, statusMessage);
}

} // namespace Bench
