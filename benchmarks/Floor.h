#pragma once

#include "SystemCalls.h"

#include <netinet/in.h>
#include <string>
#include <string_view>

// What an exchange with the daemon costs at the least.
namespace Bench {

// Ends this process with a message and the system's reason.
[[noreturn]] void die(const char* message);

sockaddr_in daemonAddress();
void sendAtOnce(int socket); // TCP_NODELAY
void sendAll(int socket, std::string_view bytes, int flags = 0);

class Floor
{
public:
    // Connects to the responder.
    Floor();
    ~Floor();
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;

    // One send, one reply received into a buffer that is already there.
    void exchange(std::string_view request, std::size_t replySize);

    // The same bytes by system calls of the given sizes.
    void exchangeInPieces(std::string_view request, const SystemCalls& calls);

private:
    int socket_;
    std::string buffer_;
};

} // namespace Bench
