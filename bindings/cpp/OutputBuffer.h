#pragma once

#include "Text.h"
#include <TarnRemoteClient.h>
#include <cstddef>
#include <string>

namespace tarn::detail {

// How many units each kind of output text gets where address space or memory has to be spared. Where neither has, each
// gets what the largest parameter of a reply can hold.
namespace room {
// One value: an address, an id, a link, a key, a version. An encoded configuration takes up to five bytes for each
// byte of a text that must fit the operation log.
constexpr std::size_t value = std::size_t{1} << 20;
// A list or a whole text: recipients, locales, questions, message bodies.
constexpr std::size_t text = std::size_t{16} << 20;
// An envelope and the texts around it, which quote parts of the message in HTML: `"` becomes "&quot;".
constexpr std::size_t envelope(std::size_t messageSize)
{
    return 8 * messageSize + value;
}
} // namespace room

// Memory for a text that the library writes without a bound. What no text fills is never touched. Behind it lies a
// guard without access, so that a text which is too large ends the process instead of overwriting something else.
class OutputBuffer
{
public:
    OutputBuffer(const OutputBuffer&) = delete;
    OutputBuffer& operator=(const OutputBuffer&) = delete;

    virtual bool written() const = 0;
    void* end() const; // where the guard starts

protected:
    OutputBuffer(std::size_t units, std::size_t unitSize);
    ~OutputBuffer();

    void* memory_;

private:
    std::size_t size_;
};

template <class Unit>
class OutputText final : public OutputBuffer
{
public:
    explicit OutputText(std::size_t units) : OutputBuffer(units, sizeof(Unit))
    {
        get()[0] = unwritten;
        get()[1] = 0;
    }

    Unit* get() const { return static_cast<Unit*>(memory_); }
    operator Unit*() { return get(); }

    bool written() const override { return get()[0] != unwritten || get()[1] != 0; }

    std::string text() const
    {
        if (!written()) {
            return {};
        }
        if constexpr (sizeof(Unit) == 1) {
            return get();
        } else {
            return toUtf8(get());
        }
    }

private:
    // What no text consists of: an unpaired surrogate, or a byte that UTF-8 does not have.
    static constexpr Unit unwritten = static_cast<Unit>(sizeof(Unit) == 1 ? 0xFF : 0xDFFF);
};

// Releases what the library allocated for its caller.
void releaseTaskMemory(void* memory);

} // namespace tarn::detail
