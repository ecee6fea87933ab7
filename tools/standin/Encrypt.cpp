#include "Accounts.h"
#include "Configuration.h"
#include "Envelope.h"
#include "Handlers.h"
#include "LocalizedTexts.h"
#include "Messages.h"
#include "Mime.h"
#include "Texts.h"

#include <algorithm>
#include <array>
#include <set>

namespace standin {

namespace {

std::string senderOf(const Request& request)
{
    auto sender = normalAddress(request.text(tag("fm")));
    if (!isAddress(sender))
        throw Refusal{Status::BadValue, "the sender is not an e-mail address"};
    return sender;
}

// A configuration given with the request stands for the login, as in a reply to a received envelope.
void demandSession(const Request& request, const std::string& sender, Database& database)
{
    if (request.has(tag("ec")))
        return;
    const auto session = request.map(tag("sl"));
    const auto token = session.find("token");
    if (token == session.end())
        throw Refusal{Status::NoSession, "neither a login session nor an envelope configuration came"};
    const auto user = Accounts(database).sessionUser(token->second);
    if (!user)
        throw Refusal{Status::NoSession, "the login session is unknown or has expired: log in again"};
    if (*user != sender)
        throw Refusal{Status::NoSession, "the login session is not the sender's"};
}

std::vector<Recipient> recipientsOf(const Request& request)
{
    std::vector<Recipient> recipients;
    std::set<std::string> seen;
    for (const auto type : {tag("to"), tag("cc"), tag("bc")}) {
        const std::string typeName = {static_cast<char>(type >> 8), static_cast<char>(type & 0xFF)};
        for (const auto& text : request.texts(type)) {
            auto address = normalAddress(text);
            if (address.empty())
                continue;
            if (!isAddress(address))
                throw Refusal{Status::BadValue, "the recipient \"" + text + "\" is not an e-mail address"};
            if (seen.insert(address).second)
                recipients.push_back({std::move(address), typeName});
        }
    }
    if (recipients.empty())
        throw Refusal{Status::Missing, "there is no recipient"};
    return recipients;
}

StringMap configurationOf(const Request& request)
{
    auto configuration = request.map(tag("ec"));
    configuration.merge(namedConfiguration(request.text(tag("ep"))));
    if (configuration.empty())
        configuration = {{"external.secure.url", "http://127.0.0.1/"}, {"hostname", "127.0.0.1"}};
    return configuration;
}

// One localized envelope for each of a few languages, with the recipients who prefer it.
std::vector<std::string> localizedEnvelopes(const NewMessage& message, Database& database)
{
    constexpr std::array<std::string_view, 3> locales = {"en", "de", "fr"};
    std::array<std::vector<std::string>, locales.size()> readers;
    auto localeOf = database.prepare("SELECT locale FROM accounts WHERE address = ?");
    for (const auto& recipient : message.recipients) {
        const auto locale = localeOf.bind(recipient.address).step() ? localeOf.text(0) : std::string();
        const auto found = std::ranges::find(locales, std::string_view(locale));
        readers[found == locales.end() ? 0 : static_cast<std::size_t>(found - locales.begin())].push_back(
            recipient.address);
    }
    std::vector<std::string> envelopes;
    for (std::size_t i = 0; i < locales.size(); ++i) {
        const auto& text = localizedText(locales[i]);
        std::string envelope;
        appendParameter(envelope, tag("lc"), locales[i]);
        appendParameter(envelope, tag("rc"), encodeArray(readers[i]));
        appendParameter(envelope, tag("en"), {});
        appendParameter(envelope, tag("ct"), envelopeContentType);
        appendParameter(envelope, tag("tb"), plainBody(text, message.sender, message.subject));
        appendParameter(envelope, tag("th"), htmlBody(text, message.sender, message.subject));
        envelopes.push_back(std::move(envelope));
    }
    return envelopes;
}

} // namespace

Reply buildEnvelope(const Request& request, Context& context)
{
    NewMessage message;
    message.sender = senderOf(request);
    demandSession(request, message.sender, context.database);
    message.recipients = recipientsOf(request);
    message.configuration = configurationOf(request);
    const auto& mime = request.text(tag("mm"));
    const auto split = splitMime(mime);
    message.subject = split.subject;
    message.sensitivity = split.sensitivity;
    message.attachments = std::ranges::count(split.items, MimeItem::attachment, &MimeItem::type);
    const auto id = Messages(context.database).add(message, mime);

    const auto& text = localizedText("en");
    Reply reply(request.code(), Status::Ok, "the envelope is made; nothing in it is encrypted");
    reply.text(tag("en"), makeEnvelope(id, message.sender))
        .text(tag("ct"), envelopeContentType)
        .text(tag("id"), id)
        .text(tag("an"), envelopeFileName)
        .text(tag("lc"), text.locale)
        .text(tag("tb"), plainBody(text, message.sender, message.subject))
        .text(tag("th"), htmlBody(text, message.sender, message.subject))
        .items(tag("le"), localizedEnvelopes(message, context.database));
    return reply;
}

} // namespace standin
