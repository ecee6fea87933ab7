#pragma once

#include "Handlers.h"

namespace standin {

// Answers a request, in one transaction where it uses the store: a request whose reply says that it failed has
// changed nothing but the counts of failed tries.
Reply dispatch(const Request& request, Context& context);

} // namespace standin
