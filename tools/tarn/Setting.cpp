#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Secrets.h"
#include "Text.h"
#include "Time.h"
#include "TrackingView.h"
#include <algorithm>
#include <optional>

namespace tarn {

namespace {

struct SettingOptions
{
    std::string envelope;
    std::string messageId;
    std::string user;
    std::vector<std::string> recipients;
    std::optional<std::string> message;
    std::optional<bool> lock;
    std::string expiry;
    bool never = false;
    std::string config;
    std::string passwordFile;
};

// The message whose recipients are to be set: by its envelope, or among a user's sent messages by its id.
class TrackedMessage
{
public:
    virtual ~TrackedMessage() = default;
    virtual std::vector<TrackingState> states() = 0;
    virtual void set(const TrackingState& state) = 0;
};

class MessageByEnvelope : public TrackedMessage
{
public:
    MessageByEnvelope(Client& client, const std::string& file, Access access)
        : client_(client), envelope_(readTextFile(file)), access_(std::move(access))
    {
    }
    std::vector<TrackingState> states() override { return client_.tracking(envelope_, access_).recipients; }
    void set(const TrackingState& state) override { client_.setTracking(envelope_, state, access_); }

private:
    Client& client_;
    const std::string envelope_;
    const Access access_;
};

class MessageById : public TrackedMessage
{
public:
    MessageById(Client& client, std::string id, std::string user, Access access)
        : client_(client), id_(std::move(id)), user_(std::move(user)), access_(std::move(access))
    {
    }

    std::vector<TrackingState> states() override
    {
        std::vector<TrackingState> found;
        SentPage page;
        std::uint32_t start = 0;
        do {
            page = client_.sent({user_, start, pageSize, "createDate", false}, access_);
            for (const auto& record : page.records) {
                if (record.messageId == id_) {
                    found.push_back(record.state);
                }
            }
            start += pageSize;
        } while (start < page.total && !page.records.empty());
        return found;
    }

    void set(const TrackingState& state) override
    {
        client_.setRecords({{"from", user_}, {"msgId", id_}, {"to", state.recipient}}, state, access_);
    }

private:
    static constexpr std::uint32_t pageSize = 1000;
    Client& client_;
    const std::string id_;
    const std::string user_;
    const Access access_;
};

std::unique_ptr<TrackedMessage> findMessage(Client& client, const SettingOptions& options)
{
    if (options.envelope.empty() && options.messageId.empty()) {
        throw Failure(Exit::usage, "give ENVELOPE, or --message-id with --user");
    }
    if (!options.envelope.empty() && !options.messageId.empty()) {
        throw Failure(Exit::usage, "ENVELOPE and --message-id both name a message: give one of them");
    }
    if (!options.messageId.empty() && options.user.empty()) {
        throw Failure(Exit::usage, "--message-id needs --user, the sender whose message it is");
    }
    const Access access{password(options.passwordFile, options.user), absolutePath(options.config)};
    if (options.envelope.empty()) {
        return std::make_unique<MessageById>(client, options.messageId, options.user, access);
    }
    return std::make_unique<MessageByEnvelope>(client, options.envelope, access);
}

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
            throw Failure(Exit::refused, recipient + " is no recipient of this message; \"tarn tracking\" lists them");
        }
        selected.push_back(*state);
    }
    return selected;
}

// The daemon sets lock, message and expiry together, so each state starts from what is set and changes in what the
// command names alone.
void set(Context& context, const SettingOptions& options)
{
    const Milliseconds expiry = options.expiry.empty() ? 0 : parseTime(options.expiry);
    const auto message = findMessage(context.client, options);
    auto states = select(message->states(), options.recipients);
    for (std::size_t done = 0; done < states.size(); ++done) {
        auto& state = states[done];
        state.locked = options.lock.value_or(state.locked);
        state.message = options.message.value_or(state.message);
        if (options.never || !options.expiry.empty()) {
            state.expiry = expiry;
        }
        try {
            message->set(state);
        } catch (const StatusError& error) {
            throw refusal(error,
                          state.recipient + ": " + describe(error) + "; set before it: " + std::to_string(done) +
                              " of " + std::to_string(states.size()) + " recipients",
                          {{"recipients", stateObjects({states.data(), done})}});
        }
    }
    context.output.result(stateTable(states), {{"recipients", stateObjects(states)}});
}

CLI::App* addSettingCommand(CLI::App& app, Context& context, const std::shared_ptr<SettingOptions>& options,
                            const std::string& name, const std::string& description)
{
    auto* command = app.add_subcommand(name, description);
    command->add_option("ENVELOPE", options->envelope, "File with the envelope; - is standard input");
    command->add_option("--message-id", options->messageId, "The message's id, as \"sent\" lists it, for ENVELOPE");
    command->add_option("--user", options->user, "The sender's address, with --message-id");
    command->add_option("--recipient", options->recipients, "A recipient's address; may be repeated (default: all)")
        ->allow_extra_args(false);
    command->add_option("--message", options->message, "The status message to be set (default: as it is)");
    addPasswordOption(command, options->passwordFile);
    addConfigOption(command, options->config);
    onRun(command, context, options, set);
    return command;
}

} // namespace

void addSettingCommands(CLI::App& app, Context& context)
{
    const auto lockOptions = std::make_shared<SettingOptions>();
    lockOptions->lock = true;
    addSettingCommand(app, context, lockOptions, "lock", "Lock a sent message");

    const auto unlockOptions = std::make_shared<SettingOptions>();
    unlockOptions->lock = false;
    addSettingCommand(app, context, unlockOptions, "unlock", "Unlock a sent message");

    const auto expireOptions = std::make_shared<SettingOptions>();
    auto* expire = addSettingCommand(app, context, expireOptions, "expire", "Set or lift a sent message's expiry");
    auto* when = expire->add_option_group("when")->require_option(1);
    when->add_option(
        "--at", expireOptions->expiry,
        "2026-05-01, \"2026-05-01 14:30\" (local time), 2026-05-01T12:30:00Z, or from now +90m, +12h, +7d, +2w");
    when->add_flag("--never", expireOptions->never, "The message does not expire");
}

} // namespace tarn
