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
};

// The reply to 'BE'. Each field is named by its tag; what it holds is up to the daemon.
class RemoteEnvelope final : public RemoteResponse
{
public:
    explicit RemoteEnvelope(CommandInputStream& stream) { readResponse(code("BE"), stream); }
    ~RemoteEnvelope();

    std::string en;
    std::string ct;
    std::vector<std::unique_ptr<LocalizedEnvelope>> items; // 'le'
    std::string id;
    std::string an;
    std::string lc;
    std::string th;
    std::string tb;

    const std::string& getAn() const { return an; }
    const std::string& getTh() const { return th; }
    const std::string& getTb() const { return tb; }

protected:
    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override;
};

} // namespace Merrow
