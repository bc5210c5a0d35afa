// Names of the windows of file operations and of their controls, for tests and automation; buttons have the
// numbers of message boxes' (IDYES, IDNO, IDCANCEL), and "Try Again" that of IDYES.
#pragma once

namespace permora {

inline constexpr unsigned int kProgressWindowId = 0x7F00;
inline constexpr unsigned int kProgressTaskId = 0x7F01;
inline constexpr unsigned int kProgressFromId = 0x7F02;
inline constexpr unsigned int kProgressToId = 0x7F03;
inline constexpr unsigned int kProgressBarId = 0x7F04;
inline constexpr unsigned int kProgressAmountId = 0x7F05;
inline constexpr unsigned int kProgressTimeLeftId = 0x7F06;

inline constexpr unsigned int kFileQuestionWindowId = 0x7F10;
inline constexpr unsigned int kFileQuestionTextId = 0x7F11;
inline constexpr unsigned int kFileQuestionMoreId = 0x7F12;
inline constexpr unsigned int kFileQuestionForAllId = 0x7F13;
inline constexpr unsigned int kFileQuestionTargetId = 0x7F14;
inline constexpr unsigned int kFileQuestionSourceId = 0x7F15;

}  // namespace permora
