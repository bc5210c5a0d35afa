// The two rules that make a SID of a number of the host, both ways, and the domain of such accounts. Pure.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string_view>

#include "platform/linux/accounts/account_names.h"
#include "platform/nt/sid.h"

namespace permora::host {

// Samba's names for the host's accounts that have no account of its own.
std::string_view UnixDomainName(AccountKind kind);

// S-1-22-1-<user> and S-1-22-2-<group>, which mean the same number on every host.
nt::Sid UnixSid(AccountKind kind, id_t id);
std::optional<id_t> IdOfUnixSid(AccountKind kind, const nt::Sid& sid);

// Relative ids below the machine's SID that Samba computes where no database has one: 1000 + 2 * user, 1001 +
// 2 * group. Nothing for a number too large to have one.
std::optional<nt::Sid> ComputedSid(AccountKind kind, const nt::Sid& machine, id_t id);
std::optional<id_t> IdOfComputedSid(AccountKind kind, const nt::Sid& machine, const nt::Sid& sid);

}  // namespace permora::host
