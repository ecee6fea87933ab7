#include "Texts.h"

#include "Limits.h"

#include <algorithm>
#include <chrono>
#include <map>

namespace standin {

std::int64_t nowMillis()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string normalAddress(std::string_view address)
{
    std::string normal(trimmed(address));
    std::ranges::transform(normal, normal.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return normal;
}

bool isAddress(std::string_view address)
{
    const auto at = address.find('@');
    if (at == std::string_view::npos || at == 0 || at + 1 == address.size() || address.size() > limit::address) {
        return false;
    }
    if (address.find('@', at + 1) != std::string_view::npos) {
        return false;
    }
    return std::ranges::none_of(address, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte <= ' ' || byte == 0x7F || std::string_view(",;:<>()[]\"\\").find(c) != std::string_view::npos;
    });
}

std::string_view cutText(std::string_view text, std::size_t maxSize)
{
    auto size = std::min(text.size(), maxSize);
    while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) {
        --size;
    }
    return text.substr(0, size);
}

std::string escapeHtml(std::string_view text)
{
    static const std::map<char, std::string> entities = {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}};
    std::string escaped;
    for (const char c : text) {
        const auto entity = entities.find(c);
        escaped += entity == entities.end() ? std::string(1, c) : entity->second;
    }
    return escaped;
}

} // namespace standin
