#include "changes/tree_edit.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "changes/folders_above.h"
#include "history/stored_batch.h"
#include "platform/api/errors.h"
#include "platform/below_finder.h"
#include "platform/nt/entry_effects.h"
#include "platform/raw_security.h"
#include "platform/security_change.h"
#include "platform/volume_loss.h"
#include "saved/tree_saving.h"
#include "saved/tree_source.h"

namespace permora {
namespace {

// An object that another program keeps changing is given up after so many attempts.
constexpr int kMostAttempts = 3;

// What the user is to be told of an object as soon as it is written.
struct Remarks {
    bool letsNobodyIn = false;
    bool inheritedStay = false;
    bool otherTypesStay = false;
};

// An object that may have to be changed.
struct Attempt {
    std::string path;
    std::shared_ptr<const FolderLists> above;  // null: not known
    std::shared_ptr<FolderLists> own;          // of a folder; null: it is none
    bool hasContents = true;                   // ObjectToEdit::hasContents
    int number = 1;
    SharedList basis;  // what `above` had when the change was made up
    Remarks remarks;
};

bool HasVanished(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

NotEdited NotEditedBy(EditFault fault) {
    if (fault == EditFault::kNoList) return NotEdited::kNoList;
    return fault == EditFault::kHiddenAccount ? NotEdited::kHiddenAccount : NotEdited::kUnknownFolder;
}

// The path of something in the folder, whatever its name.
std::string PathIn(std::string_view folder) {
    return folder.empty() ? "*" : std::string(folder) + "\\*";
}

// Whether the top of a tree, a file, has further names.
DWORD AskNamesOfTop(const HeldObject& top, bool& hasSeveral) {
    ChangedTop named;
    HeldObject folder;
    HeldObject file;
    DWORD error = top.FindTop(named);
    if (error == ERROR_SUCCESS) error = top.HoldAbove(folder);
    if (error == ERROR_SUCCESS && !folder.IsHeld()) error = ERROR_NOT_SAME_DEVICE;
    if (error == ERROR_SUCCESS) error = folder.HoldBelow(named.path.substr(named.path.rfind('\\') + 1), file);
    if (error == ERROR_SUCCESS && file.FileNumber() != top.FileNumber()) error = ERROR_FILE_INVALID;
    return error == ERROR_SUCCESS ? file.HasSeveralNames(hasSeveral) : error;
}

class TreeEditing : private TreeVisitor {
  public:
    struct Work {
        HeldObject& top;
        DescriptorEdit& edit;
        const TreeEditOptions& options;
        TreeEditHost& host;
        ChangeRecorder& recorder;
        TreeEditCounts& counts;
    };
    explicit TreeEditing(const Work& toDo) : work(toDo), finder(toDo.top) {}

    DWORD Run();

  private:
    DWORD Prepare();
    bool Visit(const ReadObject& object) override;
    bool Enters(std::string_view folder) override;
    void PassOver(const ReadObject& object);
    bool InheritsAnew(const std::string& path);
    DWORD Take(const ReadObject& object);
    bool IsLikeTheLast(const ReadObject& object, const Attempt& attempt) const;
    EditedSecurity Judge(Attempt& attempt, const nt::SecurityDescriptor& present) const;
    DWORD Try(Attempt attempt);
    DWORD TryOutOfDate();
    DWORD Hold(const std::string& path, std::optional<HeldObject>& object);
    bool MakeChange(Attempt& attempt, const HeldObject& object, DescriptorChange& change);
    DWORD CheckNames(const Attempt& attempt, const HeldObject& object, bool changesOwner) const;
    void Write(const HeldObject* object, const DescriptorChange& change);
    void TryAgain(Attempt attempt);
    DWORD Finish();
    bool Fail(const std::string& path, NotEdited fault, DWORD error = ERROR_SUCCESS);
    void Tell(const std::string& path, const Remarks& remarks);
    bool IsDryRun() const { return work.options.mode == TreeListMode::kCountOnly; }

    Work work;
    BelowFinder finder;
    SECURITY_INFORMATION parts = 0;
    FoldersAbove folders;
    std::optional<StoredBatch> batch;
    std::deque<Attempt> batched;    // what is in the batch, in its order
    std::deque<Attempt> outOfDate;  // what was changed, or what its folder hands down, in the middle
    // Of the last file that had to have no other descriptor, and what its folder had then; null: of none.
    std::vector<std::uint8_t> unchanged;
    SharedList unchangedBelow;
    DWORD result = ERROR_SUCCESS;
    DWORD lost = ERROR_SUCCESS;  // why nothing more can be changed
    bool isRestTold = false;     // that the contents of the top were not changed to their end
};

// What a folder hands down that changes from `before` to `after`.
void SetLists(const Attempt& folder, const nt::SecurityDescriptor& before,
              const nt::SecurityDescriptor& after) {
    *folder.own = ListsOfFolder(before, after, folder.above.get(), folder.basis);
}

// What is kept of the object, and the descriptor that this means. ERROR_REVISION_MISMATCH when another
// program keeps changing it.
DWORD ReadBoth(const HeldObject& object, SECURITY_INFORMATION parts, SystemList systemList,
               StoredSecurity& stored, nt::SecurityDescriptor& descriptor) {
    DWORD error = object.ReadStored(stored, DamagedBytes::kRefused, systemList);
    for (int attempt = 0; error == ERROR_SUCCESS && attempt < kMostAttempts; ++attempt) {
        StoredSecurity now;
        error = ReadDescriptor(object, parts, descriptor);
        if (error == ERROR_SUCCESS) error = object.ReadStored(now, DamagedBytes::kRefused, systemList);
        if (error == ERROR_SUCCESS && now == stored) return ERROR_SUCCESS;
        stored = std::move(now);
    }
    return error == ERROR_SUCCESS ? ERROR_REVISION_MISMATCH : error;
}

bool TreeEditing::Fail(const std::string& path, NotEdited fault, DWORD error) {
    ++work.counts.failed;
    work.host.Fail(path, fault, error);
    if (IsVolumeLost(error)) lost = error;
    isRestTold = isRestTold || (path.empty() && fault == NotEdited::kUnlisted);
    return false;
}

void TreeEditing::Tell(const std::string& path, const Remarks& remarks) {
    if (remarks.letsNobodyIn) work.host.Remark(path, EditRemark::kLetsNobodyIn);
    if (remarks.inheritedStay) work.host.Remark(path, EditRemark::kInheritedStay);
    if (remarks.otherTypesStay) work.host.Remark(path, EditRemark::kOtherTypesStay);
}

DWORD TreeEditing::Prepare() {
    ReadParts above;
    if (work.top.ReadAbove(DACL_SECURITY_INFORMATION, above) == ERROR_SUCCESS) {
        const std::optional<nt::Acl> list = AclOf(above.dacl);
        folders.SetAboveTop(std::make_shared<FolderLists>(ListsOfFolder(list.value_or(nt::Acl()))));
    }
    parts = ReadableParts(work.top);
    if (!work.edit.EditsSystemLists())
        parts &= work.top.PartsAtOnce();
    else if ((parts & SACL_SECURITY_INFORMATION) == 0)
        work.host.Remark("", EditRemark::kSystemListsStay);
    if (IsDryRun()) return ERROR_SUCCESS;
    ChangedTop changed;
    DWORD error = work.top.TakeTurn();
    if (error == ERROR_SUCCESS) error = work.top.FindTop(changed);
    if (error == ERROR_SUCCESS)
        batch.emplace(
            work.recorder, std::move(changed),
            [this](const HeldObject* object, const DescriptorChange& change) { Write(object, change); });
    return error;
}

DWORD TreeEditing::Run() {
    if (const DWORD error = Prepare(); error != ERROR_SUCCESS) {
        Fail("", NotEdited::kError, error);
        return ERROR_SUCCESS;
    }
    (void)ReadTree(work.top, parts, *this);
    if (result == ERROR_SUCCESS) result = Finish();
    if (lost != ERROR_SUCCESS && !isRestTold && work.top.IsFolder()) Fail("", NotEdited::kUnlisted, lost);
    return result;
}

bool TreeEditing::Visit(const ReadObject& object) {
    if (!work.host.Begin(object.path)) {
        result = ERROR_OPERATION_ABORTED;
        return false;
    }
    if (lost != ERROR_SUCCESS && object.kind != SavedKind::kUnlisted) return false;
    if (object.kind == SavedKind::kMounted || object.kind == SavedKind::kUnlisted ||
        object.kind == SavedKind::kUnread)
        PassOver(object);
    else
        result = Take(object);
    return result == ERROR_SUCCESS;
}

// Whether something else is handed down to what is at the path. Only the folders that hold it stay.
bool TreeEditing::InheritsAnew(const std::string& path) {
    if (!path.empty()) folders.LeaveTo(path);
    const std::shared_ptr<const FolderLists> above = folders.ListsAbove(path);
    return above && above->before != above->after;
}

void TreeEditing::PassOver(const ReadObject& object) {
    const std::string path(object.path);
    if (object.kind == SavedKind::kMounted) {
        // The root of a volume inherits from nothing.
        if (work.edit.Misses(path, EditGap::kMounted)) Fail(path, NotEdited::kError, ERROR_NOT_SAME_DEVICE);
    } else if (object.kind == SavedKind::kUnlisted) {
        if (work.edit.Misses(path, EditGap::kUnlisted) || InheritsAnew(PathIn(path)))
            Fail(path, NotEdited::kUnlisted, object.error);
    } else {
        const bool inheritsAnew = InheritsAnew(path);
        if (work.edit.Misses(path, EditGap::kUnread) || inheritsAnew)
            Fail(path, NotEdited::kError, object.error);
        // It may be a folder all the same, with something in it.
        folders.Enter(path, nullptr);
    }
}

bool TreeEditing::Enters(std::string_view folder) {
    return work.edit.Enters(folder) || InheritsAnew(PathIn(folder));
}

// Most files have what the one before has, and need no second judgement.
bool TreeEditing::IsLikeTheLast(const ReadObject& object, const Attempt& attempt) const {
    return !work.edit.DependsOnPath() && !attempt.own && attempt.above && unchangedBelow &&
           attempt.above->after == unchangedBelow && std::ranges::equal(object.descriptor, unchanged);
}

// What the walk has read decides whether the object is looked at more closely.
DWORD TreeEditing::Take(const ReadObject& object) {
    Attempt attempt;
    attempt.path = object.path;
    if (!attempt.path.empty()) folders.LeaveTo(attempt.path);
    attempt.above = folders.ListsAbove(attempt.path);
    attempt.hasContents = object.is == TreeObjectKind::kFile || object.is == TreeObjectKind::kFolder;
    if (object.kind == SavedKind::kFolder) attempt.own = std::make_shared<FolderLists>();
    if (IsLikeTheLast(object, attempt)) {
        ++work.counts.unchanged;
        return ERROR_SUCCESS;
    }
    const auto present = nt::SecurityDescriptor::FromBytes(object.descriptor);
    if (!present) {
        PassOver({object.path, SavedKind::kUnread, {}, ERROR_INVALID_SECURITY_DESCR});
        return ERROR_SUCCESS;
    }
    if (attempt.own) folders.Enter(attempt.path, attempt.own);
    const EditedSecurity edited = Judge(attempt, *present);
    if (edited.fault != EditFault::kNone || edited.wanted != *present || edited.rulesOwner) {
        const DWORD error = Try(std::move(attempt));
        return error == ERROR_SUCCESS ? TryOutOfDate() : error;
    }
    ++work.counts.unchanged;
    if (attempt.own) SetLists(attempt, *present, *present);
    if (edited.inheritedStay || edited.otherTypesStay) {
        Tell(attempt.path, {false, edited.inheritedStay, edited.otherTypesStay});
    } else if (!attempt.own) {
        unchanged.assign(object.descriptor.begin(), object.descriptor.end());
        unchangedBelow = attempt.basis;
    }
    return ERROR_SUCCESS;
}

EditedSecurity TreeEditing::Judge(Attempt& attempt, const nt::SecurityDescriptor& present) const {
    attempt.basis = attempt.above ? attempt.above->after : nullptr;
    std::optional<ListsAbove> lists;
    if (attempt.basis) lists.emplace(ListsAbove{*attempt.above->before, *attempt.basis});
    return work.edit.Edit({present, attempt.own ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile,
                           attempt.path.empty() ? EditPlace::kTop : EditPlace::kBelow,
                           lists ? &*lists : nullptr, attempt.path, attempt.hasContents});
}

// The top itself stays where it is.
DWORD TreeEditing::Hold(const std::string& path, std::optional<HeldObject>& object) {
    if (path.empty()) return ERROR_SUCCESS;
    const DWORD error = finder.Hold(path, object.emplace());
    if (error != ERROR_TOO_MANY_OPEN_FILES || !batch) return error;
    result = batch->Flush();
    return result == ERROR_SUCCESS ? finder.Hold(path, *object) : error;
}

DWORD TreeEditing::Try(Attempt attempt) {
    std::optional<HeldObject> object;
    DWORD error = Hold(attempt.path, object);
    if (result != ERROR_SUCCESS) return result;
    if (HasVanished(error)) return ERROR_SUCCESS;
    const HeldObject& held = object ? *object : work.top;
    if (error == ERROR_SUCCESS && held.IsFolder() != (attempt.own != nullptr)) error = ERROR_FILE_INVALID;
    if (error != ERROR_SUCCESS) {
        Fail(attempt.path, NotEdited::kError, error);
        return ERROR_SUCCESS;
    }
    if (batch && batch->Holds(held.FileNumber()))
        if (error = batch->Flush(); error != ERROR_SUCCESS) return error;
    DescriptorChange change;
    if (!MakeChange(attempt, held, change)) return ERROR_SUCCESS;
    if (IsDryRun()) {
        ++work.counts.changed;
        Tell(attempt.path, attempt.remarks);
        return ERROR_SUCCESS;
    }
    batched.push_back(std::move(attempt));
    return batch->Add(std::move(object), std::move(change));
}

// Whether the object is to be changed; else it was counted.
bool TreeEditing::MakeChange(Attempt& attempt, const HeldObject& object, DescriptorChange& change) {
    nt::SecurityDescriptor present;
    DWORD error = ReadBoth(object, parts, SystemList::kLeftOut, change.before, present);
    if (error != ERROR_SUCCESS) return Fail(attempt.path, NotEdited::kError, error);
    attempt.hasContents = object.Kind() != FolderEntryKind::kOther;
    EditedSecurity edited = Judge(attempt, present);
    // Its undo takes a privilege on other servers, so what is kept has it only where it changes.
    if (!HasSameSystemList(edited.wanted, present)) {
        error = ReadBoth(object, parts, SystemList::kIncluded, change.before, present);
        if (error != ERROR_SUCCESS) return Fail(attempt.path, NotEdited::kError, error);
        edited = Judge(attempt, present);
    }
    if (attempt.own) SetLists(attempt, present, edited.wanted);
    if (edited.fault != EditFault::kNone) return Fail(attempt.path, NotEditedBy(edited.fault));
    attempt.remarks = {!LetsNobodyIn(present) && LetsNobodyIn(edited.wanted), edited.inheritedStay,
                       edited.otherTypesStay};
    bool isSo = edited.wanted == present;
    if (!isSo || edited.rulesOwner) error = object.PrepareStored(change.before, edited.wanted, change.after);
    // Where nothing can be kept, nothing need be.
    if (isSo && edited.rulesOwner && error != ERROR_NOT_SUPPORTED)
        isSo = error == ERROR_SUCCESS && change.before.hostOwner == change.after.hostOwner;
    if (isSo) {
        ++work.counts.unchanged;
        Tell(attempt.path, attempt.remarks);
        return false;
    }
    if (error == ERROR_SUCCESS)
        error = CheckNames(
            attempt, object,
            edited.wanted.owner != present.owner || change.after.hostOwner != change.before.hostOwner);
    if (error != ERROR_SUCCESS) {
        if (attempt.own) attempt.own->after = attempt.own->before;
        return Fail(attempt.path, NotEdited::kError, error);
    }
    if (IsDryRun()) work.host.Preview(attempt.path, object.IsFolder(), present, edited.wanted);
    change.path = attempt.path;
    change.isFolder = object.IsFolder();
    change.fileNumber = object.FileNumber();
    return true;
}

DWORD TreeEditing::CheckNames(const Attempt& attempt, const HeldObject& object, bool changesOwner) const {
    const bool isTop = attempt.path.empty();
    const LinkedFiles linked = isTop ? work.options.linkedTop : work.options.linked;
    if (!changesOwner || object.IsFolder() || linked == LinkedFiles::kChange) return ERROR_SUCCESS;
    bool hasSeveral = false;
    const DWORD error = isTop ? AskNamesOfTop(object, hasSeveral) : object.HasSeveralNames(hasSeveral);
    return error == ERROR_SUCCESS && hasSeveral ? kHasFurtherNames : error;
}

// What the object was to inherit is not what its folder has now, or somebody has changed the object.
void TreeEditing::TryAgain(Attempt attempt) {
    if (attempt.own) attempt.own->after = nullptr;  // for those in it that are in the batch too
    outOfDate.push_back(std::move(attempt));
}

void TreeEditing::Write(const HeldObject* object, const DescriptorChange& change) {
    Attempt attempt = std::move(batched.front());
    batched.pop_front();
    if (work.host.IsStopped() || lost != ERROR_SUCCESS) return;
    if (attempt.above && attempt.above->after != attempt.basis) return TryAgain(std::move(attempt));
    const DWORD error = (object != nullptr ? *object : work.top).WriteStored(change.before, change.after);
    if (error == ERROR_REVISION_MISMATCH && attempt.number < kMostAttempts) {
        ++attempt.number;
        TryAgain(std::move(attempt));
    } else if (error != ERROR_SUCCESS) {
        if (attempt.own) attempt.own->after = attempt.own->before;
        Fail(change.path, NotEdited::kError, error);
    } else {
        ++work.counts.changed;
        Tell(change.path, attempt.remarks);
    }
}

DWORD TreeEditing::TryOutOfDate() {
    DWORD error = ERROR_SUCCESS;
    while (error == ERROR_SUCCESS && lost == ERROR_SUCCESS && !outOfDate.empty()) {
        Attempt attempt = std::move(outOfDate.front());
        outOfDate.pop_front();
        error = Try(std::move(attempt));
    }
    return error;
}

DWORD TreeEditing::Finish() {
    DWORD error = ERROR_SUCCESS;
    do {
        if (batch) error = batch->Flush();
        if (error == ERROR_SUCCESS) error = TryOutOfDate();
    } while (error == ERROR_SUCCESS && !batched.empty());
    return error == ERROR_SUCCESS && work.host.IsStopped() ? DWORD{ERROR_OPERATION_ABORTED} : error;
}

}  // namespace

DWORD EditTree(HeldObject& top, DescriptorEdit& edit, const TreeEditOptions& options, TreeEditHost& host,
               ChangeRecorder& recorder, TreeEditCounts& counts) {
    return TreeEditing({top, edit, options, host, recorder, counts}).Run();
}

}  // namespace permora
