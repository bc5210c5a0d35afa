// Lists that the network's functions hand out in blocks.
#pragma once

#include <span>

#include "platform/api/network.h"
#include "platform/resources.h"

namespace permora {

// Asks for one block after the other: `ask` is given where the block, the numbers of its elements and of all,
// and the place to go on from are to be stored, and `take` the elements of each block. Ends with the first
// error of either.
template <typename Info, typename Ask, typename Take>
DWORD TakeListed(Ask ask, Take take) {
    DWORD_PTR resume = 0;
    NET_API_STATUS status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA) {
        Info* block = nullptr;
        DWORD count = 0;
        DWORD total = 0;
        status = ask(reinterpret_cast<LPBYTE*>(&block), &count, &total, &resume);
        const UniqueNetworkBuffer<Info> buffer(block);
        if (status != NERR_Success && status != ERROR_MORE_DATA) return status;
        const DWORD error = take(std::span<const Info>(block, block != nullptr ? count : 0));
        if (error != ERROR_SUCCESS) return error;
    }
    return ERROR_SUCCESS;
}

}  // namespace permora
