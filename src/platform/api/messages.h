// Message texts of error codes, and message boxes.
#pragma once

#include <cstdarg>

#include "platform/api/base.h"

#ifndef _WIN32

inline constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x00000100;
inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x00000200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_HMODULE = 0x00000800;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x00001000;

inline constexpr DWORD LANG_USER_DEFAULT = 0x0400;

inline constexpr UINT MB_OK = 0x00000000;
inline constexpr UINT MB_YESNOCANCEL = 0x00000003;
inline constexpr UINT MB_YESNO = 0x00000004;
inline constexpr UINT MB_ICONERROR = 0x00000010;
inline constexpr UINT MB_ICONQUESTION = 0x00000020;
inline constexpr UINT MB_ICONWARNING = 0x00000030;
inline constexpr UINT MB_ICONINFORMATION = 0x00000040;

inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

extern "C" {

// The text of error code `messageId`, ending in a line break. FORMAT_MESSAGE_ALLOCATE_BUFFER must be set:
// `buffer` is the address of a pointer that receives a LocalAlloc block; the caller frees it with
// LocalFree. Returns the number of characters without the NUL, or 0 (ERROR_MR_MID_NOT_FOUND: no table has a
// text).
DWORD WINAPI FormatMessageA(DWORD flags, LPCVOID source, DWORD messageId, DWORD languageId, LPSTR buffer,
                            DWORD size, va_list* arguments);

// Shows a modal message box and returns the id of the button that ended it (IDOK, IDYES, ...). Who shows it,
// and how, is decided by platform/message_presenter.h.
int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);

}  // extern "C"

// No text exists for a message number.
inline constexpr DWORD ERROR_MR_MID_NOT_FOUND = 317;

#else

#ifndef LANG_USER_DEFAULT
#define LANG_USER_DEFAULT 0x0400
#endif

#endif
