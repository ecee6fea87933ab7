#include "remote/RemoteEnvelope.h"

#include "remote/Collections.h"
#include "remote/Fields.h"

namespace Merrow {

LocalizedEnvelope::LocalizedEnvelope(CommandInputStream& stream, std::int32_t length)
{
    readItemFields(stream, length, "Length of localized envelope mismatch", Tagged{tag("lc"), lc},
                   Tagged{tag("rc"), rc}, Tagged{tag("en"), en}, Tagged{tag("ct"), ct}, Tagged{tag("tb"), tb},
                   Tagged{tag("th"), th});
}

RemoteEnvelope::~RemoteEnvelope()
{
    // A vector may destroy its items in any order; theirs is from the last to the first.
    while (!items.empty()) {
        items.pop_back();
    }
}

void RemoteEnvelope::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (parameter == tag("le")) {
        readCollection(stream, length, "Length of items in Collection mismatch", [&](std::int32_t itemLength) {
            items.push_back(std::make_unique<LocalizedEnvelope>(stream, itemLength));
        });
    } else if (!readField(stream, parameter, length, Tagged{tag("en"), en}, Tagged{tag("ct"), ct},
                          Tagged{tag("id"), id}, Tagged{tag("an"), an}, Tagged{tag("lc"), lc}, Tagged{tag("th"), th},
                          Tagged{tag("tb"), tb})) {
        RemoteResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
