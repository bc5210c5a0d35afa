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
// the caller closes, tells nothing of the thread and does not keep it. Null with the last error set
// (ERROR_NOT_ENOUGH_MEMORY) when there is no thread.
//
// `stackSize` is what is set aside at once, in bytes; the stack grows beyond it, to the same size whatever is
// asked. Processes do not hand handles down here, so `attributes` (which may be null) are not looked at. No
// `flags` are known and `threadId` must be null: ERROR_INVALID_PARAMETER.
HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize, LPTHREAD_START_ROUTINE start,
                           LPVOID parameter, DWORD flags, LPDWORD threadId);

// ERROR_INVALID_HANDLE for what is no open handle, null included.
BOOL WINAPI CloseHandle(HANDLE handle);

}  // extern "C"

#endif
