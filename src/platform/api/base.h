// Basic types of the system's interface, the last-error value and process end.
//
// The headers of this folder declare exactly the system services that Permora calls, under the system's own
// names and with its types and contracts. On Windows they include the SDK; elsewhere the declarations below
// stand in for it and platform/linux implements them. sdk_agreement.cpp proves that both sides agree.
#pragma once

#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#else

#include <cstddef>
#include <cstdint>

#define WINAPI

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using ULONG = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using UINT = unsigned int;
using WCHAR = char16_t;  // UTF-16, as on Windows; wchar_t has four bytes here
using SIZE_T = std::size_t;

using LPVOID = void*;
using LPCVOID = const void*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPBOOL = BOOL*;
using LPDWORD = DWORD*;
using LPBYTE = BYTE*;
using DWORD_PTR = std::uintptr_t;
using PDWORD_PTR = DWORD_PTR*;
using PULONG = ULONG*;
using HANDLE = void*;
using HLOCAL = void*;

// NOLINTBEGIN(bugprone-reserved-identifier): the SDK's own tags
struct HWND__;
using HWND = HWND__*;
struct HINSTANCE__;
using HMODULE = HINSTANCE__*;
// NOLINTEND(bugprone-reserved-identifier)

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

// The handle that services return on failure.
inline void* const INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1});

union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
};
using PULARGE_INTEGER = ULARGE_INTEGER*;

union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
};
using PLARGE_INTEGER = LARGE_INTEGER*;

extern "C" {

// The calling thread's last error code. Functions that report through it leave it alone when they succeed.
DWORD WINAPI GetLastError();
void WINAPI SetLastError(DWORD code);

// Ends the process at once with `code`: buffered output is written, no destructor or exit handler runs.
[[noreturn]] void WINAPI ExitProcess(UINT code);

}  // extern "C"

#endif
