// Saves the lists of a tree.
#pragma once

#include "saved/saved_list_writer.h"
#include "saved/tree_source.h"

namespace permora {

class SavingObserver {
  public:
    virtual ~SavingObserver() = default;
    // Before each object; false ends the work (ERROR_OPERATION_ABORTED).
    virtual bool Begin(std::string_view path) = 0;
    // An object that is missing in the text (kUnread, kUnlisted), or on which another volume is mounted
    // (kMounted, which is no failure).
    virtual void PassOver(std::string_view path, SavedKind kind, DWORD error) = 0;
};

// Which parts of descriptors this process can read, judged by the top's: all, or all but the system access
// list, for which Windows and other servers want a privilege. Whoever leaves it out says so.
SECURITY_INFORMATION ReadableParts(const HeldObject& top);

// Writes the top and everything below it, between BeginTop and End of the writer, which are the caller's. 0,
// or the code with which the text could not be written further: it must not be used then.
DWORD SaveTree(const HeldObject& top, SECURITY_INFORMATION parts, SavedListWriter& writer,
               SavingObserver& observer);

}  // namespace permora
