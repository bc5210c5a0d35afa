// What an object has beside its contents, and how a copy gets it.
#pragma once

#include <string>

#include "platform/linux/shell/file_contents.h"
#include "platform/linux/shell/operation_walk.h"
#include "platform/linux/shell/target_folder.h"

namespace permora::host {

// Where a copy stands while it is made: `hostName`, in a folder of a volume, is needed where streams are
// files, and nowhere else.
struct CopyPlace {
    int folder;
    const std::string& hostName;
    const ObjectHandle& object;
    const VolumeTraits& volume;
};

struct PropertyResult {
    DWORD error = 0;  // the copy is of no use
    DWORD loss = 0;   // the target's volume cannot hold all: why it did not take the first of them
};

// Gives the copy of a file or folder the attributes of its source, its extended attributes of the user's
// family and its named streams. Those that hold descriptors, capabilities and labels stay behind: they belong
// to the place and not to the contents.
PropertyResult CopyProperties(const WalkedItem& source, const VolumeTraits& sourceVolume,
                              const CopyPlace& copy, ContentsCopier& contents);

// The times of last access and last write, also of a link. 0 or an error code.
DWORD CopyTimes(const ObjectHandle& source, const ObjectHandle& copy);

}  // namespace permora::host
