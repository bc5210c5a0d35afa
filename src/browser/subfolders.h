// What stands below a place in the tree of folders, read without a window.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "browser/row_source.h"

namespace permora {

struct Subfolder {
    std::string text;       // as the tree shows it
    unsigned int icon = 0;  // resource
};

// Any thread reads; the members are for one thread at a time.
struct Subfolders {
    std::string folder;  // full path; empty: the drives
    DotNames dots = DotNames::kLeftOut;
    std::atomic<bool> isStopped = false;  // any thread: no further entry is looked at

    // Fills these in. A link to a folder counts as one, and is not followed.
    void Read();
    DWORD error = 0;
    std::vector<Subfolder> found;  // in the order of the browser's list
};

}  // namespace permora
