// The program's resources where no system service hands them out.
#pragma once

#include <cstddef>
#include <span>

namespace permora {

// The compiled resource file (.res) as the resource compiler writes it: entries of header and data, each
// starting at a multiple of four bytes from the beginning, which itself lies at a multiple of eight. The
// bytes are read-only and live as long as the process. See "RESOURCEHEADER" and "Resource File Formats" in
// the Windows SDK's documentation.
std::span<const std::byte> EmbeddedResources();

}  // namespace permora
