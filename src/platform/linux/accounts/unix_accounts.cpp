#include "platform/linux/accounts/unix_accounts.h"

#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/samba_accounts.h"
#include "platform/linux/accounts/unix_sids.h"

namespace permora::host {

DWORD FindSidForId(AccountKind kind, id_t id, nt::Sid& sid) {
    const Machine& machine = ThisMachine();
    std::optional<nt::Sid> own;
    if (machine.source == RelativeIdSource::kComputed) {
        own = ComputedSid(kind, *machine.sid, id);
    } else if (machine.source == RelativeIdSource::kSamba) {
        if (const SambaAccount* account = AllSambaAccounts(kind).Find(id)) own = account->sid;
    }
    if (own) {
        sid = *own;
        return ERROR_SUCCESS;
    }
    const DWORD error = TheDomainAccounts().FindSidOf(kind, id, sid);
    if (error != ERROR_NONE_MAPPED) return error;
    sid = UnixSid(kind, id);
    return ERROR_SUCCESS;
}

namespace {

// While the domain is away its accounts are shown by their numbers, which a list may name as well.
nt::Sid SidFor(AccountKind kind, id_t id) {
    nt::Sid sid;
    return FindSidForId(kind, id, sid) == ERROR_SUCCESS ? sid : UnixSid(kind, id);
}

std::optional<id_t> IdFor(AccountKind kind, const nt::Sid& sid) {
    if (const std::optional<id_t> id = IdOfUnixSid(kind, sid)) return id;
    const Machine& machine = ThisMachine();
    if (machine.source == RelativeIdSource::kComputed) return IdOfComputedSid(kind, *machine.sid, sid);
    if (machine.source != RelativeIdSource::kSamba) return std::nullopt;
    const SambaAccount* account = AllSambaAccounts(kind).Find(sid);
    return account != nullptr ? account->id : std::nullopt;
}

}  // namespace

const nt::Sid* MachineSid() {
    const Machine& machine = ThisMachine();
    return machine.sid ? &*machine.sid : nullptr;
}

nt::Sid SidForUser(uid_t user) {
    return SidFor(AccountKind::kUser, user);
}

nt::Sid SidForGroup(gid_t group) {
    return SidFor(AccountKind::kGroup, group);
}

std::optional<uid_t> UserForSid(const nt::Sid& sid) {
    return IdFor(AccountKind::kUser, sid);
}

DWORD FindUserForSid(const nt::Sid& sid, std::optional<uid_t>& user) {
    std::optional<uid_t> found = UserForSid(sid);
    uid_t ofDomain = 0;
    const DWORD error = found ? ERROR_SUCCESS : TheDomainAccounts().FindUser(sid, ofDomain);
    if (error != ERROR_SUCCESS && error != ERROR_NONE_MAPPED) return error;
    user = found || error == ERROR_NONE_MAPPED ? found : ofDomain;
    return ERROR_SUCCESS;
}

std::optional<gid_t> GroupForSid(const nt::Sid& sid) {
    return IdFor(AccountKind::kGroup, sid);
}

}  // namespace permora::host
