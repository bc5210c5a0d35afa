#include "tests/support/access_lists.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/nt/sddl.h"
#include "platform/nt/security_descriptor.h"

namespace permora::test {

namespace {

// The object at an absolute host path. The folder is entered for it: unlike a path with a drive letter, a
// name in the current directory means the same object while other tests mount and unmount volumes.
DWORD Hold(const std::string& hostPath, HeldObject& object) {
    const std::size_t nameStart = hostPath.rfind('/') + 1;
    const host::UniqueFd before(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (chdir(hostPath.substr(0, nameStart).c_str()) != 0) return ERROR_PATH_NOT_FOUND;
    const DWORD error = HeldObject::Hold(host::EncodeName(hostPath.substr(nameStart)), object);
    if (fchdir(before.Get()) != 0) std::perror("fchdir");
    return error;
}

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
    HeldObject object;
    FailuresBelow below;
    DWORD error = Hold(hostPath, object);
    if (error == ERROR_SUCCESS) {
        error = object.WriteSecurity(parts, {owner.Sid(), group.Sid(), dacl.List(), sacl.List()}, nullptr,
                                     Unrecorded(), below);
    }
    return error != ERROR_SUCCESS || below.count == 0 ? error : below.named.begin()->second;
}

std::string DescriptorText(const std::string& hostPath, SECURITY_INFORMATION parts) {
    HeldObject object;
    ReadParts found;
    DWORD error = Hold(hostPath, object);
    if (error == ERROR_SUCCESS) error = object.ReadSecurity(parts, found);
    if (error != ERROR_SUCCESS) return "error " + std::to_string(error);
    const auto descriptor = host::DescriptorValue(found.descriptor.get());
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
    static_cast<void>(Hold(hostPath, object));
    return object;
}

}  // namespace permora::test
