#pragma once

#include <cstdint>
#include <string>
#include <tarn/Secret.h>
#include <vector>

// What the functions of the client take and return. All texts are UTF-8. Dates are the daemon's own numbers, 0 for "not
// set". Requests can be written with designated initializers.
namespace tarn {

struct KeyValue
{
    std::string key;
    std::string value;
};

// What most calls send along; either may be empty.
struct Access
{
    Secret password = {};
    std::string configFile = {}; // path of the envelope configuration file, which the daemon reads
};

struct EncryptRequest
{
    std::string from = {};
    std::vector<std::string> to = {}, cc = {}, bcc = {};
    std::string message = {};       // a whole MIME message
    std::string encodedConfig = {}; // as Decryption has it; no login takes place when it is not empty
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
    std::string envelope = {};
    std::string recipient = {};
    Secret sessionKey = {};
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

struct RecipientStatus
{
    std::string recipient;
    std::int32_t status = 0;
    std::string text;
};

struct PayloadStatus
{
    std::int32_t lastStatus = 0;
    std::vector<RecipientStatus> recipients; // those that were asked for, up to one with an unknown status
    std::string enrollId;
    std::string from;
    std::int32_t sensitivity = -1;
};

struct EnvelopeRecipients
{
    std::vector<std::string> addresses;
    std::int32_t sensitivity = 0;
};

// Lock, status message and expiry of one recipient of one message.
struct TrackingState
{
    std::string recipient = {};
    bool locked = false;
    std::string message = {};
    std::int64_t expiry = 0;
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
    std::int64_t created = 0;
    std::int64_t firstOpened = 0;
    std::int64_t lastModified = 0;
    std::int32_t tries = 0;
    std::int32_t flags = 0;
};

struct SentQuery
{
    std::string user = {};
    std::uint32_t start = 0;
    std::uint32_t max = 0;
    std::string sortBy = {};
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
    std::int32_t questionCount = 0;
    bool questionsEditable = false;
    std::vector<KeyValue> locales;
    std::vector<KeyValue> questions;
};

struct Enrollment
{
    std::string address = {}, keyServer = {}, enrollId = {}, sender = {};
    std::string firstName = {}, lastName = {}, locale = {};
    Secret password = {}, passPhrase = {};
    std::string questions[3] = {};
    Secret answers[3] = {};
    bool simple = false;
    std::int32_t stage = 0;
    std::int32_t timeZone = 0;
    std::string timeFormat = {};
};

} // namespace tarn
