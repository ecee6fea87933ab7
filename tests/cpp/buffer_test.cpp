// What protects a caller of the C++ wrapper from a text without a bound.
#include "OutputBuffer.h"

#include <gtest/gtest.h>
#include <tarn/Client.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>
#endif

using namespace tarn;
using namespace tarn::detail;

namespace {

constexpr int atGuard = 42;
constexpr int elsewhere = 43;

#ifdef _WIN32
LONG WINAPI endAtFault(EXCEPTION_POINTERS* fault)
{
    const auto* address = reinterpret_cast<const void*>(fault->ExceptionRecord->ExceptionInformation[1]);
    ExitProcess(isBehindOutputBuffer(address) ? atGuard : elsewhere);
}

void watchFaults()
{
    SetUnhandledExceptionFilter(endAtFault);
}
#else
void endAtFault(int, siginfo_t* fault, void*)
{
    _exit(isBehindOutputBuffer(fault->si_addr) ? atGuard : elsewhere);
}

void watchFaults()
{
    struct sigaction action = {};
    action.sa_sigaction = endAtFault;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &action, nullptr);
}
#endif

template <class Unit>
void writeUpTo(void* end, std::ptrdiff_t excess)
{
    static_cast<volatile Unit*>(end)[-1] = 1;
    for (std::ptrdiff_t i = 0; i < excess; ++i) {
        static_cast<volatile Unit*>(end)[i] = 1;
    }
}

} // namespace

TEST(CppBufferDeathTest, AnOverrunEndsInTheGuard)
{
    OutputText<char> first(room::value);
    OutputText<TarnWideChar> second(room::text);
    writeUpTo<char>(first.end(), 0);
    writeUpTo<TarnWideChar>(second.end(), 0);
    EXPECT_EXIT((watchFaults(), writeUpTo<char>(first.end(), 1)), testing::ExitedWithCode(atGuard), "");
    EXPECT_EXIT((watchFaults(), writeUpTo<TarnWideChar>(second.end(), 1)), testing::ExitedWithCode(atGuard), "");
    void* former = nullptr;
    {
        OutputText<char> third(room::value);
        former = third.end();
        EXPECT_TRUE(isBehindOutputBuffer(former));
        EXPECT_FALSE(isBehindOutputBuffer(static_cast<char*>(former) - 1));
    }
    EXPECT_FALSE(isBehindOutputBuffer(former));
}

TEST(CppBuffer, KnowsWhetherATextWasWritten)
{
    OutputText<TarnWideChar> wide(1);
    OutputText<char> narrow(1);
    EXPECT_FALSE(wide.written() || narrow.written());
    EXPECT_EQ(wide.text() + narrow.text(), "");
    *wide = 0;
    *narrow = 0;
    EXPECT_TRUE(wide.written() && narrow.written());
}

#ifndef _WIN32
TEST(CppBuffer, LessAddressSpaceGivesSmallerBuffers)
{
    const auto size = [](const OutputText<char>& text) { return static_cast<char*>(text.end()) - text.get(); };
    if constexpr (sizeof(void*) == 8) {
        EXPECT_GT(size(OutputText<char>(room::value)), INT32_MAX);
    }
#ifndef TARN_SANITIZED // its own memory would not fit
    const rlimit limit{std::size_t{1} << 30, RLIM_INFINITY};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
    OutputText<char> text(room::text);
    EXPECT_EQ(size(text), std::ptrdiff_t{room::text});
    EXPECT_EQ(size(OutputText<char>(limit.rlim_cur)), std::ptrdiff_t{room::value});
#endif
}
#endif
