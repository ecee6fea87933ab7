#include "../../Host.h"

#include "../../Files.h"
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <fcntl.h>
#include <io.h>
#include <memory>
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <shellapi.h>

namespace tarn::host {

namespace {

HANDLE hiddenConsole = nullptr; // the console input whose echo is off
DWORD formerMode = 0;
UINT formerCodePage = 0; // 0 without a console

HANDLE openConsole(const wchar_t* name)
{
    const HANDLE console = CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                       OPEN_EXISTING, 0, nullptr);
    return console == INVALID_HANDLE_VALUE ? nullptr : console;
}

template <class Bytes>
Bytes convert(UINT codePage, std::wstring_view wide)
{
    const int length = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(codePage, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    Bytes bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(codePage, 0, wide.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

Secret toSecret(std::wstring_view wide)
{
    const auto bytes = convert<ClearedVector<char>>(CP_UTF8, wide);
    return std::string_view(bytes.data(), bytes.size());
}

std::optional<Secret> readLine(HANDLE console)
{
    ClearedVector<wchar_t> line;
    wchar_t unit = 0;
    for (DWORD count = 0; ReadConsoleW(console, &unit, 1, &count, nullptr) && count == 1;) {
        if (unit == L'\n') {
            return toSecret({line.data(), line.size()});
        }
        if (unit != L'\r') {
            line.push_back(unit);
        }
    }
    return std::nullopt;
}

void restoreEcho()
{
    if (hiddenConsole) {
        SetConsoleMode(hiddenConsole, formerMode);
    }
    hiddenConsole = nullptr;
}

void (*faultWatcher)(const void* address) = nullptr;

LONG WINAPI reportAccessViolation(EXCEPTION_POINTERS* exception)
{
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
        faultWatcher(reinterpret_cast<const void*>(record.ExceptionInformation[1]));
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

void prepare()
{
    SetDllDirectoryW(L""); // libraries are not looked for in the current folder
    formerCodePage = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    std::atexit(restoreTerminal);
    for (FILE* stream : {stdin, stdout, stderr}) {
        _setmode(_fileno(stream), _O_BINARY);
    }
}

std::vector<std::string> arguments(int, char**)
{
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> texts(CommandLineToArgvW(GetCommandLineW(), &count),
                                                                &LocalFree);
    std::vector<std::string> arguments;
    for (int i = 1; texts && i < count; ++i) {
        arguments.push_back(toText(texts.get()[i]));
    }
    return arguments;
}

std::optional<Secret> environment(const std::string& name)
{
    const wchar_t* value = _wgetenv(toPath(name).c_str());
    return value ? std::optional(toSecret(value)) : std::nullopt;
}

std::string systemText(const std::string& utf8)
{
    return convert<std::string>(CP_ACP, toPath(utf8).native());
}

std::string foldCase(const std::string& utf8)
{
    const std::wstring wide = toPath(utf8).native();
    std::wstring upper(wide.size(), L'\0'); // each letter by itself, as the file system does it
    LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, wide.data(), static_cast<int>(wide.size()), upper.data(),
                  static_cast<int>(upper.size()), nullptr, nullptr, 0);
    return toText(upper);
}

std::error_code renameUnlessTaken(const std::filesystem::path& from, const std::filesystem::path& to)
{
    if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH)) {
        return {};
    }
    const DWORD error = GetLastError();
    return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS
               ? std::make_error_code(std::errc::file_exists)
               : std::error_code(static_cast<int>(error), std::system_category());
}

bool isTerminal(Stream stream)
{
    return _isatty(static_cast<int>(stream)) != 0;
}

std::optional<Secret> ask(const std::string& question, Echo echo)
{
    static const HANDLE input = openConsole(L"CONIN$");
    static const HANDLE output = openConsole(L"CONOUT$");
    if (!input || !output) {
        return std::nullopt;
    }
    if (echo == Echo::hidden && GetConsoleMode(input, &formerMode)) {
        hiddenConsole = input;
        SetConsoleMode(hiddenConsole, formerMode & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
    }
    const auto show = [&](const std::wstring& text) {
        DWORD written = 0;
        return WriteConsoleW(output, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0;
    };
    auto line = show(toPath(question).native()) ? readLine(input) : std::nullopt;
    restoreEcho();
    if (echo == Echo::hidden) {
        show(L"\r\n");
    }
    return line;
}

std::span<const int> endingSignals()
{
    static constexpr std::array signals{SIGINT, SIGTERM};
    return signals;
}

// The library ends the process by TerminateProcess here, which no handler gets to see.
void watchFaults(void (*onFault)(const void* address), void (*)())
{
    faultWatcher = onFault;
    SetUnhandledExceptionFilter(reportAccessViolation);
}

void write(Stream stream, const char* text)
{
    const HANDLE file = GetStdHandle(stream == Stream::output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    DWORD written = 0;
    WriteFile(file, text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
}

void restoreTerminal()
{
    restoreEcho();
    if (formerCodePage != 0) {
        SetConsoleOutputCP(formerCodePage);
    }
}

} // namespace tarn::host
