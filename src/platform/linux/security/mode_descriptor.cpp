#include "platform/linux/security/mode_descriptor.h"

#include <sys/stat.h>

#include <cstdint>

#include "platform/api/security.h"

namespace permora::host {

namespace {

// The rights of everyone who can reach the object. No mode bit takes them away.
constexpr std::uint32_t kStatusRights = READ_CONTROL | SYNCHRONIZE | FILE_READ_ATTRIBUTES;

// The rights of the owner under every mode: chmod and utimes require only ownership.
constexpr std::uint32_t kOwnerRights = kStatusRights | WRITE_DAC | FILE_WRITE_ATTRIBUTES;

// The rights that the three lowest bits of `bits` give.
std::uint32_t RightsOfBits(unsigned bits, std::uint32_t writeRights) {
    std::uint32_t rights = 0;
    if ((bits & S_IROTH) != 0) rights |= FILE_GENERIC_READ;
    if ((bits & S_IWOTH) != 0) rights |= writeRights;
    if ((bits & S_IXOTH) != 0) rights |= FILE_GENERIC_EXECUTE;
    return rights;
}

void AddEntry(nt::Acl& acl, std::uint8_t type, std::uint32_t mask, const nt::Sid& sid) {
    if (mask == 0) return;
    nt::Ace& entry = acl.entries.emplace_back();
    entry.type = type;
    entry.mask = mask;
    entry.sid = sid;
}

}  // namespace

nt::SecurityDescriptor DescriptorFromMode(mode_t mode, nt::ObjectKind kind, const nt::Sid& owner,
                                          const nt::Sid& group) {
    const nt::Sid everyone(1, {0});
    const bool mayEmpty = kind == nt::ObjectKind::kFolder && (mode & S_ISVTX) == 0;
    const std::uint32_t writeRights = FILE_GENERIC_WRITE | (mayEmpty ? FILE_DELETE_CHILD : 0);
    const bool isOwnerUnrestricted = (mode & S_IRWXU) == S_IRWXU;
    const std::uint32_t ownerRights =
        isOwnerUnrestricted ? FILE_ALL_ACCESS : kOwnerRights | RightsOfBits(mode >> 6U, writeRights);
    const std::uint32_t groupRights = RightsOfBits(mode >> 3U, writeRights);
    const std::uint32_t otherRights = RightsOfBits(mode, writeRights);

    nt::SecurityDescriptor descriptor;
    descriptor.control = nt::kSelfRelative | nt::kDaclPresent | nt::kDaclAutoInherited;
    descriptor.owner = owner;
    descriptor.group = group;
    descriptor.daclState = nt::DaclState::kList;
    nt::Acl& dacl = descriptor.dacl;
    dacl.entries.reserve(5);
    AddEntry(dacl, ACCESS_DENIED_ACE_TYPE, (groupRights | otherRights) & ~ownerRights, owner);
    AddEntry(dacl, ACCESS_ALLOWED_ACE_TYPE, ownerRights, owner);
    AddEntry(dacl, ACCESS_DENIED_ACE_TYPE, otherRights & ~groupRights & ~kStatusRights, group);
    AddEntry(dacl, ACCESS_ALLOWED_ACE_TYPE, groupRights, group);
    AddEntry(dacl, ACCESS_ALLOWED_ACE_TYPE, otherRights, everyone);
    return descriptor;
}

}  // namespace permora::host
