// How much is in a folder: a service of our own, for the sheet of PropertiesPresenter and for deletions.
#pragma once

#include "platform/api/base.h"

namespace permora {

// What is in a folder, however deep, or what a file is.
struct TreeSize {
    ULONGLONG bytes = 0;        // contents of files; one with several names counts under each
    ULONGLONG bytesOnDisk = 0;  // taken by them; such a file counts once. Not counted on Windows
    ULONGLONG files = 0;        // and links, devices and the like
    ULONGLONG folders = 0;      // without the one that was asked for
    ULONGLONG mounted = 0;      // of other volumes, on which nothing is counted; on Windows they are files
    ULONGLONG unread = 0;       // objects that could not be looked at, folders that could not be listed
};

class TreeSizeObserver {
  public:
    virtual ~TreeSizeObserver() = default;
    // After each object, one call at a time, on any thread. False ends the measuring.
    virtual bool Measured(const TreeSize& soFar) = 0;
};

// Measures the file or folder at `path` and all below it: by open handles, never through a link and never
// into what is mounted there. Any thread; what changes meanwhile is counted or not. 0, or an error code when
// there is nothing at `path`; all other failures are counted.
DWORD MeasureTree(LPCSTR path, TreeSizeObserver& observer, TreeSize& size);

}  // namespace permora
