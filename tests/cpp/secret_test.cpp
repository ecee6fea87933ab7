// That secrets do not stay behind in memory: this process looks for them in its own heap and stack.
#include "Text.h"

#include <fstream>
#include <gtest/gtest.h>
#include <tarn/Secret.h>

using namespace tarn;

// AddressSanitizer has its heap elsewhere.
#if defined(__linux__) && !defined(TARN_SANITIZED)
namespace {

constexpr std::size_t length = 80;
// The allocator writes over the beginning of what is freed.
constexpr std::size_t lookedForFrom = 40;

// What is looked for is nowhere in the program as it is, or it would be found there.
char character(std::size_t index)
{
    return static_cast<char>('a' + (index * index + index / 5) % 26);
}

ClearedVector<char> clearText()
{
    ClearedVector<char> text;
    for (std::size_t i = 0; i < length; ++i) {
        text.push_back(character(i));
    }
    return text;
}

template <class Unit>
std::size_t occurrences()
{
    std::size_t count = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (!line.ends_with("[heap]") && !line.ends_with("[stack]")) {
            continue;
        }
        char* rest = nullptr;
        const auto* place = reinterpret_cast<const char*>(std::strtoull(line.c_str(), &rest, 16));
        const auto* end = reinterpret_cast<const char*>(std::strtoull(rest + 1, nullptr, 16));
        for (; place + length * sizeof(Unit) <= end; place += sizeof(Unit)) {
            const auto* units = reinterpret_cast<const volatile Unit*>(place);
            std::size_t i = lookedForFrom;
            while (i < length && units[i] == static_cast<Unit>(character(i))) {
                ++i;
            }
            count += i == length;
        }
    }
    return count;
}

} // namespace

TEST(CppSecret, LeavesNoCopyInFreedMemory)
{
    {
        const auto text = clearText();
        Secret secret(std::string_view(text.data(), text.size()));
        const Secret copy = secret;
        const std::vector<Secret> moved{std::move(secret)};
        ASSERT_GE(occurrences<char>(), 3u);
        const detail::Wide wide(copy);
        ASSERT_EQ(occurrences<TarnWideChar>(), 1u);
    }
    EXPECT_EQ(occurrences<char>(), 0u);
    EXPECT_EQ(occurrences<TarnWideChar>(), 0u);
}
#endif

TEST(CppSecret, IsAText)
{
    Secret secret("one");
    const Secret other = std::move(secret);
    secret = other;
    EXPECT_EQ(std::string(secret.c_str()) + other.c_str(), "oneone");
    EXPECT_TRUE(Secret().empty() && Secret("").empty());
    EXPECT_STREQ(Secret().c_str(), "");
    EXPECT_THROW(detail::Narrow(Secret(std::string_view("a\0b", 3))), std::invalid_argument);
}
