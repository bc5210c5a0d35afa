#include "platform/api/memory.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>

#include "platform/api/errors.h"
#include "platform/api/network.h"
#include "platform/linux/base/failure.h"

namespace {

using permora::host::Fail;

// The largest object that the C library supports.
constexpr SIZE_T kLargestBlock = static_cast<SIZE_T>(std::numeric_limits<std::ptrdiff_t>::max());

enum class Content { kUnset, kZero };

// Null only when there is no memory, also for a size of 0.
void* TakeMemory(SIZE_T bytes, Content content) {
    if (bytes > kLargestBlock) return nullptr;
    if (bytes == 0) bytes = 1;
    return content == Content::kZero ? std::calloc(1, bytes) : std::malloc(bytes);
}

// Precedes every block of a private heap and links it to the previous block, so that all can be freed.
struct alignas(std::max_align_t) BlockHeader {
    BlockHeader* next;
};

struct PrivateHeap {
    std::mutex guard;
    BlockHeader* first = nullptr;
    SIZE_T used = 0;  // bytes of all blocks, their headers not counted
    SIZE_T limit = 0;
};

}  // namespace

HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T bytes) {
    if ((flags & ~LPTR) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    void* block = TakeMemory(bytes, (flags & LMEM_ZEROINIT) != 0 ? Content::kZero : Content::kUnset);
    if (block == nullptr) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return block;
}

HLOCAL WINAPI LocalFree(HLOCAL block) {
    std::free(block);
    return nullptr;
}

NET_API_STATUS WINAPI NetApiBufferFree(LPVOID buffer) {
    LocalFree(buffer);
    return NERR_Success;
}

HANDLE WINAPI HeapCreate(DWORD options, SIZE_T initialSize, SIZE_T maximumSize) {
    if (options != 0 || (maximumSize != 0 && initialSize > maximumSize)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto* heap = new (std::nothrow) PrivateHeap;
    if (heap == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    heap->limit = maximumSize != 0 ? maximumSize : kLargestBlock;
    return heap;
}

LPVOID WINAPI HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) {
    if (heap == nullptr || bytes > kLargestBlock - sizeof(BlockHeader)) return nullptr;
    auto& owner = *static_cast<PrivateHeap*>(heap);
    const std::lock_guard lock(owner.guard);
    if (bytes > owner.limit - owner.used) return nullptr;
    void* memory = TakeMemory(sizeof(BlockHeader) + bytes,
                              (flags & HEAP_ZERO_MEMORY) != 0 ? Content::kZero : Content::kUnset);
    if (memory == nullptr) return nullptr;
    owner.first = new (memory) BlockHeader{owner.first};
    owner.used += bytes;
    return owner.first + 1;
}

BOOL WINAPI HeapDestroy(HANDLE heap) {
    if (heap == nullptr) return Fail(ERROR_INVALID_HANDLE);
    auto* owner = static_cast<PrivateHeap*>(heap);
    for (BlockHeader* block = owner->first; block != nullptr;) {
        BlockHeader* next = block->next;
        std::free(block);
        block = next;
    }
    delete owner;
    return TRUE;
}
