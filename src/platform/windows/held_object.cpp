// HeldObject with the system's own calls.
#include "platform/held_object.h"

#include <aclapi.h>

#include <cstring>
#include <utility>

#include "platform/api/errors.h"
#include "platform/windows/held_object_inside.h"

namespace permora {
namespace {

constexpr DWORD kShareEverything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kItself = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;

// What NTFS and ReFS call the object; a number that is given again counts as another one.
DWORD IdentityOf(HANDLE object, FILE_ID_INFO& identity) {
    return GetFileInformationByHandleEx(object, FileIdInfo, &identity, sizeof identity) != FALSE
               ? ERROR_SUCCESS
               : GetLastError();
}

DWORD ReadFrom(HANDLE object, SECURITY_INFORMATION information, ReadParts& parts) {
    ReadParts read;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const bool withOwner = (information & OWNER_SECURITY_INFORMATION) != 0;
    const bool withList = (information & DACL_SECURITY_INFORMATION) != 0;
    const DWORD error =
        GetSecurityInfo(object, SE_FILE_OBJECT, information, withOwner ? &read.owner : nullptr, nullptr,
                        withList ? &read.dacl : nullptr, nullptr, &descriptor);
    if (error != ERROR_SUCCESS) return error;
    read.descriptor.reset(descriptor);
    parts = std::move(read);
    return ERROR_SUCCESS;
}

bool HasListOf(HANDLE object, PSECURITY_DESCRIPTOR expected) {
    ReadParts now;
    if (ReadFrom(object, DACL_SECURITY_INFORMATION, now) != ERROR_SUCCESS) return false;
    const DWORD size = GetSecurityDescriptorLength(now.descriptor.get());
    return size == GetSecurityDescriptorLength(expected) &&
           std::memcmp(now.descriptor.get(), expected, size) == 0;
}

// A file of this user's own with a byte to lock for each object; it is never written.
DWORD OpenLockFile(UniqueHandle& file) {
    char folder[MAX_PATH] = {};
    const DWORD length = GetEnvironmentVariableA("LOCALAPPDATA", folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return ERROR_PATH_NOT_FOUND;
    const std::string path = std::string(folder) + "\\permora-objects.lock";
    HANDLE opened =
        CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) return GetLastError();
    file.reset(opened);
    return ERROR_SUCCESS;
}

DWORD WaitForLock(HANDLE file, const FILE_ID_INFO& identity) {
    constexpr ULONGLONG kLongestWait = 10'000;  // milliseconds
    constexpr DWORD kPause = 2;
    OVERLAPPED place{};
    std::memcpy(&place.Offset, identity.FileId.Identifier, sizeof place.Offset);
    std::memcpy(&place.OffsetHigh, identity.FileId.Identifier + sizeof place.Offset, sizeof place.OffsetHigh);
    place.OffsetHigh &= 0x7FFFFFFF;
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

DWORD OpenAgain(HANDLE object, DWORD access, UniqueHandle& opened) {
    HANDLE handle = ReOpenFile(object, access, kShareEverything, kItself);
    if (handle == INVALID_HANDLE_VALUE) return GetLastError();
    opened.reset(handle);
    return ERROR_SUCCESS;
}

HeldObject::HeldObject() = default;
HeldObject::HeldObject(HeldObject&& other) noexcept = default;
HeldObject& HeldObject::operator=(HeldObject&& other) noexcept = default;
HeldObject::~HeldObject() = default;

DWORD HeldObject::Hold(const std::string& path, HeldObject& object) {
    HANDLE opened = CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES, kShareEverything, nullptr, OPEN_EXISTING,
                                kItself, nullptr);
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

DWORD HeldObject::AskAccessControl(bool& isSupported) const {
    DWORD flags = 0;
    if (GetVolumeInformationByHandleW(inside->object.get(), nullptr, 0, nullptr, nullptr, &flags, nullptr,
                                      0) == FALSE)
        return GetLastError();
    isSupported = (flags & FILE_PERSISTENT_ACLS) != 0;
    return ERROR_SUCCESS;
}

DWORD HeldObject::ReadSecurity(SECURITY_INFORMATION information, ReadParts& parts) const {
    UniqueHandle object;
    const DWORD error = OpenAgain(inside->object.get(), READ_CONTROL, object);
    return error == ERROR_SUCCESS ? ReadFrom(object.get(), information, parts) : error;
}

DWORD HeldObject::TakeTurn() {
    if (inside->turns) return ERROR_SUCCESS;
    FILE_ID_INFO identity{};
    UniqueHandle file;
    // Where there is no place for the file, or nothing that tells objects apart, there are no turns.
    if (OpenLockFile(file) != ERROR_SUCCESS) return ERROR_SUCCESS;
    if (IdentityOf(inside->object.get(), identity) != ERROR_SUCCESS) return ERROR_SUCCESS;
    const DWORD error = WaitForLock(file.get(), identity);
    if (error == ERROR_SUCCESS) inside->turns = std::move(file);
    return error;
}

DWORD HeldObject::WriteList(SECURITY_INFORMATION information, PACL list, PSECURITY_DESCRIPTOR expected,
                            FailuresBelow& /*below*/) const {
    UniqueHandle object;
    const DWORD error = OpenAgain(inside->object.get(), READ_CONTROL | WRITE_DAC, object);
    if (error != ERROR_SUCCESS) return error;
    if (expected != nullptr && !HasListOf(object.get(), expected)) return ERROR_REVISION_MISMATCH;
    return SetSecurityInfo(object.get(), SE_FILE_OBJECT, information, nullptr, nullptr, list, nullptr);
}

DWORD HeldObject::WriteOwner(PSID owner) const {
    UniqueHandle object;
    const DWORD error = OpenAgain(inside->object.get(), WRITE_OWNER, object);
    if (error != ERROR_SUCCESS) return error;
    return SetSecurityInfo(object.get(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, owner, nullptr, nullptr,
                           nullptr);
}

// The object, or why it could not be found.
struct RememberedObject::Inside {
    DWORD error = ERROR_SUCCESS;
    FILE_ID_INFO identity{};
    HeldObject kept;  // so that its number is not given to another
};

RememberedObject::RememberedObject() = default;
RememberedObject::~RememberedObject() = default;
RememberedObject::RememberedObject(const RememberedObject& other) = default;
RememberedObject& RememberedObject::operator=(const RememberedObject& other) = default;
RememberedObject::RememberedObject(RememberedObject&& other) noexcept = default;
RememberedObject& RememberedObject::operator=(RememberedObject&& other) noexcept = default;

RememberedObject::RememberedObject(std::shared_ptr<const FolderHandle> startFolder, std::string objectPath)
    : start(std::move(startFolder)), path(std::move(objectPath)) {
    auto found = std::make_shared<Inside>();
    found->error = FindByName(found->kept);
    if (found->error == ERROR_SUCCESS)
        found->error = IdentityOf(found->kept.inside->object.get(), found->identity);
    inside = std::move(found);
}

DWORD RememberedObject::FindByName(HeldObject& object) const {
    return start ? start->HoldObject(path, object) : HeldObject::Hold(path, object);
}

DWORD RememberedObject::Find(HeldObject& object) const {
    if (!inside) return ERROR_FILE_NOT_FOUND;
    if (inside->error != ERROR_SUCCESS) return inside->error;
    HeldObject found;
    FILE_ID_INFO identity{};
    DWORD error = FindByName(found);
    if (error == ERROR_SUCCESS) error = IdentityOf(found.inside->object.get(), identity);
    if (error != ERROR_SUCCESS) return error;
    const bool isSame = identity.VolumeSerialNumber == inside->identity.VolumeSerialNumber &&
                        std::memcmp(&identity.FileId, &inside->identity.FileId, sizeof identity.FileId) == 0;
    if (!isSame) return ERROR_FILE_INVALID;
    object = std::move(found);
    return ERROR_SUCCESS;
}

}  // namespace permora
