// The system's version and the program's command line.
#pragma once

#include "platform/api/base.h"

#ifndef _WIN32

struct OSVERSIONINFOA {
    DWORD dwOSVersionInfoSize;  // set by the caller: sizeof(OSVERSIONINFOA)
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char szCSDVersion[128];
};

inline constexpr DWORD VER_PLATFORM_WIN32_NT = 2;

extern "C" {

// 10.0 on Linux: the version of Windows whose services are implemented.
BOOL WINAPI GetVersionExA(OSVERSIONINFOA* version);

// The path of the program (`module` must be null, no other is known here): `path` gets it with its NUL. Its
// length without that; `size` with ERROR_INSUFFICIENT_BUFFER when it was cut, 0 on failure.
DWORD WINAPI GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size);

// The path of the program and then its arguments, each in double quotes and separated by blanks. On Linux
// every argument that does not begin with "-" is taken for a path as the host writes it and appears with its
// drive letter, relative to the current directory at the first call. The text belongs to the system.
LPSTR WINAPI GetCommandLineA();

}  // extern "C"

#endif
