#include "platform/raw_security.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace permora {
namespace {

// 0 for a null list and for one that cannot be asked.
DWORD GetAceCount(PACL acl) {
    ACL_SIZE_INFORMATION information{};
    if (acl == nullptr ||
        GetAclInformation(acl, &information, sizeof information, AclSizeInformation) == FALSE)
        return 0;
    return information.AceCount;
}

}  // namespace

std::optional<nt::Sid> SidOf(PSID sid) {
    if (sid == nullptr || IsValidSid(sid) == FALSE) return std::nullopt;
    return nt::Sid::FromBytes({static_cast<const BYTE*>(sid), GetLengthSid(sid)});
}

PSID RawSid(const nt::Sid& sid) {
    return const_cast<BYTE*>(sid.Bytes().data());
}

std::span<const BYTE> ClaimedBytes(PACL acl) {
    if (acl == nullptr) return {};
    ACL header;
    std::memcpy(&header, acl, sizeof header);
    return {reinterpret_cast<const BYTE*>(acl), header.AclSize};
}

std::optional<nt::Acl> AclOf(PACL acl) {
    return nt::Acl::FromBytes(ClaimedBytes(acl));
}

std::vector<nt::Ace> AcesOf(PACL acl) {
    std::vector<nt::Ace> aces;
    const auto bytes = ClaimedBytes(acl);
    const DWORD count = GetAceCount(acl);
    for (DWORD index = 0; index < count; ++index) {
        void* found = nullptr;
        if (GetAce(acl, index, &found) == FALSE) continue;
        const auto offset = static_cast<std::size_t>(static_cast<const BYTE*>(found) - bytes.data());
        if (offset > bytes.size()) continue;
        if (auto ace = nt::Ace::FromDamagedBytes(bytes.subspan(offset))) aces.push_back(std::move(*ace));
    }
    return aces;
}

}  // namespace permora
