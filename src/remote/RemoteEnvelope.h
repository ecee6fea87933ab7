#pragma once

#include "remote/RemoteResponse.h"

#include <memory>
#include <vector>

namespace Merrow {

// One language's form of an envelope.
struct LocalizedEnvelope
{
    LocalizedEnvelope(CommandInputStream& stream, std::int32_t length);

    std::string lc;
    std::vector<std::string> rc;
    std::string en;
    std::string ct;
    std::string tb;
    std::string th;

    bool anyField(auto visit)
    {
        return visit(tag("lc"), lc) || visit(tag("rc"), rc) || visit(tag("en"), en) || visit(tag("ct"), ct) ||
               visit(tag("tb"), tb) || visit(tag("th"), th);
    }
};

void readValue(CommandInputStream& stream, std::int32_t length, std::vector<std::unique_ptr<LocalizedEnvelope>>& items);

// The reply to 'BE'. Each text is named by its tag; what it holds is up to the daemon.
class RemoteEnvelope final : public WithFields<RemoteEnvelope>
{
public:
    explicit RemoteEnvelope(CommandInputStream& stream) { readResponse(code("BE"), stream); }
    ~RemoteEnvelope();

    std::string en;
    std::string ct;
    std::vector<std::unique_ptr<LocalizedEnvelope>> items;
    std::string id;
    std::string an;
    std::string lc;
    std::string th;
    std::string tb;

    const std::string& getAn() const { return an; }
    const std::string& getTh() const { return th; }
    const std::string& getTb() const { return tb; }

    bool anyField(auto visit)
    {
        return visit(tag("en"), en) || visit(tag("ct"), ct) || visit(tag("le"), items) || visit(tag("id"), id) ||
               visit(tag("an"), an) || visit(tag("lc"), lc) || visit(tag("th"), th) || visit(tag("tb"), tb);
    }
};

} // namespace Merrow
