#include "client/ConfigOutput.h"

#include "client/OperationLog.h"
#include "text/Conversion.h"

namespace Client {

void getEnvelopeConfig(const StringMap& entries, bool encode, char* destination)
{
    const std::string plain = Text::formatConfigMap(entries);
    if (encode) {
        std::string consumed = plain;
        Text::copyOut(Text::encodeCharCodes(consumed), destination);
    } else {
        Text::copyOut(plain, destination);
    }
    log("getEnvelopeConfig: ", plain);
}

} // namespace Client
