#pragma once

#include "Sockets.h"

#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// How a reply reaches the library.
struct Delivery
{
    std::size_t packet = SIZE_MAX;     // bytes in one send
    std::size_t resetAfter = SIZE_MAX; // the connection is reset once so many bytes were sent
};

// A daemon on port 53007, in a thread of its own, that records requests and plays the replies given to it, one for each
// request, in turn.
class ScriptedDaemon
{
public:
    ScriptedDaemon();
    ~ScriptedDaemon();

    void play(std::string reply, Delivery delivery = {});

    // From now on requests are not recorded, and each is answered by the reply for its code.
    void answerAll(std::map<std::string, std::string> repliesByCode);

    // The requests so far, whole messages as they came.
    std::vector<std::string> requests();
    std::size_t connections();

private:
    struct Reply
    {
        std::string bytes;
        Delivery delivery;
    };

    void run(std::stop_token stop);
    void serve(SOCKET socket, std::stop_token stop);
    Reply answerTo(std::string request);

    SOCKET listener_;
    std::mutex mutex_;
    std::deque<Reply> replies_;
    std::map<std::string, std::string> repliesByCode_;
    std::vector<std::string> requests_;
    std::size_t connections_ = 0;
    std::jthread thread_;
};
