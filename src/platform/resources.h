// One owning alias for each kind of system resource: its closer and its invalid value stand here, and no bare
// LocalFree, FreeLibrary, HeapDestroy or CloseHandle anywhere else.
#pragma once

#include <memory>
#include <type_traits>

#include "platform/api/libraries.h"
#include "platform/api/memory.h"
#include "platform/api/network.h"
#include "platform/api/policy.h"
#include "platform/api/threads.h"

namespace permora {

struct LocalFreeCloser {
    void operator()(void* block) const { LocalFree(block); }
};
// A block of the local heap, or one that a service handed out to be freed with LocalFree. Null: none.
template <typename T>
using UniqueLocal = std::unique_ptr<T, LocalFreeCloser>;

struct FreeLibraryCloser {
    void operator()(HMODULE library) const { FreeLibrary(library); }
};
// A counted load of a system library. Null: not loaded.
using UniqueLibrary = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeLibraryCloser>;

struct HeapDestroyCloser {
    void operator()(void* heap) const { HeapDestroy(heap); }
};
// A private heap; all its blocks go with it. Null: none.
using UniqueHeap = std::unique_ptr<void, HeapDestroyCloser>;

struct CloseHandleCloser {
    void operator()(void* handle) const { CloseHandle(handle); }
};
// A thread, a token or a file. Null: none.
using UniqueHandle = std::unique_ptr<void, CloseHandleCloser>;

struct LsaCloser {
    void operator()(void* policy) const { LsaClose(policy); }
};
// An open security policy. Null: none.
using UniquePolicy = std::unique_ptr<void, LsaCloser>;

struct LsaFreeMemoryCloser {
    void operator()(void* block) const { LsaFreeMemory(block); }
};
// A block that the policy's functions handed out. Null: none.
template <typename T>
using UniqueLsaMemory = std::unique_ptr<T, LsaFreeMemoryCloser>;

struct NetApiBufferFreeCloser {
    void operator()(void* buffer) const { NetApiBufferFree(buffer); }
};
// A block that a network management service handed out. Null: none.
template <typename T>
using UniqueNetworkBuffer = std::unique_ptr<T, NetApiBufferFreeCloser>;

}  // namespace permora
