// What the program's exit tells a script.
#pragma once

namespace permora {

inline constexpr int kExitDone = 0;
inline constexpr int kExitSomeFailed = 1;  // and every other was done, unless the program had to break off
inline constexpr int kExitUsage = 2;       // nothing was touched

}  // namespace permora
