#include "framework/picture_decoder.h"

#include <algorithm>
#include <array>

#include "framework/resource_reader.h"

namespace permora {
namespace {

// Larger than any picture of a user interface; keeps damaged sizes from taking all memory.
constexpr int kLargestSide = 4096;
constexpr std::size_t kChannels = 4;  // blue, green, red, alpha
constexpr std::size_t kAlpha = 3;
constexpr std::uint8_t kOpaque = 0xFF;
constexpr std::uint32_t kMostColours = 256;  // of a palette

bool IsPng(std::span<const std::byte> data) {
    constexpr std::array<std::byte, 4> kSignature{std::byte{0x89}, std::byte{'P'}, std::byte{'N'},
                                                  std::byte{'G'}};
    return data.size() >= kSignature.size() && std::equal(kSignature.begin(), kSignature.end(), data.begin());
}

struct BitmapHeader {
    Size size;
    bool isBottomUp = true;
    unsigned int bitsPerPixel = 0;
    std::span<const std::byte> palette;  // blue, green, red and nothing, for each colour
};

bool IsKnownDepth(unsigned int bitsPerPixel) {
    constexpr std::array<unsigned int, 5> kDepths{1, 4, 8, 24, 32};
    return std::ranges::find(kDepths, bitsPerPixel) != kDepths.end();
}

// Reads the header and the palette, and leaves `reader` at the pixels.
std::optional<BitmapHeader> TakeHeader(ResourceReader& reader, PictureKind kind) {
    constexpr std::uint32_t kHeaderSize = 40;
    const std::uint32_t headerSize = reader.TakeU32();
    const auto width = static_cast<std::int32_t>(reader.TakeU32());
    auto height = static_cast<std::int32_t>(reader.TakeU32());
    reader.Skip(2);  // planes
    BitmapHeader header;
    header.bitsPerPixel = reader.TakeU16();
    const std::uint32_t compression = reader.TakeU32();
    reader.Skip(12);  // size and resolution
    std::uint32_t colours = reader.TakeU32();
    reader.Skip(4);  // important colours
    if (reader.Failed() || headerSize < kHeaderSize || compression != 0) return std::nullopt;
    reader.Skip(headerSize - kHeaderSize);

    if (!IsKnownDepth(header.bitsPerPixel)) return std::nullopt;
    if (colours == 0 && header.bitsPerPixel <= 8) colours = 1U << header.bitsPerPixel;
    if (colours > kMostColours) return std::nullopt;
    header.palette = reader.TakeBytes(colours * kChannels);

    header.isBottomUp = height > 0;
    if (height < -2 * kLargestSide || height > 2 * kLargestSide) return std::nullopt;
    height = std::abs(height);
    if (kind == PictureKind::kIcon) height /= 2;
    if (width <= 0 || width > kLargestSide || height <= 0 || height > kLargestSide) return std::nullopt;
    header.size = {width, height};
    return header;
}

// The bytes of one row, which is padded to a multiple of four.
std::size_t RowSize(int width, unsigned int bitsPerPixel) {
    return (static_cast<std::size_t>(width) * bitsPerPixel + 31U) / 32U * 4U;
}

// Where a row of the file goes in the picture, as an offset into its pixels.
std::size_t RowOffset(const BitmapHeader& header, int row) {
    const int shown = header.isBottomUp ? header.size.cy - 1 - row : row;
    return static_cast<std::size_t>(shown) * static_cast<std::size_t>(header.size.cx) * kChannels;
}

// The channels of the pixel at `x`, as far as `row` has them; black where a palette ends early.
std::span<const std::byte> PixelAt(const BitmapHeader& header, std::span<const std::byte> row,
                                   std::size_t x) {
    const std::size_t bits = header.bitsPerPixel;
    if (bits > 8) return row.subspan(x * bits / 8, bits / 8);
    const std::size_t bit = x * bits;
    const auto shift = static_cast<unsigned int>(8 - bits - bit % 8);
    const unsigned int mask = (1U << header.bitsPerPixel) - 1U;
    const std::size_t index = (std::to_integer<unsigned int>(row[bit / 8]) >> shift) & mask;
    constexpr std::size_t kColourBytes = 3;
    if ((index + 1) * kChannels > header.palette.size()) return {};
    return header.palette.subspan(index * kChannels, kColourBytes);
}

void TakeColours(ResourceReader& reader, const BitmapHeader& header, PictureData& picture) {
    for (int row = 0; row < header.size.cy; ++row) {
        const auto source = reader.TakeBytes(RowSize(header.size.cx, header.bitsPerPixel));
        if (reader.Failed()) return;
        std::size_t target = RowOffset(header, row);
        for (std::size_t x = 0; x < static_cast<std::size_t>(header.size.cx); ++x, target += kChannels) {
            const auto pixel = PixelAt(header, source, x);
            picture.pixels[target + kAlpha] = kOpaque;
            std::ranges::transform(pixel, picture.pixels.begin() + static_cast<std::ptrdiff_t>(target),
                                   [](std::byte channel) { return std::to_integer<std::uint8_t>(channel); });
        }
    }
}

// Icons without an alpha channel say in a mask which pixels are clear.
void ApplyMask(ResourceReader& reader, const BitmapHeader& header, PictureData& picture) {
    for (int row = 0; row < header.size.cy; ++row) {
        const auto mask = reader.TakeBytes(RowSize(header.size.cx, 1));
        if (reader.Failed()) return;
        const std::size_t target = RowOffset(header, row);
        for (std::size_t x = 0; x < static_cast<std::size_t>(header.size.cx); ++x) {
            const bool isClear = ((std::to_integer<unsigned int>(mask[x / 8]) >> (7U - x % 8U)) & 1U) != 0;
            picture.pixels[target + x * kChannels + kAlpha] = isClear ? std::uint8_t{0} : kOpaque;
        }
    }
}

bool HasAlpha(const PictureData& picture) {
    for (std::size_t i = kAlpha; i < picture.pixels.size(); i += kChannels) {
        if (picture.pixels[i] != 0) return true;
    }
    return false;
}

void MakeOpaque(PictureData& picture) {
    for (std::size_t i = kAlpha; i < picture.pixels.size(); i += kChannels)
        picture.pixels[i] = kOpaque;
}

}  // namespace

std::optional<PictureData> DecodePicture(std::span<const std::byte> data, PictureKind kind) {
    PictureData picture;
    if (kind == PictureKind::kIcon && IsPng(data)) {
        picture.file = data;
        return picture;
    }
    ResourceReader reader(data);
    const auto header = TakeHeader(reader, kind);
    if (!header) return std::nullopt;
    picture.size = header->size;
    // Checked before the memory is taken, so that a damaged header costs nothing.
    const std::size_t colourBytes =
        RowSize(header->size.cx, header->bitsPerPixel) * static_cast<std::size_t>(header->size.cy);
    if (colourBytes > data.size()) return std::nullopt;
    picture.pixels.resize(static_cast<std::size_t>(header->size.cx) *
                          static_cast<std::size_t>(header->size.cy) * kChannels);
    TakeColours(reader, *header, picture);
    const bool needsMask = kind == PictureKind::kIcon && (header->bitsPerPixel < 32 || !HasAlpha(picture));
    if (needsMask) {
        ApplyMask(reader, *header, picture);
    } else if (!HasAlpha(picture)) {
        MakeOpaque(picture);
    }
    if (reader.Failed()) return std::nullopt;
    return picture;
}

}  // namespace permora
