#include "protocol/CommandException.h"

namespace Merrow {

void raise(const char* message)
{
    throw new CommandException(message);
}

} // namespace Merrow
