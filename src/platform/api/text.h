// Conversions between UTF-16 and the ANSI code page (UTF-8 on Linux), and letter case.
#pragma once

#include "platform/api/base.h"

#ifndef _WIN32

inline constexpr UINT CP_ACP = 0;

extern "C" {

// Counts are in units of the text (bytes, or 16-bit units); -1 means NUL-terminated, and the NUL is then
// converted and counted too. A target size of 0 asks for the size needed. 0 on failure:
// ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_PARAMETER. With no flags, malformed input becomes U+FFFD, as on
// Windows.
int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideCount, LPSTR ansi,
                               int ansiSize, LPCSTR defaultChar, LPBOOL usedDefaultChar);
int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR ansi, int ansiCount, LPWSTR wide,
                               int wideSize);

// Turns `count` units into capitals where they stand, and returns the number. Letters of all scripts that
// are one unit and have a capital of one unit change, in every language of the user alike.
DWORD WINAPI CharUpperBuffW(LPWSTR text, DWORD count);

}  // extern "C"

#endif
