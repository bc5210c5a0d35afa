// HeldObject with the system's own calls.
#include "platform/held_object.h"

#include <cstring>
#include <utility>

#include "platform/api/errors.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"

namespace permora {
namespace {

constexpr DWORD kItself = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;

// A file of this user, with one byte to lock for each object. It is never written.
UniqueHandle OpenLockFile() {
    char folder[MAX_PATH] = {};
    const DWORD length = GetEnvironmentVariableA("LOCALAPPDATA", folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return nullptr;
    const std::string path = std::string(folder) + "\\permora-objects.lock";
    HANDLE opened =
        CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    return UniqueHandle(opened == INVALID_HANDLE_VALUE ? nullptr : opened);
}

DWORD WaitForLock(HANDLE file, ULONGLONG number) {
    constexpr ULONGLONG kLongestWait = 10'000;  // milliseconds
    constexpr DWORD kPause = 2;
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(number);
    place.OffsetHigh = static_cast<DWORD>(number >> 32) & 0x7FFFFFFF;
    const ULONGLONG begin = GetTickCount64();
    while (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) == FALSE) {
        if (GetLastError() != ERROR_LOCK_VIOLATION && GetLastError() != ERROR_IO_PENDING)
            return GetLastError();
        if (GetTickCount64() - begin > kLongestWait) return ERROR_BUSY;
        Sleep(kPause);
    }
    return ERROR_SUCCESS;
}

}  // namespace

DWORD TakeTurnOn(HANDLE object, UniqueHandle& turns) {
    ObjectMark mark;
    if (MarkOf(object, mark) != ERROR_SUCCESS) return ERROR_SUCCESS;
    ULONGLONG number = 0;
    std::memcpy(&number, mark.number.Identifier, sizeof number);
    return TakeTurnAt(number ^ mark.volume, turns);
}

DWORD TakeTurnAt(ULONGLONG number, UniqueHandle& turns) {
    UniqueHandle file = OpenLockFile();
    if (!file) return ERROR_SUCCESS;
    const DWORD error = WaitForLock(file.get(), number);
    if (error == ERROR_SUCCESS) turns = std::move(file);
    return error == ERROR_BUSY ? error : ERROR_SUCCESS;
}

DWORD OpenAgain(HANDLE object, DWORD access, UniqueHandle& opened) {
    HANDLE handle = ReOpenFile(object, access, kShareAll, kItself);
    if (handle == INVALID_HANDLE_VALUE) return GetLastError();
    opened.reset(handle);
    return ERROR_SUCCESS;
}

HeldObject::HeldObject() = default;
HeldObject::HeldObject(HeldObject&& other) noexcept = default;
HeldObject& HeldObject::operator=(HeldObject&& other) noexcept = default;
HeldObject::~HeldObject() = default;

DWORD HeldObject::Hold(const std::string& path, HeldObject& object) {
    std::wstring wide;
    if (const DWORD error = ToVerbatimPath(path, wide); error != ERROR_SUCCESS) return error;
    HANDLE opened =
        CreateFileW(wide.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING, kItself, nullptr);
    if (opened == INVALID_HANDLE_VALUE) return GetLastError();
    object.inside = std::make_unique<Inside>();
    object.inside->object.reset(opened);
    return ERROR_SUCCESS;
}

bool HeldObject::IsFolder() const {
    FILE_ATTRIBUTE_TAG_INFO tag{};
    if (GetFileInformationByHandleEx(inside->object.get(), FileAttributeTagInfo, &tag, sizeof tag) == FALSE)
        return false;
    return (tag.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
           (tag.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
}

FolderEntryKind HeldObject::Kind() const {
    FILE_ATTRIBUTE_TAG_INFO tag{};
    return TagOf(inside->object.get(), tag) == ERROR_SUCCESS ? KindOfTag(tag) : FolderEntryKind::kOther;
}

DWORD HeldObject::AskAccessControl(bool& isSupported) const {
    return AskForLists(inside->object.get(), isSupported);
}

DWORD HeldObject::TakeTurn() {
    return inside->turns ? ERROR_SUCCESS : TakeTurnOn(inside->object.get(), inside->turns);
}

struct RememberedObject::Inside {
    static DWORD Verify(const Inside* remembered, HANDLE object) {
        if (remembered == nullptr || remembered->error != ERROR_SUCCESS) return ERROR_FILE_INVALID;
        return VerifyMark(object, remembered->mark);
    }

    DWORD error = ERROR_SUCCESS;
    FolderEntryKind kind = FolderEntryKind::kFile;
    ObjectMark mark;
};

RememberedObject::RememberedObject(std::shared_ptr<const FolderHandle> startFolder, std::string objectPath)
    : start(std::move(startFolder)), path(std::move(objectPath)) {
    auto found = std::make_shared<Inside>();
    HeldObject object;
    found->error = FindByName(object);
    if (found->error == ERROR_SUCCESS) found->error = MarkOf(object.inside->object.get(), found->mark);
    FILE_ATTRIBUTE_TAG_INFO tag{};
    if (found->error == ERROR_SUCCESS) found->error = TagOf(object.inside->object.get(), tag);
    found->kind = KindOfTag(tag);
    inside = std::move(found);
}

DWORD RememberedObject::Error() const {
    return inside ? inside->error : ERROR_FILE_NOT_FOUND;
}

FolderEntryKind RememberedObject::Kind() const {
    return inside->kind;
}

DWORD RememberedObject::Verify(const HeldObject& object) const {
    return Inside::Verify(inside.get(), object.inside->object.get());
}

DWORD RememberedObject::Verify(const FileHandle& file) const {
    return Inside::Verify(inside.get(), file.inside->file.get());
}

DWORD RememberedObject::Verify(const FolderHandle& folder) const {
    return Inside::Verify(inside.get(), folder.inside->Folder());
}

}  // namespace permora
