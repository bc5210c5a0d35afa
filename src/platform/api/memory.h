// The local heap and private heaps.
#pragma once

#include "platform/api/base.h"

#ifndef _WIN32

inline constexpr UINT LMEM_FIXED = 0x0000;
inline constexpr UINT LMEM_ZEROINIT = 0x0040;
inline constexpr UINT LPTR = LMEM_FIXED | LMEM_ZEROINIT;

inline constexpr DWORD HEAP_ZERO_MEMORY = 0x00000008;

extern "C" {

// A fixed block of `bytes` bytes, aligned for any type; null with ERROR_NOT_ENOUGH_MEMORY when there is no
// memory. The caller frees it with LocalFree. A size of 0 gives a valid block that must be freed too.
HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T bytes);
// Frees a block of LocalAlloc (or of a service that says so). Null is allowed. Always succeeds and returns
// null.
HLOCAL WINAPI LocalFree(HLOCAL block);

// A private heap, destroyed with all its blocks at once by HeapDestroy. `initialSize` and `maximumSize` in
// bytes; a maximum of 0 lets the heap grow without limit.
HANDLE WINAPI HeapCreate(DWORD options, SIZE_T initialSize, SIZE_T maximumSize);
// A block of the heap, or null (last error unchanged, as on Windows) when there is no memory.
LPVOID WINAPI HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes);
BOOL WINAPI HeapDestroy(HANDLE heap);

}  // extern "C"

#endif
