#include "text/Conversion.h"

#include "platform/Platform.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>

namespace Text {

std::string wideToUtf8(WideView text)
{
    if (text.empty()) {
        return {};
    }
    if (text.size() > INT32_MAX) {
        throw std::length_error("string too long");
    }
    const auto length = static_cast<std::int32_t>(text.size());
    const std::int32_t size = Platform::wideToUtf8(text.data(), length, nullptr, 0);
    std::string result(static_cast<std::size_t>(size), '\0');
    Platform::wideToUtf8(text.data(), length, result.data(), size);
    return result;
}

std::string wideToUtf8(const WideChar* text)
{
    return text == nullptr ? std::string() : wideToUtf8(WideView(text));
}

WideChar* utf8ToTaskMemWide(const char* text)
{
    const std::int32_t units = Platform::utf8ToWide(text, -1, nullptr, 0);
    if (units < 1) {
        return nullptr;
    }
    const std::size_t size = static_cast<std::size_t>(units) * sizeof(WideChar);
    auto* result = static_cast<WideChar*>(Platform::allocateTaskMemory(size));
    if (result == nullptr) {
        throw std::bad_alloc();
    }
    std::memset(result, 0, size);
    Platform::utf8ToWide(text, -1, result, units);
    return result;
}

void utf8IntoWide(const char* text, WideChar* destination)
{
    // The capacity is the text's own size: how large the destination is, only the caller knows.
    const std::int32_t units = Platform::utf8ToWide(text, -1, nullptr, 0);
    if (units > 0) {
        Platform::utf8ToWide(text, -1, destination, units);
    }
}

void copyOut(const std::string& text, char* destination)
{
    std::strcpy(destination, text.c_str());
}

std::int32_t formatText(char* buffer, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const int count = std::vsprintf(buffer, format, arguments);
    va_end(arguments);
    return count;
}

} // namespace Text
