#include "security/object_owner.h"

#include "platform/api/errors.h"

namespace permora {

DWORD ReadObjectOwner(const HeldObject& object, AccountRecord& account) {
    ReadParts parts;
    const DWORD error = object.ReadSecurity(OWNER_SECURITY_INFORMATION, parts);
    if (error != ERROR_SUCCESS) return error;
    AccountRecord read;
    if (parts.owner != nullptr && !read.SetSid(parts.owner)) return GetLastError();
    account = std::move(read);
    return ERROR_SUCCESS;
}

}  // namespace permora
