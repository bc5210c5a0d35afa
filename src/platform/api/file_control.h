// Compression and encryption of a file's contents by its volume.
//
// Paths as in files.h. No known volume on Linux does either on demand: a request for the state that the
// object already has succeeds, any other fails with ERROR_NOT_SUPPORTED and changes nothing.
#pragma once

#include "platform/api/base.h"
#include "platform/api/files.h"
#include "platform/api/threads.h"

#ifdef _WIN32

#include <winioctl.h>

#else

// clang-format off
inline constexpr DWORD OPEN_EXISTING         = 3;
inline constexpr DWORD FSCTL_SET_COMPRESSION = 0x0009C040;

inline constexpr WORD COMPRESSION_FORMAT_NONE    = 0;
inline constexpr WORD COMPRESSION_FORMAT_DEFAULT = 1;
// clang-format on

extern "C" {

// Opens an existing file for DeviceIoControl, to be closed with CloseHandle. `access` is GENERIC_READ |
// GENERIC_WRITE, `share` 0, `disposition` OPEN_EXISTING, and `security` and `likeFile` are null
// (ERROR_INVALID_PARAMETER); `flags` may hold FILE_ATTRIBUTE_ flags, which mean nothing for a file that
// exists. Nobody else may have the file open, nor open it until it is closed (ERROR_SHARING_VIOLATION), as
// FileHandle::OpenForOverwriting says. ERROR_ACCESS_DENIED for folders, devices and read-only files,
// ERROR_CANT_RESOLVE_FILENAME for links. INVALID_HANDLE_VALUE on failure.
HANDLE WINAPI CreateFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                          DWORD disposition, DWORD flags, HANDLE likeFile);

// FSCTL_SET_COMPRESSION with the COMPRESSION_FORMAT_ that `input` points to; other requests are
// ERROR_INVALID_FUNCTION. There is no output, so `returned` (if not null) becomes 0. `overlapped` must be
// null (ERROR_INVALID_PARAMETER).
BOOL WINAPI DeviceIoControl(HANDLE file, DWORD request, LPVOID input, DWORD inputSize, LPVOID output,
                            DWORD outputSize, LPDWORD returned, LPOVERLAPPED overlapped);

BOOL WINAPI EncryptFileA(LPCSTR path);
// `reserved` is 0.
BOOL WINAPI DecryptFileA(LPCSTR path, DWORD reserved);

}  // extern "C"

#endif
