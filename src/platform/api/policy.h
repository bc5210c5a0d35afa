// The machine's security policy: which accounts hold which user rights.
// Layouts, numbers and contracts: the SDK's "LSA Policy" documentation; status codes: [MS-ERREF] 2.3.1.
#pragma once

#include "platform/api/base.h"
#include "platform/api/security.h"

#ifdef _WIN32

#include <ntsecapi.h>

#else

using NTSTATUS = LONG;  // negative: an error
using LSA_HANDLE = void*;
using PLSA_HANDLE = LSA_HANDLE*;

// A counted text; lengths in bytes, without a NUL.
struct LSA_UNICODE_STRING {
    WORD Length;
    WORD MaximumLength;
    LPWSTR Buffer;
};
using PLSA_UNICODE_STRING = LSA_UNICODE_STRING*;

// All fields are ignored.
struct LSA_OBJECT_ATTRIBUTES {
    ULONG Length;
    HANDLE RootDirectory;
    PLSA_UNICODE_STRING ObjectName;
    ULONG Attributes;
    LPVOID SecurityDescriptor;
    LPVOID SecurityQualityOfService;
};
using PLSA_OBJECT_ATTRIBUTES = LSA_OBJECT_ATTRIBUTES*;

struct LSA_ENUMERATION_INFORMATION {
    PSID Sid;
};

inline constexpr ACCESS_MASK POLICY_VIEW_LOCAL_INFORMATION = 0x0001;
inline constexpr ACCESS_MASK POLICY_LOOKUP_NAMES = 0x0800;

extern "C" {

// Opens the policy of this machine: `system` must be null, empty or name it. The caller closes the handle.
NTSTATUS WINAPI LsaOpenPolicy(PLSA_UNICODE_STRING system, PLSA_OBJECT_ATTRIBUTES attributes,
                              ACCESS_MASK access, PLSA_HANDLE policy);
NTSTATUS WINAPI LsaClose(LSA_HANDLE policy);

// The accounts that hold the right, as an array of `*count` LSA_ENUMERATION_INFORMATION that the caller frees
// with LsaFreeMemory. The handle must have been opened with both accesses above. "No more entries"
// (ERROR_NO_MORE_ITEMS) when no account holds it, ERROR_NO_SUCH_PRIVILEGE for a right that is not known.
// Where the policy is kept on Linux: docs/platform.md.
NTSTATUS WINAPI LsaEnumerateAccountsWithUserRight(LSA_HANDLE policy, PLSA_UNICODE_STRING right,
                                                  LPVOID* buffer, PULONG count);
NTSTATUS WINAPI LsaFreeMemory(LPVOID buffer);

// ERROR_MR_MID_NOT_FOUND for a status that has no system error code.
ULONG WINAPI LsaNtStatusToWinError(NTSTATUS status);

}  // extern "C"

#endif
