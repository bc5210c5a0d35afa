#include "platform/windows/changed_top.h"

#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/windows/code_page.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"
#include "platform/windows/privileges.h"

namespace permora {
namespace {

bool IsRoot(HANDLE object, const std::wstring& path) {
    std::wstring onVolume;
    if (path.size() <= RootLength(path) + 1) return true;
    // A volume may be reached through a folder of another one.
    return FinalPathOf(object, onVolume, VOLUME_NAME_NONE) == ERROR_SUCCESS && onVolume == L"\\";
}

// `folder` is empty for a root.
DWORD TryOpenFolderOf(HANDLE object, UniqueHandle& folder) {
    std::wstring path;
    if (const DWORD error = FinalPathOf(object, path); error != ERROR_SUCCESS) return error;
    if (IsRoot(object, path)) return ERROR_SUCCESS;
    const std::size_t separator = path.rfind(L'\\');
    const std::wstring folderPath = path.substr(0, separator + 1);
    UniqueHandle opened;
    DWORD error = WithPrivileges(kReadingPrivileges, [&] {
        HANDLE handle = CreateFileW(folderPath.c_str(), READ_CONTROL | FILE_READ_ATTRIBUTES | FILE_TRAVERSE,
                                    kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        if (handle == INVALID_HANDLE_VALUE) return GetLastError();
        opened.reset(handle);
        return DWORD{ERROR_SUCCESS};
    });
    // Whatever the path leads to by now: the folder is the one in which the object is.
    UniqueHandle inside;
    ObjectMark mark;
    if (error == ERROR_SUCCESS) error = MarkOf(object, mark);
    if (error == ERROR_SUCCESS)
        error = OpenIn(opened.get(), path.substr(separator + 1),
                       {FILE_READ_ATTRIBUTES, kShareAll, FILE_OPEN_FOR_BACKUP_INTENT}, inside);
    if (error == ERROR_SUCCESS) error = VerifyMark(inside.get(), mark);
    if (error == ERROR_SUCCESS) folder = std::move(opened);
    return error;
}

}  // namespace

DWORD LastingMarkOf(HANDLE object, std::vector<std::uint8_t>& bytes) {
    ObjectMark mark;
    if (const DWORD error = MarkOf(object, mark); error != ERROR_SUCCESS) return error;
    bytes.resize(sizeof mark.volume + sizeof mark.number + sizeof mark.created);
    std::memcpy(bytes.data(), &mark.volume, sizeof mark.volume);
    std::memcpy(bytes.data() + sizeof mark.volume, &mark.number, sizeof mark.number);
    std::memcpy(bytes.data() + sizeof mark.volume + sizeof mark.number, &mark.created, sizeof mark.created);
    return ERROR_SUCCESS;
}

DWORD NumberOf(HANDLE object, std::uint64_t& number) {
    ObjectMark mark;
    if (const DWORD error = MarkOf(object, mark); error != ERROR_SUCCESS) return error;
    // ReFS has the longer numbers.
    std::uint64_t halves[2] = {};
    static_assert(sizeof halves == sizeof mark.number);
    std::memcpy(halves, &mark.number, sizeof halves);
    number = halves[0] ^ halves[1];
    return ERROR_SUCCESS;
}

DWORD FindTopOf(HANDLE object, bool isFolder, ChangedTop& top) {
    ChangedTop found;
    found.isFolder = isFolder;
    std::wstring path;
    DWORD error = FinalPathOf(object, path);
    if (error == ERROR_SUCCESS) error = ToOrdinaryPath(path, found.path);
    if (error == ERROR_SUCCESS) error = LastingMarkOf(object, found.mark);
    if (error != ERROR_SUCCESS) return error;
    // It may have been deleted or moved meanwhile.
    HeldObject there;
    if (HeldObject::HoldTop(found, there) != ERROR_SUCCESS) return ERROR_PATH_NOT_FOUND;
    top = std::move(found);
    return ERROR_SUCCESS;
}

DWORD OpenFolderOf(HANDLE object, UniqueHandle& folder) {
    constexpr int kAttempts = 3;  // the object may be renamed between the steps
    DWORD error = ERROR_SUCCESS;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        error = TryOpenFolderOf(object, folder);
        const bool isMoved =
            error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_FILE_INVALID;
        if (!isMoved) break;
    }
    return error;
}

DWORD RecordedTop::Record(std::span<const DescriptorChange> batch) {
    if (batch.empty() || recorder.BatchSize() == 0) return ERROR_SUCCESS;
    DWORD error = ERROR_SUCCESS;
    if (!number) {
        ChangedTop begun;
        std::uint64_t given = 0;
        error = FindTopOf(top, isFolder, begun);
        if (error == ERROR_PATH_NOT_FOUND) {
            begun = {.path = {}, .isFolder = isFolder, .mark = {}};
            error = ERROR_SUCCESS;
        }
        if (error == ERROR_SUCCESS) error = recorder.BeginTop(begun, given);
        if (error == ERROR_SUCCESS) number = given;
    }
    if (error == ERROR_SUCCESS) error = recorder.Record(*number, batch);
    if (firstError == ERROR_SUCCESS) firstError = error;
    return error;
}

}  // namespace permora
