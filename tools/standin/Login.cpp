#include "Accounts.h"
#include "Configuration.h"
#include "Handlers.h"
#include "Texts.h"

namespace standin {

Reply login(const Request& request, Context& context)
{
    namedConfiguration(request, context);
    const auto user = normalAddress(request.text(tag("to")));
    demand(isAddress(user), Status::BadValue, "the user name is not an e-mail address");
    Accounts accounts(context.database);
    auto verdict = accounts.authenticate(user, request.text(tag("ky")));
    if (verdict.status == Status::Ok) {
        return Reply(request.code(), Status::Ok, "logged in").map(tag("sl"), accounts.openSession(user));
    }
    if (verdict.status == Status::NotEnrolled) {
        verdict.status = Status::EnrollmentUnfinished;
    }
    Reply reply(request.code(), verdict);
    if (verdict.status == Status::EnrollmentUnfinished) {
        reply.text(tag("lk"), Accounts::enrollmentLink(accounts.enrollmentId(user)));
    }
    return reply;
}

} // namespace standin
