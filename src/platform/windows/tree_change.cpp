#include "platform/windows/tree_change.h"

#include <utility>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/security_change.h"
#include "platform/windows/code_page.h"
#include "platform/windows/descriptor_write.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"
#include "platform/windows/privileges.h"

namespace permora {
namespace {

constexpr DWORD kListing = FILE_LIST_DIRECTORY | FILE_TRAVERSE | FILE_READ_ATTRIBUTES;

DWORD RequireLists(HANDLE object) {
    bool areKept = false;
    const DWORD error = AskForLists(object, areKept);
    return error == ERROR_SUCCESS && !areKept ? DWORD{ERROR_NOT_SUPPORTED} : error;
}

DWORD Describe(FoundObject& object, nt::SecurityDescriptor& descriptor) {
    FILE_ATTRIBUTE_TAG_INFO tag{};
    if (const DWORD error = TagOf(object.handle.get(), tag); error != ERROR_SUCCESS) return error;
    const bool isDirectory = (tag.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    object.kind = isDirectory ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile;
    object.isFolder = isDirectory && (tag.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
    return ReadDescriptor(object.handle.get(), descriptor);
}

}  // namespace

DWORD ReadFolderList(HANDLE folder, WalkedFolder& read) {
    nt::SecurityDescriptor descriptor;
    const DWORD error = ReadDescriptor(folder, descriptor);
    if (error == ERROR_SUCCESS) read.list = ListOf(descriptor);
    return error;
}

TreeChange::TreeChange(SECURITY_INFORMATION parts, TreeListMode writing, RecordedTop& records,
                       TreeObserver& listener, TreeCounts& totals)
    : mode(writing),
      writingAccess(writing == TreeListMode::kWrite ? WritingAccess(parts) : 0),
      observer(listener),
      counts(totals),
      batch(*this, records, totals) {}

DWORD TreeChange::Run(HANDLE top) {
    UniqueHandle readable;
    auto folder = std::make_shared<WalkedFolder>();
    DWORD error = RequireFolder(top);
    if (error == ERROR_SUCCESS) error = RequireLists(top);
    if (error == ERROR_SUCCESS) {
        error = WithPrivileges(kReadingPrivileges,
                               [&] { return OpenAgain(top, READ_CONTROL | kListing, readable); });
    }
    if (error == ERROR_SUCCESS) error = Begin(readable.get(), *folder);
    if (error != ERROR_SUCCESS) return error;
    levels.push_back({std::make_unique<FolderListing>(std::move(readable)), std::move(folder), 0});
    error = Walk();
    // What the observer has heard of is brought to its end.
    if (const DWORD recording = batch.Write(); recording != ERROR_SUCCESS) error = recording;
    passedOver.Tell(observer);
    return error;
}

DWORD TreeChange::Walk() {
    while (!levels.empty()) {
        path.resize(levels.back().pathLength);
        FoundEntry entry;
        DWORD error = levels.back().folder->isLeftAlone ? DWORD{ERROR_NO_MORE_FILES}
                                                        : levels.back().listing->Next(entry);
        if (error == ERROR_SUCCESS) {
            if (!observer.Begin(ShownText(entry.name).c_str())) return ERROR_OPERATION_ABORTED;
            error = Visit(entry);
            if (error != ERROR_SUCCESS) return error;
            continue;
        }
        const bool isTop = levels.size() == 1;
        levels.pop_back();
        if (error == ERROR_NO_MORE_FILES) continue;
        if (isTop) return error;
        path.pop_back();  // the separator: the folder itself is reported
        PassOver(path, error);
    }
    return ERROR_SUCCESS;
}

DWORD TreeChange::Visit(const FoundEntry& entry) {
    WaitingObject found;
    WayOn wayOn = WayOn::kEnter;
    const DWORD error = Compute(entry, found, wayOn);
    if (error != ERROR_SUCCESS) PassOver(found.object.path, error);
    const bool isChanged = error == ERROR_SUCCESS && found.after != found.before;
    const bool isWritten = isChanged && mode == TreeListMode::kWrite;
    if (error == ERROR_SUCCESS && !isWritten) ++(isChanged ? counts.changed : counts.unchanged);
    if (isChanged && !isWritten) {
        if (!LostOwnEntries(found.before, found.after).empty()) ++counts.losingOwn;
        if (IsEmptiedBy(found.before, found.after)) ++counts.emptied;
    }
    if (found.inside && wayOn == WayOn::kEnter) return Enter(entry.name, std::move(found), error);
    return isWritten ? batch.Add(std::move(found)) : DWORD{ERROR_SUCCESS};
}

DWORD TreeChange::Compute(const FoundEntry& entry, WaitingObject& found, WayOn& wayOn) {
    const Level& level = levels.back();
    found.object.path = path + ShownText(entry.name);
    found.folder = level.folder;
    found.assumed = level.folder->version;
    if (entry.kind == FolderEntryKind::kFolder) found.inside = std::make_shared<WalkedFolder>();
    bool mayWrite = false;
    DWORD error = Open(entry.name, found.object.handle, mayWrite);
    if (error == ERROR_SUCCESS) error = Describe(found.object, found.before);
    if (error == ERROR_SUCCESS) {
        found.after = found.before;
        error = Change(found.object, *found.folder, found.after, wayOn);
    }
    if (error == ERROR_SUCCESS && found.after != found.before && !mayWrite) error = ERROR_ACCESS_DENIED;
    if (error != ERROR_SUCCESS)
        wayOn = AfterFailure();
    else if (found.inside)
        found.inside->list = ListOf(found.after);
    return error;
}

// Many objects have what they are to get, and then need not be opened for writing.
DWORD TreeChange::Open(const std::wstring& name, UniqueHandle& object, bool& mayWrite) const {
    const HANDLE folder = levels.back().listing->Folder();
    const DWORD error = OpenToChange(folder, name, READ_CONTROL | writingAccess, object);
    mayWrite = error == ERROR_SUCCESS;
    if (!IsForWantOfPrivilege(error)) return error;
    return OpenToChange(folder, name, READ_CONTROL, object) == ERROR_SUCCESS ? DWORD{ERROR_SUCCESS} : error;
}

DWORD TreeChange::Enter(const std::wstring& name, WaitingObject found, DWORD error) {
    const std::string folderPath = found.object.path;
    const std::shared_ptr<WalkedFolder> inside = found.inside;
    const bool isWritten =
        error == ERROR_SUCCESS && found.after != found.before && mode == TreeListMode::kWrite;
    UniqueHandle folder;
    DWORD opening = OpenFolder(name, found.object.handle.get(), folder);
    if (isWritten) {
        UniqueHandle kept;
        // With the new list it may perhaps be entered.
        const bool waitsForList =
            opening == ERROR_ACCESS_DENIED &&
            OpenAgain(found.object.handle.get(), FILE_READ_ATTRIBUTES, kept) == ERROR_SUCCESS;
        DWORD recording = batch.Add(std::move(found));
        if (recording == ERROR_SUCCESS && waitsForList) recording = batch.Write();
        if (recording != ERROR_SUCCESS) return recording;
        if (waitsForList) opening = OpenFolder(name, kept.get(), folder);
    }
    if (opening == ERROR_SUCCESS) opening = RequireFolder(folder.get());
    if (opening != ERROR_SUCCESS) {
        PassOver(folderPath, opening);
        return ERROR_SUCCESS;
    }
    // What is in a folder that could not be changed inherits from the list that it has kept.
    if (error != ERROR_SUCCESS) inside->readError = ReadFolderList(folder.get(), *inside);
    path = folderPath + '\\';
    levels.push_back({std::make_unique<FolderListing>(std::move(folder)), inside, path.size()});
    return ERROR_SUCCESS;
}

DWORD TreeChange::OpenFolder(const std::wstring& name, HANDLE object, UniqueHandle& folder) const {
    const auto open = [&](DWORD access) {
        // What was changed is what is entered; by its name only when it could not be opened for the change.
        if (object != nullptr)
            return WithPrivileges(kReadingPrivileges, [&] { return OpenAgain(object, access, folder); });
        return OpenToChange(levels.back().listing->Folder(), name, access, folder);
    };
    const DWORD error = open(READ_CONTROL | kListing);
    // Who may not read its list may list it all the same.
    return error == ERROR_ACCESS_DENIED ? open(kListing) : error;
}

void TreeChange::PassOver(const std::string& where, DWORD error) {
    // The object has vanished.
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return;
    ++counts.passedOver;
    passedOver.Add(where, error);
}

}  // namespace permora
