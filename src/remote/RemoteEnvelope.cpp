#include "remote/RemoteEnvelope.h"

#include "remote/Collections.h"

namespace Merrow {

LocalizedEnvelope::LocalizedEnvelope(CommandInputStream& stream, std::int32_t length)
{
    readCountedParameters(stream, length, "Length of localized envelope mismatch",
                          [&](Tag parameter, std::int32_t valueLength) {
                              switch (parameter) {
                              case tag("lc"):
                                  lc = stream.readString(valueLength);
                                  break;
                              case tag("rc"):
                                  rc = stream.readStringArray(valueLength);
                                  break;
                              case tag("en"):
                                  en = stream.readString(valueLength);
                                  break;
                              case tag("ct"):
                                  ct = stream.readString(valueLength);
                                  break;
                              case tag("tb"):
                                  tb = stream.readString(valueLength);
                                  break;
                              case tag("th"):
                                  th = stream.readString(valueLength);
                                  break;
                              default:
                                  break;
                              }
                          });
}

RemoteEnvelope::RemoteEnvelope(CommandInputStream& stream)
{
    readResponse(code("BE"), stream);
}

RemoteEnvelope::~RemoteEnvelope()
{
    while (!items.empty()) {
        items.pop_back();
    }
}

void RemoteEnvelope::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    switch (parameter) {
    case tag("en"):
        en = stream.readString(length);
        break;
    case tag("ct"):
        ct = stream.readString(length);
        break;
    case tag("le"):
        readCollection(stream, length, "Length of items in Collection mismatch", [&](std::int32_t itemLength) {
            items.push_back(std::make_unique<LocalizedEnvelope>(stream, itemLength));
        });
        break;
    case tag("id"):
        id = stream.readString(length);
        break;
    case tag("an"):
        an = stream.readString(length);
        break;
    case tag("lc"):
        lc = stream.readString(length);
        break;
    case tag("th"):
        th = stream.readString(length);
        break;
    case tag("tb"):
        tb = stream.readString(length);
        break;
    default:
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
