// What becomes of inherited entries when an object stops inheriting.
#pragma once

#include "platform/api/base.h"
#include "security/access_entry_list.h"

namespace permora {

enum class InheritanceOffResult {
    kNothingInherited,  // nothing was asked
    kCopied,            // every inherited entry is explicit now
    kRemoved,           // the inherited entries are gone
    kCancelled,         // the list is as it was; the object is to go on inheriting
};

// Asks the user whether the inherited entries of `list` are copied or deleted, and does it.
InheritanceOffResult TurnInheritanceOff(HWND owner, AccessEntryList& list);

}  // namespace permora
