// Handles that may be anything: what callers hand in is looked up, never believed.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "platform/api/base.h"

namespace permora::host {

// The open objects of one kind. A handle is the address of its object, so it is never null; it can come back
// for another object after it was closed. For any thread.
template <typename Object>
class HandleTable {
  public:
    HANDLE Add(std::shared_ptr<Object> object) {
        HANDLE handle = object.get();
        const std::lock_guard lock(mutex);
        objects.insert_or_assign(handle, std::move(object));
        return handle;
    }

    // Null for what is no open handle. The object lives while the caller holds it, even when another thread
    // closes its handle.
    std::shared_ptr<Object> Find(HANDLE handle) const {
        const std::lock_guard lock(mutex);
        const auto found = objects.find(handle);
        return found == objects.end() ? nullptr : found->second;
    }

    // False for what is no open handle.
    bool Remove(HANDLE handle) {
        const std::lock_guard lock(mutex);
        return objects.erase(handle) != 0;
    }

  private:
    mutable std::mutex mutex;
    std::unordered_map<HANDLE, std::shared_ptr<Object>> objects;
};

}  // namespace permora::host
