#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace Bench {

// A daemon in a process of its own that does no more than it must: it takes each request up to its end, as the lengths
// in it tell, checks nothing, and sends the reply that was chosen.
class Responder
{
public:
    // Listens on the daemon's port, or ends this process with a message when the port is taken. The replies are made
    // over there, so that they take no memory here.
    explicit Responder(const std::function<std::vector<std::string>()>& makeReplies);
    ~Responder();
    Responder(const Responder&) = delete;
    Responder& operator=(const Responder&) = delete;

    void choose(std::size_t reply);

    // The bytes of the latest request.
    std::string_view latestRequest() const;

    struct Shared;

private:
    Shared* shared_;
    pid_t process_;
};

} // namespace Bench
