#include "Reply.h"

#include "Limits.h"
#include "Texts.h"

namespace standin {

Reply::Reply(Tag code, Status status, std::string_view statusMessage) : status_(status)
{
    message_.code = code;
    number(tag("st"), static_cast<std::int16_t>(status));
    const auto shown = cutText(statusMessage, limit::statusMessage);
    text(tag("em"), std::string(shown) + (shown.size() < statusMessage.size() ? "..." : ""));
}

Reply::Reply(Tag code, const Verdict& verdict) : Reply(code, verdict.status, verdict.message)
{
    if (verdict.secondsToWait > 0) {
        number(tag("se"), verdict.secondsToWait);
    }
}

} // namespace standin
