#include "changes/account_edits.h"

#include <algorithm>
#include <utility>

#include "platform/nt/ace_bits.h"
#include "platform/nt/entry_effects.h"
#include "platform/security_change.h"

namespace permora {
namespace {

bool IsAsBefore(const nt::Ace& before, const std::vector<nt::Ace>& become) {
    return become.size() == 1 && become.front() == before;
}

// Appends entries of an object's own, without those that have become equal to one that is there.
class OwnEntries {
  public:
    explicit OwnEntries(std::vector<nt::Ace>& list) : entries(list) {}

    void Keep(nt::Ace entry) {
        if (std::ranges::find(changed, entry) == changed.end()) entries.push_back(std::move(entry));
    }
    void Add(nt::Ace entry) {
        changed.push_back(entry);
        if (std::ranges::find(entries, entry) == entries.end()) entries.push_back(std::move(entry));
    }

  private:
    std::vector<nt::Ace>& entries;
    std::vector<nt::Ace> changed;
};

std::vector<nt::Ace> InheritedOf(const nt::SecurityDescriptor& descriptor) {
    std::vector<nt::Ace> inherited;
    std::ranges::copy_if(descriptor.dacl.entries, std::back_inserter(inherited),
                         [&](const nt::Ace& entry) { return IsInheritedIn(descriptor, entry); });
    return inherited;
}

}  // namespace

EditedSecurity AccountEdit::Edit(const ObjectToEdit& object) {
    EditedSecurity edited;
    edited.wanted = object.present;
    std::vector<Entries> become;
    edited.fault = Transform(edited.wanted, become);
    if (edited.fault != EditFault::kNone) {
        edited.wanted = object.present;
        return edited;
    }
    if (object.present.daclState != nt::DaclState::kList) return edited;
    std::vector<nt::Ace> changed;
    const bool isAboutInherited = ChangeOwn(object.present, std::move(become), changed);
    edited.wanted.dacl.entries = std::move(changed);
    if (object.present.IsDaclProtected()) return edited;
    FollowFolder(object, isAboutInherited, edited.wanted);
    const bool comesFromOutside = object.place == EditPlace::kTop || object.above == nullptr;
    edited.inheritedStay = isAboutInherited && comesFromOutside && IsAboutInheritedOf(edited.wanted);
    return edited;
}

bool AccountEdit::ChangeOwn(const nt::SecurityDescriptor& present, std::vector<Entries> become,
                            std::vector<nt::Ace>& changed) {
    bool isAboutInherited = false;
    OwnEntries own(changed);
    for (std::size_t i = 0; i < present.dacl.entries.size(); ++i) {
        const nt::Ace& before = present.dacl.entries[i];
        if (IsInheritedIn(present, before)) {
            isAboutInherited = isAboutInherited || !IsAsBefore(before, become[i]);
            changed.push_back(before);
            continue;
        }
        for (nt::Ace& entry : become[i])
            if (entry == before)
                own.Keep(std::move(entry));
            else
                own.Add(std::move(entry));
    }
    return isAboutInherited;
}

void AccountEdit::FollowFolder(const ObjectToEdit& object, bool isAboutInherited,
                               nt::SecurityDescriptor& wanted) {
    if (object.above == nullptr) return;
    const nt::SecurityDescriptor& present = object.present;
    const auto& [before, after] = *object.above;
    const bool hasSameCreators = present.owner == wanted.owner && present.group == wanted.group;
    if (&before == &after && hasSameCreators && !isAboutInherited) return;
    const std::vector<nt::Ace> inherited = InheritedOf(present);
    const bool isRight = inherited == HandedDownTo(present, object.kind, before).entries;
    if (!isRight && (!isAboutInherited || object.place == EditPlace::kTop)) return;
    if (inherited != HandedDownTo(wanted, object.kind, after).entries)
        JoinInherited(wanted, after, object.kind, {}, {});
}

bool AccountEdit::IsAboutInheritedOf(const nt::SecurityDescriptor& descriptor) {
    nt::SecurityDescriptor copy = descriptor;
    std::vector<Entries> become;
    if (Transform(copy, become) != EditFault::kNone) return false;
    std::vector<nt::Ace> changed;
    return ChangeOwn(descriptor, std::move(become), changed);
}

EditFault ReplaceEdit::Transform(nt::SecurityDescriptor& descriptor, std::vector<Entries>& become) {
    nt::SecurityDescriptor exchanged = descriptor;
    if (exchange.Apply(exchanged) == nt::ExchangeResult::kHidden) return EditFault::kHiddenAccount;
    const std::vector<nt::Ace> present = descriptor.dacl.entries;
    for (std::size_t i = 0; i < present.size(); ++i) {
        nt::Ace& entry = exchanged.dacl.entries[i];
        const bool isCopied = manner == Manner::kCopy;
        Entries& becomes = become.emplace_back();
        if (isCopied) becomes.push_back(present[i]);
        if (!isCopied || std::ranges::find(present, entry) == present.end())
            becomes.push_back(std::move(entry));
    }
    if (manner == Manner::kCopy) return EditFault::kNone;
    descriptor.saclBytes = std::move(exchanged.saclBytes);
    if (manner == Manner::kReplaceInLists) return EditFault::kNone;
    descriptor.owner = exchanged.owner;
    descriptor.group = exchanged.group;
    return EditFault::kNone;
}

bool RevokeEdit::Removes(const nt::Ace& entry) const {
    const bool isOfType =
        types == Types::kAll || entry.type == nt::kAccessAllowedType || entry.type == nt::kAccessDeniedType;
    return isOfType && entry.sid && isRevoked(*entry.sid);
}

EditFault RevokeEdit::Transform(nt::SecurityDescriptor& descriptor, std::vector<Entries>& become) {
    for (const nt::Ace& entry : descriptor.dacl.entries)
        become.push_back(Removes(entry) ? Entries() : Entries{entry});
    return EditFault::kNone;
}

EditedSecurity RevokeEdit::Edit(const ObjectToEdit& object) {
    EditedSecurity edited = AccountEdit::Edit(object);
    if (edited.wanted.daclState == nt::DaclState::kList)
        edited.otherTypesStay = std::ranges::any_of(edited.wanted.dacl.entries, [&](const nt::Ace& entry) {
            return !IsInheritedIn(edited.wanted, entry) && entry.sid && isRevoked(*entry.sid);
        });
    return edited;
}

}  // namespace permora
