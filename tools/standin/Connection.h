#pragma once

#include "RequestReader.h"

#include <cstddef>
#include <string>

namespace standin {

// A client's socket with the bytes on their way in and out. Never blocks.
class Connection
{
public:
    Connection(int socket, int number) : socket_(socket), number_(number) {}
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    int socket() const { return socket_; }
    int number() const { return number_; }
    RequestReader& reader() { return reader_; }

    // Takes what has arrived; false at the end of the client's bytes, or when the connection is lost.
    bool receive();
    // Sends what the client takes now; false when the connection is lost.
    bool send(std::string frame);
    bool sendMore();
    bool hasOutput() const { return sent_ < output_.size(); }

private:
    int socket_;
    int number_;
    RequestReader reader_;
    std::string output_;
    std::size_t sent_ = 0;
};

} // namespace standin
