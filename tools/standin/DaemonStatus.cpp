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
        .number(tag("bt"), context.started)
        .number(tag("ct"), context.connectionsTotal.load())
        .number(tag("ca"), context.connectionsOpen.load())
        .number(tag("mf"), static_cast<std::int64_t>(heap.fordblks))
        .number(tag("mt"), static_cast<std::int64_t>(heap.arena + heap.hblkhd))
        .number(tag("mm"), physical)
        .number(tag("bs"), context.encrypted)
        .number(tag("bf"), context.encryptionsFailed)
        .number(tag("ss"), context.decryptions.count())
        .number(tag("sa"), context.decryptions.mean())
        .number(tag("sd"), context.decryptions.deviation())
        .number(tag("es"), context.encryptions.count())
        .number(tag("ea"), context.encryptions.mean())
        .number(tag("ed"), context.encryptions.deviation());
    return reply;
}

} // namespace standin
