#include "Floor.h"
#include "Peers.h"
#include "Server.h"

#include <cstring>
#include <zmq.h>

namespace Bench {

namespace {

constexpr const char* address = "tcp://127.0.0.1:53008";

void serve()
{
    void* const socket = zmq_socket(zmq_ctx_new(), ZMQ_REP);
    if (zmq_bind(socket, address) != 0) {
        die("benchmarks: port 53008 is needed");
    }
    while (true) {
        zmq_msg_t request;
        zmq_msg_t reply;
        zmq_msg_init(&request);
        std::uint32_t replySize = 0;
        zmq_recv(socket, &replySize, sizeof replySize, 0);
        zmq_msg_recv(&request, socket, 0);
        zmq_msg_close(&request);
        zmq_msg_init_size(&reply, replySize);
        std::memset(zmq_msg_data(&reply), 'd', replySize);
        zmq_msg_send(&reply, socket, 0);
    }
}

PeerExchange connect()
{
    void* const socket = zmq_socket(zmq_ctx_new(), ZMQ_REQ);
    zmq_connect(socket, address);
    return [socket](const std::string& bytes, std::size_t replySize) {
        const auto wanted = static_cast<std::uint32_t>(replySize);
        zmq_send(socket, &wanted, sizeof wanted, ZMQ_SNDMORE);
        zmq_send(socket, bytes.data(), bytes.size(), 0);
        zmq_msg_t reply;
        zmq_msg_init(&reply);
        zmq_msg_recv(&reply, socket, 0);
        if (zmq_msg_size(&reply) != replySize) {
            die("benchmarks: ZeroMQ");
        }
        zmq_msg_close(&reply);
    };
}

} // namespace

std::function<PeerExchange()> startZeroMq()
{
    startServer(serve);
    return connect;
}

} // namespace Bench
