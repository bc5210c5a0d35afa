#include "platform/security_change.h"

#include <algorithm>
#include <span>
#include <utility>

#include "platform/api/errors.h"
#include "platform/nt/ace_bits.h"
#include "platform/nt/entry_effects.h"
#include "platform/raw_security.h"

namespace permora {
namespace {

constexpr SECURITY_INFORMATION kProtection =
    PROTECTED_DACL_SECURITY_INFORMATION | UNPROTECTED_DACL_SECURITY_INFORMATION;

constexpr WORD kDaclControl = SE_DACL_PRESENT | SE_DACL_DEFAULTED | SE_DACL_AUTO_INHERIT_REQ |
                              SE_DACL_AUTO_INHERITED | SE_DACL_PROTECTED;
constexpr WORD kSaclControl = SE_SACL_PRESENT | SE_SACL_DEFAULTED | SE_SACL_AUTO_INHERIT_REQ |
                              SE_SACL_AUTO_INHERITED | SE_SACL_PROTECTED;

void ClearControl(nt::SecurityDescriptor& descriptor, WORD bits) {
    descriptor.control &= static_cast<WORD>(~bits);
}

void TakeControl(nt::SecurityDescriptor& descriptor, const nt::SecurityDescriptor& from, WORD bits) {
    descriptor.control = static_cast<WORD>((descriptor.control & ~bits) | (from.control & bits));
}

bool TakeSid(PSID sid, nt::Sid& taken) {
    const std::optional<nt::Sid> copy = SidOf(sid);
    if (copy) taken = *copy;
    return copy.has_value();
}

void SetList(const SecurityChange& change, const ListAbove* above, nt::SecurityDescriptor& descriptor) {
    if (change.Has(PROTECTED_DACL_SECURITY_INFORMATION)) descriptor.control |= SE_DACL_PROTECTED;
    if (change.Has(UNPROTECTED_DACL_SECURITY_INFORMATION)) ClearControl(descriptor, SE_DACL_PROTECTED);
    ClearControl(descriptor, SE_DACL_DEFAULTED);
    descriptor.control |= SE_DACL_AUTO_INHERITED;
    if (!change.dacl) {
        descriptor.daclState = nt::DaclState::kNull;
        descriptor.dacl = {};
        return;
    }
    nt::Acl list = nt::MapGenericRights(*change.dacl, ListOf(descriptor));
    descriptor.daclState = nt::DaclState::kList;
    descriptor.dacl = std::move(list);
    if (!descriptor.IsDaclProtected() && above != nullptr)
        JoinInherited(descriptor, above->list, above->kind, above->owner, above->group);
}

}  // namespace

DWORD TakeChange(SECURITY_INFORMATION information, const NewParts& parts, SecurityChange& change) {
    const bool contradictsItself = (information & kProtection) == kProtection;
    if ((information & kDescriptorParts) == 0 || (information & ~(kDescriptorParts | kProtection)) != 0 ||
        contradictsItself)
        return ERROR_INVALID_PARAMETER;
    change.information = information;
    if (change.Has(OWNER_SECURITY_INFORMATION) && !TakeSid(parts.owner, change.owner))
        return ERROR_INVALID_SID;
    if (change.Has(GROUP_SECURITY_INFORMATION) && !TakeSid(parts.group, change.group))
        return ERROR_INVALID_SID;
    if (change.Has(DACL_SECURITY_INFORMATION) && parts.dacl != nullptr) {
        change.dacl = AclOf(parts.dacl);
        if (!change.dacl) return ERROR_INVALID_ACL;
    }
    if (change.Has(SACL_SECURITY_INFORMATION) && parts.sacl != nullptr) {
        if (!IsValidAcl(parts.sacl)) return ERROR_INVALID_ACL;
        const auto bytes = ClaimedBytes(parts.sacl);
        change.sacl.assign(bytes.begin(), bytes.end());
    }
    return ERROR_SUCCESS;
}

bool InheritsAfter(const SecurityChange& change, const nt::SecurityDescriptor& descriptor) {
    if (!change.Has(DACL_SECURITY_INFORMATION) || !change.dacl ||
        change.Has(PROTECTED_DACL_SECURITY_INFORMATION))
        return false;
    return change.Has(UNPROTECTED_DACL_SECURITY_INFORMATION) || !descriptor.IsDaclProtected();
}

void ApplyChange(const SecurityChange& change, const ListAbove* above, nt::SecurityDescriptor& descriptor) {
    if (change.Has(OWNER_SECURITY_INFORMATION)) {
        descriptor.owner = change.owner;
        ClearControl(descriptor, SE_OWNER_DEFAULTED);
    }
    if (change.Has(GROUP_SECURITY_INFORMATION)) {
        descriptor.group = change.group;
        ClearControl(descriptor, SE_GROUP_DEFAULTED);
    }
    if (change.Has(SACL_SECURITY_INFORMATION)) {
        descriptor.saclBytes = change.sacl;
        ClearControl(descriptor, SE_SACL_PRESENT | SE_SACL_DEFAULTED);
        if (!change.sacl.empty()) descriptor.control |= SE_SACL_PRESENT;
    }
    if (change.Has(DACL_SECURITY_INFORMATION)) SetList(change, above, descriptor);
}

void JoinInherited(nt::SecurityDescriptor& descriptor, const nt::Acl& above, nt::ObjectKind kind,
                   const nt::Sid& owner, const nt::Sid& group) {
    descriptor.dacl = nt::MergeInherited(descriptor.dacl, above, kind, descriptor.owner.value_or(owner),
                                         descriptor.group.value_or(group));
    descriptor.control |= nt::kDaclAutoInherited;
}

std::vector<nt::Ace> LostOwnEntries(const nt::SecurityDescriptor& before,
                                    const nt::SecurityDescriptor& after) {
    // A list that is protected may mark entries as inherited that are its own.
    const auto holds = [](nt::Ace entry, nt::Ace lost) {
        const std::uint32_t rights = nt::MapGenericRights(lost.mask);
        if ((nt::MapGenericRights(entry.mask) & rights) != rights) return false;
        lost.mask = entry.mask;
        for (nt::Ace* each : {&entry, &lost})
            each->flags &= static_cast<std::uint8_t>(~nt::kInherited);
        return entry == lost;
    };
    std::vector<nt::Ace> lost;
    for (const nt::Ace& entry : ListOf(before).entries) {
        const bool isKept = std::ranges::any_of(ListOf(after).entries, [&](const nt::Ace& other) {
            return !nt::IsInheritedIn(after, other) && holds(other, entry);
        });
        if (!isKept && !nt::IsInheritedIn(before, entry)) lost.push_back(entry);
    }
    return lost;
}

bool IsEmptiedBy(const nt::SecurityDescriptor& before, const nt::SecurityDescriptor& after) {
    const auto isEmpty = [](const nt::SecurityDescriptor& descriptor) {
        return descriptor.daclState == nt::DaclState::kList && descriptor.dacl.entries.empty();
    };
    return isEmpty(after) && !isEmpty(before);
}

const nt::Acl& ListOf(const nt::SecurityDescriptor& descriptor) {
    static const nt::Acl kNothing;
    return descriptor.daclState == nt::DaclState::kList ? descriptor.dacl : kNothing;
}

std::optional<nt::SecurityDescriptor> DescriptorOf(const ReadParts& parts) {
    if (!parts.descriptor) return std::nullopt;
    const auto* bytes = static_cast<const std::uint8_t*>(parts.descriptor.get());
    return nt::SecurityDescriptor::FromBytes(
        std::span(bytes, GetSecurityDescriptorLength(parts.descriptor.get())));
}

DWORD ReadDescriptor(const HeldObject& object, SECURITY_INFORMATION needed,
                     nt::SecurityDescriptor& descriptor) {
    ReadParts read;
    DWORD error = object.ReadSecurity(kUsualParts | needed | object.PartsAtOnce(), read);
    if (error != ERROR_SUCCESS && (needed & SACL_SECURITY_INFORMATION) == 0)
        error = object.ReadSecurity(kUsualParts, read);
    if (error != ERROR_SUCCESS) return error;
    auto value = DescriptorOf(read);
    if (!value) return ERROR_INVALID_SECURITY_DESCR;
    descriptor = std::move(*value);
    return ERROR_SUCCESS;
}

void TakeParts(nt::SecurityDescriptor& descriptor, const nt::SecurityDescriptor& from,
               SECURITY_INFORMATION parts) {
    if ((parts & OWNER_SECURITY_INFORMATION) != 0) {
        descriptor.owner = from.owner;
        TakeControl(descriptor, from, SE_OWNER_DEFAULTED);
    }
    if ((parts & GROUP_SECURITY_INFORMATION) != 0) {
        descriptor.group = from.group;
        TakeControl(descriptor, from, SE_GROUP_DEFAULTED);
    }
    if ((parts & DACL_SECURITY_INFORMATION) != 0) {
        descriptor.daclState = from.daclState;
        descriptor.dacl = from.dacl;
        TakeControl(descriptor, from, kDaclControl);
    }
    if ((parts & SACL_SECURITY_INFORMATION) != 0) {
        descriptor.saclBytes = from.saclBytes;
        TakeControl(descriptor, from, kSaclControl);
    }
}

void ReduceToParts(nt::SecurityDescriptor& descriptor, SECURITY_INFORMATION parts) {
    static const nt::SecurityDescriptor kNothing;
    TakeParts(descriptor, kNothing, kDescriptorParts & ~parts);
}

bool HasSameList(nt::SecurityDescriptor one, nt::SecurityDescriptor other) {
    ReduceToParts(one, DACL_SECURITY_INFORMATION);
    ReduceToParts(other, DACL_SECURITY_INFORMATION);
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint8_t> otherBytes;
    return one.AppendTo(bytes) && other.AppendTo(otherBytes) && bytes == otherBytes;
}

bool HasSameSystemList(const nt::SecurityDescriptor& one, const nt::SecurityDescriptor& other) {
    constexpr unsigned kInheritance = SE_SACL_AUTO_INHERITED | SE_SACL_PROTECTED;
    return one.saclBytes == other.saclBytes && ((one.control ^ other.control) & kInheritance) == 0;
}

}  // namespace permora
