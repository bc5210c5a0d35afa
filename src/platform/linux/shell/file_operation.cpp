#include "platform/linux/shell/file_operation.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <optional>

#include "platform/api/errors.h"
#include "platform/ascii.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/mount_table.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/new_name.h"
#include "platform/linux/files/unmounted_entry.h"
#include "platform/linux/shell/clash_question.h"
#include "platform/linux/shell/item_finder.h"
#include "platform/linux/shell/move_by_copy.h"
#include "platform/linux/shell/operation_talk.h"
#include "platform/linux/shell/operation_walk.h"
#include "platform/linux/shell/target_folder.h"
#include "platform/linux/shell/trash.h"
#include "platform/linux/shell/tree_copy.h"
#include "platform/linux/shell/tree_move.h"
#include "platform/linux/shell/tree_removal.h"

namespace permora::host {
namespace {

WalkedItem AsWalked(const FoundItem& item) {
    return {item.folder->handle.Descriptor(), item.folder->shownPath, item.hostName, item.object};
}

// Whether `folder` is `above` or below it, judged by its real parents.
bool LiesIn(const ObjectHandle& folder, const ObjectHandle& above) {
    ObjectHandle current;
    if (ObjectHandle::OpenAt(folder.Descriptor(), ".", current) != ERROR_SUCCESS) return false;
    while (!current.IsSameObject(above)) {
        ObjectHandle parent;
        const bool isTop = ObjectHandle::OpenAt(current.Descriptor(), "..", parent) != ERROR_SUCCESS ||
                           parent.IsSameObject(current);
        if (isTop) return false;
        current = std::move(parent);
    }
    return true;
}

// A mount point cannot be removed.
bool IsMountPoint(const FoundItem& item) {
    return MountIdOf(item.object) != MountIdOf(item.folder->handle);
}

// The trash cannot take the item, and trying again does not help.
bool IsBeyondTrash(DWORD error) {
    return error == ERROR_NOT_SAME_DEVICE || error == ERROR_INVALID_PARAMETER || error == ERROR_NOT_SUPPORTED;
}

class OperationRun {
  public:
    OperationRun(const FileOperationRequest& asked, OperationTalk& user) : request(asked), talk(user) {}

    void Run() {
        RaiseDescriptorLimit();
        switch (request.kind) {
            case FileOperationKind::kCopy:
            case FileOperationKind::kMove:
                CopyOrMoveAll();
                break;
            case FileOperationKind::kRename:
                Rename();
                break;
            case FileOperationKind::kDelete:
                DeleteAll();
                break;
        }
    }

  private:
    // Runs `step`, which returns an error code, until it succeeds or the user gives up.
    template <typename Step>
    bool Try(const std::string& path, const Step& step) {
        for (;;) {
            const DWORD error = step();
            if (error == ERROR_SUCCESS) return true;
            if (talk.Fails({.path = path}, error) == OperationTalk::AfterFailure::kPassOver) return false;
        }
    }

    bool FindItem(const std::string& path, FoundItem& item) {
        const bool isFound = Try(path, [&] {
            const DWORD error = finder.Find(path, item);
            const bool mayBeMounted = request.kind == FileOperationKind::kCopy;
            return error == ERROR_SUCCESS && !mayBeMounted && IsMountPoint(item) ? ERROR_BUSY : error;
        });
        if (!isFound) return false;
        talk.progress.name = EncodeName(item.hostName);
        talk.progress.fromFolder = item.folder->shownPath;
        return true;
    }

    void CopyOrMoveAll();
    void CopyItem(const FoundItem& item, TargetFolder& target, TreeCopy& copy);
    void MoveItem(const FoundItem& item, TargetFolder& target, TreeCopy& copy);
    void Rename();
    DWORD RenameOnce(const FoundItem& item);
    void DeleteAll();
    bool DeleteItem(const std::string& path, const FoundItem& item);
    bool ConfirmsTrash(const FoundItem& item);
    bool FindTrash(const FoundItem& item);
    void DeleteForGood(const std::string& path, const FoundItem& item);

    const FileOperationRequest& request;
    OperationTalk& talk;
    ItemFinder finder;
    std::vector<MountEntry> mounts;  // at the beginning of a deletion
    std::optional<Trash> trash;      // that of the last item
    bool isTrashConfirmed = false;
};

// --- Copying and moving.

void OperationRun::CopyOrMoveAll() {
    std::unique_ptr<TargetFolder> target;
    const bool isOpen = Try(request.target, [&] {
        HeldFolder folder;
        const DWORD error = HoldFolder(request.target, folder);
        if (error == ERROR_SUCCESS) target = TargetFolder::Use(std::move(folder));
        return error;
    });
    if (!isOpen) return;
    // Items that are selected together are in one folder.
    FoundItem first;
    const bool isRenamed = request.kind == FileOperationKind::kMove &&
                           finder.FindPlace(request.sources.front(), first) == ERROR_SUCCESS &&
                           AreOnOneMount(first.folder->handle, target->Handle());
    if (isRenamed)
        talk.totals.AddItems(request.sources.size());
    else
        talk.totals.AddTrees(request.sources);
    TreeCopy copy(talk, *target);
    for (const std::string& path : request.sources) {
        FoundItem item;
        if (!talk.GoesOn()) return;
        if (!FindItem(path, item)) continue;
        if (item.object.IsFolder() && LiesIn(target->Handle(), item.object)) {
            talk.ComesIntoItself(DescribeObject(item.ShownPath(), item.object),
                                 DescribeObject(target->ShownPath(), target->Handle()));
        } else if (request.kind == FileOperationKind::kCopy) {
            CopyItem(item, *target, copy);
        } else {
            MoveItem(item, *target, copy);
        }
    }
}

void OperationRun::CopyItem(const FoundItem& item, TargetFolder& target, TreeCopy& copy) {
    std::string newName = item.hostName;
    const bool isBeside = item.folder->handle.IsSameObject(target.Handle());
    if (isBeside && !Try(item.ShownPath(),
                         [&] { return target.FindCopyName(item.hostName, item.object.Kind(), newName); }))
        return;
    copy.Copy(AsWalked(item), std::move(newName));
}

void OperationRun::MoveItem(const FoundItem& item, TargetFolder& target, TreeCopy& copy) {
    if (item.folder->handle.IsSameObject(target.Handle())) {
        ++talk.progress.itemsDone;
        return;
    }
    if (!MayTouch(DescribeObject(item.ShownPath(), item.object), item.object, talk)) return;
    if (AreOnOneMount(item.object, target.Handle()))
        TreeMove(talk, target).Move(AsWalked(item));
    else
        MoveByCopying(AsWalked(item), item.hostName, target, copy, NewFilePlace::kFree, talk);
}

// --- Renaming.

DWORD OperationRun::RenameOnce(const FoundItem& item) {
    FoundItem place;
    DWORD error = ItemFinder().FindPlace(request.target, place);
    if (error != ERROR_SUCCESS) return error;
    if (!place.folder->handle.IsSameObject(item.folder->handle)) return ERROR_INVALID_NAME;
    HeldFolder folder;
    folder.shownPath = item.folder->shownPath;
    error = ObjectHandle::OpenAt(item.folder->handle.Descriptor(), ".", folder.handle);
    if (error != ERROR_SUCCESS) return error;
    const std::unique_ptr<TargetFolder> target = TargetFolder::Use(std::move(folder));
    std::optional<Clash> clash;
    error = target->CheckName(place.hostName);
    if (error == ERROR_SUCCESS) error = target->FindClash(place.hostName, clash);
    if (error != ERROR_SUCCESS) return error;
    // Where names have no letter case, a name with another case is the same file.
    const bool isOwn =
        clash && clash->object.IsSameObject(item.object) &&
        (clash->hostName == item.hostName || EqualsIgnoringCase(clash->hostName, item.hostName));
    if (clash && !isOwn) return ERROR_ALREADY_EXISTS;
    const int descriptor = item.folder->handle.Descriptor();
    const RenamedKind kind = item.object.IsFolder() ? RenamedKind::kFolder : RenamedKind::kOther;
    int problem =
        RenameToFreeName(descriptor, item.hostName.c_str(), descriptor, place.hostName.c_str(), kind);
    if (problem == EEXIST && isOwn)
        problem =
            renameat(descriptor, item.hostName.c_str(), descriptor, place.hostName.c_str()) == 0 ? 0 : errno;
    if (problem == EXDEV) {
        talk.totals.AddTrees({item.ShownPath()});
        TreeCopy copy(talk, *target);
        MoveByCopying(AsWalked(item), place.hostName, *target, copy, NewFilePlace::kFree, talk);
        return ERROR_SUCCESS;
    }
    return problem == 0 ? ERROR_SUCCESS : ErrorFromErrno(problem);
}

void OperationRun::Rename() {
    talk.totals.AddItems(1);
    FoundItem item;
    const std::string& path = request.sources.front();
    if (!talk.GoesOn() || !FindItem(path, item)) return;
    if (!MayTouch(DescribeObject(item.ShownPath(), item.object), item.object, talk)) return;
    if (Try(item.ShownPath(), [&] { return RenameOnce(item); })) ++talk.progress.itemsDone;
}

// --- Deleting.

void OperationRun::DeleteAll() {
    if (request.usesTrash)
        talk.totals.AddItems(request.sources.size());
    else
        talk.totals.AddTrees(request.sources);
    mounts = ParseMountTable(ReadMountTable());
    for (const std::string& path : request.sources) {
        FoundItem item;
        if (!talk.GoesOn()) return;
        if (FindItem(path, item) && !DeleteItem(path, item)) return;
    }
}

bool OperationRun::FindTrash(const FoundItem& item) {
    if (!request.usesTrash || HoldsMount(item, mounts)) return false;
    if (trash && trash->Serves(*item.folder)) return true;
    Trash found;
    if (Trash::For(*item.folder, found) != ERROR_SUCCESS) return false;
    trash = std::move(found);
    return true;
}

bool OperationRun::ConfirmsTrash(const FoundItem& item) {
    if (isTrashConfirmed) return true;
    FileOperationQuestion question;
    question.kind = FileOperationQuestionKind::kTrash;
    question.source = DescribeObject(item.ShownPath(), item.object);
    question.itemCount = static_cast<DWORD>(request.sources.size());
    isTrashConfirmed = talk.Agrees(std::move(question));
    return isTrashConfirmed;
}

// False when the operation must end.
bool OperationRun::DeleteItem(const std::string& path, const FoundItem& item) {
    if (!FindTrash(item)) {
        DeleteForGood(path, item);
        return true;
    }
    if (!ConfirmsTrash(item)) return false;
    if (!MayTouch(DescribeObject(item.ShownPath(), item.object), item.object, talk)) return true;
    DWORD error = ERROR_SUCCESS;
    const bool isSettled = Try(item.ShownPath(), [&] {
        error = trash->Take(item);
        return IsBeyondTrash(error) ? ERROR_SUCCESS : error;
    });
    if (!isSettled) return true;
    if (error != ERROR_SUCCESS)
        DeleteForGood(path, item);
    else
        ++talk.progress.itemsDone;
    return true;
}

void OperationRun::DeleteForGood(const std::string& path, const FoundItem& item) {
    if (!talk.Agrees(FileOperationQuestionKind::kDeleteForGood,
                     DescribeObject(item.ShownPath(), item.object)))
        return;
    // So far it was counted as one item.
    const bool isCountedAgain = request.usesTrash && item.object.IsFolder();
    if (isCountedAgain) talk.totals.AddTrees({path});
    TreeRemoval removal(talk);
    WalkItem(AsWalked(item), talk, removal);
    if (isCountedAgain) ++talk.progress.itemsDone;
}

}  // namespace

void FileOperation::Run(FileOperationHost& host) {
    OperationTalk talk(host, request.kind);
    OperationRun(request, talk).Run();
    firstError = talk.FirstError();
    isIncomplete = talk.IsCancelled() || talk.PassedOver() > 0;
}

}  // namespace permora::host
