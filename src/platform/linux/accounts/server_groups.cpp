// What accounts belong to on another server.
#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/accounts/server_accounts.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/server_accounts.h"

namespace permora {
namespace host {
namespace {

const nt::Sid& World() {
    static const nt::Sid kSid(1, {0});
    return kSid;
}

const nt::Sid& OverTheNetwork() {
    static const nt::Sid kSid(5, {2});
    return kSid;
}

bool IsBuiltIn(const nt::Sid& sid) {
    constexpr std::uint32_t kBuiltIn = 32;
    return sid.Authority() == 5 && sid.SubAuthorityCount() == 2 && sid.SubAuthority(0) == kBuiltIn;
}

// What a domain's account belongs to here, and not there.
bool IsOfThisMachineAlone(const nt::Sid& sid) {
    constexpr std::uint64_t kHostAuthority = 22;
    const nt::Sid* const machine = MachineSid();
    return IsBuiltIn(sid) || sid.Authority() == kHostAuthority ||
           (machine != nullptr && sid.IsDirectlyBelow(*machine));
}

// Groups that mean the same on every machine, whoever is in them. All others of the system stand for nobody
// who comes over the network.
bool IsOnEveryMachine(const nt::Sid& sid) {
    const nt::Sid authenticated(5, {11});
    return IsBuiltIn(sid) || sid == World() || sid == OverTheNetwork() || sid == authenticated;
}

DWORD FindGroupsAt(MountedServer& server, const nt::Sid& account, GroupsRequest request,
                   AccountGroups& groups) {
    const Patience patience = Patience::For(kGroupsTime);
    if (const DWORD error = server.Identify(patience); error != ERROR_SUCCESS) return error;
    AccountGroups found;
    if (server.Owns(account) && ServerAccounts::Owns(account)) {
        if (request == GroupsRequest::kExact) return ERROR_NOT_SUPPORTED;
        if (const DWORD error = server.FindGroups(patience, account, found.sids); error != ERROR_SUCCESS)
            return error;
    } else if (DomainAccounts::IsOfDomain(account)) {
        if (const DWORD error = TheDomainAccounts().FindGroups(account, request, found);
            error != ERROR_SUCCESS)
            return error;
        std::erase_if(found.sids, IsOfThisMachineAlone);
        found.sids.push_back(OverTheNetwork());
    } else if (IsOnEveryMachine(account)) {
        found.sids = {account};
        if (account != World()) found.sids.push_back(World());
    } else {
        return ERROR_NONE_MAPPED;
    }
    if (const DWORD error = server.AddLocalGroups(patience, found.sids); error != ERROR_SUCCESS) return error;
    groups = std::move(found);
    return ERROR_SUCCESS;
}

}  // namespace
}  // namespace host

DWORD FindGroupsOfServer(const std::string& server, const nt::Sid& account, GroupsRequest request,
                         AccountGroups& groups) {
    host::MountedServer* const mounted = host::FindMountedServer(server);
    return mounted != nullptr ? host::FindGroupsAt(*mounted, account, request, groups) : ERROR_NONE_MAPPED;
}

}  // namespace permora
