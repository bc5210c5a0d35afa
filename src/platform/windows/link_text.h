// What stands in the reparse points of links: [MS-FSCC] 2.1.2.4 (symbolic links) and 2.1.2.5 (mount points,
// which junctions are).
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "platform/api/base.h"

namespace permora {

struct LinkText {
    std::wstring text;        // as the kernel takes it: "\??\C:\folder"
    bool isRelative = false;  // to the folder that holds the link
};

// Reads the block of a reparse point, of which no byte is trusted. ERROR_INVALID_FUNCTION for one that is no
// link, ERROR_INVALID_REPARSE_DATA for a damaged one. `link` is replaced only on success.
DWORD ReadLinkText(std::span<const std::byte> block, LinkText& link);

}  // namespace permora
