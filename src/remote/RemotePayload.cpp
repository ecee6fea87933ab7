#include "remote/RemotePayload.h"

#include "remote/Collections.h"

namespace Merrow {

TocEntry::TocEntry(CommandInputStream& stream, std::int32_t length)
{
    readCountedParameters(stream, length, "Length of TOC mismatch", [&](Tag parameter, std::int32_t valueLength) {
        switch (parameter) {
        case tag("ty"):
            ty = stream.readInt();
            break;
        case tag("fl"):
            fl = stream.readInt();
            break;
        case tag("da"):
            da = stream.readString(valueLength);
            break;
        case tag("fn"):
            fn = stream.readString(valueLength);
            break;
        case tag("on"):
            on = stream.readString(valueLength);
            break;
        case tag("fc"):
            fc = stream.readString(valueLength);
            break;
        default:
            break;
        }
    });
}

RemotePayload::RemotePayload(CommandInputStream& stream)
{
    readResponse(code("DE"), stream);
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
    switch (parameter) {
    case tag("da"):
        readCollection(stream, length, "Length of items in Collection mismatch", [&](std::int32_t entryLength) {
            toc.push_back(std::make_unique<TocEntry>(stream, entryLength));
        });
        break;
    case tag("id"):
        id = stream.readString(length);
        break;
    case tag("ms"):
        ms = stream.readInt();
        break;
    case tag("kt"):
        kt = stream.readStringMap(length);
        break;
    case tag("ku"):
        ku = stream.readString(length);
        break;
    case tag("uu"):
        uu = stream.readString(length);
        break;
    case tag("ec"):
        ec = stream.readStringMap(length);
        break;
    case tag("fm"):
        fm = stream.readString(length);
        break;
    case tag("sj"):
        sj = stream.readString(length);
        break;
    case tag("tr"):
        tr = stream.readStringArray(length);
        break;
    case tag("tc"):
        tc = stream.readStringArray(length);
        break;
    default:
        RemoteLoginResponse::readParameter(stream, parameter, length);
    }
}

} // namespace Merrow
