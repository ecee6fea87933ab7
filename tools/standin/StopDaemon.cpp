#include "Handlers.h"

namespace standin {

Reply stopDaemon(const Request& request, Context& context)
{
    context.stopping = true;
    return {request.code(), Status::Ok, "stopping"};
}

} // namespace standin
