// System libraries whose functions are looked up by name at run time.
#pragma once

#include "platform/api/base.h"

#ifndef _WIN32

using FARPROC = std::intptr_t(WINAPI*)();

inline constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 0x00000002;

extern "C" {

// The system libraries are known by their names ("advapi32.dll", in any letter case, with or without ".dll").
// An unknown name fails with ERROR_MOD_NOT_FOUND. Each load needs its FreeLibrary.
HMODULE WINAPI LoadLibraryA(LPCSTR name);
HMODULE WINAPI LoadLibraryExA(LPCSTR name, HANDLE reserved, DWORD flags);
BOOL WINAPI FreeLibrary(HMODULE library);
// A function of the library by its exact name; null with ERROR_PROC_NOT_FOUND.
FARPROC WINAPI GetProcAddress(HMODULE library, LPCSTR name);

}  // extern "C"

#endif
