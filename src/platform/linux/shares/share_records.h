// The structures in which the services hand shares out and take them.
#pragma once

#include <cstddef>
#include <span>

#include "platform/linux/shares/share_provider.h"

namespace permora::host {

// 1, 2 and 502.
bool IsShareLevel(DWORD level);

// Records of `shares` in one block of the local heap, for at most `limit` bytes but at least one; `count`
// becomes their number. Null when there is no memory.
LPBYTE MakeShareRecords(std::span<const Share> shares, DWORD level, std::size_t limit, std::size_t& count);

// A caller's record; its texts and descriptor are the caller's own. What the level does not have is absent.
struct ShareRecord {
    LPCWSTR name = nullptr;
    DWORD type = 0;
    LPCWSTR remark = nullptr;
    struct Limits {
        DWORD permissions = 0;
        DWORD maxUses = 0;
        LPCWSTR path = nullptr;
        LPCWSTR password = nullptr;
    };
    std::optional<Limits> limits;               // levels 2 and 502
    PSECURITY_DESCRIPTOR descriptor = nullptr;  // level 502
};
// The level must be one of those above.
ShareRecord ReadShareRecord(DWORD level, const BYTE* record);

}  // namespace permora::host
