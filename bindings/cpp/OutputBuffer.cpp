#include "OutputBuffer.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <tarn/Client.h>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <objbase.h>
#else
#include <sys/mman.h>
#endif

namespace tarn::detail {

namespace {

// More than a page, since a large copy does not fill its pages strictly one after the other.
constexpr std::size_t guardSize = std::size_t{64} * 1024;

// The largest length that a parameter of a reply can have. No more UTF-16 units come of it.
constexpr std::size_t largestParameter = std::size_t{INT32_MAX};

// No call has more output texts than this.
std::array<std::atomic<std::uintptr_t>, 8> guards;

void exchangeGuard(std::uintptr_t from, std::uintptr_t to)
{
    for (auto& guard : guards) {
        std::uintptr_t expected = from;
        if (guard.compare_exchange_strong(expected, to)) {
            return;
        }
    }
}

#if defined(_WIN32)

// Memory that is to be written has to be committed here, which counts against the system's limit.
constexpr bool reservesFreely = false;

void* reserve(std::size_t size)
{
    void* memory = VirtualAlloc(nullptr, size + guardSize, MEM_RESERVE, PAGE_NOACCESS);
    if (memory && !VirtualAlloc(memory, size, MEM_COMMIT, PAGE_READWRITE)) {
        VirtualFree(memory, 0, MEM_RELEASE);
        return nullptr;
    }
    return memory;
}

void release(void* memory, std::size_t)
{
    VirtualFree(memory, 0, MEM_RELEASE);
}

#else

constexpr bool reservesFreely = sizeof(void*) == 8;

void release(void* memory, std::size_t size)
{
    munmap(memory, size + guardSize);
}

void* reserve(std::size_t size)
{
    void* memory =
        mmap(nullptr, size + guardSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    if (mprotect(static_cast<char*>(memory) + size, guardSize, PROT_NONE) != 0) {
        release(memory, size);
        return nullptr;
    }
    return memory;
}

#endif

} // namespace

OutputBuffer::OutputBuffer(std::size_t units, std::size_t unitSize) : memory_(nullptr), size_(0)
{
    // Where so much address space is not to be had, less of it protects as well.
    const std::size_t largest = (reservesFreely ? (std::max)(units, largestParameter) : units) + 1;
    for (const std::size_t wanted : {largest, units, room::value}) {
        size_ = (wanted * unitSize + guardSize - 1) / guardSize * guardSize;
        memory_ = reserve(size_);
        if (memory_) {
            break;
        }
    }
    if (!memory_) {
        throw std::bad_alloc();
    }
    exchangeGuard(0, reinterpret_cast<std::uintptr_t>(end()));
}

OutputBuffer::~OutputBuffer()
{
    exchangeGuard(reinterpret_cast<std::uintptr_t>(end()), 0);
    release(memory_, size_);
}

void* OutputBuffer::end() const
{
    return static_cast<char*>(memory_) + size_;
}

void releaseTaskMemory(void* memory)
{
#if defined(_WIN32)
    CoTaskMemFree(memory);
#else
    std::free(memory);
#endif
}

} // namespace tarn::detail

bool tarn::isBehindOutputBuffer(const void* address)
{
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    using namespace detail;
    return std::any_of(guards.begin(), guards.end(), [place](const auto& guard) {
        const std::uintptr_t start = guard;
        return start != 0 && place >= start && place - start < guardSize;
    });
}
