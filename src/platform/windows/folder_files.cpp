// FolderHandle with the system's own calls: NtCreateFile opens relative to a handle, and what is opened is
// never a reparse point's target.
#include "platform/folder_files.h"

#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <functional>
#include <string_view>
#include <utility>

#include "platform/windows/code_page.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"

namespace permora {

DWORD FolderHandle::Inside::Adopt(const std::function<DWORD(ACCESS_MASK, UniqueHandle&)>& open,
                                  FolderHandle& folder) {
    constexpr ACCESS_MASK kEnter = FILE_TRAVERSE | FILE_READ_ATTRIBUTES;
    UniqueHandle opened;
    FILE_ATTRIBUTE_TAG_INFO tag{};
    DWORD error = open(kEnter | FILE_LIST_DIRECTORY, opened);
    if (error == ERROR_ACCESS_DENIED) error = open(kEnter, opened);
    if (error == ERROR_SUCCESS) error = TagOf(opened.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    switch (KindOfTag(tag)) {
        case FolderEntryKind::kFolder:
            folder.inside = std::make_unique<Inside>(std::move(opened));
            return ERROR_SUCCESS;
        case FolderEntryKind::kFile:
            return ERROR_DIRECTORY;
        case FolderEntryKind::kOther:
            break;
    }
    return ERROR_CANT_RESOLVE_FILENAME;
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
    const DWORD error = ToWide(path, wide);
    return error == ERROR_SUCCESS ? Inside::OpenNamed(wide, folder) : error;
}

DWORD FolderHandle::OpenPath(const std::string& path, FolderHandle& folder) const {
    // The kernel knows no "..", and what names a drive or begins at its root is not found from here.
    if (path.starts_with("..") || path.starts_with('\\') || path.find(':') != path.npos) {
        std::wstring wide;
        std::wstring rest;
        DWORD error = FinalPathOf(inside->folder.get(), wide);
        if (error == ERROR_SUCCESS) error = ToWide(path, rest);
        if (error != ERROR_SUCCESS) return error;
        const std::filesystem::path full = std::filesystem::path(wide) / std::filesystem::path(rest);
        return Inside::OpenNamed(full.lexically_normal().wstring(), folder);
    }
    return Inside::Adopt(
        [&](ACCESS_MASK access, UniqueHandle& opened) {
            if (path.empty()) return OpenAgain(inside->folder.get(), access, opened);
            const bool isFollowed = path.ends_with('\\');
            return OpenBelow(inside->folder.get(), path.substr(0, path.size() - (isFollowed ? 1 : 0)),
                             {access, kShareAll, FILE_OPEN_FOR_BACKUP_INTENT,
                              isFollowed ? LastLink::kFollow : LastLink::kItself},
                             opened);
        },
        folder);
}

DWORD FolderHandle::MakeCurrent() const {
    std::wstring path;
    const DWORD error = FinalPathOf(inside->folder.get(), path);
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
    DWORD error = OpenIn(inside->folder.get(), name,
                         {FILE_LIST_DIRECTORY | FILE_TRAVERSE | FILE_READ_ATTRIBUTES, kShareAll,
                          FILE_DIRECTORY_FILE | FILE_OPEN_FOR_BACKUP_INTENT},
                         opened);
    if (error == ERROR_SUCCESS) error = TagOf(opened.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    if (KindOfTag(tag) != FolderEntryKind::kFolder) return ERROR_CANT_RESOLVE_FILENAME;
    folder.inside = std::make_unique<Inside>(std::move(opened));
    return ERROR_SUCCESS;
}

DWORD FolderHandle::NextEntry(FolderEntry& entry) {
    for (;;) {
        if (inside->next == nullptr) {
            if (GetFileInformationByHandleEx(inside->folder.get(), FileFullDirectoryInfo,
                                             inside->block.data(),
                                             static_cast<DWORD>(inside->block.size())) == FALSE) {
                return GetLastError();
            }
            inside->next = inside->block.data();
        }
        FILE_FULL_DIR_INFO info{};
        std::memcpy(&info, inside->next, offsetof(FILE_FULL_DIR_INFO, FileName));
        const auto* letters = inside->next + offsetof(FILE_FULL_DIR_INFO, FileName);
        std::wstring name(info.FileNameLength / sizeof(wchar_t), L'\0');
        std::memcpy(name.data(), letters, name.size() * sizeof(wchar_t));
        inside->next = info.NextEntryOffset != 0 ? inside->next + info.NextEntryOffset : nullptr;
        if (name == L"." || name == L"..") continue;
        std::string text;
        if (const DWORD error = ToAnsi(name, text); error != ERROR_SUCCESS) return error;
        // A reparse point has its tag in the place of the size of its attributes: MS-FSCC, 2.4.14.
        entry = {std::move(text), KindOfTag({info.FileAttributes, info.EaSize})};
        return ERROR_SUCCESS;
    }
}

DWORD FolderHandle::BytesPerSector(DWORD& bytes) const {
    FILE_STORAGE_INFO storage{};
    if (GetFileInformationByHandleEx(inside->folder.get(), FileStorageInfo, &storage, sizeof storage) ==
        FALSE)
        return GetLastError();
    bytes = storage.LogicalBytesPerSector;
    return ERROR_SUCCESS;
}

DWORD FolderHandle::HoldObject(const std::string& path, HeldObject& object) const {
    auto held = std::make_unique<HeldObject::Inside>();
    const DWORD error =
        path.empty()
            ? OpenAgain(inside->folder.get(), FILE_READ_ATTRIBUTES, held->object)
            : OpenBelow(inside->folder.get(), path,
                        {FILE_READ_ATTRIBUTES, kShareAll, FILE_OPEN_FOR_BACKUP_INTENT}, held->object);
    if (error == ERROR_SUCCESS) object.inside = std::move(held);
    return error;
}

DWORD FolderHandle::HoldFile(const std::string& name, FileHandle& file) const {
    auto held = std::make_unique<FileHandle::Inside>();
    held->folder = inside->folder.get();
    held->name = name;
    FILE_ATTRIBUTE_TAG_INFO tag{};
    DWORD error = OpenIn(inside->folder.get(), name,
                         {FILE_READ_ATTRIBUTES, kShareAll, FILE_NON_DIRECTORY_FILE}, held->file);
    if (error == ERROR_SUCCESS) error = TagOf(held->file.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    if ((tag.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return ERROR_CANT_RESOLVE_FILENAME;
    file.inside = std::move(held);
    return ERROR_SUCCESS;
}

DWORD FolderHandle::RemoveLink(const std::string& name) const {
    UniqueHandle object;
    FILE_ATTRIBUTE_TAG_INFO tag{};
    DWORD error = OpenIn(inside->folder.get(), name, {DELETE | FILE_READ_ATTRIBUTES}, object);
    if (error == ERROR_SUCCESS) error = TagOf(object.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    return KindOfTag(tag) == FolderEntryKind::kOther ? RemoveOpened(object.get()) : ERROR_ACCESS_DENIED;
}

DWORD FolderHandle::RemoveFolder(const std::string& name) const {
    UniqueHandle object;
    const DWORD error = OpenIn(inside->folder.get(), name, {DELETE, kShareAll, FILE_DIRECTORY_FILE}, object);
    return error == ERROR_SUCCESS ? RemoveOpened(object.get()) : error;
}

}  // namespace permora
