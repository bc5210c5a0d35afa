#include "security/object_security.h"

#include <string>
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

bool HasAccessControl(HWND owner, LPCSTR path, ItemPlace place, HiddenVolume hidden) {
    const LPCSTR root = place == ItemPlace::kDriveRoot ? path : nullptr;
    DWORD flags = FILE_PERSISTENT_ACLS;
    if (GetVolumeInformationA(root, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) == FALSE) {
        const DWORD error = GetLastError();
        if (error != ERROR_ACCESS_DENIED || hidden == HiddenVolume::kFail) {
            ShowSystemErrorBox(owner, error);
            return false;
        }
        flags = FILE_PERSISTENT_ACLS;
    }
    if ((flags & FILE_PERSISTENT_ACLS) == 0) {
        ShowInfoBox(owner, "Access control is not supported by the file system");
        return false;
    }
    return true;
}

std::optional<DaclInheritance> InheritanceOf(PSECURITY_DESCRIPTOR descriptor) {
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    if (GetSecurityDescriptorControl(descriptor, &control, &revision) == FALSE) {
        return std::nullopt;
    }
    return (control & SE_DACL_PROTECTED) != 0 ? DaclInheritance::kProtected : DaclInheritance::kFromParent;
}

}  // namespace

bool ReadListOfObject(HWND owner, LPCSTR path, ItemPlace place, HiddenVolume hidden, ObjectDacl& object) {
    if (!HasAccessControl(owner, path, place, hidden)) {
        return false;
    }
    PACL dacl = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD error = GetNamedSecurityInfoA(path, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                              nullptr, &dacl, nullptr, &descriptor);
    if (error != ERROR_SUCCESS) {
        ShowSystemErrorBox(owner, error);
        return false;
    }
    object.descriptor.reset(descriptor);
    object.dacl = dacl;
    return true;
}

bool ReadObjectDacl(HWND owner, LPCSTR path, ItemPlace place, ObjectSecurity& object) {
    ObjectSecurity read;
    if (!ReadListOfObject(owner, path, place, HiddenVolume::kReadOn, read)) {
        return false;
    }
    if (read.dacl == nullptr) {
        ShowInfoBox(owner, kNullListText);
    }
    read.inheritance = InheritanceOf(read.descriptor.get());
    read.entries.LoadFromDacl(read.dacl);
    object = std::move(read);
    return true;
}

std::vector<std::size_t> WriteObjectDacl(HWND owner, std::span<const char* const> paths,
                                         std::optional<DaclInheritance> inheritance, PACL dacl) {
    std::vector<std::size_t> failed;
    for (std::size_t index = 0; index < paths.size(); ++index) {
        std::string path = paths[index];  // the service wants a text that it could change
        const DWORD error = SetNamedSecurityInfoA(
            path.data(), SE_FILE_OBJECT, DaclWriteInformation(inheritance), nullptr, nullptr, dacl, nullptr);
        if (error != ERROR_SUCCESS) {
            ShowSystemErrorBox(owner, error);
            failed.push_back(index);
        }
    }
    return failed;
}

}  // namespace permora
