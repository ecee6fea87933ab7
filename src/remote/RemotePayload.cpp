#include "remote/RemotePayload.h"

#include "remote/Collections.h"
#include "remote/Fields.h"

namespace Merrow {

TocEntry::TocEntry(CommandInputStream& stream, std::int32_t length)
{
    readItemFields(stream, length, "Length of TOC mismatch", Tagged{tag("ty"), ty}, Tagged{tag("fl"), fl},
                   Tagged{tag("da"), da}, Tagged{tag("fn"), fn}, Tagged{tag("on"), on}, Tagged{tag("fc"), fc});
}

std::vector<TocEntry*> RemotePayload::getToc() const
{
    std::vector<TocEntry*> entries;
    entries.reserve(toc.size());
    for (const auto& entry : toc) {
        entries.push_back(entry.get());
    }
    return entries;
}

void RemotePayload::readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length)
{
    if (parameter == tag("da")) {
        readCollection(stream, length, "Length of items in Collection mismatch", [&](std::int32_t entryLength) {
            toc.push_back(std::make_unique<TocEntry>(stream, entryLength));
        });
    } else if (!readField(stream, parameter, length, Tagged{tag("id"), id}, Tagged{tag("ms"), ms},
                          Tagged{tag("kt"), kt}, Tagged{tag("ku"), ku}, Tagged{tag("uu"), uu}, Tagged{tag("ec"), ec},
                          Tagged{tag("fm"), fm}, Tagged{tag("sj"), sj}, Tagged{tag("tr"), tr}, Tagged{tag("tc"), tc})) {
        RemoteLoginResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
