// Handles that may be anything: what callers hand in is looked up, never believed.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "platform/api/base.h"

namespace permora::host {

// What a handle stands for.
class HandleObject {
  public:
    HandleObject() = default;
    HandleObject(const HandleObject&) = delete;
    HandleObject& operator=(const HandleObject&) = delete;
    virtual ~HandleObject() = default;
};

// What CloseHandle closes.
class SystemObject : public HandleObject {};

// Open objects of every kind. A handle is the address of its object, so it is never null; it can come back
// for another object after it was closed. For any thread.
class HandleTable {
  public:
    HANDLE Add(std::shared_ptr<HandleObject> object) {
        HANDLE handle = object.get();
        const std::lock_guard lock(mutex);
        objects.insert_or_assign(handle, std::move(object));
        return handle;
    }

    // Null for what is no open handle of the kind. The object lives while the caller holds it, even when
    // another thread closes its handle.
    template <typename Kind>
    std::shared_ptr<Kind> Find(HANDLE handle) const {
        const std::lock_guard lock(mutex);
        const auto found = objects.find(handle);
        return found == objects.end() ? nullptr : std::dynamic_pointer_cast<Kind>(found->second);
    }

    // False for what is no open handle of the kind.
    template <typename Kind>
    bool Remove(HANDLE handle) {
        const std::shared_ptr<Kind> closed = Find<Kind>(handle);  // destroyed without the lock
        const std::lock_guard lock(mutex);
        return closed != nullptr && objects.erase(handle) != 0;
    }

  private:
    mutable std::mutex mutex;
    std::unordered_map<HANDLE, std::shared_ptr<HandleObject>> objects;
};

// All that the process has open.
HandleTable& OpenHandles();

}  // namespace permora::host
