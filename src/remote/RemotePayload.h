#pragma once

#include "remote/RemoteLogin.h"

#include <memory>
#include <vector>

namespace Merrow {

// One item of a decrypted message.
struct TocEntry
{
    TocEntry(CommandInputStream& stream, std::int32_t length);

    std::int32_t ty = 0; // type
    std::int32_t fl = 0; // flags
    std::string da;      // data
    std::string fn;
    std::string on; // name
    std::string fc; // content type

    const std::string& getDa() const { return da; }
    const std::string& getOn() const { return on; }
    const std::string& getFc() const { return fc; }
};

// The reply to 'DE'.
class RemotePayload final : public RemoteLoginResponse
{
public:
    explicit RemotePayload(CommandInputStream& stream) { readResponse(code("DE"), stream); }

    std::vector<std::unique_ptr<TocEntry>> toc; // 'da'
    std::string id;
    std::int32_t ms = 0; // sensitivity
    StringMap kt;
    std::string ku; // key text
    std::string uu; // enrollment id
    StringMap ec;   // envelope configuration
    std::string fm; // sender
    std::string sj;
    std::vector<std::string> tr; // To recipients
    std::vector<std::string> tc; // Cc recipients

    std::vector<TocEntry*> getToc() const;
    const std::string& getKu() const { return ku; }
    const std::string& getUu() const { return uu; }
    const StringMap& getEc() const { return ec; }
    const std::string& getFm() const { return fm; }
    const std::vector<std::string>& getTr() const { return tr; }
    const std::vector<std::string>& getTc() const { return tc; }

protected:
    void readParameter(CommandInputStream& stream, Tag parameter, std::int32_t length) override;
};

} // namespace Merrow
