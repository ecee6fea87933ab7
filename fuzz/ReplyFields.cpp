#include "ReplyFields.h"

#include "remote/RemoteConfiguration.h"
#include "remote/RemoteEnrollment.h"
#include "remote/RemoteEnvelope.h"
#include "remote/RemoteLocalizedText.h"
#include "remote/RemoteMessageInformation.h"
#include "remote/RemotePayload.h"
#include "remote/RemoteStatus.h"

using namespace Merrow;
using wire::float64;
using wire::int32;
using wire::int64;
using wire::Params;

namespace {

std::string mapBytes(const StringMap& map)
{
    std::vector<std::string> texts;
    for (const auto& [key, value] : map) {
        texts.push_back(key);
        texts.push_back(value);
    }
    return wire::sequence(texts);
}

template <class Items, class Fields>
std::string collection(const Items& items, Fields fieldsOf)
{
    std::vector<std::string> encoded;
    for (const auto& item : items) {
        encoded.push_back(wire::parameters(fieldsOf(*item)));
    }
    return wire::sequence(encoded);
}

Params statusFields(const RemoteResponse& reply, const Params& own)
{
    Params all{{"cd", reply.codeText}, {"st", wire::shortInt(reply.statusCode)}, {"em", reply.statusMessage}};
    all.insert(all.end(), own.begin(), own.end());
    return all;
}

Params loginFields(const RemoteLoginResponse& reply, const Params& own)
{
    Params all = statusFields(
        reply, {{"lk", reply.lkText}, {"se", int64(reply.se)}, {"we", int32(reply.we)}, {"wd", int32(reply.wd)}});
    all.insert(all.end(), own.begin(), own.end());
    return all;
}

Params fields(const RemoteStopStatus& reply)
{
    return statusFields(reply, {});
}

Params fields(const RemoteDaemonStatus& reply)
{
    return statusFields(reply, {{"v ", reply.version},
                                {"bn", int32(reply.build)},
                                {"bt", int64(reply.bt)},
                                {"ct", int32(reply.ct)},
                                {"ca", int32(reply.ca)},
                                {"mf", int64(reply.freeMemory)},
                                {"mt", int64(reply.totalMemory)},
                                {"mm", int64(reply.maxMemory)},
                                {"bs", int64(reply.bs)},
                                {"bf", int64(reply.bf)},
                                {"ss", int64(reply.ss)},
                                {"sa", float64(reply.sa)},
                                {"sd", float64(reply.sd)},
                                {"es", int64(reply.es)},
                                {"ea", float64(reply.ea)},
                                {"ed", float64(reply.ed)}});
}

Params fields(const RemoteLoginSession& reply)
{
    return loginFields(reply, {{"sl", mapBytes(reply.sessionMap)}});
}

Params fields(const RemoteSetInformationResponse& reply)
{
    return loginFields(reply, {});
}

Params fields(const RemoteVerifyConfigurationResponse& reply)
{
    return statusFields(reply, {{"ec", mapBytes(reply.configErrors)}});
}

Params fields(const RemoteKeyserverVersion& reply)
{
    return statusFields(reply, {{"kd", mapBytes(reply.keyserverData)}});
}

Params fields(const RemoteEnvelope& reply)
{
    const auto itemFields = [](const LocalizedEnvelope& item) {
        return Params{{"lc", item.lc}, {"rc", wire::sequence(item.rc)},
                      {"en", item.en}, {"ct", item.ct},
                      {"tb", item.tb}, {"th", item.th}};
    };
    return statusFields(reply, {{"en", reply.en},
                                {"ct", reply.ct},
                                {"le", collection(reply.items, itemFields)},
                                {"id", reply.id},
                                {"an", reply.an},
                                {"lc", reply.lc},
                                {"th", reply.th},
                                {"tb", reply.tb}});
}

Params fields(const RemotePayload& reply)
{
    const auto itemFields = [](const TocEntry& item) {
        return Params{{"ty", int32(item.ty)}, {"fl", int32(item.fl)}, {"da", item.da},
                      {"fn", item.fn},        {"on", item.on},        {"fc", item.fc}};
    };
    return loginFields(reply, {{"da", collection(reply.toc, itemFields)},
                               {"id", reply.id},
                               {"ms", int32(reply.ms)},
                               {"kt", mapBytes(reply.kt)},
                               {"ku", reply.ku},
                               {"uu", reply.uu},
                               {"ec", mapBytes(reply.ec)},
                               {"fm", reply.fm},
                               {"sj", reply.sj},
                               {"tr", wire::sequence(reply.tr)},
                               {"tc", wire::sequence(reply.tc)}});
}

Params fields(const RemoteMessageInformation& reply)
{
    const auto itemFields = [](const RemoteRecipientInformation& item) {
        return Params{{"da", mapBytes(item.fields)}};
    };
    for (const auto& item : reply.recipients) {
        // The typed accessors take whatever text the daemon sent.
        static_cast<void>(item->getFlags() + item->getNumTries());
        static_cast<void>(item->getCreateDate() ^ item->getExpiryDate());
    }
    return loginFields(reply, {{"id", reply.id},
                               {"si", int32(reply.si)},
                               {"mx", int32(reply.mx)},
                               {"ri", collection(reply.recipients, itemFields)}});
}

Params fields(const RemoteLocalizedText& reply)
{
    return statusFields(reply, {{"sl", mapBytes(reply.sl)}, {"th", mapBytes(reply.th)}, {"tb", mapBytes(reply.tb)}});
}

Params fields(const RemoteEnrollParamsResponse& reply)
{
    return statusFields(reply, {{"su", int32(reply.su)},
                                {"ou", int32(reply.ou)},
                                {"qn", int32(reply.qn)},
                                {"qe", int32(reply.qe)},
                                {"al", mapBytes(reply.al)},
                                {"sq", mapBytes(reply.sq)}});
}

Params fields(const RemoteEnrollUserResponse& reply)
{
    return statusFields(reply, {{"ve", mapBytes(reply.ve)}, {"el", int32(reply.el)}});
}

template <class Reply>
Params read(CommandInputStream& in)
{
    return fields(Reply(in));
}

} // namespace

const std::vector<ReplyClass>& replyClasses()
{
    static const std::vector<ReplyClass> classes{{"SD", read<RemoteStopStatus>},
                                                 {"ST", read<RemoteDaemonStatus>},
                                                 {"LS", read<RemoteLoginSession>},
                                                 {"SI", read<RemoteSetInformationResponse>},
                                                 {"VC", read<RemoteVerifyConfigurationResponse>},
                                                 {"KV", read<RemoteKeyserverVersion>},
                                                 {"BE", read<RemoteEnvelope>},
                                                 {"DE", read<RemotePayload>},
                                                 {"MI", read<RemoteMessageInformation>},
                                                 {"LT", read<RemoteLocalizedText>},
                                                 {"EP", read<RemoteEnrollParamsResponse>},
                                                 {"EU", read<RemoteEnrollUserResponse>}};
    return classes;
}
