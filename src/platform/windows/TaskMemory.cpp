#include "platform/Platform.h"

#include <objbase.h>

namespace Platform {

void* allocateTaskMemory(std::size_t size)
{
    return CoTaskMemAlloc(size);
}

void releaseTaskMemory(void* memory)
{
    CoTaskMemFree(memory);
}

} // namespace Platform
