// The result of a piece of work. The model returns it and shows nothing; windows and the terminal do.
#pragma once

#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/change_recorder.h"

namespace permora {

// The step that failed. outcome.cpp has the texts of each step.
enum class Step {
    kNone,  // the system's text for the code is enough

    // Objects and their lists.
    kFindAgain,         // the object's name leads to another object by now
    kFindFolderAgain,   // the same for a folder whose contents were to be changed
    kAwaitAnswer,       // of the volume, which is the object
    kChangeContents,    // going through a folder, whose own list or owner is another matter
    kUseAccessControl,  // the volume has none
    kCarryDown,         // the object was changed, something below it was not
    kRecord,            // it could not be recorded, so the change was stopped there
    kPassOverMounted,   // not a failure: another volume is mounted below the object
    kPassOverLinked,    // not a failure: a file has further names (hard links)

    // Making lists and descriptors.
    kLoadLibrary,  // or finding a function in it
    kFindListFunctions,
    kTakeBuffer,
    kInitializeList,
    kMakeAbsolute,
    kAssignDescriptor,  // to a share that has none
    kShareFolder,

    // The history of changes.
    kEndChange,  // noting its end, or removing what is too old

    // Owners.
    kOpenPolicy,
    kEnumerateUsers,
    kReadOwner,

    // Shares.
    kEnumerateShares,
    kRemoveShares,

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

    bool IsDone() const { return code == ERROR_SUCCESS; }
};

// The failures of work on several objects, in their order. Empty: all was done.
using Outcomes = std::vector<Outcome>;

// The result of a call that changes descriptors. Step::kRecord when `recorder` has stopped the change.
Outcome OutcomeOfChange(DWORD code, const ChangeRecorder& recorder);

// The text of a message box. Empty where the system has no text for the code: no box is shown then.
std::string BoxText(const Outcome& outcome);
// The same with the object on a line of its own, where the text does not name it.
std::string NamedBoxText(const Outcome& outcome);
// Whether the box is an information and not an error.
bool IsInformation(Step step);

// The text for a line of a list or of the terminal, before which the caller names the object. Never empty.
std::string LineText(const Outcome& outcome);

}  // namespace permora
