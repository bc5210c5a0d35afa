// The access token of this process: who it runs as, and which privileges it has.
// Layouts and numbers: the SDK's "Access Tokens" documentation.
#pragma once

#include "platform/api/base.h"
#include "platform/api/security.h"

#ifndef _WIN32

inline constexpr DWORD TOKEN_QUERY = 0x0008;
inline constexpr DWORD TOKEN_ADJUST_PRIVILEGES = 0x0020;
inline constexpr DWORD SE_PRIVILEGE_ENABLED = 0x00000002;

struct LUID {
    DWORD LowPart;
    LONG HighPart;
};
using PLUID = LUID*;

struct LUID_AND_ATTRIBUTES {
    LUID Luid;
    DWORD Attributes;
};

struct TOKEN_PRIVILEGES {
    DWORD PrivilegeCount;
    LUID_AND_ATTRIBUTES Privileges[1];  // PrivilegeCount of them
};
using PTOKEN_PRIVILEGES = TOKEN_PRIVILEGES*;

struct SID_AND_ATTRIBUTES {
    PSID Sid;
    DWORD Attributes;
};

struct TOKEN_USER {
    SID_AND_ATTRIBUTES User;
};

enum TOKEN_INFORMATION_CLASS { TokenUser = 1, TokenPrivileges = 3 };

extern "C" {

// A pseudo handle of this process; it is not closed.
HANDLE WINAPI GetCurrentProcess();

// The token of this process, the only one that can be opened. The caller closes it.
BOOL WINAPI OpenProcessToken(HANDLE process, DWORD access, HANDLE* token);

// `size` and `*needed` are in bytes; ERROR_INSUFFICIENT_BUFFER when the information does not fit. Pointers in
// it point into `information`.
BOOL WINAPI GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS informationClass, LPVOID information,
                                DWORD size, LPDWORD needed);

// Enables or disables privileges, in this thread and in those that it starts later. Privileges that the token
// does not hold are skipped: the call succeeds, and the last error is then ERROR_NOT_ALL_ASSIGNED, else 0.
// The former state is not returned: `previous` and `needed` must be null.
BOOL WINAPI AdjustTokenPrivileges(HANDLE token, BOOL disableAll, PTOKEN_PRIVILEGES newState, DWORD size,
                                  PTOKEN_PRIVILEGES previous, LPDWORD needed);

// Names and numbers of privileges on this machine (`system` null or empty). ERROR_NO_SUCH_PRIVILEGE for any
// but those that Permora uses. `*size` in characters: of the buffer with the NUL, then of the name without
// it.
BOOL WINAPI LookupPrivilegeValueA(LPCSTR system, LPCSTR name, PLUID value);
BOOL WINAPI LookupPrivilegeNameA(LPCSTR system, PLUID value, LPSTR name, LPDWORD size);

}  // extern "C"

#endif
