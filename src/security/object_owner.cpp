#include "security/object_owner.h"

#include <string>

#include "platform/api/errors.h"

namespace permora {

DWORD ReadObjectOwner(LPCSTR path, AccountRecord& account) {
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD error = GetNamedSecurityInfoA(path, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner,
                                              nullptr, nullptr, nullptr, &descriptor);
    const UniqueLocal<void> owned(descriptor);
    if (error != ERROR_SUCCESS) return error;
    AccountRecord read;
    if (owner != nullptr && !read.SetSid(owner)) return GetLastError();
    account = std::move(read);
    return ERROR_SUCCESS;
}

DWORD WriteObjectOwner(LPCSTR path, PSID owner) {
    std::string name = path;  // the service wants a text that it could change
    return SetNamedSecurityInfoA(name.data(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, owner, nullptr,
                                 nullptr, nullptr);
}

}  // namespace permora
