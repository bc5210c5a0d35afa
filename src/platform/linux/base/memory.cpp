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

// No object is larger; the C library promises nothing for sizes beyond it.
constexpr SIZE_T kLargestBlock = static_cast<SIZE_T>(std::numeric_limits<std::ptrdiff_t>::max());

enum class Content { kUnset, kZero };

// Never null for a size of 0. Null when there is no memory.
void* TakeMemory(SIZE_T bytes, Content content) {
    if (bytes > kLargestBlock) return nullptr;
    if (bytes == 0) bytes = 1;
    return content == Content::kZero ? std::calloc(1, bytes) : std::malloc(bytes);
}

struct PrivateHeap;

// Stands before every block of a private heap and links it to its neighbours, so that a single block is freed
// without a search and all of them by a walk.
struct alignas(std::max_align_t) BlockHeader {
    PrivateHeap* owner;
    BlockHeader* previous;
    BlockHeader* next;
    SIZE_T bytes;
};

struct PrivateHeap {
    std::mutex guard;
    BlockHeader* first = nullptr;
    SIZE_T used = 0;  // bytes of all blocks, their headers not counted
    SIZE_T limit = 0;
};

void Link(PrivateHeap& heap, BlockHeader* block) {
    block->previous = nullptr;
    block->next = heap.first;
    if (heap.first != nullptr) heap.first->previous = block;
    heap.first = block;
    heap.used += block->bytes;
}

void Unlink(PrivateHeap& heap, BlockHeader* block) {
    if (block->previous != nullptr) {
        block->previous->next = block->next;
    } else {
        heap.first = block->next;
    }
    if (block->next != nullptr) block->next->previous = block->previous;
    heap.used -= block->bytes;
}

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
    auto* block = new (memory) BlockHeader{&owner, nullptr, nullptr, bytes};
    Link(owner, block);
    return block + 1;
}

BOOL WINAPI HeapFree(HANDLE heap, DWORD /*flags*/, LPVOID block) {
    if (heap == nullptr) return Fail(ERROR_INVALID_HANDLE);
    if (block == nullptr) return TRUE;
    auto& owner = *static_cast<PrivateHeap*>(heap);
    BlockHeader* header = static_cast<BlockHeader*>(block) - 1;
    if (header->owner != &owner) return Fail(ERROR_INVALID_PARAMETER);
    {
        const std::lock_guard lock(owner.guard);
        Unlink(owner, header);
    }
    std::free(header);
    return TRUE;
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
