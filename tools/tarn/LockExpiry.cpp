#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Text.h"
#include "Time.h"
#include "TrackingView.h"
#include <algorithm>

namespace tarn {

namespace {

struct ChangeOptions : AccessOptions
{
    std::string envelope;
    std::string messageId;
    std::string user;
    std::vector<std::string> recipients;
    std::optional<std::string> message;
    std::string expiry;
    bool never = false;
};

// The message whose recipients are to be set: by its envelope, or among a user's sent messages by its id.
class TrackedMessage
{
public:
    TrackedMessage(Client& client, const ChangeOptions& options)
        : client_(client), id_(options.messageId), user_(options.user),
          envelope_(id_.empty() ? readTextFile(options.envelope) : ""), access_(options.access(user_))
    {
    }

    std::vector<TrackingState> states() const
    {
        if (id_.empty()) {
            return client_.tracking(envelope_, access_).recipients;
        }
        std::vector<TrackingState> found;
        SentQuery query{.user = user_, .max = 1000, .sortBy = "createDate"};
        SentPage page;
        do {
            page = client_.sent(query, access_);
            for (const auto& record : page.records) {
                if (record.messageId == id_) {
                    found.push_back(record.state);
                }
            }
            query.start += query.max;
        } while (query.start < page.total && !page.records.empty());
        return found;
    }

    void set(const TrackingState& state) const
    {
        if (id_.empty()) {
            client_.setTracking(envelope_, state, access_);
        } else {
            client_.setRecords({{"from", user_}, {"msgId", id_}, {"to", state.recipient}}, state, access_);
        }
    }

private:
    Client& client_;
    const std::string id_;
    const std::string user_;
    const std::string envelope_;
    const Access access_;
};

std::vector<TrackingState> select(const std::vector<TrackingState>& all, const std::vector<std::string>& recipients)
{
    if (all.empty()) {
        throw Failure(Exit::refused, "the daemon knows no recipients of this message");
    }
    if (recipients.empty()) {
        return all;
    }
    std::vector<TrackingState> selected;
    for (const auto& recipient : recipients) {
        const auto state = std::ranges::find_if(
            all, [&](const TrackingState& one) { return sameIgnoringCase(one.recipient, recipient); });
        if (state == all.end()) {
            throw Failure(Exit::refused,
                          recipient + " is not a recipient of this message; \"tarn tracking\" lists them");
        }
        selected.push_back(*state);
    }
    return selected;
}

// The daemon sets lock, message and expiry together, so each state starts from what is set and changes only in what the
// command names.
void change(Context& context, const ChangeOptions& options, const std::function<void(TrackingState&)>& apply)
{
    if (options.envelope.empty() == options.messageId.empty()) {
        throw Failure(Exit::usage, "give either ENVELOPE or --message-id, which names the message");
    }
    if (options.messageId.empty() != options.user.empty()) {
        throw Failure(Exit::usage, "--message-id and --user, the sender whose message it is, go together");
    }
    const TrackedMessage message(context.client, options);
    auto states = select(message.states(), options.recipients);
    for (std::size_t done = 0; done < states.size(); ++done) {
        auto& state = states[done];
        state.message = options.message.value_or(state.message);
        apply(state);
        try {
            message.set(state);
        } catch (const StatusError& error) {
            throw refusal(error,
                          state.recipient + ": " + describe(error) + "; set before it: " + std::to_string(done) +
                              " of " + std::to_string(states.size()) + " recipients",
                          {{"recipients", stateObjects({states.data(), done})}});
        }
    }
    context.output.result(stateTable(states), {{"recipients", stateObjects(states)}});
}

template <bool locked>
void setLock(Context& context, const ChangeOptions& options)
{
    change(context, options, [](TrackingState& state) { state.locked = locked; });
}

void expire(Context& context, const ChangeOptions& options)
{
    if (options.expiry.empty() != options.never) {
        throw Failure(Exit::usage, "give either --at with a time, or --never");
    }
    const Milliseconds expiry = options.never ? 0 : parseTime(options.expiry);
    change(context, options, [expiry](TrackingState& state) { state.expiry = expiry; });
}

} // namespace

void addLockExpiryCommands(Parser& program, Context& context)
{
    const auto add = [&](const char* name, const char* description, void (*run)(Context&, const ChangeOptions&)) {
        auto added = addCommand(program, context, name, description, run);
        auto& [parser, options] = added;
        parser.envelope(options.envelope, Needed::no);
        parser.text("--message-id", "ID", options.messageId, "The message's id, as \"sent\" lists it, for ENVELOPE");
        parser.text("--user", "ADDRESS", options.user, "The sender, with --message-id");
        parser.addresses("--recipient", options.recipients, "A recipient (default: all)");
        parser.text("--message", "TEXT", options.message, "The new status message (default: as it is)");
        parser.access(options);
        return added;
    };
    add("lock", "Lock a sent message", setLock<true>);
    add("unlock", "Unlock a sent message", setLock<false>);
    auto [parser, options] = add("expire", "Set or lift a sent message's expiry", expire);
    parser.text(
        "--at", "TIME", options.expiry,
        "2026-05-01, \"2026-05-01 14:30\" (local time), 2026-05-01T12:30:00Z, or from now +90m, +12h, +7d, +2w");
    parser.flag("--never", options.never, "The message does not expire");
}

} // namespace tarn
