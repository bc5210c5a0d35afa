// Ready-made sets of rights, which the wizard and the permission entry dialog offer by name.
#pragma once

#include <array>

#include "platform/api/security.h"

namespace permora {

// A ready-made set of rights.
struct UsableCombination {
    const char* text;
    DWORD mask;
};

// "Full control" as one right, where a mask without SYNCHRONIZE would be the single rights one by one.
inline constexpr DWORD kFullControlAsOne = FILE_ALL_ACCESS;

inline constexpr DWORD kModifyRights = 0x1301BF;
inline constexpr DWORD kReadRights = 0x120089;

// In the order in which the wizard lists them.
// clang-format off
inline constexpr std::array<UsableCombination, 7> kUsableCombinations = {{
    {"Allow all",      kFullControlAsOne},
    {"Deny all",       0},
    {"Modify",         kModifyRights},
    {"Read & execute", 0x1200A9},
    {"List folder",    0x1200A9},
    {"Read",           kReadRights},
    {"Write",          0x100116},
}};
// clang-format on

}  // namespace permora
