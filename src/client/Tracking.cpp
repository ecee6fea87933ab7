#include "client/CallFrame.h"
#include "client/ClientVersion.h"
#include "client/RequestParameters.h"
#include "client/TrackingRecords.h"
#include "remote/RemoteMessageInformation.h"
#include "text/Conversion.h"
#include "text/Lists.h"

#include <algorithm>

using namespace Client;
using Merrow::code;
using Merrow::tag;

std::int32_t SetLockExpireStatus(const char* password, const char* envelope, const WideChar* configFile,
                                 const char* const* recipients, const std::int32_t* lockStatuses,
                                 const WideChar* const* statusMessages, const std::int64_t* expiryDates,
                                 std::uint32_t count, char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        log("Got socket ", connectToDaemon());
        log("Recipients count: ", count);
        for (std::uint32_t i = 0; i < count; ++i) {
            log("Starting RemoteSetMessageInformation...");
            call.out.beginCommand(code("SI"));
            sendLogged(call.out, tag("tc"), "Setting client type to: ", clientVersion());
            sendIfAnyUnlogged(call.out, tag("ky"), "Setting password.", Text::orEmpty(password));
            sendEnvelope(call.out, envelope);
            sendConfigFile(call.out, configFile);
            log("Adding recipient.");
            sendText(call.out, tag("to"), Text::orEmpty(recipients[i]));
            log("Setting lock status.");
            call.out.writeBoolParam(tag("ls"), lockStatuses[i] != 0);
            log("Setting status message.");
            sendText(call.out, tag("sm"), Text::wideToUtf8(statusMessages[i]));
            log("Setting expiry date.");
            call.out.writeLongParam(tag("ed"), expiryDates[i]);
            call.out.endCommand();

            const Merrow::RemoteSetInformationResponse response(call.in);
            call.result = response.statusCode;
            logStatus(response);
        }
    });
}

std::int32_t GetLockExpireStatus(const char* password, const char* envelope, const WideChar* configFile,
                                 char* recipientsOut, char* lockStatusesOut, WideChar* statusMessagesOut,
                                 char* expiryDatesOut, char* messageIdOut, std::uint32_t* recipientCount,
                                 char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        connectToDaemon();
        call.out.beginCommand(code("MI"));
        sendClientVersion(call.out);
        sendIfAnyUnlogged(call.out, tag("ky"), "Setting password", Text::orEmpty(password));
        sendEnvelope(call.out, envelope);
        sendConfigFile(call.out, configFile);
        log("Retrieving RemoteMessageInformation.");
        call.out.endCommand();

        const Merrow::RemoteMessageInformation information(call.in);
        call.result = information.statusCode;
        logStatus(information);
        Text::JoinedList addresses(Text::listDelimiter);
        Text::JoinedList locks(Text::listDelimiter);
        Text::JoinedList messages(Text::listDelimiter);
        Text::JoinedList expiryDates(Text::listDelimiter);
        std::uint32_t count = 0;
        if (call.result == 0) {
            for (const auto& recipient : information.getRecipients()) {
                log("Processing recipient.");
                addresses.append(recipient->getTo());
                locks.append((recipient->getFlags() & TARN_FLAG_LOCKED) != 0 ? "1" : "0");
                messages.append(recipient->getStatusMsg());
                expiryDates.append(std::to_string(recipient->getExpiryDate()));
                ++count;
            }
        }
        log("Filling output data.");
        Text::copyOut(addresses.text(), recipientsOut);
        Text::copyOut(locks.text(), lockStatusesOut);
        Text::utf8IntoWide(messages.text().c_str(), statusMessagesOut);
        Text::copyOut(expiryDates.text(), expiryDatesOut);
        if (messageIdOut != nullptr) {
            Text::copyOut(information.id, messageIdOut);
        }
        if (recipientCount != nullptr) {
            *recipientCount = count;
        }
    });
}

std::int32_t GetRecipientEntries(const char* userName, const char* password, const WideChar* configFile,
                                 TarnRecipientEntry** entries, std::uint32_t startAt, const std::uint32_t* maxResults,
                                 std::uint32_t* entryCount, std::uint32_t* totalCount, const char* sortBy,
                                 std::uint8_t ascending, char* logBuffer)
{
    *entries = nullptr;
    *entryCount = 0;
    *totalCount = 0;
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        log("Got socket ", connectToDaemon());
        log("Starting RemoteGetMessageInformation...");
        call.out.beginCommand(code("MI"));
        sendLogged(call.out, tag("tc"), "Setting client type to: ", buildClientVersion());
        sendIfAnyUnlogged(call.out, tag("fm"), "Setting username", Text::orEmpty(userName));
        sendIfAnyUnlogged(call.out, tag("ky"), "Setting password", Text::orEmpty(password));
        sendConfigFile(call.out, configFile);
        if (const std::string_view field = Text::orEmpty(sortBy); !field.empty()) {
            sendText(call.out, tag("sf"), field);
        }
        call.out.writeBoolParam(tag("as"), ascending != 0);
        call.out.writeIntParam(tag("si"), static_cast<std::int32_t>(startAt));
        call.out.writeIntParam(tag("mx"), static_cast<std::int32_t>(*maxResults));
        log("Retrieving RemoteMessageInformation.");
        call.out.endCommand();

        const auto information = readReply<Merrow::RemoteMessageInformation>(call.in);
        if (!information) {
            return;
        }
        call.result = information->statusCode;
        logStatus(*information);
        *totalCount = static_cast<std::uint32_t>(information->mx);
        if (call.result == 0) {
            TrackingRecords records(information->getRecipients().size());
            for (const auto& recipient : information->getRecipients()) {
                records.fold(*recipient);
            }
            *entryCount = records.count();
            *entries = records.release();
        }
    });
}

std::int32_t SetRecipientEntries(const char* password, const WideChar* configFile, const char* const* fieldNames,
                                 const char* const* fieldValues, std::uint32_t fieldCount, std::int32_t lockStatus,
                                 const WideChar* statusMessage, std::int64_t expiryDate, char* logBuffer)
{
    return runCall(statusFrame, logBuffer, [&](auto& call) {
        connectToDaemon();
        call.out.beginCommand(code("SI"));
        sendClientVersion(call.out);
        if (const std::string_view secret = Text::orEmpty(password); !secret.empty()) {
            sendText(call.out, tag("ky"), secret);
        }
        sendConfigFile(call.out, configFile);
        StringMap settings;
        for (std::uint32_t i = 0; i < fieldCount; ++i) {
            settings.insert_or_assign(std::string(Text::orEmpty(fieldNames[i])), Text::orEmpty(fieldValues[i]));
        }
        call.out.writeStringMapParam(tag("ri"), std::move(settings));
        call.out.writeBoolParam(tag("ls"), lockStatus != 0);
        sendText(call.out, tag("sm"), Text::wideToUtf8(statusMessage));
        call.out.writeLongParam(tag("ed"), expiryDate);
        call.out.endCommand();

        const Merrow::RemoteSetInformationResponse response(call.in);
        call.result = response.statusCode;
        logStatus(response);
    });
}

std::int32_t AddOrUpdateRemoteRecipientEntries(TarnRecipientEntry* entries, std::uint32_t* count,
                                               TarnRecipientEntry* record)
{
    TarnRecipientEntry* const end = entries + *count;
    TarnRecipientEntry* const match = std::find_if(entries, end, [&](const TarnRecipientEntry& entry) {
        return textOf(entry.messageId) == textOf(record->messageId) &&
               textOf(entry.recipient) == textOf(record->recipient);
    });
    return addOrUpdate(entries, *count, match == end ? nullptr : match, *record) ? 1 : 0;
}
