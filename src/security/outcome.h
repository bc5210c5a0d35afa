// What became of a piece of work. The model returns it and says nothing; a window or the terminal speaks.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/api/errors.h"

namespace permora {

// What was being done. outcome.cpp has the words for each.
enum class Step {
    kNone,  // the system's text for the code says it all

    // Objects and their lists.
    kFindAgain,         // the object's name leads to another object by now
    kFindFolderAgain,   // the same for a folder whose contents were to be changed
    kUseAccessControl,  // the volume has none
    kCarryDown,         // the object was changed, something below it was not
    kPassOverMounted,   // not a failure: another volume is mounted below the object
    kPassOverLinked,    // not a failure: a file has further names (hard links)

    // Making lists and descriptors.
    kLoadLibrary,  // or finding a function in it
    kFindListFunctions,
    kTakeBuffer,
    kInitializeList,
    kMakeAbsolute,
    kAssignDescriptor,  // to a share that has none

    // Owners.
    kOpenPolicy,
    kEnumerateUsers,
    kReadOwner,

    // Secure deletion.
    kExamine,    // finding out whether it is a file or a folder
    kCompare,    // with what was chosen
    kAskVolume,  // for the size of its sectors
    kOpenFile,
    kGetSize,
    kTakeZeros,  // the block of zeros
    kWrite,
    kFlush,
    kCloseFile,
    kDeleteFile,
    kEnterFolder,
    kListFolder,
    kRemoveFolder,
    kSeclude,          // moving it to where its names are counted
    kGiveBack,         // moving it back from there
    kRemoveSeclusion,  // removing the folder where names were counted
};

struct [[nodiscard]] Outcome {
    DWORD code = ERROR_SUCCESS;  // a system error code
    Step step = Step::kNone;
    std::string object = {};  // name or path of what it concerns, for people; empty: what the caller named
    std::string place = {};   // the folder in which something was left, or below which the object stands
    std::size_t more = 0;     // how many further objects the same happened to

    bool IsDone() const { return code == ERROR_SUCCESS; }
};

// Of work on several objects: what failed, in the order in which it happened. Empty: all was done.
using Outcomes = std::vector<Outcome>;

// What a message box says. Empty where the system has no text for the code: no box is shown then.
std::string BoxText(const Outcome& outcome);
// Whether the box's text has the object in it.
bool IsNamedInBox(Step step);
// Whether it is said as information and not as an error.
bool IsInformation(Step step);

// What a line of a list or of the terminal says; never empty. The caller names the object before it.
std::string LineText(const Outcome& outcome);

}  // namespace permora
