#include "Accounts.h"
#include "Configuration.h"
#include "Envelope.h"
#include "Handlers.h"
#include "Languages.h"
#include "Limits.h"
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
    demand(isAddress(sender), Status::BadValue, "the sender is not an e-mail address");
    return sender;
}

// A configuration given with the request replaces the login, as in a reply to a received envelope.
void demandSession(const Request& request, const std::string& sender, Database& database)
{
    if (request.has(tag("ec"))) {
        return;
    }
    const auto session = request.map(tag("sl"));
    const auto token = session.find("token");
    demand(token != session.end(), Status::NoSession, "neither a login session nor an envelope configuration came");
    const auto user = Accounts(database).sessionUser(token->second);
    demand(user.has_value(), Status::NoSession, "the login session is unknown or has expired: log in again");
    demand(*user == sender, Status::NoSession, "the login session is not the sender's");
}

std::vector<Recipient> recipientsOf(const Request& request)
{
    std::vector<Recipient> recipients;
    std::set<std::string> seen;
    for (const auto type : {tag("to"), tag("cc"), tag("bc")}) {
        for (const auto& text : request.texts(type)) {
            auto address = normalAddress(text);
            if (address.empty()) {
                continue;
            }
            demand(isAddress(address), Status::BadValue, "the recipient \"" + text + "\" is not an e-mail address");
            if (seen.insert(address).second) {
                recipients.push_back({std::move(address), lettersOf(type)});
            }
        }
    }
    demand(!recipients.empty(), Status::Missing, "there is no recipient");
    demandAtMost(limit::recipients, recipients.size(), "recipients");
    return recipients;
}

StringMap configurationOf(const Request& request, const Context& context)
{
    auto configuration = request.map(tag("ec"));
    configuration.merge(namedConfiguration(request, context).values);
    if (configuration.empty()) {
        configuration = {{"external.secure.url", "http://127.0.0.1/"}, {"hostname", "127.0.0.1"}};
    }
    demandAtMost(limit::configuration, encodeMap(configuration).size(), "bytes of configuration");
    return configuration;
}

// One localized envelope for each of a few languages, with the recipients who prefer it.
std::vector<std::string> localizedEnvelopes(const StoredMessage& message, Database& database)
{
    constexpr std::array<std::string_view, 3> locales = {"en", "de", "fr"};
    std::array<std::vector<std::string>, locales.size()> readers;
    for (const auto& recipient : message.recipients) {
        const auto locale =
            findText(database, "SELECT locale FROM accounts WHERE address = ?", recipient.address).value_or("");
        const auto found = std::ranges::find(locales, std::string_view(locale));
        readers[found == locales.end() ? 0 : static_cast<std::size_t>(found - locales.begin())].push_back(
            recipient.address);
    }
    std::vector<std::string> envelopes;
    for (std::size_t i = 0; i < locales.size(); ++i) {
        const auto& text = languageOf(locales[i]);
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
    StoredMessage message;
    message.sender = senderOf(request);
    demandSession(request, message.sender, context.database);
    message.recipients = recipientsOf(request);
    message.configuration = configurationOf(request, context);
    const auto& mime = request.text(tag("mm"));
    const auto split = splitMime(mime);
    demandAtMost(limit::subject, split.subject.size(), "bytes of subject");
    message.subject = split.subject;
    message.sensitivity = split.sensitivity;
    const auto attachments = std::ranges::count(split.items, MimeItem::attachment, &MimeItem::type);
    Messages(context.database).add(message, mime, attachments);

    const auto& text = languageOf("en");
    Reply reply(request.code(), Status::Ok, "the envelope is made; nothing in it is encrypted");
    reply.text(tag("en"), makeEnvelope(message.id, message.sender))
        .text(tag("ct"), envelopeContentType)
        .text(tag("id"), message.id)
        .text(tag("an"), envelopeFileName)
        .text(tag("lc"), text.locale)
        .text(tag("tb"), plainBody(text, message.sender, message.subject))
        .text(tag("th"), htmlBody(text, message.sender, message.subject))
        .items(tag("le"), localizedEnvelopes(message, context.database));
    return reply;
}

} // namespace standin
