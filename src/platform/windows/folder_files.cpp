// FolderHandle with the system's own calls: NtCreateFile opens relative to a handle, and what is opened is
// never a reparse point's target.
#include "platform/folder_files.h"

#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <functional>
#include <string_view>
#include <utility>

#include "platform/windows/code_page.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"
#include "platform/windows/privileges.h"

namespace permora {
namespace {

// `path` as seen from the folder at `full`. The system takes no ".." in paths of its own form.
std::wstring JoinPaths(std::wstring full, const std::wstring& path) {
    if (path.find(L':') != path.npos || path.starts_with(LR"(\\)")) return path;
    const std::size_t root = RootLength(full);
    if (path.starts_with(L'\\')) full.resize(root);
    if (full.ends_with(L'\\')) full.pop_back();
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find(L'\\', begin), path.size());
        const std::wstring component = path.substr(begin, end - begin);
        begin = end + 1;
        if (component == L"..")
            full.resize(std::max(root, std::min(full.size(), full.rfind(L'\\'))));
        else if (!component.empty() && component != L".")
            full += L'\\' + component;
    }
    // A separator at the end asks for what a link leads to, and a root has one.
    return path.ends_with(L'\\') || full.size() == root ? full + L'\\' : full;
}

}  // namespace

DWORD FolderHandle::Inside::Adopt(const std::function<DWORD(ACCESS_MASK, UniqueHandle&)>& open,
                                  FolderHandle& folder) {
    constexpr ACCESS_MASK kEnter = FILE_TRAVERSE | FILE_READ_ATTRIBUTES;
    UniqueHandle opened;
    DWORD error =
        WithPrivileges(kReadingPrivileges, [&] { return open(kEnter | FILE_LIST_DIRECTORY, opened); });
    if (error == ERROR_ACCESS_DENIED) error = open(kEnter, opened);
    if (error == ERROR_SUCCESS) error = RequireFolder(opened.get());
    if (error == ERROR_SUCCESS) folder.inside = std::make_unique<Inside>(std::move(opened));
    return error;
}

DWORD FolderHandle::Inside::OpenNamed(const std::wstring& path, FolderHandle& folder) {
    return Adopt(
        [&](ACCESS_MASK access, UniqueHandle& opened) {
            const DWORD last = path.ends_with(L'\\') ? 0 : FILE_FLAG_OPEN_REPARSE_POINT;
            HANDLE handle = CreateFileW(path.c_str(), access, kShareAll, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS | last, nullptr);
            if (handle == INVALID_HANDLE_VALUE) return GetLastError();
            opened.reset(handle);
            return DWORD{ERROR_SUCCESS};
        },
        folder);
}

FolderHandle::FolderHandle() = default;
FolderHandle::FolderHandle(FolderHandle&& other) noexcept = default;
FolderHandle& FolderHandle::operator=(FolderHandle&& other) noexcept = default;
FolderHandle::~FolderHandle() = default;

DWORD FolderHandle::Open(const std::string& path, FolderHandle& folder) {
    std::wstring wide;
    const DWORD error = ToVerbatimPath(path, wide);
    return error == ERROR_SUCCESS ? Inside::OpenNamed(wide, folder) : error;
}

DWORD FolderHandle::OpenPath(const std::string& path, FolderHandle& folder) const {
    // The kernel knows no "..", and what names a drive or begins at its root is not found from here.
    if (path.starts_with("..") || path.starts_with('\\') || path.find(':') != path.npos) {
        std::wstring full;
        std::wstring rest;
        DWORD error = ToWide(path, rest);
        if (error == ERROR_SUCCESS) error = FinalPathOf(inside->Folder(), full);
        if (error != ERROR_SUCCESS) return error;
        return Inside::OpenNamed(JoinPaths(full, rest), folder);
    }
    return Inside::Adopt(
        [&](ACCESS_MASK access, UniqueHandle& opened) {
            if (path.empty()) return OpenAgain(inside->Folder(), access, opened);
            const bool isFollowed = path.ends_with('\\');
            return OpenBelow(inside->Folder(), path.substr(0, path.size() - (isFollowed ? 1 : 0)),
                             {access, kShareAll, FILE_OPEN_FOR_BACKUP_INTENT,
                              isFollowed ? LastLink::kFollow : LastLink::kItself},
                             opened);
        },
        folder);
}

DWORD FolderHandle::MakeCurrent() const {
    std::wstring path;
    const DWORD error = FinalPathOf(inside->Folder(), path);
    if (error != ERROR_SUCCESS) return error;
    // The current directory is shown to people, in the form that they know.
    constexpr std::wstring_view kVerbatim = LR"(\\?\)";
    constexpr std::wstring_view kVerbatimServer = LR"(\\?\UNC\)";
    if (path.starts_with(kVerbatimServer))
        path.replace(0, kVerbatimServer.size(), LR"(\\)");
    else if (path.starts_with(kVerbatim))
        path.erase(0, kVerbatim.size());
    return SetCurrentDirectoryW(path.c_str()) != FALSE ? ERROR_SUCCESS : GetLastError();
}

DWORD FolderHandle::OpenFolder(const std::string& name, FolderHandle& folder) const {
    UniqueHandle opened;
    FILE_ATTRIBUTE_TAG_INFO tag{};
    constexpr OpenRequest kListed = {FILE_LIST_DIRECTORY | FILE_TRAVERSE | FILE_READ_ATTRIBUTES, kShareAll,
                                     FILE_DIRECTORY_FILE | FILE_OPEN_FOR_BACKUP_INTENT};
    DWORD error =
        WithPrivileges(kReadingPrivileges, [&] { return OpenIn(inside->Folder(), name, kListed, opened); });
    if (error == ERROR_SUCCESS) error = TagOf(opened.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    if (KindOfTag(tag) != FolderEntryKind::kFolder) return ERROR_CANT_RESOLVE_FILENAME;
    folder.inside = std::make_unique<Inside>(std::move(opened));
    return ERROR_SUCCESS;
}

DWORD FolderHandle::NextEntry(FolderEntry& entry) {
    FoundEntry found;
    std::string name;
    DWORD error = inside->listing.Next(found);
    if (error == ERROR_SUCCESS) error = ToAnsi(found.name, name);
    if (error == ERROR_SUCCESS) entry = {std::move(name), found.kind};
    return error;
}

DWORD FolderHandle::BytesPerSector(DWORD& bytes) const {
    // Every volume has an answer to this, also one of a server.
    FILE_FS_SIZE_INFORMATION size{};
    IO_STATUS_BLOCK answer{};
    const NTSTATUS status =
        NtQueryVolumeInformationFile(inside->Folder(), &answer, &size, sizeof size, FileFsSizeInformation);
    if (status < 0) return RtlNtStatusToDosError(status);
    bytes = size.BytesPerSector;
    return ERROR_SUCCESS;
}

DWORD FolderHandle::HoldObject(const std::string& path, HeldObject& object) const {
    auto held = std::make_unique<HeldObject::Inside>();
    const DWORD error =
        path.empty()
            ? OpenAgain(inside->Folder(), FILE_READ_ATTRIBUTES, held->object)
            : OpenBelow(inside->Folder(), path,
                        {FILE_READ_ATTRIBUTES, kShareAll, FILE_OPEN_FOR_BACKUP_INTENT}, held->object);
    if (error == ERROR_SUCCESS) object.inside = std::move(held);
    return error;
}

DWORD FolderHandle::HoldFile(const std::string& name, FileHandle& file) const {
    auto held = std::make_unique<FileHandle::Inside>();
    held->folder = inside->Folder();
    held->name = name;
    FILE_ATTRIBUTE_TAG_INFO tag{};
    DWORD error = OpenIn(inside->Folder(), name, {FILE_READ_ATTRIBUTES, kShareAll, FILE_NON_DIRECTORY_FILE},
                         held->file);
    if (error == ERROR_SUCCESS) error = TagOf(held->file.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    if ((tag.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return ERROR_CANT_RESOLVE_FILENAME;
    file.inside = std::move(held);
    return ERROR_SUCCESS;
}

DWORD FolderHandle::RemoveLink(const std::string& name) const {
    UniqueHandle object;
    FILE_ATTRIBUTE_TAG_INFO tag{};
    DWORD error = OpenIn(inside->Folder(), name, {DELETE | FILE_READ_ATTRIBUTES}, object);
    if (error == ERROR_SUCCESS) error = TagOf(object.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    return KindOfTag(tag) == FolderEntryKind::kOther ? RemoveOpened(object.get()) : ERROR_ACCESS_DENIED;
}

DWORD FolderHandle::RemoveFolder(const std::string& name) const {
    UniqueHandle object;
    const DWORD error = OpenIn(inside->Folder(), name, {DELETE, kShareAll, FILE_DIRECTORY_FILE}, object);
    return error == ERROR_SUCCESS ? RemoveOpened(object.get()) : error;
}

}  // namespace permora
