#include "Configuration.h"
#include "Handlers.h"

namespace standin {

Reply keyServerVersion(const Request& request, Context& context)
{
    namedConfiguration(request, context);
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

} // namespace standin
