// The extended attribute user.DOSATTRIB, in which Samba keeps the file attributes of files and folders.
//
// Form, as found in what Samba 4.17 writes and accepts (little endian): a NUL-terminated text (empty, or the
// attributes as "0x22") padded to two bytes; the version twice, two bytes each, padded to four; which of the
// fields are valid, 4 bytes; the attributes, 4 bytes; then times and sizes, more or fewer by version. Old
// versions wrote the text alone.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace permora::host {

struct DosAttribute {
    std::uint16_t version = 5;         // 3 to 5
    std::uint32_t validFields = 0x1;   // bit 0: the attributes
    std::uint32_t attributes = 0;      // FILE_ATTRIBUTE_ flags; also bits that Permora does not know
    std::vector<std::uint8_t> others;  // the fields after the attributes, as they stand on disk

    bool HasAttributes() const { return (validFields & 0x1) != 0; }

    // Nothing when the bytes are in none of these forms.
    static std::optional<DosAttribute> FromBytes(std::span<const std::uint8_t> bytes);
    // Without the text, as newer versions of Samba write it. Fields that `others` lacks are zero.
    std::vector<std::uint8_t> ToBytes() const;
};

}  // namespace permora::host
