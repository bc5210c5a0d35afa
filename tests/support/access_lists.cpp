#include "tests/support/access_lists.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/nt/sddl.h"
#include "platform/nt/security_descriptor.h"

namespace permora::test {

namespace {

// The services take names relative to the current directory. Unlike a path with a drive letter, such a name
// means the same object while other tests mount and unmount volumes.
class InFolderOf {
  public:
    explicit InFolderOf(const std::string& hostPath)
        : before(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)),
          name(host::EncodeName(hostPath.substr(hostPath.rfind('/') + 1))),
          isEntered(chdir(hostPath.substr(0, hostPath.rfind('/') + 1).c_str()) == 0) {}
    ~InFolderOf() {
        if (fchdir(before.Get()) != 0) std::perror("fchdir");
    }
    InFolderOf(const InFolderOf&) = delete;
    InFolderOf& operator=(const InFolderOf&) = delete;

    // Null when the folder cannot be entered.
    char* Name() { return isEntered ? name.data() : nullptr; }

  private:
    host::UniqueFd before;
    std::string name;
    bool isEntered;
};

// A copy of a SID or list as the services take them.
class Block {
  public:
    void Fill(const nt::Sid& sid) { bytes.assign(sid.Bytes().begin(), sid.Bytes().end()); }
    bool Fill(const nt::Acl& acl) { return acl.AppendTo(bytes); }
    void Fill(const std::vector<std::uint8_t>& list) { bytes = list; }

    PSID Sid() { return bytes.data(); }
    PACL List() { return bytes.empty() ? nullptr : reinterpret_cast<PACL>(bytes.data()); }

  private:
    std::vector<std::uint8_t> bytes;
};

}  // namespace

DWORD SetDescriptor(const std::string& hostPath, const nt::SecurityDescriptor& descriptor) {
    SECURITY_INFORMATION parts = 0;
    Block owner;
    Block group;
    Block dacl;
    Block sacl;
    if (descriptor.owner) {
        owner.Fill(*descriptor.owner);
        parts |= OWNER_SECURITY_INFORMATION;
    }
    if (descriptor.group) {
        group.Fill(*descriptor.group);
        parts |= GROUP_SECURITY_INFORMATION;
    }
    if (descriptor.daclState != nt::DaclState::kAbsent) {
        if (descriptor.daclState == nt::DaclState::kList && !dacl.Fill(descriptor.dacl))
            return ERROR_INVALID_PARAMETER;
        parts |= DACL_SECURITY_INFORMATION |
                 (descriptor.IsDaclProtected() ? PROTECTED_DACL_SECURITY_INFORMATION
                                               : UNPROTECTED_DACL_SECURITY_INFORMATION);
    }
    if ((descriptor.control & nt::kSaclPresent) != 0) {
        sacl.Fill(descriptor.saclBytes);
        parts |= SACL_SECURITY_INFORMATION;
    }
    InFolderOf object(hostPath);
    return SetNamedSecurityInfoA(object.Name(), SE_FILE_OBJECT, parts, owner.Sid(), group.Sid(), dacl.List(),
                                 sacl.List());
}

std::string DescriptorText(const std::string& hostPath, SECURITY_INFORMATION parts) {
    PSECURITY_DESCRIPTOR found = nullptr;
    InFolderOf object(hostPath);
    const DWORD error = GetNamedSecurityInfoA(object.Name(), SE_FILE_OBJECT, parts, nullptr, nullptr, nullptr,
                                              nullptr, &found);
    if (error != ERROR_SUCCESS) return "error " + std::to_string(error);
    const UniqueLocal<void> block(found);
    const auto descriptor = host::DescriptorValue(found);
    if (!descriptor) return "no valid descriptor";
    return nt::ToSddl(*descriptor, parts).value_or("no text form");
}

std::string DaclText(const std::string& hostPath) {
    return DescriptorText(hostPath, DACL_SECURITY_INFORMATION);
}

DWORD SetDescriptorText(const std::string& hostPath, const std::string& sddl) {
    const auto descriptor = nt::FromSddl(sddl);
    return descriptor ? SetDescriptor(hostPath, *descriptor) : DWORD{ERROR_INVALID_PARAMETER};
}

HeldObject Held(const std::string& hostPath) {
    HeldObject object;
    InFolderOf place(hostPath);
    if (const char* name = place.Name()) static_cast<void>(HeldObject::Hold(name, object));
    return object;
}

UniqueLocal<void> DescriptorOf(const std::string& sddl) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ConvertStringSecurityDescriptorToSecurityDescriptorA(sddl.c_str(), SDDL_REVISION_1, &descriptor, nullptr);
    return UniqueLocal<void>(descriptor);
}

std::string SddlOfParts(PSECURITY_DESCRIPTOR descriptor, SECURITY_INFORMATION parts) {
    LPSTR text = nullptr;
    if (ConvertSecurityDescriptorToStringSecurityDescriptorA(descriptor, SDDL_REVISION_1, parts, &text,
                                                             nullptr) == FALSE)
        return "none";
    return UniqueLocal<char>(text).get();
}

}  // namespace permora::test
