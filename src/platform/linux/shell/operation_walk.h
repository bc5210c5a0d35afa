// Goes through one item of a file operation with all that is in it.
#pragma once

#include <string>

#include "platform/linux/files/object_handle.h"
#include "platform/linux/shell/operation_talk.h"

namespace permora::host {

// An object on the way, and where it lies. All of it lives for the call that it is handed to.
struct WalkedItem {
    int folder;                     // that holds it, open
    const std::string& folderPath;  // as shown
    const std::string& hostName;
    const ObjectHandle& object;

    std::string ShownPath() const;
    FileOperationObject Described() const { return DescribeObject(ShownPath(), object); }
};

class WalkHandler {
  public:
    virtual ~WalkHandler() = default;
    // What is no folder.
    virtual void File(const WalkedItem& item) = 0;
    // A folder, before what is in it. False: done with as it is.
    virtual bool Enter(const WalkedItem& item) = 0;
    // A folder that was entered, after what is in it.
    virtual void Leave(const WalkedItem& item) = 0;
};

// Walks by open handles: links are handed over and never followed, what is mounted below is reported as a
// failure (ERROR_NOT_SAME_DEVICE) and not entered, and a folder that is moved or replaced by a link in the
// middle of the walk leads nowhere else. What cannot be opened or listed is reported to the user; what
// vanishes is no failure. A cancelled walk ends where it is, without leaving the folders that it entered.
//
// Each level of folders costs one open descriptor and 8 KiB, and no stack. Counts the items that are done and
// names the one in work.
void WalkItem(const WalkedItem& top, OperationTalk& talk, WalkHandler& handler);

// Removes the name of an item; `flags` are those of unlinkat(2). What has vanished is removed; what cannot be
// is reported to the user, who may pass it over.
void RemoveName(const WalkedItem& item, int flags, OperationTalk& talk);

}  // namespace permora::host
