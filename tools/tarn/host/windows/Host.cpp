#include "../../Host.h"

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
#include <winsock2.h>

#include <windows.h>

#include <shellapi.h>

namespace tarn::host {

namespace {

struct CloseHandleOf
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, CloseHandleOf>;

HANDLE hiddenConsole = nullptr; // the console input whose echo is off
DWORD formerMode = 0;
UINT formerCodePage = 0; // 0 without a console

HANDLE openConsole(const wchar_t* name)
{
    const HANDLE console = CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                       OPEN_EXISTING, 0, nullptr);
    return console == INVALID_HANDLE_VALUE ? nullptr : console;
}

std::string toBytes(UINT codePage, const std::wstring& wide)
{
    const int length = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(codePage, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(codePage, 0, wide.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::string toUtf8(const std::wstring& wide)
{
    return toBytes(CP_UTF8, wide);
}

std::wstring toWide(const std::string& utf8)
{
    const int length = static_cast<int>(utf8.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), size);
    return wide;
}

bool writeAll(HANDLE console, const std::wstring& text)
{
    DWORD written = 0;
    return WriteConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0;
}

std::optional<std::string> readLine(HANDLE console)
{
    std::wstring line;
    wchar_t unit = 0;
    for (DWORD count = 0; ReadConsoleW(console, &unit, 1, &count, nullptr) && count == 1;) {
        if (unit == L'\n') {
            return toUtf8(line);
        }
        if (unit != L'\r') {
            line += unit;
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
        arguments.push_back(toUtf8(texts.get()[i]));
    }
    return arguments;
}

std::optional<std::string> environment(const char* name)
{
    const wchar_t* value = _wgetenv(toWide(name).c_str());
    return value ? std::optional<std::string>(toUtf8(value)) : std::nullopt;
}

std::string systemText(const std::string& utf8)
{
    return toBytes(CP_ACP, toWide(utf8));
}

std::string foldCase(const std::string& utf8)
{
    const std::wstring wide = toWide(utf8);
    std::wstring upper(wide.size(), L'\0'); // each letter by itself, as the file system does it
    LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, wide.data(), static_cast<int>(wide.size()), upper.data(),
                  static_cast<int>(upper.size()), nullptr, nullptr, 0);
    return toUtf8(upper);
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

bool listensOn(std::uint16_t port)
{
    WSADATA data;
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0) {
        return false;
    }
    const SOCKET probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool connected = connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    closesocket(probe);
    WSACleanup();
    return connected;
}

bool showsErrors()
{
    return _isatty(_fileno(stderr)) != 0;
}

bool showsOutput()
{
    return _isatty(_fileno(stdout)) != 0;
}

std::optional<std::string> ask(const std::string& question, Echo echo)
{
    const Handle input(openConsole(L"CONIN$"));
    const Handle output(openConsole(L"CONOUT$"));
    if (!input || !output) {
        return std::nullopt;
    }
    if (echo == Echo::hidden && GetConsoleMode(input.get(), &formerMode)) {
        hiddenConsole = input.get();
        SetConsoleMode(hiddenConsole, formerMode & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
    }
    std::optional<std::string> line;
    if (writeAll(output.get(), toWide(question))) {
        line = readLine(input.get());
    }
    restoreEcho();
    if (echo == Echo::hidden) {
        writeAll(output.get(), L"\r\n");
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

void writeError(const char* text)
{
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
}

void restoreTerminal()
{
    restoreEcho();
    if (formerCodePage != 0) {
        SetConsoleOutputCP(formerCodePage);
    }
}

} // namespace tarn::host
