#pragma once

#include <string_view>

// The names of the envelope configuration's settings, in their order of definition.
namespace Text::ConfigKey {

inline constexpr std::string_view algorithmPrefix = "algorithm.";
inline constexpr std::string_view bodytemplateTextFilename = "bodytemplate.text.filename";
inline constexpr std::string_view bodytemplateTextMimetype = "bodytemplate.text.mimetype";
inline constexpr std::string_view bodytemplateTextTemplateengine = "bodytemplate.text.templateengine";
inline constexpr std::string_view bodytemplateTextFileencoding = "bodytemplate.text.fileencoding";
inline constexpr std::string_view bodytemplateHtmlFilename = "bodytemplate.html.filename";
inline constexpr std::string_view bodytemplateHtmlMimetype = "bodytemplate.html.mimetype";
inline constexpr std::string_view bodytemplateHtmlTemplateengine = "bodytemplate.html.templateengine";
inline constexpr std::string_view bodytemplateHtmlFileencoding = "bodytemplate.html.fileencoding";
inline constexpr std::string_view inlinehtml = "inlinehtml";
inline constexpr std::string_view messagebarFilename = "messagebar.filename";
inline constexpr std::string_view messagebarMimetype = "messagebar.mimetype";
inline constexpr std::string_view messagebarTemplateengine = "messagebar.templateengine";
inline constexpr std::string_view messagebarFileencoding = "messagebar.fileencoding";
inline constexpr std::string_view messagebarHelphost = "messagebar.helphost";
inline constexpr std::string_view messagebarLogourl = "messagebar.logourl";
inline constexpr std::string_view messagebarLogohref = "messagebar.logohref";
inline constexpr std::string_view messagebarSecurereplyurl = "messagebar.securereplyurl";
inline constexpr std::string_view hostname = "hostname";
inline constexpr std::string_view secureport = "secureport";
inline constexpr std::string_view unsecureport = "unsecureport";
inline constexpr std::string_view internalUrl = "internal.url";
inline constexpr std::string_view externalSecureUrl = "external.secure.url";
inline constexpr std::string_view externalUnsecureUrl = "external.unsecure.url";
inline constexpr std::string_view passwordexpiredUrl = "passwordexpired.url";
inline constexpr std::string_view keyserverToken = "keyserver.token";
inline constexpr std::string_view proxyFilename = "proxy.filename";
inline constexpr std::string_view keyserverHost = "keyserver.host";
inline constexpr std::string_view keyserverExternalurl = "keyserver.externalurl";
inline constexpr std::string_view keyserverProxy = "keyserver.proxy";
inline constexpr std::string_view keyserverInternalurl = "keyserver.internalurl";
inline constexpr std::string_view graphicUrl = "graphic.url";
inline constexpr std::string_view enrollmentUrl = "enrollment.url";
inline constexpr std::string_view gptBaseurl = "gpt.baseurl";
inline constexpr std::string_view gptToken = "gpt.token";
inline constexpr std::string_view gptTokenalias = "gpt.tokenalias";
inline constexpr std::string_view accountid = "accountid";
inline constexpr std::string_view authenticationProvider = "authentication.provider";
inline constexpr std::string_view gptEnable = "gpt.enable";
inline constexpr std::string_view identity = "identity";
inline constexpr std::string_view jceprovider = "jceprovider";
inline constexpr std::string_view lookupname = "lookupname";
inline constexpr std::string_view masterkeybase = "masterkeybase";
inline constexpr std::string_view openerhost = "openerhost";
inline constexpr std::string_view openerurl = "openerurl";
inline constexpr std::string_view registrationUrl = "registration.url";
inline constexpr std::string_view rid = "rid";
inline constexpr std::string_view securereplyhost = "securereplyhost";
inline constexpr std::string_view securereplyurl = "securereplyurl";
inline constexpr std::string_view signerinfoPrivatekey = "signerinfo.privatekey";
inline constexpr std::string_view securereplyToken = "securereply.token";
inline constexpr std::string_view authframeUrl = "authframe.url";

} // namespace Text::ConfigKey
