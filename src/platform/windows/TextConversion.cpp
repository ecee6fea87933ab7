#include "platform/Platform.h"

#include <windows.h>

namespace Platform {

std::int32_t utf8ToWide(const char* text, std::int32_t count, WideChar* out, std::int32_t capacity)
{
    return MultiByteToWideChar(CP_UTF8, 0, text, count, out, capacity);
}

std::int32_t wideToUtf8(const WideChar* text, std::int32_t count, char* out, std::int32_t capacity)
{
    return WideCharToMultiByte(CP_UTF8, 0, text, count, out, capacity, nullptr, nullptr);
}

} // namespace Platform
