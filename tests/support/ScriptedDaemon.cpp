#include "ScriptedDaemon.h"

#include "Wire.h"

#include <algorithm>

namespace {

constexpr std::chrono::milliseconds pollTime(20);

} // namespace

ScriptedDaemon::ScriptedDaemon()
    : listener_(sockets::listenOn(53007)), thread_([this](std::stop_token stop) { run(stop); })
{
}

ScriptedDaemon::~ScriptedDaemon()
{
    thread_.request_stop();
    thread_.join();
    sockets::close(listener_);
}

void ScriptedDaemon::play(std::string reply, Delivery delivery)
{
    const std::scoped_lock lock(mutex_);
    replies_.push_back({std::move(reply), delivery});
}

void ScriptedDaemon::answerAll(std::map<std::string, std::string> repliesByCode)
{
    const std::scoped_lock lock(mutex_);
    repliesByCode_ = std::move(repliesByCode);
}

std::vector<std::string> ScriptedDaemon::requests()
{
    const std::scoped_lock lock(mutex_);
    return requests_;
}

std::size_t ScriptedDaemon::connections()
{
    const std::scoped_lock lock(mutex_);
    return connections_;
}

void ScriptedDaemon::run(std::stop_token stop)
{
    while (!stop.stop_requested()) {
        const SOCKET socket = sockets::acceptFrom(listener_, pollTime);
        if (socket != sockets::none) {
            {
                const std::scoped_lock lock(mutex_);
                ++connections_;
            }
            serve(socket, stop);
        }
    }
}

void ScriptedDaemon::serve(SOCKET socket, std::stop_token stop)
{
    std::string bytes;
    while (!stop.stop_requested()) {
        const std::size_t length = wire::messageLength(bytes);
        if (length == 0) {
            if (!sockets::receiveSome(socket, bytes, pollTime)) {
                break;
            }
            continue;
        }
        const Reply reply = answerTo(bytes.substr(0, length));
        bytes.erase(0, length);
        std::string_view rest = reply.bytes;
        const bool resets = reply.delivery.resetAfter != SIZE_MAX;
        rest = rest.substr(0, reply.delivery.resetAfter);
        while (!rest.empty()) {
            const std::size_t count = std::min(rest.size(), reply.delivery.packet);
            sockets::sendAll(socket, rest.substr(0, count));
            rest.remove_prefix(count);
        }
        if (resets) {
            sockets::reset(socket);
            return;
        }
    }
    sockets::close(socket);
}

ScriptedDaemon::Reply ScriptedDaemon::answerTo(std::string request)
{
    const std::scoped_lock lock(mutex_);
    if (!repliesByCode_.empty()) {
        return {repliesByCode_.at(request.substr(2, 2)), {}};
    }
    requests_.push_back(std::move(request));
    if (replies_.empty()) {
        return {};
    }
    Reply reply = std::move(replies_.front());
    replies_.pop_front();
    return reply;
}
