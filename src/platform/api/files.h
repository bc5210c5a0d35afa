// Files, folders and volumes.
//
// Paths are 8-bit texts in the ANSI code page (UTF-8 on Linux): C:\a\b, \a (root of the current drive), or
// relative to the current directory; D:a is relative to D's root unless D is the current drive. Forward
// slashes work too. How Linux names and drives appear in them: docs/platform.md. The last component of a path
// is never followed when it is a link: every service works on the link itself. A separator after it asks for
// what is inside, so then it must be a folder or a link that leads to one.
#pragma once

#include "platform/api/base.h"
#include "platform/api/threads.h"
#include "platform/api/time.h"

#ifndef _WIN32

inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
// clang-format off
inline constexpr DWORD FILE_ATTRIBUTE_READONLY            = 0x00000001;
inline constexpr DWORD FILE_ATTRIBUTE_HIDDEN              = 0x00000002;
inline constexpr DWORD FILE_ATTRIBUTE_SYSTEM              = 0x00000004;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY           = 0x00000010;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE             = 0x00000020;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL              = 0x00000080;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY           = 0x00000100;
inline constexpr DWORD FILE_ATTRIBUTE_SPARSE_FILE         = 0x00000200;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT       = 0x00000400;
inline constexpr DWORD FILE_ATTRIBUTE_COMPRESSED          = 0x00000800;
inline constexpr DWORD FILE_ATTRIBUTE_OFFLINE             = 0x00001000;
inline constexpr DWORD FILE_ATTRIBUTE_NOT_CONTENT_INDEXED = 0x00002000;
inline constexpr DWORD FILE_ATTRIBUTE_ENCRYPTED           = 0x00004000;

inline constexpr DWORD FILE_CASE_SENSITIVE_SEARCH = 0x00000001;
inline constexpr DWORD FILE_CASE_PRESERVED_NAMES  = 0x00000002;
inline constexpr DWORD FILE_UNICODE_ON_DISK       = 0x00000004;
inline constexpr DWORD FILE_PERSISTENT_ACLS       = 0x00000008;
inline constexpr DWORD FILE_READ_ONLY_VOLUME      = 0x00080000;

inline constexpr DWORD FILE_BEGIN = 0;

inline constexpr UINT DRIVE_UNKNOWN     = 0;
inline constexpr UINT DRIVE_NO_ROOT_DIR = 1;
inline constexpr UINT DRIVE_REMOVABLE   = 2;
inline constexpr UINT DRIVE_FIXED       = 3;
inline constexpr UINT DRIVE_REMOTE      = 4;
inline constexpr UINT DRIVE_CDROM       = 5;
inline constexpr UINT DRIVE_RAMDISK     = 6;
// clang-format on

enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard };

struct WIN32_FILE_ATTRIBUTE_DATA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;  // 0 where the volume does not keep it
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;  // in bytes; 0 unless a file
    DWORD nFileSizeLow;
};

struct OVERLAPPED;
using LPOVERLAPPED = OVERLAPPED*;

extern "C" {

// FILE_ATTRIBUTE_ flags of the object itself, or INVALID_FILE_ATTRIBUTES with the last error set.
DWORD WINAPI GetFileAttributesA(LPCSTR path);
// Fills the WIN32_FILE_ATTRIBUTE_DATA at `data` with the facts of the object itself. `level` is
// GetFileExInfoStandard.
BOOL WINAPI GetFileAttributesExA(LPCSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data);
// Sets the flags that can be set (read-only, hidden, system, archive, temporary, offline, not indexed) and
// leaves the others. ERROR_INVALID_PARAMETER for a temporary folder, ERROR_NOT_SUPPORTED where the object
// cannot hold any.
BOOL WINAPI SetFileAttributesA(LPCSTR path, DWORD attributes);

// Makes a folder, which inherits its access list from its parent; a separator at the end of the
// path does not matter. `attributes` must be null (ERROR_INVALID_PARAMETER). ERROR_ALREADY_EXISTS when there
// is an object of this name, ERROR_PATH_NOT_FOUND when the parent folder is missing, ERROR_INVALID_NAME
// for a name that Windows does not allow. A failure leaves no folder.
BOOL WINAPI CreateDirectoryA(LPCSTR path, LPSECURITY_ATTRIBUTES attributes);

// The current directory as a path with drive letter. Returns its length without the NUL when `size` (in
// bytes, NUL included) is large enough, else the size needed with the NUL; 0 on failure.
DWORD WINAPI GetCurrentDirectoryA(DWORD size, LPSTR buffer);
// A link to a folder is refused (ERROR_CANT_RESOLVE_FILENAME) unless a separator follows it, so that a walk
// that enters the names it finds never leaves its tree.
BOOL WINAPI SetCurrentDirectoryA(LPCSTR path);

// `path` made absolute without looking at the disk: "." and ".." are resolved in the text. Sizes as for
// GetCurrentDirectoryA; `filePart` may be null.
DWORD WINAPI GetFullPathNameA(LPCSTR path, DWORD size, LPSTR buffer, LPSTR* filePart);

// Facts about the volume whose root is `root` ("C:\"), or of the current directory's volume when it is null.
// Every output may be null; sizes in bytes with the NUL. ERROR_INVALID_NAME when `root` is not the root of a
// drive, ERROR_INSUFFICIENT_BUFFER when a text does not fit.
BOOL WINAPI GetVolumeInformationA(LPCSTR root, LPSTR volumeName, DWORD volumeNameSize, LPDWORD serialNumber,
                                  LPDWORD maximumComponentLength, LPDWORD fileSystemFlags,
                                  LPSTR fileSystemName, DWORD fileSystemNameSize);

// Bytes on the volume that holds the folder `path` (null: the current directory): free for this process,
// total, and free altogether. Every output may be null.
BOOL WINAPI GetDiskFreeSpaceExA(LPCSTR path, PULARGE_INTEGER availableToCaller, PULARGE_INTEGER total,
                                PULARGE_INTEGER free);

// The roots of all drives ("C:\", each with its NUL) in letter order, and a NUL after the last. Returns the
// length without that last NUL when `size` bytes are enough, else the size needed with it.
DWORD WINAPI GetLogicalDriveStringsA(DWORD size, LPSTR buffer);
// DRIVE_ type of a root path ("C:\"); null means the current directory's drive.
UINT WINAPI GetDriveTypeA(LPCSTR root);

// Of a file that platform/folder_files.h opened; one thread at a time. `size` in bytes.
BOOL WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size);
// Sets where WriteFile continues, in bytes from the file's beginning: `method` must be FILE_BEGIN
// (ERROR_INVALID_PARAMETER). Writes all buffered bytes first. `position`, which may be null, receives the new
// position.
BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD method);
// Writes at the current position, which begins at the start of the file; the file grows as needed. Bytes are
// buffered, so a later call may report the error: at the latest the one that reaches the old end of the file.
// FlushFileBuffers reports the errors of the disk.
// `overlapped` must be null (ERROR_INVALID_PARAMETER).
BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD written, LPOVERLAPPED overlapped);
// Returns when all written bytes are on the disk, or an error. Closing the file does not write: bytes that
// were not flushed are lost.
BOOL WINAPI FlushFileBuffers(HANDLE file);

}  // extern "C"

#endif
