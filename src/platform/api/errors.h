// The system error codes that Permora's code or its platform layer names.
// Numbers: Microsoft Learn, "System Error Codes" and "Network Management Error Codes".
#pragma once

#include "platform/api/base.h"

#ifndef _WIN32

// clang-format off
inline constexpr DWORD ERROR_SUCCESS                   = 0;
inline constexpr DWORD ERROR_INVALID_FUNCTION          = 1;
inline constexpr DWORD ERROR_FILE_NOT_FOUND            = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND            = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES       = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED             = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE            = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY         = 8;
inline constexpr DWORD ERROR_INVALID_DATA              = 13;
inline constexpr DWORD ERROR_NOT_SAME_DEVICE           = 17;
inline constexpr DWORD ERROR_NO_MORE_FILES             = 18;
inline constexpr DWORD ERROR_WRITE_PROTECT             = 19;
inline constexpr DWORD ERROR_NOT_READY                 = 21;
inline constexpr DWORD ERROR_CRC                       = 23;
inline constexpr DWORD ERROR_SHARING_VIOLATION         = 32;
inline constexpr DWORD ERROR_LOCK_VIOLATION            = 33;
inline constexpr DWORD ERROR_NOT_SUPPORTED             = 50;
inline constexpr DWORD ERROR_BAD_NETPATH               = 53;
inline constexpr DWORD ERROR_DEV_NOT_EXIST             = 55;
inline constexpr DWORD ERROR_NETNAME_DELETED           = 64;
inline constexpr DWORD ERROR_INVALID_PARAMETER         = 87;
inline constexpr DWORD ERROR_OPEN_FAILED               = 110;
inline constexpr DWORD ERROR_DISK_FULL                 = 112;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER       = 122;
inline constexpr DWORD ERROR_INVALID_NAME              = 123;
inline constexpr DWORD ERROR_INVALID_LEVEL             = 124;
inline constexpr DWORD ERROR_MOD_NOT_FOUND             = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND            = 127;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY             = 145;
inline constexpr DWORD ERROR_BAD_PATHNAME              = 161;
inline constexpr DWORD ERROR_BUSY                      = 170;
inline constexpr DWORD ERROR_ALREADY_EXISTS            = 183;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE      = 206;
inline constexpr DWORD ERROR_FILE_TOO_LARGE            = 223;
inline constexpr DWORD ERROR_MORE_DATA                 = 234;
inline constexpr DWORD ERROR_NO_MORE_ITEMS             = 259;
inline constexpr DWORD ERROR_DIRECTORY                 = 267;
inline constexpr DWORD ERROR_EAS_DIDNT_FIT             = 275;
inline constexpr DWORD ERROR_OPERATION_ABORTED         = 995;
inline constexpr DWORD ERROR_INVALID_FLAGS             = 1004;
inline constexpr DWORD ERROR_FILE_INVALID              = 1006;
inline constexpr DWORD ERROR_BADDB                     = 1009;
inline constexpr DWORD ERROR_SERVICE_DEPENDENCY_DELETED = 1075;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION    = 1113;
inline constexpr DWORD ERROR_IO_DEVICE                 = 1117;
inline constexpr DWORD ERROR_TOO_MANY_LINKS            = 1142;
inline constexpr DWORD ERROR_NO_ASSOCIATION            = 1155;
inline constexpr DWORD ERROR_DEVICE_NOT_CONNECTED      = 1167;
inline constexpr DWORD ERROR_NOT_FOUND                 = 1168;
inline constexpr DWORD ERROR_CANCELLED                 = 1223;
inline constexpr DWORD ERROR_CONNECTION_REFUSED        = 1225;
inline constexpr DWORD ERROR_NETWORK_UNREACHABLE       = 1231;
inline constexpr DWORD ERROR_HOST_UNREACHABLE          = 1232;
inline constexpr DWORD ERROR_HOST_DOWN                 = 1256;
inline constexpr DWORD ERROR_NOT_ALL_ASSIGNED          = 1300;
inline constexpr DWORD ERROR_SOME_NOT_MAPPED           = 1301;
inline constexpr DWORD ERROR_UNKNOWN_REVISION          = 1305;
inline constexpr DWORD ERROR_REVISION_MISMATCH         = 1306;
inline constexpr DWORD ERROR_INVALID_OWNER             = 1307;
inline constexpr DWORD ERROR_NO_SUCH_PRIVILEGE         = 1313;
inline constexpr DWORD ERROR_PRIVILEGE_NOT_HELD        = 1314;
inline constexpr DWORD ERROR_NONE_MAPPED               = 1332;
inline constexpr DWORD ERROR_INVALID_ACL               = 1336;
inline constexpr DWORD ERROR_INVALID_SID               = 1337;
inline constexpr DWORD ERROR_INVALID_SECURITY_DESCR    = 1338;
inline constexpr DWORD ERROR_ALLOTTED_SPACE_EXCEEDED   = 1344;
inline constexpr DWORD ERROR_NO_SUCH_DOMAIN            = 1355;
inline constexpr DWORD ERROR_BAD_DESCRIPTOR_FORMAT     = 1361;
inline constexpr DWORD ERROR_FILE_CORRUPT              = 1392;
inline constexpr DWORD ERROR_INVALID_MSGBOX_STYLE      = 1438;
inline constexpr DWORD ERROR_TIMEOUT                   = 1460;
inline constexpr DWORD ERROR_NOT_ENOUGH_QUOTA          = 1816;
inline constexpr DWORD ERROR_CANT_RESOLVE_FILENAME     = 1921;
inline constexpr DWORD ERROR_FILE_READ_ONLY            = 6009;
inline constexpr DWORD ERROR_DS_NAME_ERROR_NOT_UNIQUE  = 8471;
// clang-format on

#endif
