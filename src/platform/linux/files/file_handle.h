// What is behind a FileHandle, and what FolderHandle shares with it.
#pragma once

#include <string>

#include "platform/folder_files.h"
#include "platform/linux/files/object_handle.h"
#include "platform/linux/files/overwritten_file.h"

namespace permora {

struct FileHandle::Inside {
    host::ObjectHandle object;
    int home = -1;    // the descriptor of the folder in which it was found; that outlives this, not owned
    int folder = -1;  // of that in which its name is now, the same or a SecludedFolder's
    std::string hostName;  // of the file when it was held
    bool isNtfs = false;
    host::Journaled journaled = host::Journaled::kNone;  // on the volume
    // Known when it was opened for overwriting.
    bool isJournaled = false;
    bool isKnownAlone = false;
};

namespace host {

// ERROR_ACCESS_DENIED for a file or folder with the read-only attribute.
DWORD RefuseReadOnly(const ObjectHandle& object);

// ERROR_NOT_SUPPORTED for what ntfs-3g shows as a broken link because it has no means to read it, such as a
// file that the system compressed in its own way.
DWORD RefuseUnreadableFile(const ObjectHandle& object);

}  // namespace host
}  // namespace permora
