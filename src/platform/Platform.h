#pragma once

#include "platform/WideText.h"

#include <cstddef>
#include <cstdint>

// The one place that knows the operating system. Each function is defined once for each system, with the same contract.
namespace Platform {

// ---- Sockets. Handles are signed 32-bit numbers, -1 for none.

// Starts the socket system. Returns 0, or the system's error number.
int startSockets();

// Undoes one successful startSockets.
void cleanUpSockets();

// Creates an IPv4 stream socket. Returns -1 on failure.
std::int32_t createSocket();

// Connects to a TCP port of the loopback interface, then switches off the delaying of small sends (a failure of that
// alone is ignored). Returns false on failure; lastSocketError says why when the connection was refused.
bool connectToLoopback(std::int32_t socket, std::uint16_t port);

// One send or receive, blocking. What is sent leaves at once or shortly afterwards, at the latest when the next receive
// waits. Returns the bytes moved, 0 when the peer has closed the connection in an orderly way (receiving alone), or -1.
// A signal neither ends the call nor is raised by it. A connection that was reset answers -1 to every receive.
std::int32_t sendBytes(std::int32_t socket, const void* bytes, std::int32_t count);
std::int32_t receiveBytes(std::int32_t socket, void* bytes, std::int32_t count);

void closeSocket(std::int32_t socket);

int lastSocketError();

// ---- Process

// The calling thread's last error number.
std::uint32_t lastError();

// Makes sure that throwing an exception leaves the calling thread's last error number alone: some run-times overwrite
// it when they set up a thread's first throw.
void prepareExceptions();

// Starts a program in the background, without a window. `program` is an absolute path, which may be enclosed in double
// quotes. The parameter text is split at blanks. Returns a number greater than 32 when the launch was accepted, 2 when
// there is no such program, another number up to 32 for other failures.
std::int32_t launchHidden(const char* program, const char* parameters);

// Copies a text with its terminator. A null destination or a text that does not fit ends the process, after the
// destination was made the empty text.
void copyOrEndProcess(char* destination, std::size_t size, const char* text);

// ---- Memory that the managed caller releases

void* allocateTaskMemory(std::size_t size);
void releaseTaskMemory(void* memory);

// ---- Conversion between UTF-8 and UTF-16

// Both convert `count` units, -1 for a text up to and including its terminator, into `out`. With capacity 0 they only
// count. Return the units written or needed; 0 when there is nothing to convert, the capacity does not suffice, or the
// number is out of range. Ill-formed input becomes U+FFFD.
std::int32_t utf8ToWide(const char* text, std::int32_t count, WideChar* out, std::int32_t capacity);
std::int32_t wideToUtf8(const WideChar* text, std::int32_t count, char* out, std::int32_t capacity);

} // namespace Platform
