#include "Accounts.h"
#include "Configuration.h"
#include "Handlers.h"
#include "Texts.h"

namespace standin {

Reply login(const Request& request, Context& context)
{
    namedConfiguration(request.text(tag("ep")));
    const auto user = normalAddress(request.text(tag("to")));
    if (!isAddress(user))
        throw Refusal{Status::BadValue, "the user name is not an e-mail address"};
    Accounts accounts(context.database);
    auto verdict = accounts.authenticate(user, request.text(tag("ky")));
    if (verdict.status == Status::NotEnrolled)
        verdict.status = Status::EnrollmentUnfinished;

    Reply reply(request.code(), verdict.status, verdict.status == Status::Ok ? "logged in" : verdict.message);
    if (verdict.status == Status::Ok)
        reply.map(tag("sl"), accounts.openSession(user));
    if (verdict.status == Status::EnrollmentUnfinished)
        reply.text(tag("lk"), Accounts::enrollmentLink(accounts.enrollmentId(user)));
    if (verdict.status == Status::TooManyTries)
        reply.longNumber(tag("se"), verdict.secondsToWait);
    return reply;
}

} // namespace standin
