// The members of a domain's groups. winbind does not list them, so the domain's directory is asked, with the
// account of this machine, which root alone may use.
#include <unistd.h>

#include <algorithm>
#include <string>

#include "platform/ascii.h"
#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/base/run_tool.h"

namespace permora::host {

namespace {

// Room and time for some hundred thousand members.
constexpr ToolLimits kMemberLimits = {std::chrono::seconds(60), std::size_t{64} << 20};

// The value of a line "objectSid: S-1-5-21-...".
std::optional<nt::Sid> SidOfLine(std::string_view line) {
    constexpr std::string_view kKey = "objectSid: ";
    return line.starts_with(kKey) ? nt::Sid::FromText(line.substr(kKey.size())) : std::nullopt;
}

}  // namespace

// Those whose primary group it is are not among its members in the directory.
DWORD DomainAccounts::FindMembers(const nt::Sid& group, std::vector<nt::Sid>& members) {
    if (const DWORD error = CheckDomain(kLookupTime); error != ERROR_SUCCESS) return error;
    const std::optional<WinbindDomain> domain = DomainOf(group);
    if (!domain || !domain->isOwn) return ERROR_NOT_SUPPORTED;
    if (geteuid() != 0) return ERROR_ACCESS_DENIED;
    if (const DWORD error = CheckAnswers(*domain); error != ERROR_SUCCESS) return error;
    const std::string relativeId = std::to_string(group.SubAuthority(group.SubAuthorityCount() - 1));
    const std::string filter =
        "(|(memberOf=<SID=" + group.ToText() + ">)(primaryGroupID=" + relativeId + "))";
    std::string listing;
    const DWORD error = RunTool("net", {"ads", "search", "-P", filter, "objectSid"}, kMemberLimits, listing);
    if (error == ERROR_FILE_NOT_FOUND) return ERROR_NOT_SUPPORTED;
    if (error != ERROR_SUCCESS) return kDomainOffline;
    std::vector<nt::Sid> found;
    for (std::string_view rest = listing; !rest.empty();)
        if (const std::optional<nt::Sid> sid = SidOfLine(TakeLine(rest))) found.push_back(*sid);
    members = std::move(found);
    return ERROR_SUCCESS;
}

}  // namespace permora::host
