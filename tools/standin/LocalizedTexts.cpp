#include "Configuration.h"
#include "Handlers.h"
#include "Languages.h"

namespace standin {

Reply localizedTexts(const Request& request, Context& context)
{
    namedConfiguration(request, context);
    StringMap names;
    StringMap plain;
    StringMap html;
    for (const auto& language : languages()) {
        const std::string locale(language.locale);
        names[locale] = language.name;
        plain[locale] = plainBody(language);
        html[locale] = htmlBody(language);
    }
    return Reply(request.code(), Status::Ok, std::to_string(names.size()) + " locales")
        .map(tag("sl"), names)
        .map(tag("tb"), plain)
        .map(tag("th"), html);
}

} // namespace standin
