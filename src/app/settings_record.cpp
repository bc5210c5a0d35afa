#include "app/settings_record.h"

#include <algorithm>
#include <cstring>

namespace permora {
namespace {

// Hides the values from a glance at the registry, not from readers of this code.
constexpr std::uint8_t kScramblingKey = 0xA7;

void Scramble(StoredSettings& bytes) {
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(~(byte ^ kScramblingKey));
}

// Any number but 0 is true.
void CleanFlags(SettingsBlock& block) {
    for (std::uint8_t* flag : {&block.useOwnIcons, &block.showToolTips, &block.askBeforeSecureDeletion,
                               &block.showIntermediateInfo, &block.explorerMenu})
        *flag = *flag != 0 ? 1 : 0;
}

bool IsSound(const ProgramSettings& record) {
    return (record.showCommand == kShowNormal || record.showCommand == kShowMaximised) &&
           std::ranges::find(record.programFolder, '\0') != record.programFolder.end();
}

}  // namespace

StoredSettings ScrambleSettings(const ProgramSettings& record) {
    StoredSettings bytes;
    std::memcpy(bytes.data(), &record, bytes.size());
    Scramble(bytes);
    return bytes;
}

std::optional<ProgramSettings> UnscrambleSettings(std::span<const std::uint8_t> stored) {
    if (stored.size() != kSettingsSize) return std::nullopt;
    StoredSettings bytes;
    std::ranges::copy(stored, bytes.begin());
    Scramble(bytes);  // its own inverse
    ProgramSettings record;
    std::memcpy(&record, bytes.data(), bytes.size());
    if (!IsSound(record)) return std::nullopt;
    CleanFlags(record.block);
    return record;
}

bool IsUsableWindow(const Rect& rect) {
    constexpr std::int64_t kSmallest = 50;
    constexpr std::int64_t kLargest = 32767;  // of a window's width and height on any desktop
    const std::int64_t width = std::int64_t{rect.right} - rect.left;
    const std::int64_t height = std::int64_t{rect.bottom} - rect.top;
    return width >= kSmallest && width <= kLargest && height >= kSmallest && height <= kLargest;
}

bool SetProgramFolder(ProgramSettings& record, const std::string& folder) {
    if (folder.size() >= record.programFolder.size()) return false;
    record.programFolder.fill('\0');
    std::ranges::copy(folder, record.programFolder.begin());
    return true;
}

std::string ProgramFolder(const ProgramSettings& record) {
    const auto end = std::ranges::find(record.programFolder, '\0');
    return {record.programFolder.begin(), end};
}

}  // namespace permora
