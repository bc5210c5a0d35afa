// Finds resources by type and number.
//
// The standard resource file (.res) is a chain of entries, each a header (sizes, type, name, flags) and its
// data, starting at multiples of four bytes. See "RESOURCEHEADER" and "Resource File Formats" in the Windows
// SDK's documentation. Every length in it is checked before it is used.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace permora {

// Resource types that the framework reads, with the system's numbers. 241 is the class library's toolbar, 257
// our own: the controls of a dialog that get higher when the user enlarges it.
enum class ResourceType : std::uint16_t {
    kBitmap = 2,
    kIcon = 3,
    kMenu = 4,
    kDialog = 5,
    kStringTable = 6,
    kAccelerators = 9,
    kIconGroup = 14,
    kToolbar = 241,
    kGrowingControls = 257,
};

struct ResourceEntry {
    std::uint16_t type = 0;
    std::uint16_t id = 0;
    std::span<const std::byte> data;
};

// The entries of a resource file whose type and name are numbers, in the file's order; nothing when the file
// is damaged. The entries point into `file`.
std::optional<std::vector<ResourceEntry>> ReadResourceFile(std::span<const std::byte> file);

// The program's own resource; empty when there is none.
std::span<const std::byte> FindProgramResource(ResourceType type, unsigned int id);

}  // namespace permora
