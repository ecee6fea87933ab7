#include "platform/Platform.h"

#include <cstdlib>

namespace Platform {

// malloc is what the managed run-time's own task memory is on this system.
void* allocateTaskMemory(std::size_t size)
{
    return std::malloc(size);
}

void releaseTaskMemory(void* memory)
{
    std::free(memory);
}

} // namespace Platform
