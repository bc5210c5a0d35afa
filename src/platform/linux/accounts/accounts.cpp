#include "platform/accounts.h"

#include <unistd.h>

#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/base/run_tool.h"

namespace permora {

NameAnswer FindAccountName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) {
    account = {};
    switch (host::FindAccountOfSid(sid, account, wait)) {
        case ERROR_SUCCESS:
            return NameAnswer::kKnown;
        case ERROR_NONE_MAPPED:
            return account.use == SidTypeDeletedAccount ? NameAnswer::kDeleted : NameAnswer::kNobody;
        case kNameNotYet:
        case kDomainOffline:
            return NameAnswer::kNotYet;
        default:
            return NameAnswer::kFailed;
    }
}

std::uint64_t AccountNews() {
    return host::TheDomainAccounts().Link().News();
}

DomainState StateOfDomain() {
    return host::TheDomainAccounts().Link().State();
}

DWORD FindAccountGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) {
    return host::FindGroupsOfAccount(account, request, groups);
}

bool MayAskForExactGroups() {
    const bool isInDomain = StateOfDomain().availability != DomainAvailability::kNone;
    return isInDomain && geteuid() == 0 && host::FindTool("net").has_value();
}

}  // namespace permora
