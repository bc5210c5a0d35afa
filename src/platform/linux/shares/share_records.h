// The structures in which the services hand shares out.
#pragma once

#include <span>

#include "platform/linux/shares/share_provider.h"

namespace permora::host {

// Records of `shares`, of level 1, 2 or 502, in one block of the local heap. Null when there is no memory.
LPBYTE MakeShareRecords(std::span<const Share> shares, DWORD level);

}  // namespace permora::host
