#pragma once

#include "TarnRemoteClient.h"

#include <cstdint>

#ifdef _WIN32
#include <winsock2.h> // must come before windows.h, which the next one includes

#include <objbase.h>
#else
#include <cstdlib>
#endif

// Releases the records that GetRecipientEntries returned, as their owner does.
inline void releaseEntries(TarnRecipientEntry* entries, std::uint32_t count)
{
#ifdef _WIN32
    const auto release = CoTaskMemFree;
#else
    const auto release = std::free;
#endif
    for (std::uint32_t i = 0; i < count; ++i) {
        release(entries[i].subject);
        release(entries[i].recipient);
        release(entries[i].statusMessage);
        release(entries[i].messageId);
    }
    release(entries);
}
