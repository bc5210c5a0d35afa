// Security identifiers, access lists, security descriptors and accounts.
// Layouts and numbers: [MS-DTYP] 2.4 (SID, ACE, ACL, SECURITY_DESCRIPTOR) and the SDK documentation.
#pragma once

#include "platform/api/base.h"

#ifdef _WIN32

// clang-format off
#include <accctrl.h>
#include <aclapi.h>
#include <sddl.h>
// clang-format on

#else

using PSID = void*;
using PSECURITY_DESCRIPTOR = void*;
using ACCESS_MASK = DWORD;
using SECURITY_INFORMATION = DWORD;
using SECURITY_DESCRIPTOR_CONTROL = WORD;
using PSECURITY_DESCRIPTOR_CONTROL = WORD*;
using PUCHAR = unsigned char*;

inline constexpr BYTE SID_REVISION = 1;
inline constexpr BYTE SID_MAX_SUB_AUTHORITIES = 15;
inline constexpr DWORD SECURITY_MAX_SID_SIZE = 68;
inline constexpr DWORD ACL_REVISION = 2;
inline constexpr DWORD ACL_REVISION_DS = 4;
inline constexpr DWORD SECURITY_DESCRIPTOR_REVISION = 1;

// clang-format off
inline constexpr BYTE ACCESS_ALLOWED_ACE_TYPE        = 0x00;
inline constexpr BYTE ACCESS_DENIED_ACE_TYPE         = 0x01;
inline constexpr BYTE SYSTEM_AUDIT_ACE_TYPE          = 0x02;

inline constexpr BYTE OBJECT_INHERIT_ACE             = 0x01;
inline constexpr BYTE CONTAINER_INHERIT_ACE          = 0x02;
inline constexpr BYTE NO_PROPAGATE_INHERIT_ACE       = 0x04;
inline constexpr BYTE INHERIT_ONLY_ACE               = 0x08;
inline constexpr BYTE INHERITED_ACE                  = 0x10;

inline constexpr WORD SE_OWNER_DEFAULTED             = 0x0001;
inline constexpr WORD SE_GROUP_DEFAULTED             = 0x0002;
inline constexpr WORD SE_DACL_PRESENT                = 0x0004;
inline constexpr WORD SE_DACL_DEFAULTED              = 0x0008;
inline constexpr WORD SE_SACL_PRESENT                = 0x0010;
inline constexpr WORD SE_SACL_DEFAULTED              = 0x0020;
inline constexpr WORD SE_DACL_AUTO_INHERIT_REQ       = 0x0100;
inline constexpr WORD SE_SACL_AUTO_INHERIT_REQ       = 0x0200;
inline constexpr WORD SE_DACL_AUTO_INHERITED         = 0x0400;
inline constexpr WORD SE_SACL_AUTO_INHERITED         = 0x0800;
inline constexpr WORD SE_DACL_PROTECTED              = 0x1000;
inline constexpr WORD SE_SACL_PROTECTED              = 0x2000;
inline constexpr WORD SE_SELF_RELATIVE               = 0x8000;

inline constexpr DWORD OWNER_SECURITY_INFORMATION            = 0x00000001;
inline constexpr DWORD GROUP_SECURITY_INFORMATION            = 0x00000002;
inline constexpr DWORD DACL_SECURITY_INFORMATION             = 0x00000004;
inline constexpr DWORD SACL_SECURITY_INFORMATION             = 0x00000008;
inline constexpr DWORD UNPROTECTED_DACL_SECURITY_INFORMATION = 0x20000000;
inline constexpr DWORD PROTECTED_DACL_SECURITY_INFORMATION   = 0x80000000;

inline constexpr DWORD DELETE                   = 0x00010000;
inline constexpr DWORD READ_CONTROL             = 0x00020000;
inline constexpr DWORD WRITE_DAC                = 0x00040000;
inline constexpr DWORD WRITE_OWNER              = 0x00080000;
inline constexpr DWORD SYNCHRONIZE              = 0x00100000;
inline constexpr DWORD ACCESS_SYSTEM_SECURITY   = 0x01000000;
inline constexpr DWORD GENERIC_ALL              = 0x10000000;
inline constexpr DWORD GENERIC_EXECUTE          = 0x20000000;
inline constexpr DWORD GENERIC_WRITE            = 0x40000000;
inline constexpr DWORD GENERIC_READ             = 0x80000000;

inline constexpr DWORD FILE_READ_DATA           = 0x0001;
inline constexpr DWORD FILE_WRITE_DATA          = 0x0002;
inline constexpr DWORD FILE_APPEND_DATA         = 0x0004;
inline constexpr DWORD FILE_READ_EA             = 0x0008;
inline constexpr DWORD FILE_WRITE_EA            = 0x0010;
inline constexpr DWORD FILE_EXECUTE             = 0x0020;
inline constexpr DWORD FILE_DELETE_CHILD        = 0x0040;
inline constexpr DWORD FILE_READ_ATTRIBUTES     = 0x0080;
inline constexpr DWORD FILE_WRITE_ATTRIBUTES    = 0x0100;
inline constexpr DWORD FILE_ALL_ACCESS          = 0x001F01FF;
inline constexpr DWORD FILE_GENERIC_READ        = 0x00120089;
inline constexpr DWORD FILE_GENERIC_WRITE       = 0x00120116;
inline constexpr DWORD FILE_GENERIC_EXECUTE     = 0x001200A0;
// clang-format on

struct SID_IDENTIFIER_AUTHORITY {
    BYTE Value[6];  // most significant byte first
};
using PSID_IDENTIFIER_AUTHORITY = SID_IDENTIFIER_AUTHORITY*;

struct SID {
    BYTE Revision;
    BYTE SubAuthorityCount;
    SID_IDENTIFIER_AUTHORITY IdentifierAuthority;
    DWORD SubAuthority[1];  // SubAuthorityCount of them
};

struct ACL {
    BYTE AclRevision;
    BYTE Sbz1;
    WORD AclSize;  // bytes, this header and unused space included
    WORD AceCount;
    WORD Sbz2;
};
using PACL = ACL*;

struct ACE_HEADER {
    BYTE AceType;
    BYTE AceFlags;
    WORD AceSize;  // bytes, this header included
};

struct ACCESS_ALLOWED_ACE {
    ACE_HEADER Header;
    ACCESS_MASK Mask;
    DWORD SidStart;  // first four bytes of the SID
};

struct SECURITY_DESCRIPTOR_RELATIVE {
    BYTE Revision;
    BYTE Sbz1;
    SECURITY_DESCRIPTOR_CONTROL Control;
    DWORD Owner;  // offsets from the start of the descriptor; 0 means none
    DWORD Group;
    DWORD Sacl;
    DWORD Dacl;
};

struct SECURITY_DESCRIPTOR {
    BYTE Revision;
    BYTE Sbz1;
    SECURITY_DESCRIPTOR_CONTROL Control;
    PSID Owner;
    PSID Group;
    PACL Sacl;
    PACL Dacl;
};

struct ACL_SIZE_INFORMATION {
    DWORD AceCount;
    DWORD AclBytesInUse;
    DWORD AclBytesFree;
};

enum ACL_INFORMATION_CLASS { AclRevisionInformation = 1, AclSizeInformation = 2 };

enum SID_NAME_USE {
    SidTypeUser = 1,
    SidTypeGroup,
    SidTypeDomain,
    SidTypeAlias,
    SidTypeWellKnownGroup,
    SidTypeDeletedAccount,
    SidTypeInvalid,
    SidTypeUnknown,
    SidTypeComputer
};
using PSID_NAME_USE = SID_NAME_USE*;

inline constexpr DWORD SDDL_REVISION_1 = 1;

extern "C" {

// --- Security identifiers. A SID passed to these functions must be readable for its whole length; only
// IsValidSid takes doubtful ones.
BOOL WINAPI IsValidSid(PSID sid);
DWORD WINAPI GetLengthSid(PSID sid);
BOOL WINAPI CopySid(DWORD targetSize, PSID target, PSID source);
BOOL WINAPI EqualSid(PSID one, PSID other);
PSID_IDENTIFIER_AUTHORITY WINAPI GetSidIdentifierAuthority(PSID sid);
PUCHAR WINAPI GetSidSubAuthorityCount(PSID sid);
LPDWORD WINAPI GetSidSubAuthority(PSID sid, DWORD index);

// --- Access lists.
BOOL WINAPI InitializeAcl(PACL acl, DWORD size, DWORD revision);
BOOL WINAPI IsValidAcl(PACL acl);
BOOL WINAPI GetAclInformation(PACL acl, LPVOID information, DWORD size,
                              ACL_INFORMATION_CLASS informationClass);
// Points `ace` into the list; fails when the index or the entry does not lie wholly inside the list.
BOOL WINAPI GetAce(PACL acl, DWORD index, LPVOID* ace);
// Append an entry; fail with ERROR_ALLOTTED_SPACE_EXCEEDED when the list has no room for it.
BOOL WINAPI AddAccessAllowedAceEx(PACL acl, DWORD revision, DWORD flags, DWORD mask, PSID sid);
BOOL WINAPI AddAccessDeniedAceEx(PACL acl, DWORD revision, DWORD flags, DWORD mask, PSID sid);

// --- Security descriptors, absolute or self-relative.

// Makes an empty absolute descriptor. The revision must be SECURITY_DESCRIPTOR_REVISION.
BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision);
// Puts a list into an absolute descriptor, which goes on pointing to it; a null list that is present allows
// everyone everything. A self-relative descriptor is ERROR_INVALID_SECURITY_DESCR.
BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL dacl,
                                      BOOL defaulted);
BOOL WINAPI IsValidSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor);
// The number of bytes of a valid descriptor in its self-relative form, each part at a multiple of four.
DWORD WINAPI GetSecurityDescriptorLength(PSECURITY_DESCRIPTOR descriptor);
BOOL WINAPI GetSecurityDescriptorControl(PSECURITY_DESCRIPTOR descriptor,
                                         PSECURITY_DESCRIPTOR_CONTROL control, LPDWORD revision);
// Outputs point into the descriptor and live as long as it does.
BOOL WINAPI GetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, LPBOOL present, PACL* dacl,
                                      LPBOOL defaulted);
BOOL WINAPI GetSecurityDescriptorSacl(PSECURITY_DESCRIPTOR descriptor, LPBOOL present, PACL* sacl,
                                      LPBOOL defaulted);
// Sizes in bytes, read and written; a size too small is set to the size needed (ERROR_INSUFFICIENT_BUFFER).
BOOL WINAPI MakeAbsoluteSD(PSECURITY_DESCRIPTOR selfRelative, PSECURITY_DESCRIPTOR absolute,
                           LPDWORD absoluteSize, PACL dacl, LPDWORD daclSize, PACL sacl, LPDWORD saclSize,
                           PSID owner, LPDWORD ownerSize, PSID primaryGroup, LPDWORD primaryGroupSize);

// --- Accounts. Name and domain sizes in characters with the NUL; on ERROR_INSUFFICIENT_BUFFER all sizes are
// set to what is needed, on success the texts' to their lengths without the NUL. A null or empty `system`
// means this machine; ERROR_NONE_MAPPED: no such account.
BOOL WINAPI LookupAccountSidA(LPCSTR system, PSID sid, LPSTR name, LPDWORD nameSize, LPSTR domain,
                              LPDWORD domainSize, PSID_NAME_USE use);
BOOL WINAPI LookupAccountNameA(LPCSTR system, LPCSTR account, PSID sid, LPDWORD sidSize, LPSTR domain,
                               LPDWORD domainSize, PSID_NAME_USE use);

// --- Text forms. Outputs are LocalAlloc blocks.
BOOL WINAPI ConvertStringSidToSidA(LPCSTR text, PSID* sid);
BOOL WINAPI ConvertSecurityDescriptorToStringSecurityDescriptorA(PSECURITY_DESCRIPTOR descriptor,
                                                                 DWORD revision,
                                                                 SECURITY_INFORMATION information,
                                                                 LPSTR* text, PULONG length);
BOOL WINAPI ConvertStringSecurityDescriptorToSecurityDescriptorA(LPCSTR text, DWORD revision,
                                                                 PSECURITY_DESCRIPTOR* descriptor,
                                                                 PULONG size);

}  // extern "C"

#endif
