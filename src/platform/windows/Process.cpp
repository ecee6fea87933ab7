#include "platform/Platform.h"

#include <cstring>
#include <windows.h>

#include <shellapi.h>

namespace Platform {

void prepareExceptions()
{
    thread_local const bool prepared = [] {
        try {
            throw 0;
        } catch (int) {
            return true;
        }
    }();
    static_cast<void>(prepared);
}

std::uint32_t lastError()
{
    return GetLastError();
}

std::int32_t launchHidden(const char* program, const char* parameters)
{
    const HINSTANCE result = ShellExecuteA(nullptr, "", program, parameters, "", SW_HIDE);
    return static_cast<std::int32_t>(reinterpret_cast<INT_PTR>(result));
}

void copyOrEndProcess(char* destination, std::size_t size, const char* text)
{
    // The host may have set its own invalid-parameter handler: it runs inside strcpy_s.
    if (strcpy_s(destination, size, text) != 0) {
        constexpr UINT invalidParameter = 0xC0000417; // STATUS_INVALID_CRUNTIME_PARAMETER
        TerminateProcess(GetCurrentProcess(), invalidParameter);
    }
}

} // namespace Platform
