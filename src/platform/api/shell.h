// What the desktop knows about files and does with them: types, programs, file operations.
#pragma once

#include "platform/api/base.h"

#ifdef _WIN32

#include <shellapi.h>
#include <shlobj.h>

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

inline constexpr DWORD SHOP_FILEPATH = 0x00000002;

inline constexpr UINT FO_MOVE = 1;
inline constexpr UINT FO_COPY = 2;
inline constexpr UINT FO_DELETE = 3;
inline constexpr UINT FO_RENAME = 4;

using FILEOP_FLAGS = WORD;
inline constexpr FILEOP_FLAGS FOF_ALLOWUNDO = 0x0040;

struct SHFILEOPSTRUCTA {
    HWND hwnd;   // owner of the windows
    UINT wFunc;  // FO_
    LPCSTR pFrom;
    LPCSTR pTo;
    FILEOP_FLAGS fFlags;
    BOOL fAnyOperationsAborted;  // written by the call
    LPVOID hNameMappings;
    LPCSTR lpszProgressTitle;
};
using LPSHFILEOPSTRUCTA = SHFILEOPSTRUCTA*;

struct SHFILEOPSTRUCTW {
    HWND hwnd;
    UINT wFunc;
    LPCWSTR pFrom;
    LPCWSTR pTo;
    FILEOP_FLAGS fFlags;
    BOOL fAnyOperationsAborted;
    LPVOID hNameMappings;
    LPCWSTR lpszProgressTitle;
};
using LPSHFILEOPSTRUCTW = SHFILEOPSTRUCTW*;

extern "C" {

// The desktop's name for the type of the file or folder `path`, in the user's language. Only SHGFI_TYPENAME
// is offered: icons are those of platform/shell_icons.h. Returns 0 when there is no such object, or its type
// is unknown; `info` is then unchanged.
DWORD_PTR WINAPI SHGetFileInfoA(LPCSTR path, DWORD attributes, SHFILEINFOA* info, UINT infoSize, UINT flags);

// Opens a file or folder, or an address ("http://", "https://", "mailto:"), with the desktop's program for
// it; "shrpubw", with an owner, is the system's wizard for new shares (platform/presenters.h).
// `operation` is "open" or null; `parameters` must be null. Returns more than 32 on success, else an error
// code below 31, or SE_ERR_NOASSOC for any other error, which is then the last error. On Linux it waits up to
// a second for the desktop's refusal.
HINSTANCE WINAPI ShellExecuteA(HWND owner, LPCSTR operation, LPCSTR file, LPCSTR parameters, LPCSTR directory,
                               int showCommand);

// Shows the properties of the object at `name`, a full path; `type` is SHOP_FILEPATH and `page` null. FALSE
// when there is no such object. On Linux the sheet is that of platform/presenters.h, and the call
// returns when it has been closed.
BOOL WINAPI SHObjectProperties(HWND owner, DWORD type, LPCWSTR name, LPCWSTR page);

// Runs a command line. On Linux the one command is the help viewer: "hh ", the help file, "::/" and a page
// (docs/platform.md). Returns more than 31 when it was started, else an error code up to 31.
UINT WINAPI WinExec(LPCSTR commandLine, UINT showCommand);

// Copies, moves, renames or deletes files and folders with their contents; the target of a link is never
// touched. platform/file_operation_presenter.h shows the progress and asks what there is to ask, failures
// included. Details for Linux: docs/platform.md.
//
// `pFrom` is a list of paths, each with its NUL, and one more NUL after the last. `pTo` is one path and two
// NULs: the folder into which is copied or moved, or the new name, in the same folder, of the one object that
// is renamed. FOF_ALLOWUNDO is the only flag: what is deleted goes to the trash. `hNameMappings` is not
// read.
//
// Returns 0 when everything was done, also when the user skipped something or cancelled, which sets
// `fAnyOperationsAborted`. Otherwise the error code of the first failure.
int WINAPI SHFileOperationA(LPSHFILEOPSTRUCTA operation);
int WINAPI SHFileOperationW(LPSHFILEOPSTRUCTW operation);

}  // extern "C"

#endif
