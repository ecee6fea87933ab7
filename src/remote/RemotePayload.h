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

    bool anyField(auto visit)
    {
        return visit(tag("ty"), ty) || visit(tag("fl"), fl) || visit(tag("da"), da) || visit(tag("fn"), fn) ||
               visit(tag("on"), on) || visit(tag("fc"), fc);
    }
};

void readValue(CommandInputStream& stream, std::int32_t length, std::vector<std::unique_ptr<TocEntry>>& items);

// The reply to 'DE'.
class RemotePayload final : public WithFields<RemotePayload, RemoteLoginResponse>
{
public:
    explicit RemotePayload(CommandInputStream& stream) { readResponse(code("DE"), stream); }

    std::vector<std::unique_ptr<TocEntry>> toc;
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

    bool anyField(auto visit)
    {
        return visit(tag("da"), toc) || visit(tag("id"), id) || visit(tag("ms"), ms) || visit(tag("kt"), kt) ||
               visit(tag("ku"), ku) || visit(tag("uu"), uu) || visit(tag("ec"), ec) || visit(tag("fm"), fm) ||
               visit(tag("sj"), sj) || visit(tag("tr"), tr) || visit(tag("tc"), tc);
    }
};

} // namespace Merrow
