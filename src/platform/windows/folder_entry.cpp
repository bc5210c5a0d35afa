#include "platform/windows/folder_entry.h"

#include <winternl.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "platform/windows/code_page.h"
#include "platform/windows/privileges.h"

namespace permora {

DWORD FinalPathOf(HANDLE object, std::wstring& path, DWORD form) {
    std::wstring found;
    DWORD length = GetFinalPathNameByHandleW(object, nullptr, 0, FILE_NAME_NORMALIZED | form);
    // The object may be renamed between the two calls.
    while (length > found.size()) {
        found.resize(length);
        length = GetFinalPathNameByHandleW(object, found.data(), length, FILE_NAME_NORMALIZED | form);
    }
    if (length == 0) return GetLastError();
    found.resize(length);
    path = std::move(found);
    return ERROR_SUCCESS;
}

std::size_t RootLength(const std::wstring& path) {
    constexpr std::wstring_view kServer = LR"(\\?\UNC\)";
    if (!path.starts_with(kServer)) return std::min(path.size(), path.find(L'\\', 4));
    return std::min(path.size(), path.find(L'\\', path.find(L'\\', kServer.size()) + 1));
}

DWORD MakeFullPath(std::wstring& path) {
    std::wstring full;
    DWORD length = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    // The answer depends on the current directory, which may change between the two calls.
    while (length > full.size()) {
        full.resize(length);
        length = GetFullPathNameW(path.c_str(), length, full.data(), nullptr);
    }
    if (length == 0) return GetLastError();
    full.resize(length);
    path = std::move(full);
    return ERROR_SUCCESS;
}

DWORD ToVerbatimPath(const std::string& path, std::wstring& verbatim) {
    std::wstring full;
    DWORD error = ToWide(path, full);
    if (error == ERROR_SUCCESS) error = MakeFullPath(full);
    if (error != ERROR_SUCCESS) return error;
    const bool isServer = full.starts_with(LR"(\\)");
    const bool isDeviceOrVerbatim = full.starts_with(LR"(\\.\)") || full.starts_with(LR"(\\?\)");
    if (isDeviceOrVerbatim)
        verbatim = std::move(full);
    else
        verbatim = isServer ? LR"(\\?\UNC)" + full.substr(1) : LR"(\\?\)" + full;
    return ERROR_SUCCESS;
}

DWORD ToOrdinaryPath(const std::wstring& verbatim, std::string& path) {
    constexpr std::wstring_view kVerbatim = LR"(\\?\)";
    constexpr std::wstring_view kVerbatimServer = LR"(\\?\UNC\)";
    std::wstring wide = verbatim;
    if (verbatim.starts_with(kVerbatimServer))
        wide = LR"(\\)" + verbatim.substr(kVerbatimServer.size());
    else if (verbatim.starts_with(kVerbatim))
        wide = verbatim.substr(kVerbatim.size());
    std::string ordinary;
    std::wstring back;
    DWORD error = ToAnsi(wide, ordinary);
    if (error == ERROR_SUCCESS) error = ToVerbatimPath(ordinary, back);
    if (error != ERROR_SUCCESS) return error;
    if (back != verbatim) return ToAnsi(verbatim, path);
    path = std::move(ordinary);
    return ERROR_SUCCESS;
}

namespace {

DWORD OpenRelative(HANDLE folder, std::wstring path, const OpenRequest& request, UniqueHandle& opened) {
    constexpr std::size_t kMostBytes = 0xFFFE;  // what the length of a text of the kernel can say
    if (path.size() * sizeof(wchar_t) > kMostBytes) return ERROR_FILENAME_EXCED_RANGE;
    UNICODE_STRING text{};
    text.Buffer = path.data();
    text.Length = static_cast<USHORT>(path.size() * sizeof(wchar_t));
    text.MaximumLength = text.Length;
    OBJECT_ATTRIBUTES attributes{};
    attributes.Length = sizeof attributes;
    attributes.RootDirectory = folder;
    attributes.ObjectName = &text;
    attributes.Attributes = OBJ_CASE_INSENSITIVE;
    IO_STATUS_BLOCK answer{};
    HANDLE handle = nullptr;
    const ULONG lastLink = request.lastLink == LastLink::kItself ? FILE_OPEN_REPARSE_POINT : 0;
    const NTSTATUS status = NtCreateFile(
        &handle, request.access | SYNCHRONIZE, &attributes, &answer, nullptr, FILE_ATTRIBUTE_NORMAL,
        request.share, FILE_OPEN, request.options | FILE_SYNCHRONOUS_IO_NONALERT | lastLink, nullptr, 0);
    if (status < 0) return RtlNtStatusToDosError(status);
    opened.reset(handle);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD OpenBelow(HANDLE folder, const std::string& path, const OpenRequest& request, UniqueHandle& opened) {
    std::wstring wide;
    const DWORD error = ToWide(path, wide);
    return error == ERROR_SUCCESS ? OpenRelative(folder, std::move(wide), request, opened) : error;
}

DWORD OpenIn(HANDLE folder, const std::wstring& name, const OpenRequest& request, UniqueHandle& opened) {
    // Bare names only: the call would take a path, and leave the folder.
    if (name.empty() || name == L"." || name == L".." || name.find_first_of(L"\\/") != name.npos)
        return ERROR_INVALID_NAME;
    return OpenRelative(folder, name, request, opened);
}

DWORD OpenIn(HANDLE folder, const std::string& name, const OpenRequest& request, UniqueHandle& opened) {
    std::wstring wide;
    const DWORD error = ToWide(name, wide);
    return error == ERROR_SUCCESS ? OpenIn(folder, wide, request, opened) : error;
}

DWORD OpenToChange(HANDLE folder, const std::wstring& name, DWORD access, UniqueHandle& opened) {
    return WithPrivileges(kChangingPrivileges, [&] {
        return OpenIn(folder, name, {access | FILE_READ_ATTRIBUTES, kShareAll, FILE_OPEN_FOR_BACKUP_INTENT},
                      opened);
    });
}

DWORD RemoveOpened(HANDLE object) {
    FILE_DISPOSITION_INFO disposition{TRUE};
    return SetFileInformationByHandle(object, FileDispositionInfo, &disposition, sizeof disposition) != FALSE
               ? ERROR_SUCCESS
               : GetLastError();
}

bool ObjectMark::operator==(const ObjectMark& other) const {
    return volume == other.volume && created == other.created &&
           std::equal(std::begin(number.Identifier), std::end(number.Identifier),
                      std::begin(other.number.Identifier));
}

DWORD MarkOf(HANDLE object, ObjectMark& mark) {
    FILE_ID_INFO id{};
    FILE_BASIC_INFO basic{};
    if (GetFileInformationByHandleEx(object, FileBasicInfo, &basic, sizeof basic) == FALSE)
        return GetLastError();
    if (GetFileInformationByHandleEx(object, FileIdInfo, &id, sizeof id) != FALSE) {
        mark = {id.VolumeSerialNumber, id.FileId, basic.CreationTime.QuadPart};
        return ERROR_SUCCESS;
    }
    // File systems without the long numbers have short ones.
    BY_HANDLE_FILE_INFORMATION info{};
    if (GetFileInformationByHandle(object, &info) == FALSE) return GetLastError();
    ObjectMark found{info.dwVolumeSerialNumber, {}, basic.CreationTime.QuadPart};
    std::memcpy(found.number.Identifier, &info.nFileIndexHigh, sizeof info.nFileIndexHigh);
    std::memcpy(found.number.Identifier + sizeof info.nFileIndexHigh, &info.nFileIndexLow,
                sizeof info.nFileIndexLow);
    mark = found;
    return ERROR_SUCCESS;
}

DWORD VerifyMark(HANDLE object, const ObjectMark& expected) {
    ObjectMark mark;
    const DWORD error = MarkOf(object, mark);
    if (error != ERROR_SUCCESS) return error;
    return mark == expected ? ERROR_SUCCESS : ERROR_FILE_INVALID;
}

FolderEntryKind KindOfTag(const FILE_ATTRIBUTE_TAG_INFO& tag) {
    const auto [attributes, reparseTag] = tag;
    // Other reparse points than name surrogates are files whose contents are kept in a way of their own.
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(reparseTag))
        return FolderEntryKind::kOther;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FolderEntryKind::kFolder : FolderEntryKind::kFile;
}

DWORD RequireFolder(HANDLE object) {
    FILE_ATTRIBUTE_TAG_INFO tag{};
    if (const DWORD error = TagOf(object, tag); error != ERROR_SUCCESS) return error;
    switch (KindOfTag(tag)) {
        case FolderEntryKind::kFolder:
            return ERROR_SUCCESS;
        case FolderEntryKind::kFile:
            return ERROR_DIRECTORY;
        case FolderEntryKind::kOther:
            break;
    }
    return ERROR_CANT_RESOLVE_FILENAME;
}

DWORD AskForLists(HANDLE object, bool& areKept) {
    DWORD flags = 0;
    if (GetVolumeInformationByHandleW(object, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) == FALSE)
        return GetLastError();
    areKept = (flags & FILE_PERSISTENT_ACLS) != 0;
    return ERROR_SUCCESS;
}

DWORD TagOf(HANDLE object, FILE_ATTRIBUTE_TAG_INFO& tag) {
    return GetFileInformationByHandleEx(object, FileAttributeTagInfo, &tag, sizeof tag) != FALSE
               ? ERROR_SUCCESS
               : GetLastError();
}

}  // namespace permora
