#pragma once

#include "TarnRemoteClient.h"
#include "client/DaemonConnection.h"
#include "client/OperationLog.h"
#include "platform/Platform.h"
#include "protocol/CommandException.h"
#include "protocol/CommandInputSocket.h"
#include "protocol/CommandOutputSocket.h"

#include <memory>
#include <new>
#include <optional>

// The frame that every export runs in: the log is reset, the export's body runs, whatever it throws becomes a line of
// the log, the log is copied out, the result returned.
namespace Client {

// What the frames of the exports differ in.
template <class Result>
struct Frame
{
    Result initial;
    std::optional<Result> onFailure = {}; // else a failed call returns the result as it stood
    const char* failureLabel = "Unexpected exception occured. GetLastError() : ";
};

// The frame of most exports: they return a status code, -1 until a reply was read.
inline constexpr Frame<std::int32_t> statusFrame{.initial = -1};

// One running call, as its body sees it.
template <class Result>
struct Call
{
    Merrow::CommandInputSocket in{daemonSocket};
    Merrow::CommandOutputSocket out{daemonSocket};
    Result result;
    bool copiesLog = true;
};

void logFailure(LogLabel label, std::uint32_t error) noexcept;
void logFailure(const Merrow::CommandException& exception) noexcept;

template <class Result, class Body>
Result runCall(const Frame<Result>& frame, char* logBuffer, Body body) noexcept
{
    Platform::prepareExceptions();
    operationLog().clear();
    Call<Result> call{.result = frame.initial};
    try {
        body(call);
    } catch (const Merrow::CommandException& exception) {
        // The library throws pointers to such objects: those, and all else, end below.
        logFailure(exception);
    } catch (...) {
        logFailure(frame.failureLabel, Platform::lastError());
        call.result = frame.onFailure.value_or(call.result);
    }
    if (call.copiesLog) {
        Platform::copyOrEndProcess(logBuffer, TARN_LOG_SIZE, operationLog().c_str());
    }
    return call.result;
}

// Reads a whole reply into an object on the heap. Returns null, with nothing read, when there is no memory for it. Only
// the exports that have a way to go on then read their reply so; with the others it is on the stack.
template <class Reply>
std::unique_ptr<Reply> readReply(Merrow::CommandInputStream& in)
{
    return std::unique_ptr<Reply>(new (std::nothrow) Reply(in));
}

} // namespace Client
