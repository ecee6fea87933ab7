#include "Floor.h"
#include "Peers.h"
#include "Server.h"

#include <chrono>
#include <hiredis/hiredis.h>
#include <thread>
#include <unistd.h>

namespace Bench {

namespace {

void serve()
{
    execlp("redis-server", "redis-server", "--port", "53009", "--bind", "127.0.0.1", "--save", "", "--logfile",
           "/dev/null", nullptr);
}

redisContext* connected()
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        redisContext* const context = redisConnect("127.0.0.1", 53009);
        if (context != nullptr && context->err == 0) {
            return context;
        }
        redisFree(context);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    die("benchmarks: the Redis server cannot be reached on port 53009");
}

void command(redisContext* context, const char* format, const std::string& bytes, std::size_t replySize)
{
    auto* const reply = static_cast<redisReply*>(redisCommand(context, format, bytes.data(), bytes.size()));
    if (reply == nullptr || reply->type == REDIS_REPLY_ERROR || reply->len < replySize) {
        die("benchmarks: Redis");
    }
    freeReplyObject(reply);
}

// A long value goes up by SET or comes down by GET; a short one goes both ways by ECHO.
void exchange(redisContext* context, const std::string& bytes, std::size_t replySize)
{
    static std::size_t storedSize = 0;
    if (bytes.size() == replySize) {
        command(context, "ECHO %b", bytes, replySize);
    } else if (bytes.size() > replySize) {
        command(context, "SET up %b", bytes, 0);
    } else {
        if (storedSize != replySize) {
            command(context, "SET down %b", std::string(replySize, 'd'), 0);
            storedSize = replySize;
        }
        command(context, "GET down", bytes, replySize);
    }
}

} // namespace

std::function<PeerExchange()> startRedis()
{
    startServer(serve);
    return [] {
        return [context = connected()](const std::string& bytes, std::size_t replySize) {
            exchange(context, bytes, replySize);
        };
    };
}

} // namespace Bench
