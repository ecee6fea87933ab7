#include "client/OperationLog.h"

namespace Client {

std::string& operationLog()
{
    static std::string text;
    return text;
}

} // namespace Client
