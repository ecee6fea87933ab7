#include "Replies.h"

namespace Bench {

namespace {

Message begun(Letters code, std::string_view statusMessage = "OK", std::int16_t status = 0)
{
    Message reply(code);
    reply.number("st", status, 2).text("em", statusMessage);
    return reply;
}

// Keys in ascending order.
void putEntries(Message& message, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        message.entry("key." + std::to_string(1'000'000 + i), "value " + std::to_string(i));
    }
}

Message withMap(Letters code, Letters tag, std::size_t entries)
{
    return begun(code).nested(tag, [&](Message& message) { putEntries(message, entries); }).end();
}

void putItem(Message& message, std::size_t i, std::string_view data)
{
    message.number("ty", 1, 4).number("fl", 0, 4).text("on", "item-" + std::to_string(i) + ".dat");
    message.text("fc", "application/octet-stream").text("da", data);
}

void putRecord(Message& fields, std::size_t i)
{
    const std::string number = std::to_string(1'000'000 + i);
    fields.entry("FLAGS", "0").entry("createDate", "1262304000000").entry("expiryDate", "1293840000000");
    fields.entry("firstOpenDate", "1262304100000").entry("lastModifiedDate", "1262304200000");
    fields.entry("msgId", "message-" + number).entry("numTries", "2").entry("statusMsg", "");
    fields.entry("subject", "Figures of the quarter " + number).entry("to", "person." + number + "@example.org");
}

} // namespace

Message plainReply(Letters code, std::int16_t status)
{
    return begun(code, "OK", status).end();
}

Message daemonStatus()
{
    Message reply = begun("ST");
    reply.text("v ", "7.6.1").number("bn", 42, 4);
    for (const auto tag : {&"bt", &"mf", &"mt", &"mm", &"bs", &"bf", &"ss", &"es"}) {
        reply.number(*tag, 123'456'789, 8);
    }
    return reply.end();
}

Message loginSession()
{
    return withMap("LS", "sl", 5);
}

Message configErrors(std::size_t entries)
{
    return withMap("VC", "ec", entries);
}

Message envelope(std::size_t size, std::size_t localized)
{
    Message reply = begun("BE");
    reply.text("en", std::string(size, 'e')).text("tb", "text body").text("th", "<p>HTML body</p>");
    reply.text("an", "securedoc.html").text("id", "message-1");
    return reply
        .nested("le",
                [&](Message& items) {
                    for (std::size_t i = 0; i < localized; ++i) {
                        items.item([](Message& item) {
                            item.text("lc", "de").text("en", "envelope").text("tb", "text").text("th", "HTML");
                            item.nested("rc", [](Message& list) { list.lengthAndText("ann@example.org"); });
                        });
                    }
                })
        .end();
}

Message payload(std::size_t items, std::size_t size)
{
    const std::string data(size, 'd');
    Message reply = begun("DE");
    reply.text("ku", "key").text("fm", "ann@example.org").number("ms", 1, 4);
    reply.nested("ec", [](Message& message) { putEntries(message, 3); });
    return reply
        .nested("da",
                [&](Message& list) {
                    for (std::size_t i = 0; i < items; ++i) {
                        list.item([&](Message& item) { putItem(item, i, data); });
                    }
                })
        .end();
}

Message lockedPayload()
{
    return begun("DE", "The message is locked.", 20).number("ms", 1, 4).end();
}

Message trackingRecords(std::size_t count)
{
    Message reply = begun("MI");
    reply.text("id", "message-1").number("si", 0, 4).number("mx", static_cast<std::int64_t>(count), 4);
    return reply
        .nested("ri",
                [&](Message& list) {
                    for (std::size_t i = 0; i < count; ++i) {
                        list.item(
                            [&](Message& item) { item.nested("da", [&](Message& fields) { putRecord(fields, i); }); });
                    }
                })
        .end();
}

Message keyServer(std::size_t entries)
{
    return withMap("KV", "kd", entries);
}

Message localizedTexts(std::size_t entries)
{
    return withMap("LT", "sl", entries);
}

Message enrollParameters(std::size_t entries)
{
    Message reply = begun("EP");
    reply.number("su", 0, 4).number("ou", 0, 4).number("qn", 3, 4).number("qe", 1, 4);
    reply.nested("al", [&](Message& message) { putEntries(message, entries); });
    return reply.nested("sq", [&](Message& message) { putEntries(message, entries); }).end();
}

Message enrolled(std::size_t entries)
{
    return withMap("EU", "ve", entries);
}

Message paddedTo(std::size_t size, Message (*make)(std::string_view statusMessage))
{
    return make(std::string(size - make("").bytes().size(), 's'));
}

Message smallEnvelope(std::string_view statusMessage)
{
    Message reply = begun("BE", statusMessage);
    reply.text("en", "<html>envelope</html>").text("tb", "text body").text("th", "<p>HTML body</p>");
    return reply.text("an", "securedoc.html").end();
}

Message smallPayload(std::string_view statusMessage)
{
    return begun("DE", statusMessage)
        .text("fm", "ann@example.org")
        .nested("da",
                [](Message& list) {
                    list.item([](Message& item) {
                        item.text("on", "note.txt").text("fc", "text/plain").text("da", "A line of text.");
                    });
                })
        .end();
}

} // namespace Bench
