#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace tarn {

// Overwrites memory even though nothing reads it again, which a compiler may otherwise leave out.
void clearMemory(void* memory, std::size_t size);

// Memory that is cleared before it is freed, also when a container grows or moves.
template <class T>
struct ClearingAllocator
{
    using value_type = T;

    ClearingAllocator() = default;
    template <class Other>
    ClearingAllocator(const ClearingAllocator<Other>&)
    {
    }

    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* memory, std::size_t count)
    {
        clearMemory(memory, count * sizeof(T));
        std::allocator<T>().deallocate(memory, count);
    }
    bool operator==(const ClearingAllocator&) const { return true; }
};

// A vector and not a string, which would keep a short text within itself.
template <class T>
using ClearedVector = std::vector<T, ClearingAllocator<T>>;

// A password, pass phrase, session key or answer in UTF-8. Each copy is cleared at the end of its life; what it was
// made from is its maker's to clear.
class Secret
{
public:
    Secret() = default;
    template <std::convertible_to<std::string_view> Text>
    Secret(const Text& text)
    {
        const std::string_view view = text;
        text_.reserve(view.size() + 1);
        text_.assign(view.begin(), view.end());
        text_.push_back('\0');
    }

    operator std::string_view() const { return {c_str(), text_.empty() ? 0 : text_.size() - 1}; }
    const char* c_str() const { return text_.empty() ? "" : text_.data(); }
    bool empty() const { return std::string_view(*this).empty(); }

private:
    ClearedVector<char> text_; // with its terminator, or nothing
};

} // namespace tarn
