// Threads, and the closing of handles.
#pragma once

#include "platform/api/base.h"

#ifndef _WIN32

struct SECURITY_ATTRIBUTES {
    DWORD nLength;  // of this structure
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);

extern "C" {

// Runs `start` with `parameter` on a new thread at once; the thread ends when it returns. The handle, which
// the caller closes, has no other use and does not keep the thread alive. Null with the last error set
// (ERROR_NOT_ENOUGH_MEMORY) when there is no thread.
//
// `stackSize` is the initial size in bytes; the stack may grow to the system's usual limit. Handles are not
// inherited by other processes here, so `attributes` (which may be null) are ignored. `flags` must be 0 and
// `threadId` null: ERROR_INVALID_PARAMETER.
HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize, LPTHREAD_START_ROUTINE start,
                           LPVOID parameter, DWORD flags, LPDWORD threadId);

// ERROR_INVALID_HANDLE unless it is an open handle.
BOOL WINAPI CloseHandle(HANDLE handle);

}  // extern "C"

#endif
