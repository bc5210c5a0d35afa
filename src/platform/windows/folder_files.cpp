// FolderHandle with the system's own calls: NtCreateFile opens relative to a handle, and what is opened is
// never a reparse point's target.
#include "platform/folder_files.h"

#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <string_view>
#include <utility>

#include "platform/windows/code_page.h"
#include "platform/windows/held_object_inside.h"

namespace permora {
namespace {

constexpr ULONG kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::wstring_view kDataType = L":$DATA";
constexpr std::wstring_view kUnnamedStream = L"::$DATA";

struct OpenRequest {
    ACCESS_MASK access;
    ULONG share = kShareAll;
    ULONG options = 0;
};

// `path` is relative to the folder; links on the way are followed, the last name never.
DWORD OpenBelow(HANDLE folder, const std::string& path, const OpenRequest& request, UniqueHandle& opened) {
    std::wstring wide;
    if (const DWORD error = ToWide(path, wide); error != ERROR_SUCCESS) return error;
    UNICODE_STRING text{};
    text.Buffer = wide.data();
    text.Length = static_cast<USHORT>(wide.size() * sizeof(wchar_t));
    text.MaximumLength = text.Length;
    OBJECT_ATTRIBUTES attributes{};
    attributes.Length = sizeof attributes;
    attributes.RootDirectory = folder;
    attributes.ObjectName = &text;
    attributes.Attributes = OBJ_CASE_INSENSITIVE;
    IO_STATUS_BLOCK answer{};
    HANDLE handle = nullptr;
    const NTSTATUS status =
        NtCreateFile(&handle, request.access | SYNCHRONIZE, &attributes, &answer, nullptr,
                     FILE_ATTRIBUTE_NORMAL, request.share, FILE_OPEN,
                     request.options | FILE_SYNCHRONOUS_IO_NONALERT | FILE_OPEN_REPARSE_POINT, nullptr, 0);
    if (status < 0) return RtlNtStatusToDosError(status);
    opened.reset(handle);
    return ERROR_SUCCESS;
}

DWORD OpenIn(HANDLE folder, const std::string& name, const OpenRequest& request, UniqueHandle& opened) {
    // Bare names only: the call would take a path, and leave the folder.
    if (name.empty() || name == "." || name == ".." || name.find_first_of("\\/") != name.npos)
        return ERROR_INVALID_NAME;
    return OpenBelow(folder, name, request, opened);
}

FolderEntryKind KindOfAttributes(DWORD attributes, DWORD reparseTag) {
    // Other reparse points than name surrogates are files whose contents are kept in a way of their own.
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(reparseTag))
        return FolderEntryKind::kOther;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FolderEntryKind::kFolder : FolderEntryKind::kFile;
}

DWORD TagOf(HANDLE object, FILE_ATTRIBUTE_TAG_INFO& tag) {
    return GetFileInformationByHandleEx(object, FileAttributeTagInfo, &tag, sizeof tag) != FALSE
               ? ERROR_SUCCESS
               : GetLastError();
}

// `object` is open for DELETE.
DWORD RemoveOpened(HANDLE object) {
    FILE_DISPOSITION_INFO disposition{TRUE};
    return SetFileInformationByHandle(object, FileDispositionInfo, &disposition, sizeof disposition) != FALSE
               ? ERROR_SUCCESS
               : GetLastError();
}

bool IsOnCopyOnWriteVolume(HANDLE file) {
    std::array<wchar_t, MAX_PATH + 1> name{};
    return GetVolumeInformationByHandleW(file, nullptr, 0, nullptr, nullptr, nullptr, name.data(),
                                         static_cast<DWORD>(name.size())) != FALSE &&
           std::wstring_view(name.data()) == L"ReFS";
}

}  // namespace

struct FolderHandle::Inside {
    explicit Inside(UniqueHandle opened) : folder(std::move(opened)) {}

    UniqueHandle folder;
    // What the system listed last, and where the next entry of it begins.
    alignas(8) std::array<std::byte, 8192> block{};
    const std::byte* next = nullptr;
};

struct FileHandle::Inside {
    UniqueHandle file;
};

FileHandle::FileHandle() = default;
FileHandle::FileHandle(FileHandle&& other) noexcept = default;
FileHandle& FileHandle::operator=(FileHandle&& other) noexcept = default;
FileHandle::~FileHandle() = default;

DWORD FileHandle::OpenForOverwriting(UniqueHandle& contents) const {
    HANDLE opened =
        ReOpenFile(inside->file.get(), FILE_WRITE_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, 0,
                   FILE_FLAG_WRITE_THROUGH | FILE_FLAG_SEQUENTIAL_SCAN | FILE_FLAG_OPEN_REPARSE_POINT);
    if (opened == INVALID_HANDLE_VALUE) return GetLastError();
    contents.reset(opened);
    return ERROR_SUCCESS;
}

DWORD FileHandle::ListNamedStreams(std::vector<std::string>& streams) const {
    constexpr std::size_t kListBytes = std::size_t{64} << 10;
    std::vector<std::byte> list(kListBytes);
    if (GetFileInformationByHandleEx(inside->file.get(), FileStreamInfo, list.data(), kListBytes) == FALSE) {
        if (GetLastError() != ERROR_HANDLE_EOF) return GetLastError();
        streams.clear();  // no stream at all, as on volumes without any
        return ERROR_SUCCESS;
    }
    std::vector<std::string> found;
    for (const std::byte* place = list.data();;) {
        FILE_STREAM_INFO info{};
        std::memcpy(&info, place, offsetof(FILE_STREAM_INFO, StreamName));
        std::wstring stream(info.StreamNameLength / sizeof(wchar_t), L'\0');
        std::memcpy(stream.data(), place + offsetof(FILE_STREAM_INFO, StreamName), info.StreamNameLength);
        if (stream != kUnnamedStream && stream.ends_with(kDataType)) {
            std::string text;
            if (const DWORD problem = ToAnsi(stream, text); problem != ERROR_SUCCESS) return problem;
            found.push_back(std::move(text));
        }
        if (info.NextEntryOffset == 0) break;
        place += info.NextEntryOffset;
    }
    streams = std::move(found);
    return ERROR_SUCCESS;
}

DWORD FileHandle::OpenStreamForOverwriting(const std::string& stream, UniqueHandle& contents) const {
    // A stream's own name, which begins with a colon, is looked for in the file itself.
    return OpenIn(inside->file.get(), stream,
                  {FILE_WRITE_DATA | FILE_READ_ATTRIBUTES, 0,
                   FILE_NON_DIRECTORY_FILE | FILE_WRITE_THROUGH | FILE_SEQUENTIAL_ONLY},
                  contents);
}

DWORD FileHandle::FindObstacles(std::vector<OverwriteObstacle>& obstacles) const {
    BY_HANDLE_FILE_INFORMATION info{};
    if (GetFileInformationByHandle(inside->file.get(), &info) == FALSE) return GetLastError();
    const std::pair<OverwriteObstacle, bool> answers[] = {
        {OverwriteObstacle::kSeveralNames, info.nNumberOfLinks > 1},
        {OverwriteObstacle::kCopyOnWriteVolume, IsOnCopyOnWriteVolume(inside->file.get())},
        {OverwriteObstacle::kCompressed, (info.dwFileAttributes & FILE_ATTRIBUTE_COMPRESSED) != 0},
        {OverwriteObstacle::kEncrypted, (info.dwFileAttributes & FILE_ATTRIBUTE_ENCRYPTED) != 0},
        {OverwriteObstacle::kSparse, (info.dwFileAttributes & FILE_ATTRIBUTE_SPARSE_FILE) != 0},
    };
    obstacles.clear();
    for (const auto& [obstacle, isThere] : answers) {
        if (isThere) obstacles.push_back(obstacle);
    }
    return ERROR_SUCCESS;
}

FolderHandle::FolderHandle() = default;
FolderHandle::FolderHandle(FolderHandle&& other) noexcept = default;
FolderHandle& FolderHandle::operator=(FolderHandle&& other) noexcept = default;
FolderHandle::~FolderHandle() = default;

DWORD FolderHandle::OpenCurrent(FolderHandle& folder) {
    HANDLE handle = CreateFileA(".", FILE_TRAVERSE | FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return GetLastError();
    folder.inside = std::make_unique<Inside>(UniqueHandle(handle));
    return ERROR_SUCCESS;
}

DWORD FolderHandle::MakeCurrent() const {
    std::wstring path;
    DWORD length = GetFinalPathNameByHandleW(inside->folder.get(), nullptr, 0, FILE_NAME_NORMALIZED);
    // The folder may be renamed between the two calls.
    while (length > path.size()) {
        path.resize(length);
        length = GetFinalPathNameByHandleW(inside->folder.get(), path.data(), length, FILE_NAME_NORMALIZED);
    }
    if (length == 0) return GetLastError();
    path.resize(length);
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
    if (KindOfAttributes(tag.FileAttributes, tag.ReparseTag) != FolderEntryKind::kFolder)
        return ERROR_CANT_RESOLVE_FILENAME;
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
        entry = {std::move(text), KindOfAttributes(info.FileAttributes, info.EaSize)};
        return ERROR_SUCCESS;
    }
}

DWORD FolderHandle::KindOf(const std::string& name, FolderEntryKind& kind) const {
    UniqueHandle object;
    FILE_ATTRIBUTE_TAG_INFO tag{};
    DWORD error = OpenIn(inside->folder.get(), name, {FILE_READ_ATTRIBUTES}, object);
    if (error == ERROR_SUCCESS) error = TagOf(object.get(), tag);
    if (error == ERROR_SUCCESS) kind = KindOfAttributes(tag.FileAttributes, tag.ReparseTag);
    return error;
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
    FILE_ATTRIBUTE_TAG_INFO tag{};
    DWORD error = OpenIn(inside->folder.get(), name,
                         {FILE_READ_ATTRIBUTES, kShareAll, FILE_NON_DIRECTORY_FILE}, held->file);
    if (error == ERROR_SUCCESS) error = TagOf(held->file.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    if ((tag.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return ERROR_CANT_RESOLVE_FILENAME;
    file.inside = std::move(held);
    return ERROR_SUCCESS;
}

DWORD FolderHandle::RemoveFile(const std::string& name, const FileHandle& file) const {
    UniqueHandle object;
    BY_HANDLE_FILE_INFORMATION found{};
    BY_HANDLE_FILE_INFORMATION held{};
    const DWORD error = OpenIn(inside->folder.get(), name, {DELETE | FILE_READ_ATTRIBUTES}, object);
    if (error != ERROR_SUCCESS) return error;
    if (GetFileInformationByHandle(object.get(), &found) == FALSE ||
        GetFileInformationByHandle(file.inside->file.get(), &held) == FALSE) {
        return GetLastError();
    }
    const bool isSame = found.dwVolumeSerialNumber == held.dwVolumeSerialNumber &&
                        found.nFileIndexHigh == held.nFileIndexHigh &&
                        found.nFileIndexLow == held.nFileIndexLow;
    return isSame ? RemoveOpened(object.get()) : ERROR_FILE_INVALID;
}

DWORD FolderHandle::RemoveLink(const std::string& name) const {
    UniqueHandle object;
    FILE_ATTRIBUTE_TAG_INFO tag{};
    DWORD error = OpenIn(inside->folder.get(), name, {DELETE | FILE_READ_ATTRIBUTES}, object);
    if (error == ERROR_SUCCESS) error = TagOf(object.get(), tag);
    if (error != ERROR_SUCCESS) return error;
    return KindOfAttributes(tag.FileAttributes, tag.ReparseTag) == FolderEntryKind::kOther
               ? RemoveOpened(object.get())
               : ERROR_ACCESS_DENIED;
}

DWORD FolderHandle::RemoveFolder(const std::string& name) const {
    UniqueHandle object;
    const DWORD error = OpenIn(inside->folder.get(), name, {DELETE, kShareAll, FILE_DIRECTORY_FILE}, object);
    return error == ERROR_SUCCESS ? RemoveOpened(object.get()) : error;
}

}  // namespace permora
