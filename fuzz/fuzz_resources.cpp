// Resource files: whatever their bytes say, what is read lies within them.
#include <cstddef>
#include <cstdint>
#include <span>

#include "framework/resource_file.h"
#include "framework/resource_templates.h"
#include "fuzz/require.h"

namespace permora {
namespace {

void CheckEntry(const ResourceEntry& entry) {
    const std::span<const std::byte> data = entry.data;
    switch (static_cast<ResourceType>(entry.type)) {
        case ResourceType::kBitmap:
        case ResourceType::kIcon:
            return;  // the toolkit's readers take them
        case ResourceType::kMenu:
            ParseMenuTemplate(data);
            return;
        case ResourceType::kDialog:
            ParseDialogTemplate(data);
            return;
        case ResourceType::kStringTable:
            for (unsigned int i = 0; i < 16; ++i)
                ParseStringBlock(data, i);
            return;
        case ResourceType::kAccelerators:
            ParseAccelerators(data);
            return;
        case ResourceType::kIconGroup:
            ParseIconGroup(data);
            return;
        case ResourceType::kToolbar:
            ParseToolbarTemplate(data);
            return;
        case ResourceType::kGrowingControls:
            ParseGrowingControls(data);
            return;
    }
}

}  // namespace
}  // namespace permora

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora;
    const std::span<const std::byte> file = std::as_bytes(std::span(data, size));
    const auto entries = ReadResourceFile(file);
    if (!entries) return 0;
    for (const ResourceEntry& entry : *entries) {
        Require(entry.data.empty() || (entry.data.data() >= file.data() &&
                                       entry.data.data() + entry.data.size() <= file.data() + file.size()),
                "an entry lies in its file");
        CheckEntry(entry);
    }
    return 0;
}
