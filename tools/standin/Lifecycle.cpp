#include "Handlers.h"

#include <malloc.h>
#include <unistd.h>

namespace standin {

namespace {

constexpr const char* version = "7.6.1";
constexpr std::int32_t buildNumber = 7;

} // namespace

Reply daemonStatus(const Request& request, Context& context)
{
    const auto heap = mallinfo2();
    const auto physical = static_cast<std::int64_t>(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGESIZE);
    Reply reply(request.code(), Status::Ok, "running");
    reply.text(tag("v "), version)
        .number(tag("bn"), buildNumber)
        .longNumber(tag("bt"), context.started)
        .number(tag("ct"), context.connectionsTotal)
        .number(tag("ca"), context.connectionsOpen)
        .longNumber(tag("mf"), static_cast<std::int64_t>(heap.fordblks))
        .longNumber(tag("mt"), static_cast<std::int64_t>(heap.arena + heap.hblkhd))
        .longNumber(tag("mm"), physical)
        .longNumber(tag("bs"), context.encrypted)
        .longNumber(tag("bf"), context.encryptionsFailed)
        .longNumber(tag("ss"), context.decryptions.count())
        .real(tag("sa"), context.decryptions.mean())
        .real(tag("sd"), context.decryptions.deviation())
        .longNumber(tag("es"), context.encryptions.count())
        .real(tag("ea"), context.encryptions.mean())
        .real(tag("ed"), context.encryptions.deviation());
    return reply;
}

Reply stopDaemon(const Request& request, Context& context)
{
    context.stopping = true;
    return Reply(request.code(), Status::Ok, "stopping");
}

} // namespace standin
