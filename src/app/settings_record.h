// The program's settings: one record of fixed layout, kept scrambled in the registry.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <type_traits>

#include "framework/geometry.h"

namespace permora {

// What the settings dialog edits as a unit. Flags are 0 or 1.
struct SettingsBlock {
    // 0 icons, 1 small icons, 2 list, 3 details; any other is kept but means nothing
    std::uint32_t viewMode = 0;
    std::uint8_t useOwnIcons = 1;
    std::uint8_t showToolTips = 1;
    std::uint8_t askBeforeSecureDeletion = 1;
    std::uint8_t showIntermediateInfo = 1;  // the notice before a sheet opens on several items
    std::uint8_t explorerMenu = 1;          // the Explorer's menu for folders has an entry for this program
    std::array<std::uint8_t, 3> padding{};

    friend bool operator==(const SettingsBlock&, const SettingsBlock&) = default;
};

inline constexpr std::int32_t kShowNormal = 1;
inline constexpr std::int32_t kShowMaximised = 3;

struct ProgramSettings {
    Rect windowRect;  // of the frame when not maximised, in screen coordinates
    std::int32_t showCommand = kShowNormal;
    std::array<std::uint8_t, 12> reserved{};  // written back as read
    SettingsBlock block;
    std::array<char, 260> programFolder{};  // NUL-terminated

    friend bool operator==(const ProgramSettings&, const ProgramSettings&) = default;
};

// The layout in memory is the stored one, before scrambling.
inline constexpr std::size_t kSettingsSize = 304;
static_assert(std::endian::native == std::endian::little && std::is_trivially_copyable_v<ProgramSettings>);
static_assert(sizeof(ProgramSettings) == kSettingsSize && sizeof(SettingsBlock) == 12);
static_assert(offsetof(ProgramSettings, showCommand) == 16 && offsetof(ProgramSettings, reserved) == 20);
static_assert(offsetof(ProgramSettings, block) == 32 && offsetof(ProgramSettings, programFolder) == 44);
static_assert(offsetof(SettingsBlock, useOwnIcons) == 4 && offsetof(SettingsBlock, padding) == 9);

using StoredSettings = std::array<std::uint8_t, kSettingsSize>;

StoredSettings ScrambleSettings(const ProgramSettings& record);
// The record in bytes that anyone may have written. Nothing when the length is another, the show command is
// none of the two, or the folder has no end. A flag that is not 0 is 1. A window rectangle may be any: the
// frame judges it (IsUsableWindow).
std::optional<ProgramSettings> UnscrambleSettings(std::span<const std::uint8_t> stored);

// False: no window can be meant, since the rectangle is empty, inverted, or larger than any desktop.
bool IsUsableWindow(const Rect& rect);

// `folder` with its end; false, with the record unchanged, when it is too long for it.
bool SetProgramFolder(ProgramSettings& record, const std::string& folder);
std::string ProgramFolder(const ProgramSettings& record);

}  // namespace permora
