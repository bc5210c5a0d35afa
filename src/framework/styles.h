// Window and control styles, show commands, standard ids and virtual keys, with the system's numbers.
// Source: the SDK's documentation of window styles, dialog box styles and the control's own styles.
#pragma once

#include "platform/api/base.h"

#ifdef _WIN32
#include <commctrl.h>
#else

// clang-format off
inline constexpr DWORD WS_POPUP       = 0x80000000;
inline constexpr DWORD WS_CHILD       = 0x40000000;
inline constexpr DWORD WS_VISIBLE     = 0x10000000;
inline constexpr DWORD WS_DISABLED    = 0x08000000;
inline constexpr DWORD WS_CAPTION     = 0x00C00000;
inline constexpr DWORD WS_BORDER      = 0x00800000;
inline constexpr DWORD WS_VSCROLL     = 0x00200000;
inline constexpr DWORD WS_SYSMENU     = 0x00080000;
inline constexpr DWORD WS_THICKFRAME  = 0x00040000;
inline constexpr DWORD WS_GROUP       = 0x00020000;
inline constexpr DWORD WS_TABSTOP     = 0x00010000;

inline constexpr DWORD BS_TYPEMASK    = 0x0000000F;
inline constexpr DWORD BS_PUSHBUTTON  = 0x00000000;
inline constexpr DWORD BS_DEFPUSHBUTTON = 0x00000001;
inline constexpr DWORD BS_CHECKBOX    = 0x00000002;
inline constexpr DWORD BS_AUTOCHECKBOX = 0x00000003;
inline constexpr DWORD BS_RADIOBUTTON = 0x00000004;
inline constexpr DWORD BS_GROUPBOX    = 0x00000007;
inline constexpr DWORD BS_AUTORADIOBUTTON = 0x00000009;
inline constexpr DWORD BS_OWNERDRAW   = 0x0000000B;
inline constexpr DWORD BS_MULTILINE   = 0x00002000;

inline constexpr DWORD SS_TYPEMASK    = 0x0000001F;
inline constexpr DWORD SS_CENTER      = 0x00000001;
inline constexpr DWORD SS_RIGHT       = 0x00000002;
inline constexpr DWORD SS_ICON        = 0x00000003;
inline constexpr DWORD SS_LEFTNOWORDWRAP = 0x0000000C;
inline constexpr DWORD SS_BITMAP      = 0x0000000E;
inline constexpr DWORD SS_ETCHEDFRAME = 0x00000012;
inline constexpr DWORD SS_NOPREFIX    = 0x00000080;
inline constexpr DWORD SS_NOTIFY      = 0x00000100;

inline constexpr DWORD ES_READONLY    = 0x00000800;

inline constexpr DWORD PBS_MARQUEE    = 0x00000008;

inline constexpr int SW_HIDE          = 0;
// clang-format on

#endif
