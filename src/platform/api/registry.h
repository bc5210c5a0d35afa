// The registry: settings of the user and of the machine.
//
// Components of key paths are separated by backslashes. Key and value names ignore the case of ASCII letters.
// Where the keys are kept on Linux: docs/platform.md. Every change is on the disk when the call
// returns, and several programs may make them at a time.
#pragma once

#include "platform/api/base.h"
#include "platform/api/threads.h"
#include "platform/api/time.h"

#ifndef _WIN32

// NOLINTNEXTLINE(bugprone-reserved-identifier): the SDK's own tag
struct HKEY__;
using HKEY = HKEY__*;
using PHKEY = HKEY*;
using REGSAM = DWORD;
using LSTATUS = LONG;

// The merged view of the user's and the machine's registered types; new keys go to the machine.
inline HKEY__* const HKEY_CLASSES_ROOT = reinterpret_cast<HKEY>(std::intptr_t{std::int32_t(0x80000000)});
inline HKEY__* const HKEY_CURRENT_USER = reinterpret_cast<HKEY>(std::intptr_t{std::int32_t(0x80000001)});
inline HKEY__* const HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(std::intptr_t{std::int32_t(0x80000002)});
// Only ".DEFAULT": the values for users who have none of their own.
inline HKEY__* const HKEY_USERS = reinterpret_cast<HKEY>(std::intptr_t{std::int32_t(0x80000003)});

inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_SET_VALUE = 0x0002;
inline constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_WRITE = 0x20006;

inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_MULTI_SZ = 7;

extern "C" {

// All return 0 or an error code: ERROR_FILE_NOT_FOUND for a missing key or value, ERROR_ACCESS_DENIED where
// the access of the handle or the rights of the user do not suffice, ERROR_BADDB for a damaged file or
// value.

// `subKey` may be null or empty: the key itself. The caller closes the handle.
LSTATUS WINAPI RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM access, PHKEY result);
// Opens the key; makes it and those above it where they are missing. `disposition` (may be null) says which.
LSTATUS WINAPI RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options,
                               REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY result,
                               LPDWORD disposition);
// Closing the roots does nothing.
LSTATUS WINAPI RegCloseKey(HKEY key);

// A null or empty name means the key's default value. `type` and `data` may be null. `size` is in bytes: of
// the buffer, then of the value; ERROR_MORE_DATA when the value is larger. REG_SZ comes with its NUL.
LSTATUS WINAPI RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                LPDWORD size);
LSTATUS WINAPI RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size);

// The name of a key below. `nameSize` is in bytes: of the buffer, then of the name without its NUL.
// ERROR_NO_MORE_ITEMS after the last. Class and time are not kept: their pointers must be null.
LSTATUS WINAPI RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, LPDWORD nameSize, LPDWORD reserved,
                             LPSTR keyClass, LPDWORD classSize, FILETIME* lastWrite);
// Deletes a key with its values. ERROR_ACCESS_DENIED when there are keys below it.
LSTATUS WINAPI RegDeleteKeyA(HKEY key, LPCSTR subKey);

}  // extern "C"

#endif
