// Styles of the list view, with the system's numbers. Source: the SDK's documentation of list-view styles.
#pragma once

#include "platform/api/base.h"

#ifdef _WIN32
#include <commctrl.h>
#else

// clang-format off
inline constexpr DWORD LVS_ICON           = 0x0000;
inline constexpr DWORD LVS_REPORT         = 0x0001;
inline constexpr DWORD LVS_SMALLICON      = 0x0002;
inline constexpr DWORD LVS_LIST           = 0x0003;
inline constexpr DWORD LVS_TYPEMASK       = 0x0003;
inline constexpr DWORD LVS_SINGLESEL      = 0x0004;
inline constexpr DWORD LVS_SHOWSELALWAYS  = 0x0008;
inline constexpr DWORD LVS_NOCOLUMNHEADER = 0x4000;
inline constexpr DWORD LVS_NOSORTHEADER   = 0x8000;
// clang-format on

#endif
