#include <TarnRemoteClient.h>
#include <tarn/Client.h>

#include "OperationLog.h"
#include "OutputBuffer.h"
#include "Text.h"
#include <charconv>

namespace tarn {

using namespace detail;

namespace {

std::int32_t toNumber(const std::string& text)
{
    std::int32_t number = -1;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

} // namespace

Envelope Client::encrypt(const EncryptRequest& request, const Access& access)
{
    const std::size_t size = room::envelope(request.message.size());
    OutputText<TarnWideChar> envelope(size);
    OutputText<TarnWideChar> textBody(size);
    OutputText<TarnWideChar> htmlBody(size);
    OutputText<TarnWideChar> attachmentName(room::value);
    // The login and the envelope each log the configuration file.
    LogLoad load{request.from, access.configFile, access.configFile};
    load.add(request.to).add(request.cc).add(request.bcc);
    const std::string to = addressList(request.to);
    const std::string cc = addressList(request.cc);
    const std::string bcc = addressList(request.bcc);
    run("EncryptEnvelopeOnline", load, {&envelope, &textBody, &htmlBody, &attachmentName}, [&](char* log) {
        return EncryptEnvelopeOnline(Narrow(to), Narrow(cc), Narrow(bcc), Narrow(request.from), Narrow(access.password),
                                     Narrow(request.message), Wide(access.configFile), envelope, textBody, htmlBody,
                                     attachmentName, Narrow(request.encodedConfig), request.login ? "1" : "0", log);
    });
    return {envelope.text(), textBody.text(), htmlBody.text(), attachmentName.text()};
}

Decryption Client::decrypt(const DecryptRequest& request, const Access& access)
{
    OutputText<char> config(room::value);
    OutputText<TarnWideChar> key(room::value);
    OutputText<TarnWideChar> from(room::value);
    const LogLoad load{access.configFile, request.recipient, request.sessionKey};
    run("DecryptEnvelope", load, {&config, &key, &from}, [&](char* log) {
        return DecryptEnvelope(Narrow(access.password), Narrow(request.envelope), Wide(access.configFile),
                               Narrow(request.recipient), Narrow(request.sessionKey), config, request.keepOpen, key,
                               from, log);
    });
    return {config.text(), key.text(), from.text()};
}

std::optional<DecryptedItem> Client::nextItem()
{
    std::uint32_t nameSize = 0;
    std::uint32_t contentTypeLength = 0;
    std::uint32_t dataSize = 0;
    if (!GetNextDecryptedItemInfo(&nameSize, &contentTypeLength, &dataSize)) {
        return std::nullopt;
    }
    DecryptedItem item;
    item.name.resize(nameSize);
    item.data.resize(dataSize);
    std::vector<char> contentType(std::size_t{contentTypeLength} + 1);
    GetNextDecryptedItem(&item.flags, &item.type, reinterpret_cast<std::uint8_t*>(item.name.data()), contentType.data(),
                         reinterpret_cast<std::uint8_t*>(item.data.data()));
    item.contentType = contentType.data();
    return item;
}

PayloadStatus Client::payloadStatus(const std::string& envelope, const std::string& configFile,
                                    const std::vector<std::string>& recipients)
{
    OutputText<TarnWideChar> texts(room::text);
    OutputText<char> enrollId(room::value);
    OutputText<char> from(room::value);
    OutputText<char> codes(room::text);
    PayloadStatus result;
    const std::string list = addressList(recipients);
    // This function copies its log nowhere, whatever its length. After a failure it writes no lists.
    run("GetPayloadStatus", {}, {&texts, &codes}, [&](char*) {
        result.lastStatus = GetPayloadStatus(Narrow(envelope), Wide(configFile), Narrow(list), texts, enrollId, from,
                                             codes, &result.sensitivity);
        return TARN_STATUS_OK;
    });
    const auto codeList = split(codes.text(), ";");
    const auto textList = split(texts.text(), TARN_LIST_DELIMITER);
    if (codeList.size() != textList.size() || codeList.size() > recipients.size()) {
        refuseAnswer("GetPayloadStatus", "its statuses and their texts differ in number");
    }
    for (std::size_t i = 0; i < codeList.size(); ++i) {
        result.recipients.push_back({recipients[i], toNumber(codeList[i]), textList[i]});
    }
    result.enrollId = enrollId.text();
    result.from = from.text();
    return result;
}

EnvelopeRecipients Client::recipients(const std::string& envelope)
{
    OutputText<TarnWideChar> list(room::text);
    std::uint32_t sensitivity = 0;
    run("GetRecipients", {}, {&list},
        [&](char* log) { return GetRecipients(Narrow(envelope), list, &sensitivity, log); });
    EnvelopeRecipients result{split(list.text(), ";"), static_cast<std::int32_t>(sensitivity)};
    result.addresses.pop_back(); // a ";" follows each address, also the last one
    return result;
}

EnrollParameters Client::enrollParameters(const std::string& address, const std::string& keyServer,
                                          const std::string& locale)
{
    EnrollParameters result;
    std::int32_t samlUser = 0;
    std::int32_t oneClickUser = 0;
    std::int32_t questionsEditable = 0;
    OutputText<TarnWideChar> locales(room::text);
    OutputText<TarnWideChar> questions(room::text);
    run("GetEnrollParameters", {address, keyServer, locale}, {&locales, &questions}, [&](char* log) {
        return GetEnrollParameters(Narrow(address), Narrow(keyServer), Wide(locale), &samlUser, &oneClickUser,
                                   &result.questionCount, &questionsEditable, locales, questions, log);
    });
    result.samlUser = samlUser != 0;
    result.oneClickUser = oneClickUser != 0;
    result.questionsEditable = questionsEditable != 0;
    result.locales = parseMapText(locales.text());
    result.questions = parseMapText(questions.text());
    return result;
}

std::vector<KeyValue> Client::enroll(const Enrollment& form)
{
    OutputText<char> result(room::value);
    const auto& questions = form.questions;
    const auto& answers = form.answers;
    const LogLoad load{form.address, form.keyServer, form.enrollId, form.sender, form.firstName, form.lastName,
                       questions[0], questions[1],   questions[2],  form.locale, form.timeFormat};
    run("UserEnroll", load, {&result}, [&](char* log) {
        return UserEnroll(Narrow(form.address), Narrow(form.keyServer), Wide(form.firstName), Wide(form.lastName),
                          Wide(form.password), Wide(form.locale), Narrow(form.enrollId), Narrow(form.sender),
                          form.simple, form.stage, Wide(form.passPhrase), Wide(questions[0]), Wide(questions[1]),
                          Wide(questions[2]), Wide(answers[0]), Wide(answers[1]), Wide(answers[2]), form.timeZone,
                          Narrow(form.timeFormat), result, log);
    });
    return parseMapText(result.text());
}

} // namespace tarn
