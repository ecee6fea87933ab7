#include "Floor.h"
#include "Peers.h"
#include "Server.h"
#include "bytes.grpc.pb.h"

#include <grpcpp/grpcpp.h>

namespace Bench {

namespace {

constexpr const char* address = "127.0.0.1:53010";

class Service final : public peers::Bytes::Service
{
    grpc::Status Exchange(grpc::ServerContext*, const peers::Request* request, peers::Reply* reply) override
    {
        reply->set_data(std::string(request->reply_size(), 'd'));
        return grpc::Status::OK;
    }
};

void serve()
{
    Service service;
    const auto server = grpc::ServerBuilder()
                            .AddListeningPort(address, grpc::InsecureServerCredentials())
                            .SetMaxReceiveMessageSize(-1)
                            .RegisterService(&service)
                            .BuildAndStart();
    if (server == nullptr) {
        die("benchmarks: port 53010 is needed");
    }
    server->Wait();
}

PeerExchange connect()
{
    grpc::ChannelArguments arguments;
    arguments.SetMaxReceiveMessageSize(-1);
    const auto channel = grpc::CreateCustomChannel(address, grpc::InsecureChannelCredentials(), arguments);
    return [stub = std::make_shared<peers::Bytes::Stub>(channel)](const std::string& bytes, std::size_t replySize) {
        grpc::ClientContext context;
        context.set_wait_for_ready(true);
        peers::Request request;
        peers::Reply reply;
        request.set_data(bytes);
        request.set_reply_size(static_cast<std::uint32_t>(replySize));
        if (!stub->Exchange(&context, request, &reply).ok() || reply.data().size() != replySize) {
            die("benchmarks: gRPC");
        }
    };
}

} // namespace

std::function<PeerExchange()> startGrpc()
{
    startServer(serve);
    return connect;
}

} // namespace Bench
