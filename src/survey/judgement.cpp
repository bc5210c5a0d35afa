#include "survey/judgement.h"

#include <algorithm>
#include <optional>

#include "platform/api/security.h"
#include "platform/nt/ace_bits.h"
#include "platform/nt/granted_rights.h"
#include "platform/nt/inheritance.h"
#include "platform/security_change.h"
#include "security/access_entry_list.h"
#include "survey/handed_down.h"

namespace permora {
namespace {

using nt::Ace;
using nt::DaclState;
using nt::SecurityDescriptor;
using nt::Sid;

// Everybody who can reach the object at all, or everybody who has an account here.
bool StandsForAll(const Sid& sid) {
    static const Sid kEveryone(1, {0});
    static const Sid kAuthenticatedUsers(5, {11});
    static const Sid kUsers(5, {32, 545});
    return sid == kEveryone || sid == kAuthenticatedUsers || sid == kUsers;
}

bool NamesIn(const SecurityDescriptor& descriptor, const Sid& sid) {
    return descriptor.owner == sid || descriptor.group == sid ||
           std::ranges::any_of(descriptor.dacl.entries, [&](const Ace& entry) { return entry.sid == sid; });
}

class Judging {
  public:
    Judging(const DistinctSecurity& own, const DistinctSecurity* above, TreeObjectKind kindOfObject,
            SurveyPlace where, const StandingOf& standings)
        : object(own.Descriptor()),
          isStored(own.isStored),
          kind(kindOfObject),
          place(where),
          standingOf(standings) {
        if (above != nullptr) folder = above->Descriptor();
    }

    RemarkSet Run() {
        JudgeOwner();
        JudgeInheritance();
        if (object.daclState != DaclState::kList)
            remarks.Add(Remark::kNullList);
        else
            JudgeList();
        return remarks;
    }

  private:
    nt::ObjectKind Kind() const {
        return kind == TreeObjectKind::kFolder ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile;
    }

    void JudgeAccount(const Sid& sid) {
        if (IsPlaceholder(sid)) return;
        if (const std::optional<Remark> remark = RemarkOf(standingOf(sid))) remarks.Add(*remark);
    }

    void JudgeOwner() {
        const bool isOther = folder && folder->owner && object.owner != folder->owner;
        if (isOther) remarks.Add(Remark::kOtherOwner);
        if (object.owner && (isOther || place == SurveyPlace::kTop)) JudgeAccount(*object.owner);
    }

    void JudgeInheritance() {
        if (object.IsDaclProtected()) {
            remarks.Add(Remark::kProtected);
            return;
        }
        if (!folder || object.daclState != DaclState::kList) return;
        // No list is kept for a link where none is stored, and nobody goes by one.
        const bool takesPart = isStored || kind == TreeObjectKind::kFile || kind == TreeObjectKind::kFolder;
        if (takesPart) handedDown = CompareHandedDown(object, ListOf(*folder), Kind());
        if (handedDown == HandedDown::kStale) remarks.Add(Remark::kStale);
    }

    // An entry that the object has not from its folder. What a mode gives is nobody's choice of entries, and
    // so are accounts that the folder names as well.
    bool IsOwn(const Ace& entry) const {
        if (handedDown == HandedDown::kUnmarked) return false;
        if ((entry.flags & nt::kInherited) != 0)
            return handedDown == HandedDown::kStale || object.IsDaclProtected();
        return isStored || !folder || !entry.sid || !NamesIn(*folder, *entry.sid);
    }

    void JudgeList() {
        if (object.dacl.entries.empty()) remarks.Add(Remark::kEmptyList);
        const bool isChosen = isStored && handedDown != HandedDown::kUnmarked;
        if (isChosen && !AccessEntryList(object.dacl.entries).IsInCanonicalOrder())
            remarks.Add(Remark::kUnusualOrder);
        for (const Ace& entry : object.dacl.entries)
            JudgeEntry(entry);
    }

    void JudgeEntry(const Ace& entry) {
        const bool isOwn = IsOwn(entry);
        if (isOwn && isStored && (entry.flags & nt::kInherited) == 0) {
            remarks.Add(Remark::kOwnEntries);
            if (nt::IsDenyType(entry.type)) remarks.Add(Remark::kDenial);
        }
        if (!entry.sid) return;
        const bool isLookedAt = isOwn || place == SurveyPlace::kTop;
        if (isLookedAt) JudgeAccount(*entry.sid);
        // No mode has its bits from the folder.
        if ((isLookedAt || !isStored) && IsOpen(entry)) remarks.Add(Remark::kOpenToAll);
    }

    bool IsOpen(const Ace& entry) const {
        if (entry.type != nt::kAccessAllowedType || !StandsForAll(*entry.sid)) return false;
        // A link has all bits in its mode everywhere.
        if (!isStored && kind == TreeObjectKind::kLink) return false;
        const std::uint32_t open = nt::MapGenericRights(entry.mask) & kOpenRights;
        if (open == 0) return false;
        if ((entry.flags & nt::kInheritOnly) != 0) return true;
        // Access checks go by no generic rights, and an entry before this one may deny.
        return (entry.mask & kOpenRights & nt::GrantedRights(object.dacl, {&*entry.sid, 1})) != 0;
    }

    const SecurityDescriptor object;
    const bool isStored;
    const TreeObjectKind kind;
    const SurveyPlace place;
    const StandingOf& standingOf;
    std::optional<SecurityDescriptor> folder;
    HandedDown handedDown = HandedDown::kMarked;
    RemarkSet remarks;
};

}  // namespace

SecurityDescriptor DistinctSecurity::Descriptor() const {
    // It was checked when it was read.
    return SecurityDescriptor::FromBytes(bytes).value_or(SecurityDescriptor());
}

RemarkSet JudgeSecurity(const DistinctSecurity& own, const DistinctSecurity* above, TreeObjectKind kind,
                        SurveyPlace place, const StandingOf& standingOf) {
    return Judging(own, above, kind, place, standingOf).Run();
}

}  // namespace permora
