#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <tarn/Errors.h>
#include <tarn/Types.h>
#include <utility>
#include <vector>

namespace tarn {

namespace detail {
class LogLoad;
class OutputBuffer;
} // namespace detail

// The library's functions with texts in UTF-8 and results that own themselves. TarnRemoteClient.h documents the
// functions that are named here. A function returns when the daemon answered with status 0 and throws otherwise (see
// Errors.h). The connection, the decrypted items and the fact that an exchange broke down are the process's: all
// clients share them, and their calls must not overlap.
//
// Call version() first: it tells whether a daemon listens, and builds the client version text that other calls send.
class Client
{
public:
    // Runs around each call of the library but those of nextItem(), for instance to trace it; has to call `call` once.
    // lastLog() is the call's own log after it.
    using Around = std::function<void(const char* function, const std::function<void()>& call)>;

    explicit Client(Around around = {}) : around_(std::move(around)) {}

    // The operation log of the last call, empty when that wrote none.
    const std::string& lastLog() const { return lastLog_; }

    // StartTarnDaemon: launches the daemon without waiting until it listens; throws a StatusError with the system's
    // answer when that is 32 or below. The path goes to the system in its own 8-bit encoding.
    std::int32_t startDaemon(const std::string& jarPath);
    // StopTarnDaemon
    void stopDaemon();
    // GetTarnVersion
    std::string version();

    // AuthenticateUser
    void login(const std::string& user, const Access& access);
    // VerifyLarchConfig
    void verifyConfig(const std::string& sender, const std::string& configFile);

    // EncryptEnvelopeOnline. A refused login leaves no log, and so a StatusError without message.
    Envelope encrypt(const EncryptRequest& request, const Access& access);

    // DecryptEnvelope. The items are the library's until the next message is decrypted, and are handed out once.
    Decryption decrypt(const DecryptRequest& request, const Access& access);
    // GetNextDecryptedItemInfo, GetNextDecryptedItem
    std::optional<DecryptedItem> nextItem();

    // GetPayloadStatus. Returns whatever the recipients' statuses are: these are what is asked for.
    PayloadStatus payloadStatus(const std::string& envelope, const std::string& configFile,
                                const std::vector<std::string>& recipients);
    // GetRecipients
    EnvelopeRecipients recipients(const std::string& envelope);

    // GetLockExpireStatus. Counts the recipients with recipients() first, since the log takes a line for each.
    Tracking tracking(const std::string& envelope, const Access& access);
    // SetLockExpireStatus, for one recipient: for several, the library returns only the last one's status.
    void setTracking(const std::string& envelope, const TrackingState& state, const Access& access);
    // GetRecipientEntries
    SentPage sent(const SentQuery& query, const Access& access);
    // SetRecipientEntries: sets the records that the fields select. The recipient in `state` is not used.
    void setRecords(const std::vector<KeyValue>& fields, const TrackingState& state, const Access& access);

    // GetKeyServerInfo
    KeyServerFeatures features(const std::string& configFile);
    // GetSupportedLocales
    std::vector<KeyValue> locales(const std::string& configFile);
    // GetLocalizedMessageBody
    MessageBody messageBody(const std::string& locale, const std::string& configFile);

    // GetEnrollParameters
    EnrollParameters enrollParameters(const std::string& address, const std::string& keyServer,
                                      const std::string& locale);
    // UserEnroll. Returns the daemon's answers.
    std::vector<KeyValue> enroll(const Enrollment& enrollment);

private:
    using NativeCall = std::function<std::int32_t(char* log)>;
    using Outputs = std::initializer_list<const detail::OutputBuffer*>;

    std::int32_t attempt(const char* function, const detail::LogLoad& load, const NativeCall& call);
    void run(const char* function, const detail::LogLoad& load, Outputs outputs, const NativeCall& call);
    bool answered(std::int32_t status, Outputs outputs) const;
    [[noreturn]] void failExchange(const char* function) const;
    [[noreturn]] void refuseAnswer(const char* function, const std::string& what) const;

    Around around_;
    std::string lastLog_;
};

// Whether an address is in the guard behind an output buffer of the call that is running. The library writes its output
// texts without a bound; one that is larger than its buffer ends in an access violation there. A program can tell its
// user so: this may be called in a signal handler.
bool isBehindOutputBuffer(const void* address);

} // namespace tarn
