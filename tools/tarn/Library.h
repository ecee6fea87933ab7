#pragma once

#include "Exchange.h"
#include "Time.h"
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarn {

// What most calls send along.
struct Access
{
    std::string password;
    std::string configFile;
};

struct EncryptRequest
{
    std::string from;
    std::vector<std::string> to, cc, bcc;
    std::string message;
    std::string encodedConfig;
    bool login = true;
};

struct Envelope
{
    std::string envelope;
    std::string textBody;
    std::string htmlBody;
    std::string attachmentName;
};

struct DecryptRequest
{
    std::string envelope;
    std::string recipient;
    std::string sessionKey;
    bool keepOpen = false;
};

struct Decryption
{
    std::string encodedConfig;
    std::string key;
    std::string from;
};

struct DecryptedItem
{
    std::uint32_t flags = 0;
    std::uint32_t type = 0;
    std::string name;
    std::string contentType;
    std::string data;
};

struct PayloadStatus
{
    std::int32_t status = -1;          // the last one
    std::vector<std::string> statuses; // one for each recipient that was asked for
    std::vector<std::string> texts;    // likewise
    std::string enrollId;
    std::string from;
    int sensitivity = -1;
};

struct EnvelopeRecipients
{
    std::vector<std::string> addresses;
    int sensitivity = 0;
};

// Lock, status message and expiry of one recipient of one message.
struct TrackingState
{
    std::string recipient;
    bool locked = false;
    std::string message;
    Milliseconds expiry = 0;
};

struct Tracking
{
    std::string messageId;
    std::vector<TrackingState> recipients;
};

struct SentRecord
{
    std::string messageId;
    std::string subject;
    TrackingState state;
    Milliseconds created = 0;
    Milliseconds firstOpened = 0;
    Milliseconds lastModified = 0;
    int tries = 0;
    int flags = 0;
};

struct SentQuery
{
    std::string user;
    std::uint32_t start = 0;
    std::uint32_t max = 0;
    std::string sortBy;
    bool ascending = false;
};

struct SentPage
{
    std::vector<SentRecord> records;
    std::uint32_t total = 0;
};

struct KeyServerFeatures
{
    bool readByEnabled = false;
    bool expirationSupported = false;
    bool localizedTextEnabled = false;
};

struct MessageBody
{
    std::string text;
    std::string html;
};

struct EnrollParameters
{
    bool samlUser = false;
    bool oneClickUser = false;
    int questionCount = 0;
    bool questionsEditable = false;
    std::string locales;
    std::string questions;
};

struct Enrollment
{
    std::string address, keyServer, enrollId, sender;
    std::string firstName, lastName, password, passPhrase, locale;
    std::string questions[3], answers[3];
    bool simple = false;
    int stage = 0;
    int timeZone = 0;
    std::string timeFormat;
};

// The library's functions with texts in UTF-8 and results that own themselves. A function returns when the daemon
// answered with status 0 and throws otherwise.
class Library
{
public:
    Exchange exchange;

    // Fails when no daemon listens. Its question for the version also gives the other calls the client version that
    // they send along.
    void reach();

    int start(const std::string& jar);
    void stop();
    std::string version();
    void login(const std::string& user, const Access& access);
    void verify(const std::string& sender, const std::string& configFile);

    Envelope encrypt(const EncryptRequest& request, const Access& access);
    Decryption decrypt(const DecryptRequest& request, const Access& access);
    std::optional<DecryptedItem> nextItem();
    PayloadStatus payloadStatus(const std::string& envelope, const std::string& configFile,
                                const std::vector<std::string>& recipients);
    EnvelopeRecipients recipients(const std::string& envelope);

    Tracking tracking(const std::string& envelope, const Access& access);
    void setTracking(const std::string& envelope, const TrackingState& state, const Access& access);
    SentPage sent(const SentQuery& query, const Access& access);
    void setRecords(const std::vector<std::pair<std::string, std::string>>& fields, const TrackingState& state,
                    const Access& access);

    KeyServerFeatures features(const std::string& configFile);
    std::string locales(const std::string& configFile);
    MessageBody body(const std::string& locale, const std::string& configFile);
    EnrollParameters enrollParameters(const std::string& address, const std::string& keyServer,
                                      const std::string& locale);
    std::string enroll(const Enrollment& enrollment);
};

} // namespace tarn
