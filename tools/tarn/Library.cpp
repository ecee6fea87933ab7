#include "Library.h"

#include "Failure.h"
#include "Host.h"
#include "Text.h"
#include <algorithm>

namespace tarn {

namespace {

const std::string noDaemonText = "no daemon listens on port 53007 of this machine; \"tarn start\" launches it";

// The number that follows a label in an operation log, -1 without it.
std::int32_t numberInLog(std::string_view log, std::string_view label)
{
    const auto start = log.rfind(label);
    return start == log.npos ? -1 : std::atoi(std::string(log.substr(start + label.size())).c_str());
}

void addRecipients(LogLoad& load, const std::vector<std::string>& recipients)
{
    for (const auto& recipient : recipients)
        load.add(recipient.size());
}

} // namespace

void Library::reach()
{
    try {
        version();
    } catch (const Refusal&) {
        // Whatever it answers, it listens.
    }
}

int Library::start(const std::string& jar)
{
    const std::string path = host::systemText(jar);
    bool accepted = false;
    exchange.attempt("StartTarnDaemon", {path}, [&](char* log) {
        accepted = StartTarnDaemon(path.c_str(), log) != 0;
        return 0;
    });
    const auto answer = numberInLog(exchange.log(), "] ShellExecute returned: ");
    if (!accepted)
        throw Refusal(answer, "",
                      "the system did not launch Java: it answered " + std::to_string(answer) +
                          (answer == 2 ? " (no such program)" : ""));
    return answer;
}

void Library::stop()
{
    exchange.run("StopTarnDaemon", {},
                 [&](char* log) { return StopTarnDaemon(log) ? 0 : numberInLog(log, "] Status code: "); });
}

std::string Library::version()
{
    Buffer<char> version(room::value);
    try {
        exchange.run("GetTarnVersion", {}, [&](char* log) { return GetTarnVersion(version, log); });
    } catch (const Refusal&) {
        throw;
    } catch (const Failure&) {
        // The call logs its socket as soon as it is connected.
        if (exchange.log().find("] Got socket") == std::string::npos)
            throw Failure(Exit::noDaemon, noDaemonText);
        throw;
    }
    return version.get();
}

void Library::login(const std::string& user, const Access& access)
{
    Buffer<char> result(room::value);
    try {
        exchange.run("AuthenticateUser", {access.configFile}, [&](char* log) {
            return AuthenticateUser(user.c_str(), access.password.c_str(), toWide(access.configFile).c_str(), result,
                                    log);
        });
    } catch (const Refusal& refusal) {
        const std::string text = result.get();
        if (text.empty())
            throw;
        const bool wait = refusal.status == 18;
        Refusal detailed(refusal.status, refusal.message,
                         std::string(refusal.what()) + (wait ? "; to be tried again in seconds: " : "; see ") + text);
        detailed.details[wait ? "secondsToWait" : "text"] = text;
        throw detailed;
    }
}

void Library::verify(const std::string& sender, const std::string& configFile)
{
    exchange.run("VerifyLarchConfig", {sender, configFile},
                 [&](char* log) { return VerifyLarchConfig(sender.c_str(), toWide(configFile).c_str(), log); });
}

Envelope Library::encrypt(const EncryptRequest& request, const Access& access)
{
    const std::size_t size = room::envelope(request.message.size());
    Buffer<TarnWideChar> envelope(size), textBody(size), htmlBody(size), attachmentName(room::value);
    LogLoad load{request.from, access.configFile, access.configFile};
    load.advice = "send the message to fewer recipients at a time";
    for (const auto* list : {&request.to, &request.cc, &request.bcc})
        addRecipients(load, *list);
    try {
        exchange.run("EncryptEnvelopeOnline", load, [&](char* log) {
            return EncryptEnvelopeOnline(join(request.to, ";").c_str(), join(request.cc, ";").c_str(),
                                         join(request.bcc, ";").c_str(), request.from.c_str(), access.password.c_str(),
                                         request.message.c_str(), toWide(access.configFile).c_str(), envelope, textBody,
                                         htmlBody, attachmentName, request.encodedConfig.c_str(),
                                         request.login ? "1" : "0", log);
        });
    } catch (const Refusal& refusal) {
        // A refused login leaves no log, and so no message of the daemon's.
        if (!exchange.log().empty())
            throw;
        throw Refusal(refusal.status, "",
                      "the login of " + request.from + " was answered with status " + std::to_string(refusal.status) +
                          "; \"tarn login " + request.from + "\" tells why");
    }
    return {toUtf8(envelope.get()), toUtf8(textBody.get()), toUtf8(htmlBody.get()), toUtf8(attachmentName.get())};
}

Decryption Library::decrypt(const DecryptRequest& request, const Access& access)
{
    // The configuration's plain text is logged, so a call that returns has had less of it than the log holds, and
    // its encoded form takes at most five bytes for each.
    Buffer<char> config(room::value);
    Buffer<TarnWideChar> key(room::value), from(room::value);
    const LogLoad load{access.configFile, request.recipient, request.sessionKey};
    exchange.run("DecryptEnvelope", load, [&](char* log) {
        return DecryptEnvelope(access.password.c_str(), request.envelope.c_str(), toWide(access.configFile).c_str(),
                               request.recipient.c_str(), request.sessionKey.c_str(), config, request.keepOpen, key,
                               from, log);
    });
    return {config.get(), toUtf8(key.get()), toUtf8(from.get())};
}

std::optional<DecryptedItem> Library::nextItem()
{
    std::uint32_t nameSize = 0, contentTypeLength = 0, dataSize = 0;
    if (!GetNextDecryptedItemInfo(&nameSize, &contentTypeLength, &dataSize))
        return std::nullopt;
    DecryptedItem item;
    item.name.resize(nameSize);
    item.data.resize(dataSize);
    Buffer<char> contentType(std::size_t{contentTypeLength} + 1);
    std::vector<std::uint8_t> name(nameSize);
    GetNextDecryptedItem(&item.flags, &item.type, name.data(), contentType,
                         reinterpret_cast<std::uint8_t*>(item.data.data()));
    std::copy(name.begin(), name.end(), item.name.begin());
    item.contentType = contentType.get();
    return item;
}

PayloadStatus Library::payloadStatus(const std::string& envelope, const std::string& configFile,
                                     const std::vector<std::string>& recipients)
{
    Buffer<TarnWideChar> texts(room::text);
    Buffer<char> enrollId(room::value), from(room::value), codes(room::text);
    PayloadStatus result;
    // This call copies its log nowhere, whatever its length.
    exchange.attempt("GetPayloadStatus", {}, [&](char*) {
        result.status = GetPayloadStatus(envelope.c_str(), toWide(configFile).c_str(), join(recipients, ";").c_str(),
                                         texts, enrollId, from, codes, &result.sensitivity);
        return result.status;
    });
    if (*codes.get() == '\0')
        throwBrokenExchange("GetPayloadStatus");
    result.statuses = split(codes.get(), ";");
    result.texts = split(toUtf8(texts.get()), TARN_LIST_DELIMITER);
    result.texts.resize(result.statuses.size());
    result.enrollId = enrollId.get();
    result.from = from.get();
    return result;
}

EnvelopeRecipients Library::recipients(const std::string& envelope)
{
    Buffer<TarnWideChar> list(room::text);
    std::uint32_t sensitivity = 0;
    exchange.run("GetRecipients", {},
                 [&](char* log) { return GetRecipients(envelope.c_str(), list, &sensitivity, log); });
    EnvelopeRecipients result{split(toUtf8(list.get()), ";"), static_cast<int>(sensitivity)};
    result.addresses.pop_back(); // a ";" follows each address, also the last one
    return result;
}

} // namespace tarn
