// Common to all network management services: their result type, their buffers, their error codes.
// Numbers: Microsoft Learn, "Network Management Error Codes". Codes of other ranges are system error codes.
#pragma once

#include "platform/api/base.h"

#ifdef _WIN32

#include <lm.h>

#else

using NET_API_STATUS = DWORD;
inline constexpr NET_API_STATUS NERR_Success = 0;
inline constexpr NET_API_STATUS NERR_UnknownDevDir = 2116;
inline constexpr NET_API_STATUS NERR_DuplicateShare = 2118;
inline constexpr NET_API_STATUS NERR_InvalidMaxUsers = 2122;
inline constexpr NET_API_STATUS NERR_InternalError = 2140;
inline constexpr NET_API_STATUS NERR_NetNameNotFound = 2310;

// As the preferred length: everything at once.
inline constexpr DWORD MAX_PREFERRED_LENGTH = 0xFFFFFFFF;

extern "C" {

// Frees a buffer of a network management service; null is allowed.
NET_API_STATUS WINAPI NetApiBufferFree(LPVOID buffer);

}  // extern "C"

#endif
