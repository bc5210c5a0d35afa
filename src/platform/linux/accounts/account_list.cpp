#include "platform/linux/accounts/account_list.h"

#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/accounts/samba_accounts.h"
#include "platform/linux/accounts/unix_sids.h"

namespace permora::host {
namespace {

DWORD AppendSambaAccounts(const Machine& machine, AccountKind kind, std::vector<std::string>& names) {
    const SambaAccounts& accounts = AllSambaAccounts(kind);
    for (const SambaAccount& account : accounts.All())
        if (account.sid.IsDirectlyBelow(*machine.sid)) names.push_back(machine.name + '\\' + account.name);
    return accounts.Error();
}

bool HasSambaAccount(AccountKind kind, id_t id) {
    return ThisMachine().source == RelativeIdSource::kSamba && AllSambaAccounts(kind).Find(id) != nullptr;
}

// Where the host's accounts are the machine's own, its users are found below the machine's name.
std::string HostDomain(const Machine& machine, AccountKind kind) {
    const bool isMachines = machine.source == RelativeIdSource::kComputed && kind == AccountKind::kUser;
    return isMachines ? machine.name : std::string(UnixDomainName(kind));
}

}  // namespace

DWORD ListAccountNames(AccountKind kind, std::vector<std::string>& names) {
    std::vector<HostAccount> hosts;
    DWORD error = ListHostAccounts(kind, hosts);
    if (error != ERROR_SUCCESS) return error;
    const Machine& machine = ThisMachine();
    std::vector<std::string> found;
    if (machine.source == RelativeIdSource::kSamba) error = AppendSambaAccounts(machine, kind, found);
    if (error != ERROR_SUCCESS) return error;
    const std::string domain = HostDomain(machine, kind);
    for (const HostAccount& account : hosts)
        if (!HasSambaAccount(kind, account.id)) found.push_back(domain + '\\' + account.name);
    names = std::move(found);
    return ERROR_SUCCESS;
}

}  // namespace permora::host
