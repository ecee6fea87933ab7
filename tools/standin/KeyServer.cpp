#include "Configuration.h"
#include "Handlers.h"
#include "LocalizedTexts.h"

namespace standin {

Reply keyServerVersion(const Request& request, Context&)
{
    namedConfiguration(request.text(tag("ep")));
    const StringMap features = {
        {"version", "7.6.1"},
        {"feature.enrollment", "true"},
        {"feature.expiration", "true"},
        {"feature.localizedText", "true"},
        {"feature.lock", "true"},
        {"feature.readByEnabled", "true"},
        {"feature.singleSignOn", "false"},
        {"product", "tarn-standin"},
    };
    return Reply(request.code(), Status::Ok, "key server features").map(tag("kd"), features);
}

Reply localizedTexts(const Request& request, Context&)
{
    namedConfiguration(request.text(tag("ep")));
    StringMap names;
    StringMap plain;
    StringMap html;
    for (const auto& text : allLocalizedTexts()) {
        const std::string locale(text.locale);
        names[locale] = text.name;
        plain[locale] = plainBody(text);
        html[locale] = htmlBody(text);
    }
    return Reply(request.code(), Status::Ok, std::to_string(names.size()) + " locales")
        .map(tag("sl"), names)
        .map(tag("tb"), plain)
        .map(tag("th"), html);
}

} // namespace standin
