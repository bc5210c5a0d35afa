// What it takes to share a folder.
#pragma once

#include <string>

#include "platform/api/shares.h"

namespace permora {

// As the user writes it.
struct NewShare {
    std::string folder;  // absolute, with drive letter
    std::string name;
    std::string comment;
    std::string userLimit;      // a number; only looked at with the flag
    bool hasUserLimit = false;  // else as many as the machine allows
};

// Where a new share cannot be as it was written.
enum class NewShareField { kNone, kFolder, kName, kUserLimit };

struct NewShareFault {
    NewShareField field = NewShareField::kNone;
    std::string text;  // what to tell the user; empty for kNone
};

// What can be said before the machine is asked.
NewShareFault FindNewShareFault(const NewShare& share);

// Shares the folder. Everyone may read through the new share, and nobody may write before its permissions say
// so. For a share without fault; NERR_Success, or why the machine refused.
NET_API_STATUS CreateShare(const NewShare& share);

}  // namespace permora
