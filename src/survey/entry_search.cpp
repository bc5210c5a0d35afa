#include "survey/entry_search.h"

#include "platform/nt/ace_bits.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"

namespace permora {

bool EntrySearch::FitsAccount(const nt::Sid& sid) {
    if (criteria.account) return sid == *criteria.account;
    const AccountStanding standing = accounts.Find(sid).standing;
    if (standing == AccountStanding::kUnasked) hasMetUnasked = true;
    return standing == AccountStanding::kDeleted || standing == AccountStanding::kUnknown ||
           standing == AccountStanding::kBroken;
}

bool EntrySearch::FitsEntry(const nt::Ace& entry) {
    const bool isInherited = (entry.flags & nt::kInherited) != 0;
    if (criteria.effect == EntryEffect::kAllow && !nt::IsAllowType(entry.type)) return false;
    if (criteria.effect == EntryEffect::kDeny && !nt::IsDenyType(entry.type)) return false;
    if (criteria.origin == EntryOrigin::kExplicit && isInherited) return false;
    if (criteria.origin == EntryOrigin::kInherited && !isInherited) return false;
    if ((nt::MapGenericRights(entry.mask) & criteria.rights) != criteria.rights) return false;
    return entry.sid && FitsAccount(*entry.sid);
}

FoundEntries EntrySearch::Look(std::span<const std::uint8_t> descriptor) {
    FoundEntries found;
    const auto object = nt::SecurityDescriptor::FromBytes(descriptor);
    if (!object) return found;
    if (criteria.part == SearchedPart::kOwner) {
        if (object->owner && FitsAccount(*object->owner)) found.owner = object->owner;
    } else if (object->daclState == nt::DaclState::kList) {
        found.entries.revision = object->dacl.revision;
        for (const nt::Ace& entry : object->dacl.entries)
            if (FitsEntry(entry)) found.entries.entries.push_back(entry);
    }
    found.fits = found.owner.has_value() || !found.entries.entries.empty();
    return found;
}

const FoundEntries& EntrySearch::Find(std::span<const std::uint8_t> descriptor) {
    const std::string_view bytes(reinterpret_cast<const char*>(descriptor.data()), descriptor.size());
    const auto found = known.find(bytes);
    if (found != known.end()) return found->second;
    return known.emplace(std::string(bytes), Look(descriptor)).first->second;
}

}  // namespace permora
