// Lists the contents of a folder.
#pragma once

#include "platform/api/base.h"
#include "platform/api/time.h"

#ifndef _WIN32

struct WIN32_FIND_DATAA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;  // always 0: not read from the host
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;  // in bytes; 0 unless a file
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    // The bare name. The SDK has 260 bytes here; a host name has up to 1024 (FUSE), and each of them can be
    // shown as three (docs/platform.md).
    char cFileName[3 * 1024 + 4];
    char cAlternateFileName[14];  // empty: no object has a second, short name here
};

extern "C" {

// Starts a search and hands out the first entry. The last component of `pattern` is "*" (everything in the
// folder before it, in the order of the file system, after "." and "..", which the root of a drive lacks) or
// the name of one object; others with wildcards are ERROR_INVALID_NAME. INVALID_HANDLE_VALUE on failure:
// ERROR_FILE_NOT_FOUND when there is no such object, ERROR_PATH_NOT_FOUND without the folder,
// ERROR_NO_MORE_FILES for the root of a drive with nothing in it. The caller closes the search with
// FindClose. Of an object that this process may not examine, only the name and kind are filled in.
HANDLE WINAPI FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA* data);
// ERROR_NO_MORE_FILES at the end; any other error ends the search too. What was deleted in the middle is
// passed over.
BOOL WINAPI FindNextFileA(HANDLE search, WIN32_FIND_DATAA* data);
BOOL WINAPI FindClose(HANDLE search);

}  // extern "C"

#endif
