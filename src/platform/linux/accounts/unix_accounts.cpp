#include "platform/linux/accounts/unix_accounts.h"

#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/samba_accounts.h"
#include "platform/linux/accounts/unix_sids.h"

namespace permora::host {

namespace {

nt::Sid SidFor(AccountKind kind, id_t id) {
    const Machine& machine = ThisMachine();
    if (machine.source == AccountSource::kComputed) {
        if (const std::optional<nt::Sid> sid = ComputedSid(kind, *machine.sid, id)) return *sid;
    } else if (machine.source == AccountSource::kSamba) {
        if (const SambaAccount* account = AllSambaAccounts(kind).Find(id)) return account->sid;
    }
    return UnixSid(kind, id);
}

std::optional<id_t> IdFor(AccountKind kind, const nt::Sid& sid) {
    if (const std::optional<id_t> id = IdOfUnixSid(kind, sid)) return id;
    const Machine& machine = ThisMachine();
    if (machine.source == AccountSource::kComputed) return IdOfComputedSid(kind, *machine.sid, sid);
    if (machine.source != AccountSource::kSamba) return std::nullopt;
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

std::optional<gid_t> GroupForSid(const nt::Sid& sid) {
    return IdFor(AccountKind::kGroup, sid);
}

}  // namespace permora::host
