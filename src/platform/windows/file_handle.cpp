// FileHandle with the system's own calls, and where names are counted.
#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/api/file_control.h"
#include "platform/secluded_folder.h"
#include "platform/windows/code_page.h"
#include "platform/windows/folder_entry.h"

namespace permora {
namespace {

constexpr std::wstring_view kDataType = L":$DATA";
constexpr std::wstring_view kUnnamedStream = L"::$DATA";

bool IsOnCopyOnWriteVolume(HANDLE file) {
    std::array<wchar_t, MAX_PATH + 1> name{};
    return GetVolumeInformationByHandleW(file, nullptr, 0, nullptr, nullptr, nullptr, name.data(),
                                         static_cast<DWORD>(name.size())) != FALSE &&
           std::wstring_view(name.data()) == L"ReFS";
}

DWORD AskSparse(HANDLE file, bool& answer) {
    FILE_BASIC_INFO basic{};
    if (GetFileInformationByHandleEx(file, FileBasicInfo, &basic, sizeof basic) == FALSE)
        return GetLastError();
    answer = (basic.FileAttributes & FILE_ATTRIBUTE_SPARSE_FILE) != 0;
    return ERROR_SUCCESS;
}

// Read access is enough to query the holes.
DWORD AddReadingIfSparse(HANDLE file, DWORD& access) {
    bool isSparse = false;
    const DWORD error = AskSparse(file, isSparse);
    if (isSparse) access |= FILE_READ_DATA;
    return error;
}

}  // namespace

DWORD FindAllocated(HANDLE contents, LONGLONG from, FileRange& range) {
    LARGE_INTEGER size{};
    bool isSparse = false;
    if (GetFileSizeEx(contents, &size) == FALSE) return GetLastError();
    if (const DWORD error = AskSparse(contents, isSparse); error != ERROR_SUCCESS) return error;
    const LONGLONG last = size.QuadPart;
    if (!isSparse || from >= last) {
        range = {std::min(from, last), last};
        return ERROR_SUCCESS;
    }
    FILE_ALLOCATED_RANGE_BUFFER asked{};
    asked.FileOffset.QuadPart = from;
    asked.Length.QuadPart = last - from;
    FILE_ALLOCATED_RANGE_BUFFER found{};
    DWORD bytes = 0;
    if (DeviceIoControl(contents, FSCTL_QUERY_ALLOCATED_RANGES, &asked, sizeof asked, &found, sizeof found,
                        &bytes, nullptr) == FALSE &&
        GetLastError() != ERROR_MORE_DATA) {
        return GetLastError();
    }
    FileRange first{last, last};
    if (bytes >= sizeof found) {
        first.begin = std::clamp<LONGLONG>(found.FileOffset.QuadPart, from, last);
        first.end =
            std::clamp<LONGLONG>(found.FileOffset.QuadPart + found.Length.QuadPart, first.begin, last);
    }
    if (first.end <= from) return ERROR_INVALID_DATA;
    range = first;
    return ERROR_SUCCESS;
}

FileHandle::FileHandle() = default;
FileHandle::FileHandle(FileHandle&& other) noexcept = default;
FileHandle& FileHandle::operator=(FileHandle&& other) noexcept = default;
FileHandle::~FileHandle() = default;

DWORD FileHandle::OpenForOverwriting(UniqueHandle& contents) const {
    DWORD access = FILE_WRITE_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE;
    if (const DWORD error = AddReadingIfSparse(inside->file.get(), access); error != ERROR_SUCCESS)
        return error;
    HANDLE opened =
        ReOpenFile(inside->file.get(), access, 0,
                   FILE_FLAG_WRITE_THROUGH | FILE_FLAG_SEQUENTIAL_SCAN | FILE_FLAG_OPEN_REPARSE_POINT);
    if (opened == INVALID_HANDLE_VALUE) return GetLastError();
    contents.reset(opened);
    return ERROR_SUCCESS;
}

// The system itself guarantees it: the file is opened without sharing.
bool FileHandle::KnowsOpeners() const {
    return true;
}

DWORD FileHandle::ListNamedStreams(std::vector<std::string>& streams) const {
    constexpr std::size_t kListBytes = std::size_t{64} << 10;
    DWORD flags = 0;
    if (GetVolumeInformationByHandleW(inside->file.get(), nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) ==
        FALSE)
        return GetLastError();
    // Such a volume may refuse the question, each in its way.
    if ((flags & FILE_NAMED_STREAMS) == 0) {
        streams.clear();
        return ERROR_SUCCESS;
    }
    std::vector<std::byte> list(kListBytes);
    if (GetFileInformationByHandleEx(inside->file.get(), FileStreamInfo, list.data(), kListBytes) == FALSE) {
        if (GetLastError() != ERROR_HANDLE_EOF) return GetLastError();
        streams.clear();  // no stream at all, as folders have it
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
    DWORD access = FILE_WRITE_DATA | FILE_READ_ATTRIBUTES;
    if (const DWORD error = AddReadingIfSparse(inside->file.get(), access); error != ERROR_SUCCESS)
        return error;
    // A stream's own name, which begins with a colon, is looked for in the file itself.
    return OpenIn(inside->file.get(), stream,
                  {access, 0, FILE_NON_DIRECTORY_FILE | FILE_WRITE_THROUGH | FILE_SEQUENTIAL_ONLY}, contents);
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
    for (const auto& [obstacle, isThere] : answers)
        if (isThere) obstacles.push_back(obstacle);
    return ERROR_SUCCESS;
}

DWORD FileHandle::HasSeveralNames(bool& answer) const {
    BY_HANDLE_FILE_INFORMATION info{};
    if (GetFileInformationByHandle(inside->file.get(), &info) == FALSE) return GetLastError();
    answer = info.nNumberOfLinks > 1;
    return ERROR_SUCCESS;
}

DWORD FileHandle::Remove() const {
    UniqueHandle object;
    ObjectMark held;
    DWORD error = OpenIn(inside->folder, inside->name, {DELETE | FILE_READ_ATTRIBUTES}, object);
    if (error == ERROR_SUCCESS) error = MarkOf(inside->file.get(), held);
    if (error == ERROR_SUCCESS) error = VerifyMark(object.get(), held);
    return error == ERROR_SUCCESS ? RemoveOpened(object.get()) : error;
}

// Nobody can remove a name while the file is open without sharing, so no secluded folder is needed.
struct SecludedFolder::Inside {
    std::string name;
};

SecludedFolder::SecludedFolder() = default;
SecludedFolder::SecludedFolder(SecludedFolder&& other) noexcept = default;
SecludedFolder& SecludedFolder::operator=(SecludedFolder&& other) noexcept = default;
SecludedFolder::~SecludedFolder() = default;

const std::string& SecludedFolder::Name() const {
    return inside->name;
}

bool SecludedFolder::IsGone() const {
    return false;
}

DWORD SecludedFolder::Make(const FolderHandle& /*place*/, SecludedFolder& made) {
    made.inside = std::make_unique<Inside>();
    return ERROR_SUCCESS;
}

DWORD SecludedFolder::Remove() {
    return ERROR_SUCCESS;
}

// The name by which the file was reached may have gone before it was opened.
DWORD SecludedFolder::Take(FileHandle& file) const {
    UniqueHandle found;
    ObjectMark held;
    DWORD error = OpenIn(file.inside->folder, file.inside->name, {FILE_READ_ATTRIBUTES}, found);
    if (error == ERROR_SUCCESS) error = MarkOf(file.inside->file.get(), held);
    return error == ERROR_SUCCESS ? VerifyMark(found.get(), held) : error;
}

DWORD SecludedFolder::GiveBack(FileHandle& /*file*/) const {
    return ERROR_SUCCESS;
}

}  // namespace permora
