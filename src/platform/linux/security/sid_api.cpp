// Security identifiers in the caller's memory, which need not be aligned.
#include <cstddef>
#include <cstring>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/base/failure.h"

namespace {

using permora::host::Fail;

constexpr std::size_t kSubAuthoritiesOffset = offsetof(SID, SubAuthority);

BYTE* BytesOf(PSID sid) {
    return static_cast<BYTE*>(sid);
}

BYTE SubAuthorityCount(PSID sid) {
    return BytesOf(sid)[offsetof(SID, SubAuthorityCount)];
}

}  // namespace

BOOL WINAPI IsValidSid(PSID sid) {
    return sid != nullptr && BytesOf(sid)[offsetof(SID, Revision)] == SID_REVISION &&
           SubAuthorityCount(sid) <= SID_MAX_SUB_AUTHORITIES;
}

DWORD WINAPI GetLengthSid(PSID sid) {
    if (!IsValidSid(sid)) return 0;
    return static_cast<DWORD>(kSubAuthoritiesOffset + sizeof(DWORD) * SubAuthorityCount(sid));
}

BOOL WINAPI CopySid(DWORD targetSize, PSID target, PSID source) {
    if (!IsValidSid(source)) return Fail(ERROR_INVALID_SID);
    const DWORD length = GetLengthSid(source);
    if (target == nullptr || targetSize < length) return Fail(ERROR_INSUFFICIENT_BUFFER);
    std::memmove(target, source, length);
    return TRUE;
}

BOOL WINAPI EqualSid(PSID one, PSID other) {
    if (!IsValidSid(one) || !IsValidSid(other)) return Fail(ERROR_INVALID_SID);
    const DWORD length = GetLengthSid(one);
    return length == GetLengthSid(other) && std::memcmp(one, other, length) == 0;
}

PSID_IDENTIFIER_AUTHORITY WINAPI GetSidIdentifierAuthority(PSID sid) {
    if (!IsValidSid(sid)) {
        SetLastError(ERROR_INVALID_SID);
        return nullptr;
    }
    return reinterpret_cast<PSID_IDENTIFIER_AUTHORITY>(BytesOf(sid) + offsetof(SID, IdentifierAuthority));
}

PUCHAR WINAPI GetSidSubAuthorityCount(PSID sid) {
    if (!IsValidSid(sid)) {
        SetLastError(ERROR_INVALID_SID);
        return nullptr;
    }
    return BytesOf(sid) + offsetof(SID, SubAuthorityCount);
}

LPDWORD WINAPI GetSidSubAuthority(PSID sid, DWORD index) {
    if (!IsValidSid(sid)) {
        SetLastError(ERROR_INVALID_SID);
        return nullptr;
    }
    if (index >= SubAuthorityCount(sid)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    void* subAuthority = BytesOf(sid) + kSubAuthoritiesOffset + sizeof(DWORD) * index;
    return static_cast<LPDWORD>(subAuthority);
}
