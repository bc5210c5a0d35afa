#include "changes/copy_edit.h"

#include <algorithm>
#include <utility>

#include "platform/nt/ace_bits.h"
#include "platform/nt/entry_effects.h"
#include "platform/security_change.h"

namespace permora {
namespace {

constexpr std::uint8_t kHandedDownFlags =
    nt::kObjectInherit | nt::kContainerInherit | nt::kNoPropagateInherit | nt::kInheritOnly;

nt::Acl ForFiles(const nt::Acl& list) {
    nt::Acl files{list.revision, {}};
    for (nt::Ace entry : list.entries) {
        if ((entry.flags & nt::kInheritOnly) != 0) continue;
        entry.flags &= static_cast<std::uint8_t>(~kHandedDownFlags);
        if (std::ranges::find(files.entries, entry) == files.entries.end())
            files.entries.push_back(std::move(entry));
    }
    return files;
}

bool Inherits(const nt::SecurityDescriptor& descriptor) {
    return descriptor.daclState == nt::DaclState::kList && !descriptor.IsDaclProtected();
}

}  // namespace

CopyEdit::CopyEdit(const nt::SecurityDescriptor& sourceSecurity, Reach copyReach, Owner copyOwner)
    : source(sourceSecurity), reach(copyReach), owner(copyOwner) {
    std::erase_if(source.dacl.entries,
                  [&](const nt::Ace& entry) { return IsInheritedIn(sourceSecurity, entry); });
    // What a protected list calls inherited is its own.
    for (nt::Ace& entry : source.dacl.entries)
        entry.flags &= static_cast<std::uint8_t>(~nt::kInherited);
    forFiles = ForFiles(source.dacl);
}

// Whether the folder hands down all that the object would get, in the same order.
bool CopyEdit::IsHandedDown(const ObjectToEdit& object) const {
    if (object.place == EditPlace::kTop || object.above == nullptr ||
        source.daclState != nt::DaclState::kList)
        return false;
    const nt::Acl inherited = HandedDownTo(object.present, object.kind, object.above->after);
    auto next = inherited.entries.begin();
    return std::ranges::all_of(OwnFor(object.kind).entries, [&](nt::Ace entry) {
        entry.flags |= nt::kInherited;
        next = std::find(next, inherited.entries.end(), entry);
        if (next == inherited.entries.end()) return false;
        ++next;
        return true;
    });
}

void CopyEdit::TakeList(const ObjectToEdit& object, EditedSecurity& edited) const {
    nt::SecurityDescriptor& wanted = edited.wanted;
    const bool inheritsAll = IsHandedDown(object);
    wanted.daclState = source.daclState;
    wanted.dacl = inheritsAll ? nt::Acl() : OwnFor(object.kind);
    wanted.control &= static_cast<std::uint16_t>(~(nt::kDaclProtected | SE_DACL_DEFAULTED));
    wanted.control |= nt::kDaclAutoInherited;
    if (source.IsDaclProtected() && !inheritsAll) wanted.control |= nt::kDaclProtected;
    if (!Inherits(wanted)) return;
    if (object.above != nullptr)
        JoinInherited(wanted, object.above->after, object.kind, {}, {});
    else
        edited.fault = EditFault::kUnknownFolder;
}

EditedSecurity CopyEdit::Edit(const ObjectToEdit& object) {
    EditedSecurity edited;
    edited.wanted = object.present;
    if (object.place == EditPlace::kTop || reach == Reach::kTree) {
        if (owner == Owner::kCopy && source.owner) edited.wanted.owner = source.owner;
        TakeList(object, edited);
    } else if (Inherits(object.present) && object.above != nullptr &&
               &object.above->before != &object.above->after) {
        JoinInherited(edited.wanted, object.above->after, object.kind, {}, {});
    }
    if (edited.fault != EditFault::kNone) edited.wanted = object.present;
    return edited;
}

}  // namespace permora
