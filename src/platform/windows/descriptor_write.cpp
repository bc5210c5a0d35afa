#include "platform/windows/descriptor_write.h"

#include <optional>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/security_change.h"
#include "platform/windows/changed_top.h"
#include "platform/windows/privileges.h"

namespace permora {
namespace {

bool DifferIn(SECURITY_INFORMATION part, nt::SecurityDescriptor one, nt::SecurityDescriptor other) {
    ReduceToParts(one, part);
    ReduceToParts(other, part);
    return one != other;
}

}  // namespace

DWORD ReadDescriptor(HANDLE object, nt::SecurityDescriptor& descriptor) {
    std::vector<std::uint8_t> bytes(512);
    DWORD size = 0;
    while (GetKernelObjectSecurity(object, kUsualParts, bytes.data(), static_cast<DWORD>(bytes.size()),
                                   &size) == FALSE) {
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || size <= bytes.size()) return GetLastError();
        bytes.resize(size);
    }
    bytes.resize(GetSecurityDescriptorLength(bytes.data()));
    std::optional<nt::SecurityDescriptor> read = nt::SecurityDescriptor::FromBytes(bytes);
    if (!read) return ERROR_INVALID_SECURITY_DESCR;
    descriptor = std::move(*read);
    return ERROR_SUCCESS;
}

SECURITY_INFORMATION DifferentParts(const nt::SecurityDescriptor& one, const nt::SecurityDescriptor& other) {
    SECURITY_INFORMATION different = 0;
    constexpr SECURITY_INFORMATION kEach[] = {OWNER_SECURITY_INFORMATION, GROUP_SECURITY_INFORMATION,
                                              DACL_SECURITY_INFORMATION};
    for (const SECURITY_INFORMATION part : kEach)
        if (DifferIn(part, one, other)) different |= part;
    return different;
}

DWORD WritingAccess(SECURITY_INFORMATION parts) {
    DWORD access = 0;
    if ((parts & (OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION)) != 0) access |= WRITE_OWNER;
    if ((parts & DACL_SECURITY_INFORMATION) != 0) access |= WRITE_DAC;
    return access;
}

DWORD WriteDescriptor(HANDLE object, const nt::SecurityDescriptor& before,
                      const nt::SecurityDescriptor& after) {
    SECURITY_INFORMATION parts = DifferentParts(before, after);
    if (parts == 0) return ERROR_SUCCESS;
    nt::SecurityDescriptor changed = after;
    ReduceToParts(changed, parts);
    if ((parts & DACL_SECURITY_INFORMATION) != 0) {
        parts |= after.IsDaclProtected() ? PROTECTED_DACL_SECURITY_INFORMATION
                                         : UNPROTECTED_DACL_SECURITY_INFORMATION;
        // The system keeps the mark of an inherited list only for who asks for it with the other bit.
        if ((changed.control & nt::kDaclAutoInherited) != 0) changed.control |= nt::kDaclAutoInheritRequest;
    }
    std::vector<std::uint8_t> bytes;
    if (!changed.AppendTo(bytes)) return ERROR_INVALID_ACL;
    // An owner who is not the user takes a privilege here, too.
    return WithPrivileges(kChangingPrivileges, [&] {
        return SetKernelObjectSecurity(object, parts, bytes.data()) != FALSE ? DWORD{ERROR_SUCCESS}
                                                                             : GetLastError();
    });
}

DWORD StoreDescriptor(const nt::SecurityDescriptor& descriptor, StoredSecurity& stored) {
    std::vector<std::uint8_t> bytes;
    if (!descriptor.AppendTo(bytes)) return ERROR_INVALID_SECURITY_DESCR;
    stored = {SecurityForm::kVolume, std::move(bytes), std::nullopt};
    return ERROR_SUCCESS;
}

DWORD DescribeChange(HANDLE object, bool isFolder, const nt::SecurityDescriptor& before,
                     const nt::SecurityDescriptor& after, DescriptorChange& change) {
    DescriptorChange made;
    made.isFolder = isFolder;
    DWORD error = NumberOf(object, made.fileNumber);
    if (error == ERROR_SUCCESS) error = StoreDescriptor(before, made.before);
    if (error == ERROR_SUCCESS) error = StoreDescriptor(after, made.after);
    if (error == ERROR_SUCCESS) change = std::move(made);
    return error;
}

}  // namespace permora
