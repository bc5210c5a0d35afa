// What is behind an EntryIdentity.
#pragma once

#include "platform/entry_identity.h"
#include "platform/linux/files/object_handle.h"
#include "platform/linux/files/object_identity.h"

namespace permora {
struct EntryIdentity::Inside {
    explicit Inside(host::ObjectHandle object);
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
    ~Inside();

    // ERROR_FILE_INVALID when `object` is another one.
    DWORD Verify(const host::ObjectHandle& object) const;

    host::ObjectIdentity identity;
    host::ObjectHandle pin;  // while it is open nothing else gets its number; may be empty
};

}  // namespace permora
