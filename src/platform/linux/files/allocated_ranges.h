// Where an open file has something on the disk.
#pragma once

#include "platform/folder_files.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

// Who tells what is allocated.
enum class RangeSource {
    kWhole,     // all of it
    kExtents,   // the file system lists extents (FIEMAP), also those that are set aside and read as zeros
    kHoles,     // it tells holes from data (lseek), and sets nothing aside where it matters
    kContents,  // nobody, and there is less than its size: what is not zeros must be somewhere
};

// `status` is the file's, of which nobody changes anything meanwhile.
RangeSource FindRangeSource(int descriptor, const struct stat& status);

// FindAllocated for a file of `size` bytes. kContents needs a descriptor for reading, and answers after 64
// MiB of zeros with an empty range, so that it can be stopped.
DWORD FindRange(RangeSource source, int descriptor, off_t from, off_t size, FileRange& range);

}  // namespace permora::host
