// Resource files: whatever their bytes say, what is read lies within them.
#include <cstddef>
#include <cstdint>
#include <span>

#include "framework/picture_decoder.h"
#include "framework/resource_file.h"
#include "framework/resource_templates.h"
#include "fuzz/require.h"

namespace permora {
namespace {

void CheckPicture(std::span<const std::byte> data, PictureKind kind) {
    const auto picture = DecodePicture(data, kind);
    if (!picture || !picture->file.empty()) return;
    Require(picture->size.cx > 0 && picture->size.cy > 0, "a picture has a size");
    const std::size_t pixels =
        static_cast<std::size_t>(picture->size.cx) * static_cast<std::size_t>(picture->size.cy);
    Require(picture->pixels.size() == 4 * pixels, "a picture has all its pixels");
}

void CheckEntry(const ResourceEntry& entry) {
    const std::span<const std::byte> data = entry.data;
    switch (static_cast<ResourceType>(entry.type)) {
        case ResourceType::kBitmap:
            return CheckPicture(data, PictureKind::kBitmap);
        case ResourceType::kIcon:
            return CheckPicture(data, PictureKind::kIcon);
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
