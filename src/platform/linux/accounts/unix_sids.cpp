#include "platform/linux/accounts/unix_sids.h"

#include <cstdint>
#include <limits>

namespace permora::host {

namespace {

constexpr std::uint64_t kUnixAuthority = 22;

constexpr std::uint64_t kFirstRelativeId = 1000;  // the ones below belong to the system's own accounts

constexpr std::uint32_t UnixDomain(AccountKind kind) {
    return kind == AccountKind::kUser ? 1 : 2;
}

constexpr std::uint64_t KindBit(AccountKind kind) {
    return kind == AccountKind::kUser ? 0 : 1;
}

}  // namespace

std::string_view UnixDomainName(AccountKind kind) {
    return kind == AccountKind::kUser ? "Unix User" : "Unix Group";
}

nt::Sid UnixSid(AccountKind kind, id_t id) {
    return {kUnixAuthority, {UnixDomain(kind), id}};
}

std::optional<id_t> IdOfUnixSid(AccountKind kind, const nt::Sid& sid) {
    if (sid.Authority() != kUnixAuthority || sid.SubAuthorityCount() != 2) return std::nullopt;
    // The highest number means "leave as it is" to chown: no account has it.
    if (sid.SubAuthority(0) != UnixDomain(kind) || sid.SubAuthority(1) == std::numeric_limits<id_t>::max())
        return std::nullopt;
    return sid.SubAuthority(1);
}

std::optional<nt::Sid> ComputedSid(AccountKind kind, const nt::Sid& machine, id_t id) {
    const std::uint64_t relativeId = kFirstRelativeId + 2 * std::uint64_t{id} + KindBit(kind);
    if (relativeId > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    return machine.Append(static_cast<std::uint32_t>(relativeId));
}

std::optional<id_t> IdOfComputedSid(AccountKind kind, const nt::Sid& machine, const nt::Sid& sid) {
    if (!sid.IsDirectlyBelow(machine)) return std::nullopt;
    const std::uint64_t relativeId = sid.SubAuthority(sid.SubAuthorityCount() - 1);
    if (relativeId < kFirstRelativeId || relativeId % 2 != KindBit(kind)) return std::nullopt;
    return static_cast<id_t>((relativeId - kFirstRelativeId) / 2);
}

}  // namespace permora::host
