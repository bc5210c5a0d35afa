#include "platform/accounts.h"

#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/memberships.h"

namespace permora {

NameAnswer FindAccountName(const nt::Sid& sid, std::chrono::milliseconds /*wait*/, AccountName& account) {
    AccountName found;
    const DWORD error = host::FindAccountOfSid(sid, found);
    account = found;
    if (error == ERROR_SUCCESS) return NameAnswer::kKnown;
    return error == ERROR_NONE_MAPPED ? NameAnswer::kNobody : NameAnswer::kFailed;
}

std::uint64_t AccountNews() {
    return 0;
}

DomainState StateOfDomain() {
    return {};
}

DWORD FindAccountGroups(const nt::Sid& account, GroupsRequest /*request*/, AccountGroups& groups) {
    std::vector<nt::Sid> sids;
    const DWORD error = host::FindMemberships(account, sids);
    if (error == ERROR_SUCCESS) groups = {std::move(sids), GroupsOrigin::kThisMachine};
    return error;
}

bool MayAskForExactGroups() {
    return false;
}

}  // namespace permora
