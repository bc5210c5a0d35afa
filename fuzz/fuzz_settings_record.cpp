// The settings record, from a registry that anyone may have written: what is accepted is stored again as it
// was, but for flags, which become 0 or 1.
#include <cstddef>
#include <cstdint>
#include <span>

#include "app/settings_record.h"
#include "fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora;
    auto record = UnscrambleSettings(std::span(data, size));
    if (!record) return 0;
    const StoredSettings stored = ScrambleSettings(*record);
    Require(UnscrambleSettings(stored) == record, "what is stored is read again");
    constexpr std::size_t kFirstFlag =
        offsetof(ProgramSettings, block) + offsetof(SettingsBlock, useOwnIcons);
    constexpr std::size_t kBehindFlags = offsetof(ProgramSettings, block) + offsetof(SettingsBlock, padding);
    for (std::size_t i = 0; i < size; ++i) {
        Require(stored[i] == data[i] || (i >= kFirstFlag && i < kBehindFlags),
                "what is read is stored as it was");
    }
    Require(ProgramFolder(*record).size() < record->programFolder.size(),
            "the folder ends inside the record");
    const Rect& rect = record->windowRect;
    Require(!IsUsableWindow(rect) || (rect.left < rect.right && rect.top < rect.bottom),
            "a usable window has an inside");
    Require(SetProgramFolder(*record, ProgramFolder(*record)), "a folder that was read fits");
    return 0;
}
