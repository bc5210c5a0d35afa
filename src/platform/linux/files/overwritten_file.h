// A file that is open to be overwritten, and what the system's calls and FindAllocated make of it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "platform/api/errors.h"
#include "platform/folder_files.h"
#include "platform/linux/base/handle_table.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

// The contracts are those of platform/api/files.h; 0 or an error code.
class OverwrittenFile : public SystemObject {
  public:
    virtual DWORD Size(LONGLONG& bytes) const = 0;
    virtual DWORD Find(LONGLONG from, FileRange& range) const = 0;
    virtual DWORD Seek(LONGLONG place) = 0;
    virtual DWORD Write(std::span<const std::uint8_t> bytes) = 0;
    virtual DWORD Flush() = 0;
    // Whether the file system writes the contents by way of its journal.
    virtual bool IsJournaled() const { return false; }
    // Whether the kernel said that nobody else had it open.
    virtual bool IsKnownAlone() const { return true; }
};

// Of which files on a volume the contents go by way of the journal.
enum class Journaled { kNone, kSome, kAll };

// Opens a regular file for this process alone: ERROR_SHARING_VIOLATION when anyone else has it open.
//
// That is the kernel's write lease, which keeps who opens the file afterwards waiting until it is closed (at
// most for /proc/sys/fs/lease-break-time, 45 seconds usually). Where there are no leases, or the file belongs
// to another user, it is a lock (flock) that only those see who ask for one too, and IsKnownAlone is false.
//
// What goes by way of a journal is not at its place when the file is flushed. The flush therefore empties the
// journal too, where this process may do that.
DWORD OpenAlone(const ObjectHandle& file, std::shared_ptr<OverwrittenFile>& opened,
                Journaled journaled = Journaled::kNone);

}  // namespace permora::host
