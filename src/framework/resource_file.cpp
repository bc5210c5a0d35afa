#include "framework/resource_file.h"

#include <algorithm>

#include "framework/resource_reader.h"
#include "resources/embedded_resources.h"

namespace permora {

std::optional<std::vector<ResourceEntry>> ReadResourceFile(std::span<const std::byte> file) {
    constexpr std::size_t kAlignment = 4;
    std::vector<ResourceEntry> entries;
    ResourceReader reader(file);
    while (!reader.AtEnd()) {
        const std::size_t start = reader.Position();
        const std::uint32_t dataSize = reader.TakeU32();
        const std::uint32_t headerSize = reader.TakeU32();
        const auto type = reader.TakeNumberOrText();
        const auto name = reader.TakeNumberOrText();
        const std::size_t read = reader.Position() - start;
        if (reader.Failed() || headerSize < read) return std::nullopt;
        reader.Skip(headerSize - read);  // version, flags, language
        const auto data = reader.TakeBytes(dataSize);
        if (reader.Failed()) return std::nullopt;
        reader.Align(kAlignment);
        // The empty entry at the beginning, which distinguishes the format from an older one, has the type 0.
        if (type.isNumber && name.isNumber && type.number != 0)
            entries.push_back({type.number, name.number, data});
    }
    return entries;
}

std::span<const std::byte> FindProgramResource(ResourceType type, unsigned int id) {
    // The resources are part of the program. A damaged file would be a fault of the build, and has no
    // resources at all.
    static const std::vector<ResourceEntry> kEntries =
        ReadResourceFile(EmbeddedResources()).value_or(std::vector<ResourceEntry>());
    const auto found = std::ranges::find_if(kEntries, [type, id](const ResourceEntry& entry) {
        return entry.type == static_cast<std::uint16_t>(type) && entry.id == id;
    });
    return found != kEntries.end() ? found->data : std::span<const std::byte>();
}

}  // namespace permora
