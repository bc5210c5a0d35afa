// What the desktop knows about files and does with them.
#pragma once

#include "platform/api/base.h"

#ifdef _WIN32

#include <shellapi.h>

#else

using HINSTANCE = HMODULE;
// NOLINTNEXTLINE(bugprone-reserved-identifier): the SDK's own tag
struct HICON__;
using HICON = HICON__*;

struct SHFILEINFOA {
    HICON hIcon;
    int iIcon;
    DWORD dwAttributes;
    char szDisplayName[260];
    char szTypeName[80];
};

inline constexpr UINT SHGFI_TYPENAME = 0x000000400;

inline constexpr int SW_SHOW = 5;

inline constexpr std::uintptr_t SE_ERR_NOASSOC = 31;

extern "C" {

// Tells what kind of file or folder `path` is, in the user's language, as the desktop calls it. Only
// SHGFI_TYPENAME is offered: icons are those of platform/shell_icons.h. 0 when there is no such object, or
// nothing is known about its kind; `info` is then unchanged.
DWORD_PTR WINAPI SHGetFileInfoA(LPCSTR path, DWORD attributes, SHFILEINFOA* info, UINT infoSize, UINT flags);

// Opens a file or folder, or an address ("http://", "https://", "mailto:"), with the program that the desktop
// has for it. `operation` is "open" or null; `parameters` must be null. Returns more than 32 when the desktop
// took it over, else why not: an error code below 31, or SE_ERR_NOASSOC for any other, which is the last
// error. On Linux it waits up to a second for the desktop's refusal.
HINSTANCE WINAPI ShellExecuteA(HWND owner, LPCSTR operation, LPCSTR file, LPCSTR parameters, LPCSTR directory,
                               int showCommand);

// Runs a command line. On Linux the one command is the help viewer: "hh ", the help file, "::/" and a page
// (docs/platform.md). Returns more than 31 when it was started, else an error code up to 31.
UINT WINAPI WinExec(LPCSTR commandLine, UINT showCommand);

}  // extern "C"

#endif
