#include "Accounts.h"
#include "Configuration.h"
#include "Handlers.h"
#include "Messages.h"
#include "Mime.h"
#include "Texts.h"

#include <algorithm>

namespace standin {

namespace {

constexpr std::int32_t sensitivityUnknown = -1;

std::string tocEntry(const MimeItem& item)
{
    std::string entry;
    appendParameter(entry, tag("ty"), encodeNumber(item.type));
    appendParameter(entry, tag("fl"), encodeNumber(item.flags));
    const auto lastSlash = item.name.find_last_of("/\\");
    appendParameter(entry, tag("fn"), lastSlash == std::string::npos ? item.name : item.name.substr(lastSlash + 1));
    appendParameter(entry, tag("on"), item.name);
    appendParameter(entry, tag("fc"), item.contentType);
    appendParameter(entry, tag("da"), item.data);
    return entry;
}

// One attempt, or question, about one stored message.
class Opening
{
public:
    Opening(const Request& request, Database& database, StoredMessage message)
        : request_(request), accounts_(database), messages_(database), message_(std::move(message))
    {
    }

    Reply run()
    {
        const bool bySessionKey = identifyByKey();
        if (!bySessionKey && !sessionKey().empty() && password().empty()) {
            return refuse({Status::SessionKeyInvalid, "the session key is not valid or has expired"});
        }
        bool authenticated = bySessionKey;
        if (who_.empty() && !password().empty()) {
            if (!identifyByPassword()) {
                return refuse({Status::WrongPassword, "the password is that of no recipient, nor the sender's"});
            }
            authenticated = true;
        }
        if (who_.empty()) {
            return refuse({Status::PasswordNeeded, "a password is needed"});
        }

        auto verdict = access();
        if (verdict.status == Status::Ok) {
            verdict = accounts_.standing(who_);
        }
        if (verdict.status == Status::Ok && !authenticated) {
            verdict = password().empty() ? whatIsNeeded() : accounts_.authenticate(who_, password());
        }
        if (verdict.status == Status::Ok) {
            return open();
        }
        if (!password().empty() || bySessionKey) {
            messages_.noteFailed(message_.id, who_);
        }
        return refuse(verdict);
    }

private:
    const std::string& password() const { return request_.text(tag("ky")); }
    const std::string& sessionKey() const { return request_.text(tag("sk")); }

    bool identifyByKey()
    {
        who_ = normalAddress(request_.text(tag("to")));
        if (sessionKey().empty()) {
            return false;
        }
        const auto holder = messages_.keyHolder(message_.id, sessionKey());
        if (!holder || (!who_.empty() && *holder != who_)) {
            return false;
        }
        who_ = *holder;
        return true;
    }

    bool identifyByPassword()
    {
        std::vector<std::string> candidates;
        for (const auto& recipient : message_.recipients) {
            candidates.push_back(recipient.address);
        }
        if (!message_.isFor(message_.sender)) {
            candidates.push_back(message_.sender);
        }
        const auto owners = accounts_.owners(candidates, password());
        who_ = owners.empty() ? "" : owners.front();
        return !owners.empty();
    }

    // Whether the message is meant for the asker, and still open to him.
    Verdict access() const
    {
        const auto tracking = messages_.tracking(message_.id, who_);
        if (!tracking && who_ != message_.sender) {
            return {Status::NotARecipient, "the message is not for this address"};
        }
        if (!tracking) {
            return {};
        }
        if (tracking->locked != 0) {
            return tracking->statusMessage.empty() ? Verdict{Status::Locked, "the sender has locked the message"}
                                                   : Verdict{Status::LockedWithMessage, tracking->statusMessage};
        }
        const bool expired = tracking->expires != 0 && tracking->expires <= nowMillis();
        return expired ? Verdict{Status::Expired, "the message has expired"} : Verdict();
    }

    // The answer to a question without a password, and to an empty password.
    Verdict whatIsNeeded() const
    {
        if (messages_.isKeptOpen(message_.id, who_)) {
            return {Status::SessionKeyAlive, "the message is kept open: its session key or the password opens it"};
        }
        if (who_ == message_.sender) {
            return {Status::AskedBySender, "this address sent the message: its own password opens it"};
        }
        return {Status::PasswordNeeded, "a password is needed"};
    }

    Reply refuse(const Verdict& verdict)
    {
        Reply reply(request_.code(), verdict);
        reply.text(tag("id"), message_.id).number(tag("ms"), message_.sensitivity).text(tag("fm"), message_.sender);
        if (verdict.status == Status::NotEnrolled || verdict.status == Status::EnrollmentUnfinished) {
            const auto id = accounts_.enrollmentId(who_);
            reply.text(tag("uu"), id).text(tag("lk"), Accounts::enrollmentLink(id));
        }
        return reply;
    }

    Reply open()
    {
        messages_.noteOpened(message_.id, who_);
        std::vector<std::string> entries;
        for (const auto& item : splitMime(messages_.mimeOf(message_.id)).items) {
            entries.push_back(tocEntry(item));
        }
        Reply reply(request_.code(), Status::Ok, "opened for " + who_);
        reply.text(tag("id"), message_.id)
            .number(tag("ms"), message_.sensitivity)
            .secret(tag("ku"), request_.flag(tag("po")) ? messages_.keepOpen(message_.id, who_) : "")
            .map(tag("ec"), message_.configuration)
            .text(tag("fm"), message_.sender)
            .text(tag("sj"), message_.subject)
            .array(tag("tr"), message_.addressesOf("to"))
            .array(tag("tc"), message_.addressesOf("cc"))
            .items(tag("da"), entries);
        return reply;
    }

    const Request& request_;
    Accounts accounts_;
    Messages messages_;
    StoredMessage message_;
    std::string who_;
};

Reply listRecipients(const Request& request, const StoredMessage& message)
{
    return Reply(request.code(), Status::Ok, "the recipients of the message")
        .text(tag("id"), message.id)
        .number(tag("ms"), message.sensitivity)
        .array(tag("tr"), message.addressesOf("to"))
        .array(tag("tc"), message.addressesOf("cc"));
}

} // namespace

Reply openEnvelope(const Request& request, Context& context)
{
    StoredMessage message;
    try {
        namedConfiguration(request, context);
        message = Messages(context.database).ofEnvelope(request.text(tag("en")));
    } catch (const Refusal& refusal) {
        return Reply(request.code(), refusal.status, refusal.message).number(tag("ms"), sensitivityUnknown);
    }
    const bool asksForRecipients =
        request.flag(tag("po")) && !request.has(tag("ky")) && !request.has(tag("to")) && !request.has(tag("sk"));
    if (asksForRecipients) {
        return listRecipients(request, message);
    }
    return Opening(request, context.database, std::move(message)).run();
}

} // namespace standin
