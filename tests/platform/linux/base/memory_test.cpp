#include "platform/api/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <thread>

#include "platform/api/errors.h"
#include "platform/resources.h"

namespace {

using permora::UniqueHeap;
using permora::UniqueLocal;

constexpr SIZE_T kAbsurd = std::numeric_limits<SIZE_T>::max();

bool IsZero(const void* block, std::size_t bytes) {
    const auto* first = static_cast<const BYTE*>(block);
    return std::all_of(first, first + bytes, [](BYTE byte) { return byte == 0; });
}

TEST(LocalHeap, GivesAlignedBlocksAndRefusesAbsurdSizes) {
    const UniqueLocal<void> zeroed(LocalAlloc(LPTR, 4096));
    ASSERT_TRUE(zeroed);
    EXPECT_TRUE(IsZero(zeroed.get(), 4096));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(zeroed.get()) % alignof(std::max_align_t), 0U);
    EXPECT_TRUE(UniqueLocal<void>(LocalAlloc(LMEM_FIXED, 0)));
    EXPECT_EQ(LocalFree(nullptr), nullptr);

    const std::tuple<UINT, SIZE_T, DWORD> failures[] = {
        {LPTR, kAbsurd, ERROR_NOT_ENOUGH_MEMORY},
        {LMEM_FIXED, kAbsurd / 2 + 1, ERROR_NOT_ENOUGH_MEMORY},
        {0x0002, 8, ERROR_INVALID_PARAMETER},  // a movable block would be a handle, not an address
    };
    for (const auto& [flags, bytes, error] : failures) {
        SetLastError(0);
        EXPECT_EQ(LocalAlloc(flags, bytes), nullptr);
        EXPECT_EQ(GetLastError(), error);
    }
}

TEST(PrivateHeap, KeepsToItsLimitAndReusesWhatWasFreed) {
    const UniqueHeap heap(HeapCreate(0, 0, 100));
    ASSERT_TRUE(heap);
    EXPECT_NE(HeapAlloc(heap.get(), 0, 0), nullptr);
    void* whole = HeapAlloc(heap.get(), HEAP_ZERO_MEMORY, 100);
    ASSERT_NE(whole, nullptr);
    EXPECT_TRUE(IsZero(whole, 100));
    EXPECT_EQ(HeapAlloc(heap.get(), 0, 1), nullptr);
    EXPECT_TRUE(HeapFree(heap.get(), 0, whole));
    EXPECT_NE(HeapAlloc(heap.get(), 0, 100), nullptr);
}

TEST(PrivateHeap, RefusesWhatIsNotItsOwn) {
    const UniqueHeap heap(HeapCreate(0, 0, 0));
    const UniqueHeap other(HeapCreate(0, 0, 0));
    void* block = HeapAlloc(other.get(), 0, 8);
    EXPECT_FALSE(HeapFree(heap.get(), 0, block));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(HeapFree(heap.get(), 0, nullptr));
    EXPECT_EQ(HeapAlloc(heap.get(), 0, kAbsurd), nullptr);
    EXPECT_EQ(HeapAlloc(nullptr, 0, 8), nullptr);
    EXPECT_FALSE(HeapDestroy(nullptr));
    EXPECT_EQ(HeapCreate(0, 200, 100), nullptr);
}

// The sanitizers tell whether a block was lost or freed twice.
TEST(PrivateHeap, ServesThreadsAndFreesEverythingAtOnce) {
    const UniqueHeap heap(HeapCreate(0, 0, 0));
    const auto work = [&heap] {
        for (int round = 0; round < 200; ++round) {
            void* first = HeapAlloc(heap.get(), 0, 16);
            void* middle = HeapAlloc(heap.get(), 0, 16);
            void* last = HeapAlloc(heap.get(), 0, 16);
            EXPECT_TRUE(HeapFree(heap.get(), 0, middle));
            EXPECT_TRUE(HeapFree(heap.get(), 0, round % 2 == 0 ? first : last));
        }
    };
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads) {
        thread = std::thread(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(LastError, BelongsToItsThread) {
    SetLastError(ERROR_ACCESS_DENIED);
    std::thread([] {
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
        SetLastError(ERROR_DISK_FULL);
    }).join();
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

}  // namespace
