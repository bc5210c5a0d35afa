// Where an open file has something on the disk.
#pragma once

#include "platform/folder_files.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

// Where it is known from what is allocated.
enum class RangeSource {
    kWhole,    // all of it
    kExtents,  // the file system lists extents (FIEMAP), also those that are set aside and read as zeros
    kHoles,  // the file system distinguishes holes from data (lseek), and sets nothing aside where it matters
    kContents,  // nobody, and there is less than its size: what is not zeros must be somewhere
};

// `status` is the file's, of which nobody changes anything meanwhile.
RangeSource FindRangeSource(int descriptor, const struct stat& status);

// Data that a search from `from` on has found beyond what it answered with: at every extent the file system
// would look through all that follow once more.
struct DataAhead {
    off_t from = -1;  // below 0: none yet
    FileRange range;
};

// FindAllocated for a file of `size` bytes; `ahead` is kept from call to call. kContents needs a descriptor
// for reading, and returns an empty range after 64 MiB of zeros, so that it can be stopped.
DWORD FindRange(RangeSource source, int descriptor, off_t from, off_t size, DataAhead& ahead,
                FileRange& range);

}  // namespace permora::host
