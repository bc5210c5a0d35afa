// What the hosts of the secure deletion say about its failures.
#pragma once

#include <string>

#include "platform/api/base.h"
#include "platform/folder_files.h"

namespace permora {

// What was being done with a file or folder when it failed.
enum class DeletionStep {
    kExamine,    // finding out whether it is a file or a folder
    kCompare,    // with what was chosen
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
    kSeclude,          // taking it to where its names are counted
    kGiveBack,         // bringing it back from where its names were counted
    kRemoveSeclusion,  // removing the folder where names were counted
};

struct DeletionFailure {
    DeletionStep step = DeletionStep::kExamine;
    std::string name;         // bare
    DWORD error = 0;          // the system's code
    std::string leftIn = {};  // kGiveBack and kRemoveSeclusion: the folder's name
};

// What a message box says before ": " and the system's text.
std::string BoxPrefix(const DeletionFailure& failure);
// Whether it has the name in it.
bool IsNamedInBox(const DeletionFailure& failure);

// What failed, and the system's text as the system gives it; whose failure it is, the caller says before it.
std::string StatusText(const DeletionFailure& failure);

// Why a file is not overwritten, as a part of a sentence about it.
const char* ObstacleText(OverwriteObstacle obstacle);
// Whether it is something that cannot be found out, and not something that is known.
bool IsUncertainty(OverwriteObstacle obstacle);

}  // namespace permora
