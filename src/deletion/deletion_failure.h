// What the hosts of the secure deletion say about its failures.
#pragma once

#include <string>

#include "platform/api/base.h"

namespace permora {

// What was being done with a file or folder when it failed.
enum class DeletionStep {
    kExamine,    // finding out whether it is a file or a folder
    kAskVolume,  // for the size of its sectors
    kOpenFile,
    kGetSize,
    kAllocate,  // the block of zeros
    kWrite,
    kFlush,
    kDeleteFile,
    kEnterFolder,
    kListFolder,
    kRemoveFolder,
};

struct DeletionFailure {
    DeletionStep step = DeletionStep::kExamine;
    std::string name;  // bare
    DWORD error = 0;   // the system's code
};

// What a message box says before ": " and the system's text.
std::string BoxPrefix(const DeletionFailure& failure);

// What failed, and the system's text as the system gives it; whose failure it is, the caller says before it.
std::string StatusText(const DeletionFailure& failure);

}  // namespace permora
