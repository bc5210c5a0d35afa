// Sharing a folder.
#pragma once

#include <string>

#include "security/outcome.h"

namespace permora {

// A share as the user enters it.
struct NewShare {
    std::string folder;  // absolute, with drive letter
    std::string name;
    std::string comment;
    std::string userLimit;      // a number; only used with the flag
    bool hasUserLimit = false;  // else as many users as the machine allows
};

// The field that cannot stay as it is.
enum class NewShareField { kNone, kFolder, kName, kUserLimit };

struct NewShareFault {
    NewShareField field = NewShareField::kNone;
    std::string text;  // for the user; empty for kNone
};

// The faults that can be found without the machine.
NewShareFault FindNewShareFault(const NewShare& share);

// Shares the folder; `share` must have no fault. Everyone may read through the new share, and nobody may
// write until its permissions are changed.
Outcome CreateShare(const NewShare& share);

}  // namespace permora
