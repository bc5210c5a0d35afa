// The folders, and other things, that this machine offers to the network.
//
// Where the shares are kept on Linux: docs/platform.md.
#pragma once

#include "platform/api/base.h"
#include "platform/api/network.h"
#include "platform/api/security.h"

#ifndef _WIN32

// The longest name, in units of UTF-16.
inline constexpr DWORD NNLEN = 80;

inline constexpr DWORD STYPE_DISKTREE = 0;
inline constexpr DWORD STYPE_PRINTQ = 1;
inline constexpr DWORD STYPE_DEVICE = 2;
inline constexpr DWORD STYPE_IPC = 3;
inline constexpr DWORD STYPE_SPECIAL = 0x80000000;  // beside one of those above: for administration

inline constexpr DWORD SHI_USES_UNLIMITED = 0xFFFFFFFF;

// Which field a record was refused for.
inline constexpr DWORD SHARE_NETNAME_PARMNUM = 1;
inline constexpr DWORD SHARE_TYPE_PARMNUM = 3;
inline constexpr DWORD SHARE_PERMISSIONS_PARMNUM = 5;
inline constexpr DWORD SHARE_MAX_USES_PARMNUM = 6;
inline constexpr DWORD SHARE_PATH_PARMNUM = 8;
inline constexpr DWORD SHARE_PASSWD_PARMNUM = 9;
inline constexpr DWORD SHARE_FILE_SD_PARMNUM = 501;

struct SHARE_INFO_1 {
    LPWSTR shi1_netname;
    DWORD shi1_type;
    LPWSTR shi1_remark;
};

struct SHARE_INFO_2 {
    LPWSTR shi2_netname;
    DWORD shi2_type;
    LPWSTR shi2_remark;
    DWORD shi2_permissions;
    DWORD shi2_max_uses;
    DWORD shi2_current_uses;
    LPWSTR shi2_path;  // of this machine, with drive letter; empty unless a folder
    LPWSTR shi2_passwd;
};

struct SHARE_INFO_502 {
    LPWSTR shi502_netname;
    DWORD shi502_type;
    LPWSTR shi502_remark;
    DWORD shi502_permissions;
    DWORD shi502_max_uses;
    DWORD shi502_current_uses;
    LPWSTR shi502_path;
    LPWSTR shi502_passwd;
    DWORD shi502_reserved;
    PSECURITY_DESCRIPTOR shi502_security_descriptor;  // handed out self-relative; null: the share has none
};

extern "C" {

// All return NERR_Success, an error code of network.h or a system error code. `server` must be null or this
// machine (ERROR_BAD_NETPATH). Names of shares ignore letter case. Other levels than those named here are
// ERROR_INVALID_LEVEL.

// Records of level 1 or 2, in the order of the machine's list: all of them whatever `preferredLength` says,
// so `*resume` (which may be null) becomes 0. The records with all that they point to are one block, which
// the caller frees with NetApiBufferFree.
NET_API_STATUS WINAPI NetShareEnum(LPWSTR server, DWORD level, LPBYTE* buffer, DWORD preferredLength,
                                   LPDWORD read, LPDWORD total, LPDWORD resume);

// One record of level 2 or 502, a block of the same kind. NERR_NetNameNotFound; ERROR_INVALID_SECURITY_DESCR
// at level 502 when the share's descriptor is damaged.
NET_API_STATUS WINAPI NetShareGetInfo(LPWSTR server, LPWSTR name, DWORD level, LPBYTE* buffer);

// Changes, by a record of level 502, the remark, the greatest number of users and the descriptor (of either
// form, checked whole; null leaves it as it is) where they differ from those of the share. The other fields
// must be as they were read: ERROR_INVALID_PARAMETER, and in `*wrongField` (which may be null) its number.
// ERROR_FILE_READ_ONLY: a configuration file of the server fixes the value. What was changed before a failure
// is restored.
NET_API_STATUS WINAPI NetShareSetInfo(LPWSTR server, LPWSTR name, DWORD level, LPBYTE record,
                                      LPDWORD wrongField);

// Offers a folder to the network, level 502. ERROR_INVALID_NAME (platform/share_name.h says which
// names there are), NERR_DuplicateShare, NERR_UnknownDevDir for a path that is no folder,
// NERR_InvalidMaxUsers for 0 users.
NET_API_STATUS WINAPI NetShareAdd(LPWSTR server, DWORD level, LPBYTE record, LPDWORD wrongField);

// Ends the sharing; the folder stays. `reserved` must be 0. NERR_NetNameNotFound; ERROR_FILE_READ_ONLY
// as above.
NET_API_STATUS WINAPI NetShareDel(LPWSTR server, LPWSTR name, DWORD reserved);

}  // extern "C"

#endif
