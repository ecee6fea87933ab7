#pragma once

#include "Handlers.h"

namespace standin {

// Answers a request, one at a time and in one transaction where it uses the store: a request whose reply says that it
// failed has changed nothing but the counts of failed tries.
Reply dispatch(const Request& request, Context& context);

} // namespace standin
