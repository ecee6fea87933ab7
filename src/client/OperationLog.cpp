#include "client/OperationLog.h"

namespace Client {

std::string& operationLog()
{
    // Never destroyed: the host may still call from its own static objects' destructors.
    static std::string& text = *new std::string;
    return text;
}

} // namespace Client
