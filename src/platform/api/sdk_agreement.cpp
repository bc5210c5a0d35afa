// Proves that what platform/api declares equals what the SDK declares. Compiled on both sides: against our
// own declarations on Linux and against the SDK on Windows, so that a wrong number or layout fails one of the
// builds.
#include <cstddef>
#include <type_traits>

#include "platform/api/account_enumeration.h"
#include "platform/api/base.h"
#include "platform/api/directory_search.h"
#include "platform/api/effective_rights.h"
#include "platform/api/errors.h"
#include "platform/api/file_control.h"
#include "platform/api/files.h"
#include "platform/api/libraries.h"
#include "platform/api/memory.h"
#include "platform/api/messages.h"
#include "platform/api/network.h"
#include "platform/api/policy.h"
#include "platform/api/registry.h"
#include "platform/api/security.h"
#include "platform/api/shares.h"
#include "platform/api/shell.h"
#include "platform/api/system.h"
#include "platform/api/text.h"
#include "platform/api/threads.h"
#include "platform/api/time.h"
#include "platform/api/token.h"

// clang-format off

// Types.
static_assert(sizeof(BOOL)  == 4);
static_assert(sizeof(BYTE)  == 1 && BYTE(-1) > 0);
static_assert(sizeof(WORD)  == 2 && WORD(-1) > 0);
static_assert(sizeof(DWORD) == 4 && DWORD(-1) > 0);
static_assert(sizeof(ULONG) == 4 && ULONG(-1) > 0);
static_assert(sizeof(LONG)  == 4 && LONG(-1) < 0);
static_assert(sizeof(UINT)  == 4 && UINT(-1) > 0);
static_assert(sizeof(WCHAR) == 2);
static_assert(sizeof(SIZE_T) == sizeof(void*));
// NOLINTNEXTLINE(bugprone-sizeof-expression): handles are pointers, and a pointer's size is what is compared
static_assert(sizeof(HANDLE) == sizeof(void*) && sizeof(HMODULE) == sizeof(void*) && sizeof(HWND) == sizeof(void*));
static_assert(TRUE == 1 && FALSE == 0);
static_assert(sizeof(ULONGLONG) == 8 && ULONGLONG(-1) > 0);
static_assert(sizeof(ULARGE_INTEGER) == 8 && offsetof(ULARGE_INTEGER, QuadPart) == 0);
static_assert(sizeof(LONGLONG) == 8 && LONGLONG(-1) < 0);
static_assert(sizeof(LARGE_INTEGER) == 8 && offsetof(LARGE_INTEGER, QuadPart) == 0 && LARGE_INTEGER{.QuadPart = -1}.QuadPart < 0);
static_assert(offsetof(ULARGE_INTEGER, u.LowPart) == 0 && offsetof(ULARGE_INTEGER, u.HighPart) == 4);

// errors.h
static_assert(ERROR_SUCCESS                == 0);
static_assert(ERROR_INVALID_FUNCTION       == 1);
static_assert(ERROR_FILE_NOT_FOUND         == 2);
static_assert(ERROR_PATH_NOT_FOUND         == 3);
static_assert(ERROR_TOO_MANY_OPEN_FILES    == 4);
static_assert(ERROR_ACCESS_DENIED          == 5);
static_assert(ERROR_INVALID_HANDLE         == 6);
static_assert(ERROR_NOT_ENOUGH_MEMORY      == 8);
static_assert(ERROR_INVALID_DATA           == 13);
static_assert(ERROR_NOT_SAME_DEVICE        == 17);
static_assert(ERROR_NO_MORE_FILES          == 18);
static_assert(ERROR_WRITE_PROTECT          == 19);
static_assert(ERROR_NOT_READY              == 21);
static_assert(ERROR_CRC                    == 23);
static_assert(ERROR_SHARING_VIOLATION      == 32);
static_assert(ERROR_LOCK_VIOLATION         == 33);
static_assert(ERROR_NOT_SUPPORTED          == 50);
static_assert(ERROR_BAD_NETPATH            == 53);
static_assert(ERROR_DEV_NOT_EXIST          == 55);
static_assert(ERROR_NETNAME_DELETED        == 64);
static_assert(ERROR_INVALID_PARAMETER      == 87);
static_assert(ERROR_OPEN_FAILED            == 110);
static_assert(ERROR_DISK_FULL              == 112);
static_assert(ERROR_INSUFFICIENT_BUFFER    == 122);
static_assert(ERROR_INVALID_NAME           == 123);
static_assert(ERROR_INVALID_LEVEL          == 124);
static_assert(ERROR_MOD_NOT_FOUND          == 126);
static_assert(ERROR_PROC_NOT_FOUND         == 127);
static_assert(ERROR_DIR_NOT_EMPTY          == 145);
static_assert(ERROR_BAD_PATHNAME           == 161);
static_assert(ERROR_BUSY                   == 170);
static_assert(ERROR_ALREADY_EXISTS         == 183);
static_assert(ERROR_FILENAME_EXCED_RANGE   == 206);
static_assert(ERROR_FILE_TOO_LARGE         == 223);
static_assert(ERROR_MORE_DATA              == 234);
static_assert(ERROR_NO_MORE_ITEMS          == 259);
static_assert(ERROR_DIRECTORY              == 267);
static_assert(ERROR_EAS_DIDNT_FIT          == 275);
static_assert(ERROR_MR_MID_NOT_FOUND       == 317);
static_assert(ERROR_OPERATION_ABORTED      == 995);
static_assert(ERROR_INVALID_FLAGS          == 1004);
static_assert(ERROR_FILE_INVALID           == 1006);
static_assert(ERROR_BADDB                  == 1009);
static_assert(ERROR_SERVICE_DEPENDENCY_DELETED == 1075);
static_assert(ERROR_NO_UNICODE_TRANSLATION == 1113);
static_assert(ERROR_IO_DEVICE              == 1117);
static_assert(ERROR_TOO_MANY_LINKS         == 1142);
static_assert(ERROR_NO_ASSOCIATION         == 1155);
static_assert(ERROR_DEVICE_NOT_CONNECTED   == 1167);
static_assert(ERROR_NOT_FOUND              == 1168);
static_assert(ERROR_CANCELLED              == 1223);
static_assert(ERROR_CONNECTION_REFUSED     == 1225);
static_assert(ERROR_NETWORK_UNREACHABLE    == 1231);
static_assert(ERROR_HOST_UNREACHABLE       == 1232);
static_assert(ERROR_HOST_DOWN              == 1256);
static_assert(ERROR_NOT_ALL_ASSIGNED       == 1300);
static_assert(ERROR_SOME_NOT_MAPPED        == 1301);
static_assert(ERROR_UNKNOWN_REVISION       == 1305);
static_assert(ERROR_REVISION_MISMATCH      == 1306);
static_assert(ERROR_INVALID_OWNER          == 1307);
static_assert(ERROR_NO_SUCH_PRIVILEGE      == 1313);
static_assert(ERROR_PRIVILEGE_NOT_HELD     == 1314);
static_assert(ERROR_NONE_MAPPED            == 1332);
static_assert(ERROR_INVALID_ACL            == 1336);
static_assert(ERROR_INVALID_SID            == 1337);
static_assert(ERROR_INVALID_SECURITY_DESCR == 1338);
static_assert(ERROR_ALLOTTED_SPACE_EXCEEDED == 1344);
static_assert(ERROR_NO_SUCH_DOMAIN         == 1355);
static_assert(ERROR_BAD_DESCRIPTOR_FORMAT  == 1361);
static_assert(ERROR_FILE_CORRUPT           == 1392);
static_assert(ERROR_INVALID_MSGBOX_STYLE   == 1438);
static_assert(ERROR_TIMEOUT                == 1460);
static_assert(ERROR_NOT_ENOUGH_QUOTA       == 1816);
static_assert(ERROR_CANT_RESOLVE_FILENAME  == 1921);
static_assert(ERROR_FILE_READ_ONLY         == 6009);
static_assert(ERROR_DS_NAME_ERROR_NOT_UNIQUE == 8471);

// memory.h, libraries.h, text.h
static_assert(LMEM_FIXED == 0 && LMEM_ZEROINIT == 0x40 && LPTR == 0x40);
static_assert(HEAP_ZERO_MEMORY == 8);
static_assert(LOAD_LIBRARY_AS_DATAFILE == 2);
static_assert(CP_ACP == 0);

// messages.h
static_assert(FORMAT_MESSAGE_ALLOCATE_BUFFER == 0x100);
static_assert(FORMAT_MESSAGE_IGNORE_INSERTS  == 0x200);
static_assert(FORMAT_MESSAGE_FROM_HMODULE    == 0x800);
static_assert(FORMAT_MESSAGE_FROM_SYSTEM     == 0x1000);
static_assert(LANG_USER_DEFAULT              == 0x400);
static_assert(MB_OK == 0 && MB_YESNOCANCEL == 3 && MB_YESNO == 4);
static_assert(MB_ICONERROR == 0x10 && MB_ICONQUESTION == 0x20 && MB_ICONWARNING == 0x30 && MB_ICONINFORMATION == 0x40);
static_assert(IDOK == 1 && IDCANCEL == 2 && IDYES == 6 && IDNO == 7);

// files.h
static_assert(INVALID_FILE_ATTRIBUTES             == 0xFFFFFFFF);
static_assert(FILE_ATTRIBUTE_READONLY             == 0x1);
static_assert(FILE_ATTRIBUTE_HIDDEN               == 0x2);
static_assert(FILE_ATTRIBUTE_SYSTEM               == 0x4);
static_assert(FILE_ATTRIBUTE_DIRECTORY            == 0x10);
static_assert(FILE_ATTRIBUTE_ARCHIVE              == 0x20);
static_assert(FILE_ATTRIBUTE_NORMAL               == 0x80);
static_assert(FILE_ATTRIBUTE_TEMPORARY            == 0x100);
static_assert(FILE_ATTRIBUTE_SPARSE_FILE          == 0x200);
static_assert(FILE_ATTRIBUTE_REPARSE_POINT        == 0x400);
static_assert(FILE_ATTRIBUTE_COMPRESSED           == 0x800);
static_assert(FILE_ATTRIBUTE_OFFLINE              == 0x1000);
static_assert(FILE_ATTRIBUTE_NOT_CONTENT_INDEXED  == 0x2000);
static_assert(FILE_ATTRIBUTE_ENCRYPTED            == 0x4000);
static_assert(FILE_CASE_SENSITIVE_SEARCH          == 0x1);
static_assert(FILE_CASE_PRESERVED_NAMES           == 0x2);
static_assert(FILE_UNICODE_ON_DISK                == 0x4);
static_assert(FILE_PERSISTENT_ACLS                == 0x8);
static_assert(FILE_READ_ONLY_VOLUME               == 0x80000);
static_assert(FILE_BEGIN == 0 && DRIVE_UNKNOWN == 0 && DRIVE_NO_ROOT_DIR == 1 && DRIVE_REMOVABLE == 2 && DRIVE_FIXED == 3);
static_assert(DRIVE_REMOTE == 4 && DRIVE_CDROM == 5 && DRIVE_RAMDISK == 6);
static_assert(GetFileExInfoStandard == 0 && sizeof(WIN32_FILE_ATTRIBUTE_DATA) == 36);
static_assert(offsetof(WIN32_FILE_ATTRIBUTE_DATA, ftCreationTime) == 4 && offsetof(WIN32_FILE_ATTRIBUTE_DATA, ftLastAccessTime) == 12);
static_assert(offsetof(WIN32_FILE_ATTRIBUTE_DATA, ftLastWriteTime) == 20 && offsetof(WIN32_FILE_ATTRIBUTE_DATA, nFileSizeHigh) == 28);

// file_control.h
static_assert(OPEN_EXISTING == 3 && FSCTL_SET_COMPRESSION == 0x9C040);
static_assert(COMPRESSION_FORMAT_NONE == 0 && COMPRESSION_FORMAT_DEFAULT == 1);

// time.h, directory_search.h. Beyond the 260 bytes that the SDK has for a name, the layout is our own.
static_assert(sizeof(FILETIME) == 8);
static_assert(offsetof(FILETIME, dwLowDateTime) == 0 && offsetof(FILETIME, dwHighDateTime) == 4);
static_assert(sizeof(SYSTEMTIME) == 16);
static_assert(offsetof(SYSTEMTIME, wYear) == 0 && offsetof(SYSTEMTIME, wMonth) == 2);
static_assert(offsetof(SYSTEMTIME, wDayOfWeek) == 4 && offsetof(SYSTEMTIME, wDay) == 6);
static_assert(offsetof(SYSTEMTIME, wHour) == 8 && offsetof(SYSTEMTIME, wMinute) == 10);
static_assert(offsetof(SYSTEMTIME, wSecond) == 12 && offsetof(SYSTEMTIME, wMilliseconds) == 14);
static_assert(offsetof(WIN32_FIND_DATAA, dwFileAttributes) == 0);
static_assert(offsetof(WIN32_FIND_DATAA, ftCreationTime) == 4);
static_assert(offsetof(WIN32_FIND_DATAA, ftLastAccessTime) == 12);
static_assert(offsetof(WIN32_FIND_DATAA, ftLastWriteTime) == 20);
static_assert(offsetof(WIN32_FIND_DATAA, nFileSizeHigh) == 28 && offsetof(WIN32_FIND_DATAA, nFileSizeLow) == 32);
static_assert(offsetof(WIN32_FIND_DATAA, dwReserved0) == 36 && offsetof(WIN32_FIND_DATAA, dwReserved1) == 40);
static_assert(offsetof(WIN32_FIND_DATAA, cFileName) == 44 && sizeof(WIN32_FIND_DATAA{}.cFileName) >= 260);

// registry.h
static_assert(KEY_QUERY_VALUE == 0x1 && KEY_SET_VALUE == 0x2 && KEY_CREATE_SUB_KEY == 0x4);
static_assert(KEY_ENUMERATE_SUB_KEYS == 0x8 && KEY_READ == 0x20019 && KEY_WRITE == 0x20006);
static_assert(REG_OPTION_NON_VOLATILE == 0 && REG_CREATED_NEW_KEY == 1 && REG_OPENED_EXISTING_KEY == 2);
static_assert(REG_SZ == 1 && REG_EXPAND_SZ == 2 && REG_BINARY == 3 && REG_DWORD == 4 && REG_MULTI_SZ == 7);
static_assert(sizeof(LSTATUS) == 4 && LSTATUS(-1) < 0 && sizeof(REGSAM) == 4);
// The roots are handles, which no compiler compares; their numbers mean nothing outside the process.
static_assert(std::is_same_v<std::decay_t<decltype(HKEY_CLASSES_ROOT)>, HKEY>);
static_assert(std::is_same_v<std::decay_t<decltype(HKEY_CURRENT_USER)>, HKEY>);
static_assert(std::is_same_v<std::decay_t<decltype(HKEY_LOCAL_MACHINE)>, HKEY>);
static_assert(std::is_same_v<std::decay_t<decltype(HKEY_USERS)>, HKEY>);

// threads.h
static_assert(sizeof(SECURITY_ATTRIBUTES) == 3 * sizeof(void*));
static_assert(offsetof(SECURITY_ATTRIBUTES, nLength) == 0);
static_assert(offsetof(SECURITY_ATTRIBUTES, lpSecurityDescriptor) == sizeof(void*));
static_assert(offsetof(SECURITY_ATTRIBUTES, bInheritHandle) == 2 * sizeof(void*));
static_assert(sizeof(LPTHREAD_START_ROUTINE) == sizeof(void*));

// system.h, shell.h
static_assert(sizeof(OSVERSIONINFOA) == 148 && offsetof(OSVERSIONINFOA, dwMajorVersion) == 4);
static_assert(offsetof(OSVERSIONINFOA, dwMinorVersion) == 8 && offsetof(OSVERSIONINFOA, dwBuildNumber) == 12);
static_assert(offsetof(OSVERSIONINFOA, dwPlatformId) == 16 && offsetof(OSVERSIONINFOA, szCSDVersion) == 20);
static_assert(SHOP_FILEPATH == 2);
static_assert(VER_PLATFORM_WIN32_NT == 2 && SHGFI_TYPENAME == 0x400 && SW_SHOW == 5 && SE_ERR_NOASSOC == 31);
static_assert(offsetof(SHFILEINFOA, iIcon) == sizeof(void*) && offsetof(SHFILEINFOA, dwAttributes) == sizeof(void*) + 4);
static_assert(offsetof(SHFILEINFOA, szDisplayName) == sizeof(void*) + 8 && sizeof(SHFILEINFOA{}.szTypeName) == 80);
static_assert(offsetof(SHFILEINFOA, szTypeName) == sizeof(void*) + 268);
static_assert(FO_MOVE == 1 && FO_COPY == 2 && FO_DELETE == 3 && FO_RENAME == 4 && FOF_ALLOWUNDO == 0x40);
static_assert(offsetof(SHFILEOPSTRUCTA, wFunc) == sizeof(void*) && offsetof(SHFILEOPSTRUCTA, pFrom) == 2 * sizeof(void*));
static_assert(offsetof(SHFILEOPSTRUCTA, pTo) == 3 * sizeof(void*) && offsetof(SHFILEOPSTRUCTA, fFlags) == 4 * sizeof(void*));
static_assert(sizeof(FILEOP_FLAGS) == 2 && offsetof(SHFILEOPSTRUCTA, fAnyOperationsAborted) == 4 * sizeof(void*) + 4);
static_assert(offsetof(SHFILEOPSTRUCTA, hNameMappings) == 5 * sizeof(void*));
static_assert(offsetof(SHFILEOPSTRUCTA, lpszProgressTitle) == 6 * sizeof(void*) && sizeof(SHFILEOPSTRUCTA) == 7 * sizeof(void*));
static_assert(offsetof(SHFILEOPSTRUCTW, fFlags) == 4 * sizeof(void*) && sizeof(SHFILEOPSTRUCTW) == 7 * sizeof(void*));

// security.h: numbers
static_assert(SID_REVISION == 1 && SID_MAX_SUB_AUTHORITIES == 15 && SECURITY_MAX_SID_SIZE == 68);
static_assert(ACL_REVISION == 2 && ACL_REVISION_DS == 4 && SECURITY_DESCRIPTOR_REVISION == 1);
static_assert(ACCESS_ALLOWED_ACE_TYPE == 0 && ACCESS_DENIED_ACE_TYPE == 1 && SYSTEM_AUDIT_ACE_TYPE == 2);
static_assert(OBJECT_INHERIT_ACE == 0x01 && CONTAINER_INHERIT_ACE == 0x02 && NO_PROPAGATE_INHERIT_ACE == 0x04);
static_assert(INHERIT_ONLY_ACE == 0x08 && INHERITED_ACE == 0x10);
static_assert(SE_OWNER_DEFAULTED       == 0x0001);
static_assert(SE_GROUP_DEFAULTED       == 0x0002);
static_assert(SE_DACL_PRESENT          == 0x0004);
static_assert(SE_DACL_DEFAULTED        == 0x0008);
static_assert(SE_SACL_PRESENT          == 0x0010);
static_assert(SE_SACL_DEFAULTED        == 0x0020);
static_assert(SE_DACL_AUTO_INHERIT_REQ == 0x0100);
static_assert(SE_SACL_AUTO_INHERIT_REQ == 0x0200);
static_assert(SE_DACL_AUTO_INHERITED   == 0x0400);
static_assert(SE_SACL_AUTO_INHERITED   == 0x0800);
static_assert(SE_DACL_PROTECTED        == 0x1000);
static_assert(SE_SACL_PROTECTED        == 0x2000);
static_assert(SE_SELF_RELATIVE         == 0x8000);
static_assert(OWNER_SECURITY_INFORMATION == 1 && GROUP_SECURITY_INFORMATION == 2);
static_assert(DACL_SECURITY_INFORMATION == 4 && SACL_SECURITY_INFORMATION == 8);
static_assert(DWORD(UNPROTECTED_DACL_SECURITY_INFORMATION) == 0x20000000);
static_assert(DWORD(PROTECTED_DACL_SECURITY_INFORMATION)   == 0x80000000);
static_assert(DELETE == 0x10000 && READ_CONTROL == 0x20000 && WRITE_DAC == 0x40000 && WRITE_OWNER == 0x80000);
static_assert(SYNCHRONIZE == 0x100000 && ACCESS_SYSTEM_SECURITY == 0x1000000);
static_assert(DWORD(GENERIC_ALL) == 0x10000000 && DWORD(GENERIC_EXECUTE) == 0x20000000);
static_assert(DWORD(GENERIC_WRITE) == 0x40000000 && DWORD(GENERIC_READ) == 0x80000000);
static_assert(FILE_READ_DATA == 0x1 && FILE_WRITE_DATA == 0x2 && FILE_APPEND_DATA == 0x4 && FILE_READ_EA == 0x8);
static_assert(FILE_WRITE_EA == 0x10 && FILE_EXECUTE == 0x20 && FILE_DELETE_CHILD == 0x40);
static_assert(FILE_READ_ATTRIBUTES == 0x80 && FILE_WRITE_ATTRIBUTES == 0x100);
static_assert(FILE_ALL_ACCESS      == 0x1F01FF);
static_assert(FILE_GENERIC_READ    == 0x120089);
static_assert(FILE_GENERIC_WRITE   == 0x120116);
static_assert(FILE_GENERIC_EXECUTE == 0x1200A0);
static_assert(AclRevisionInformation == 1 && AclSizeInformation == 2);
static_assert(SidTypeUser == 1 && SidTypeGroup == 2 && SidTypeDomain == 3 && SidTypeAlias == 4);
static_assert(SidTypeWellKnownGroup == 5 && SidTypeDeletedAccount == 6 && SidTypeInvalid == 7);
static_assert(SidTypeUnknown == 8 && SidTypeComputer == 9);
static_assert(SDDL_REVISION_1 == 1);

// security.h: layouts
static_assert(sizeof(SID_IDENTIFIER_AUTHORITY) == 6);
static_assert(sizeof(SID) == 12);
static_assert(offsetof(SID, Revision) == 0 && offsetof(SID, SubAuthorityCount) == 1);
static_assert(offsetof(SID, IdentifierAuthority) == 2 && offsetof(SID, SubAuthority) == 8);
static_assert(sizeof(ACL) == 8);
static_assert(offsetof(ACL, AclRevision) == 0 && offsetof(ACL, Sbz1) == 1 && offsetof(ACL, AclSize) == 2);
static_assert(offsetof(ACL, AceCount) == 4 && offsetof(ACL, Sbz2) == 6);
static_assert(sizeof(ACE_HEADER) == 4);
static_assert(offsetof(ACE_HEADER, AceType) == 0 && offsetof(ACE_HEADER, AceFlags) == 1);
static_assert(offsetof(ACE_HEADER, AceSize) == 2);
static_assert(sizeof(ACCESS_ALLOWED_ACE) == 12);
static_assert(offsetof(ACCESS_ALLOWED_ACE, Mask) == 4 && offsetof(ACCESS_ALLOWED_ACE, SidStart) == 8);
static_assert(sizeof(SECURITY_DESCRIPTOR_RELATIVE) == 20);
static_assert(offsetof(SECURITY_DESCRIPTOR_RELATIVE, Control) == 2);
static_assert(offsetof(SECURITY_DESCRIPTOR_RELATIVE, Owner) == 4);
static_assert(offsetof(SECURITY_DESCRIPTOR_RELATIVE, Group) == 8);
static_assert(offsetof(SECURITY_DESCRIPTOR_RELATIVE, Sacl) == 12);
static_assert(offsetof(SECURITY_DESCRIPTOR_RELATIVE, Dacl) == 16);
static_assert(sizeof(SECURITY_DESCRIPTOR) == 8 + 4 * sizeof(void*));
static_assert(offsetof(SECURITY_DESCRIPTOR, Control) == 2);
static_assert(offsetof(SECURITY_DESCRIPTOR, Owner) == 8);
static_assert(offsetof(SECURITY_DESCRIPTOR, Group) == 8 + sizeof(void*));
static_assert(offsetof(SECURITY_DESCRIPTOR, Sacl) == 8 + 2 * sizeof(void*));
static_assert(offsetof(SECURITY_DESCRIPTOR, Dacl) == 8 + 3 * sizeof(void*));
static_assert(sizeof(ACL_SIZE_INFORMATION) == 12);
static_assert(offsetof(ACL_SIZE_INFORMATION, AclBytesInUse) == 4);
static_assert(offsetof(ACL_SIZE_INFORMATION, AclBytesFree) == 8);

// account_enumeration.h
static_assert(WinWorldSid == 1 && WinBuiltinAdministratorsSid == 26);
static_assert(WinAccountRasAndIasServersSid == 50);
static_assert(sizeof(LOCALGROUP_INFO_0) == sizeof(LPWSTR) && offsetof(LOCALGROUP_INFO_0, lgrpi0_name) == 0);
static_assert(sizeof(USER_INFO_0) == sizeof(LPWSTR) && offsetof(USER_INFO_0, usri0_name) == 0);
static_assert(sizeof(DWORD_PTR) == sizeof(void*));

// network.h, shares.h
static_assert(sizeof(NET_API_STATUS) == 4 && NERR_Success == 0 && MAX_PREFERRED_LENGTH == DWORD(-1));
static_assert(NERR_UnknownDevDir == 2116 && NERR_DuplicateShare == 2118 && NERR_InvalidMaxUsers == 2122);
static_assert(NERR_InternalError == 2140);
static_assert(NERR_NetNameNotFound == 2310 && NNLEN == 80 && SHI_USES_UNLIMITED == DWORD(-1));
static_assert(STYPE_DISKTREE == 0 && STYPE_PRINTQ == 1 && STYPE_DEVICE == 2 && STYPE_IPC == 3 && STYPE_SPECIAL == 0x80000000);
static_assert(SHARE_NETNAME_PARMNUM == 1 && SHARE_TYPE_PARMNUM == 3);
static_assert(SHARE_PERMISSIONS_PARMNUM == 5 && SHARE_MAX_USES_PARMNUM == 6 && SHARE_PATH_PARMNUM == 8);
static_assert(SHARE_PASSWD_PARMNUM == 9 && SHARE_FILE_SD_PARMNUM == 501);
static_assert(sizeof(SHARE_INFO_1) == 3 * sizeof(void*) && offsetof(SHARE_INFO_1, shi1_netname) == 0);
static_assert(offsetof(SHARE_INFO_1, shi1_type) == sizeof(void*) && offsetof(SHARE_INFO_1, shi1_remark) == 2 * sizeof(void*));
static_assert(offsetof(SHARE_INFO_2, shi2_remark) == 2 * sizeof(void*) && offsetof(SHARE_INFO_2, shi2_permissions) == 3 * sizeof(void*));
static_assert(offsetof(SHARE_INFO_2, shi2_max_uses) == 3 * sizeof(void*) + 4 && offsetof(SHARE_INFO_2, shi2_current_uses) == 3 * sizeof(void*) + 8);
static_assert(offsetof(SHARE_INFO_2, shi2_passwd) == offsetof(SHARE_INFO_2, shi2_path) + sizeof(void*));
static_assert(offsetof(SHARE_INFO_2, shi2_path) == offsetof(SHARE_INFO_502, shi502_path));
static_assert(offsetof(SHARE_INFO_2, shi2_remark) == offsetof(SHARE_INFO_502, shi502_remark));
static_assert(offsetof(SHARE_INFO_2, shi2_max_uses) == offsetof(SHARE_INFO_502, shi502_max_uses));
static_assert(sizeof(SHARE_INFO_2) == offsetof(SHARE_INFO_502, shi502_reserved));
static_assert(offsetof(SHARE_INFO_502, shi502_security_descriptor) == sizeof(SHARE_INFO_2) + sizeof(void*));

// policy.h, token.h, effective_rights.h
static_assert(sizeof(NTSTATUS) == 4 && NTSTATUS(-1) < 0 && sizeof(LSA_HANDLE) == sizeof(void*));
static_assert(POLICY_VIEW_LOCAL_INFORMATION == 1 && POLICY_LOOKUP_NAMES == 0x800);
static_assert(sizeof(LSA_UNICODE_STRING) == 2 * sizeof(void*) && offsetof(LSA_UNICODE_STRING, MaximumLength) == 2);
static_assert(offsetof(LSA_UNICODE_STRING, Buffer) == sizeof(void*) && sizeof(LSA_OBJECT_ATTRIBUTES) == 6 * sizeof(void*));
static_assert(sizeof(LSA_ENUMERATION_INFORMATION) == sizeof(void*));
static_assert(TOKEN_QUERY == 8 && TOKEN_ADJUST_PRIVILEGES == 0x20 && SE_PRIVILEGE_ENABLED == 2);
static_assert(TokenUser == 1 && TokenPrivileges == 3);
static_assert(sizeof(LUID) == 8 && offsetof(LUID, HighPart) == 4);
static_assert(sizeof(LUID_AND_ATTRIBUTES) == 12 && offsetof(LUID_AND_ATTRIBUTES, Attributes) == 8);
static_assert(sizeof(TOKEN_PRIVILEGES) == 16 && offsetof(TOKEN_PRIVILEGES, Privileges) == 4);
static_assert(sizeof(SID_AND_ATTRIBUTES) == 2 * sizeof(void*) && sizeof(TOKEN_USER) == sizeof(SID_AND_ATTRIBUTES));
static_assert(offsetof(SID_AND_ATTRIBUTES, Attributes) == sizeof(void*));
static_assert(NO_MULTIPLE_TRUSTEE == 0 && TRUSTEE_IS_SID == 0 && TRUSTEE_IS_UNKNOWN == 0);
static_assert(offsetof(TRUSTEE_A, TrusteeForm) == sizeof(void*) + 4 && offsetof(TRUSTEE_A, TrusteeType) == sizeof(void*) + 8);
static_assert(offsetof(TRUSTEE_A, ptstrName) == 2 * sizeof(void*) + 8 && sizeof(TRUSTEE_A) == 3 * sizeof(void*) + 8);
