#include "platform/windows/tree_change.h"

#include <optional>
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/windows/code_page.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"
#include "platform/windows/privileges.h"

namespace permora {
namespace {

constexpr ULONG kBackup = FILE_OPEN_FOR_BACKUP_INTENT;
constexpr DWORD kListing = FILE_LIST_DIRECTORY | FILE_TRAVERSE | FILE_READ_ATTRIBUTES;

DWORD OpenWithPrivileges(HANDLE folder, const std::wstring& name, DWORD access, UniqueHandle& opened) {
    return WithPrivileges(kChangingPrivileges, [&] {
        return OpenIn(folder, name, {access | FILE_READ_ATTRIBUTES, kShareAll, kBackup}, opened);
    });
}

DWORD RequireLists(HANDLE object) {
    bool areKept = false;
    const DWORD error = AskForLists(object, areKept);
    return error == ERROR_SUCCESS && !areKept ? DWORD{ERROR_NOT_SUPPORTED} : error;
}

}  // namespace

DWORD ReadDescriptor(HANDLE object, nt::SecurityDescriptor& descriptor) {
    constexpr SECURITY_INFORMATION kParts =
        OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    std::vector<std::uint8_t> bytes(512);
    DWORD size = 0;
    while (GetKernelObjectSecurity(object, kParts, bytes.data(), static_cast<DWORD>(bytes.size()), &size) ==
           FALSE) {
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || size <= bytes.size()) return GetLastError();
        bytes.resize(size);
    }
    bytes.resize(GetSecurityDescriptorLength(bytes.data()));
    std::optional<nt::SecurityDescriptor> read = nt::SecurityDescriptor::FromBytes(bytes);
    if (!read) return ERROR_INVALID_SECURITY_DESCR;
    descriptor = std::move(*read);
    return ERROR_SUCCESS;
}

DWORD TreeChange::Run(HANDLE top) {
    UniqueHandle readable;
    DWORD error = RequireFolder(top);
    if (error == ERROR_SUCCESS) error = RequireLists(top);
    if (error == ERROR_SUCCESS) {
        error = WithPrivileges(kReadingPrivileges,
                               [&] { return OpenAgain(top, READ_CONTROL | kListing, readable); });
    }
    if (error == ERROR_SUCCESS) error = Begin(readable.get());
    if (error != ERROR_SUCCESS) return error;
    levels.push_back({std::make_unique<FolderListing>(std::move(readable)), 0});
    error = Walk();
    passedOver.Tell(observer);
    return error;
}

DWORD TreeChange::Walk() {
    while (!levels.empty()) {
        path.resize(levels.back().pathLength);
        FoundEntry entry;
        const DWORD error = levels.back().listing->Next(entry);
        if (error == ERROR_SUCCESS) {
            if (!observer.Begin(ShownText(entry.name).c_str())) return ERROR_OPERATION_ABORTED;
            Visit(entry);
            continue;
        }
        const bool isTop = levels.size() == 1;
        levels.pop_back();
        if (error == ERROR_NO_MORE_FILES) continue;
        if (isTop) return error;
        path.pop_back();  // the separator: the folder itself is reported
        PassOver("", error);
    }
    return ERROR_SUCCESS;
}

void TreeChange::Visit(const FoundEntry& entry) {
    const std::size_t depth = levels.size() - 1;
    UniqueHandle object;
    Outcome outcome = Outcome::kUnchanged;
    DWORD error = OpenWithPrivileges(levels.back().listing->Folder(), entry.name, Access(), object);
    if (error == ERROR_SUCCESS) error = Change(object.get(), depth, outcome);
    if (error == ERROR_SUCCESS)
        ++(outcome == Outcome::kChanged ? counts.changed : counts.unchanged);
    else
        PassOver(ShownText(entry.name), error);
    if (entry.kind == FolderEntryKind::kFolder) EnterFolder(entry, object.get(), error);
}

void TreeChange::EnterFolder(const FoundEntry& entry, HANDLE object, DWORD error) {
    UniqueHandle folder;
    const auto open = [&](DWORD access) {
        // What was changed is what is entered; by its name only when it could not be opened for the change.
        if (object != nullptr)
            return WithPrivileges(kReadingPrivileges, [&] { return OpenAgain(object, access, folder); });
        return OpenWithPrivileges(levels.back().listing->Folder(), entry.name, access, folder);
    };
    DWORD opening = open(READ_CONTROL | kListing);
    // Who may not read its list may list it all the same.
    if (opening == ERROR_ACCESS_DENIED) opening = open(kListing);
    if (opening == ERROR_SUCCESS) opening = RequireFolder(folder.get());
    if (opening != ERROR_SUCCESS) return PassOver(ShownText(entry.name), opening);
    Enter(folder.get(), error, levels.size());
    path += ShownText(entry.name) + '\\';
    levels.push_back({std::make_unique<FolderListing>(std::move(folder)), path.size()});
}

void TreeChange::PassOver(const std::string& name, DWORD error) {
    // The object has vanished.
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return;
    ++counts.passedOver;
    passedOver.Add(path + name, error);
}

}  // namespace permora
