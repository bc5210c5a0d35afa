// Lists accounts: those of this machine, and those that are the same on every machine.
#pragma once

#include "platform/api/base.h"
#include "platform/api/network.h"
#include "platform/api/security.h"

#ifndef _WIN32

// Every number from the first to the last of these is valid. Callers may pass any other, which is refused.
enum WELL_KNOWN_SID_TYPE : int {
    WinWorldSid = 1,
    WinBuiltinAdministratorsSid = 26,
    WinAccountRasAndIasServersSid = 50,
};

// Level 0: names as LookupAccountNameA takes them.
struct LOCALGROUP_INFO_0 {
    LPWSTR lgrpi0_name;
};
struct USER_INFO_0 {
    LPWSTR usri0_name;
};

extern "C" {

// Writes the SID of a type to `sid`, a buffer of `*size` bytes; `*size` becomes its length. Types 38 to 50
// are accounts of a domain and need its SID. ERROR_INVALID_PARAMETER without that SID, and for unknown types.
// ERROR_INSUFFICIENT_BUFFER, with the needed size, when the SID does not fit.
BOOL WINAPI CreateWellKnownSid(WELL_KNOWN_SID_TYPE type, PSID domain, PSID sid, DWORD* size);

// This machine's local groups and users, level 0 alone (ERROR_INVALID_LEVEL), each name with its domain,
// since one bare name may mean a user, a group and more. `server` must be null or this machine
// (ERROR_BAD_NETPATH). A call returns all of them whatever `preferredLength` says, so `*resume` (which may
// be null) becomes 0. The caller frees the buffer with NetApiBufferFree.
NET_API_STATUS WINAPI NetLocalGroupEnum(LPCWSTR server, DWORD level, LPBYTE* buffer, DWORD preferredLength,
                                        LPDWORD read, LPDWORD total, PDWORD_PTR resume);
// `filter` must be 0: accounts of every kind.
NET_API_STATUS WINAPI NetUserEnum(LPCWSTR server, DWORD level, DWORD filter, LPBYTE* buffer,
                                  DWORD preferredLength, LPDWORD read, LPDWORD total, LPDWORD resume);

}  // extern "C"

#endif
