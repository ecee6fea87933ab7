#include "Library.h"

#include "Text.h"

namespace tarn {

KeyServerFeatures Library::features(const std::string& configFile)
{
    std::uint8_t readBy = 0, expiration = 0, localized = 0;
    exchange.run("GetKeyServerInfo", {configFile}, [&](char* log) {
        return GetKeyServerInfo(toWide(configFile).c_str(), &readBy, &expiration, &localized, log);
    });
    return {readBy != 0, expiration != 0, localized != 0};
}

std::string Library::locales(const std::string& configFile)
{
    Buffer<TarnWideChar> list(room::text);
    exchange.run("GetSupportedLocales", {configFile},
                 [&](char* log) { return GetSupportedLocales(toWide(configFile).c_str(), list, log); });
    return toUtf8(list.get());
}

MessageBody Library::body(const std::string& locale, const std::string& configFile)
{
    Buffer<char> text(room::text), html(room::text);
    exchange.run("GetLocalizedMessageBody", {configFile}, [&](char* log) {
        return GetLocalizedMessageBody(toWide(configFile).c_str(), locale.c_str(), text, html, log);
    });
    return {text.get(), html.get()};
}

EnrollParameters Library::enrollParameters(const std::string& address, const std::string& keyServer,
                                           const std::string& locale)
{
    std::int32_t saml = 0, oneClick = 0, questionCount = 0, editable = 0;
    Buffer<TarnWideChar> locales(room::text), questions(room::text);
    exchange.run("GetEnrollParameters", {address, keyServer, locale}, [&](char* log) {
        return GetEnrollParameters(address.c_str(), keyServer.c_str(), toWide(locale).c_str(), &saml, &oneClick,
                                   &questionCount, &editable, locales, questions, log);
    });
    return {saml != 0, oneClick != 0, questionCount, editable != 0, toUtf8(locales.get()), toUtf8(questions.get())};
}

std::string Library::enroll(const Enrollment& e)
{
    Buffer<char> result(room::value);
    const LogLoad load{e.address,      e.keyServer,    e.enrollId,     e.sender, e.firstName, e.lastName,
                       e.questions[0], e.questions[1], e.questions[2], e.locale, e.timeFormat};
    exchange.run("UserEnroll", load, [&](char* log) {
        return UserEnroll(e.address.c_str(), e.keyServer.c_str(), toWide(e.firstName).c_str(),
                          toWide(e.lastName).c_str(), toWide(e.password).c_str(), toWide(e.locale).c_str(),
                          e.enrollId.c_str(), e.sender.c_str(), e.simple, e.stage, toWide(e.passPhrase).c_str(),
                          toWide(e.questions[0]).c_str(), toWide(e.questions[1]).c_str(),
                          toWide(e.questions[2]).c_str(), toWide(e.answers[0]).c_str(), toWide(e.answers[1]).c_str(),
                          toWide(e.answers[2]).c_str(), e.timeZone, e.timeFormat.c_str(), result, log);
    });
    return result.get();
}

} // namespace tarn
