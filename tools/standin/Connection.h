#pragma once

#include "RequestReader.h"

#include <chrono>
#include <stdexcept>
#include <string_view>

namespace standin {

// The client sends nothing, takes nothing, or is gone.
class ConnectionError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// A client's socket. Its operations block, for idleLimit at the longest.
class Connection final : public ByteSource
{
public:
    Connection(int socket, int number, std::chrono::seconds idleLimit);
    ~Connection() override;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    int number() const { return number_; }

    std::size_t read(char* into, std::size_t size) override;
    void send(std::string_view frame);
    // Waits, but no longer than the client stays and the daemon goes on.
    void wait(std::chrono::milliseconds time);
    // The closing will look like a lost connection. A client that waits for a reply waits on after an orderly end.
    void resetAtClose();

    // Called by other threads. Reading ends, or reading and writing; what is under way fails.
    void endReading();
    void endAll();

private:
    int socket_;
    int number_;
    std::chrono::seconds idleLimit_;
};

} // namespace standin
