// The desktop's trash.
//
// Where it lies, and what is in it: freedesktop.org's rules for a trash, version 1.0. A trash holds
// two folders: "files" with what was deleted, and "info" with a text file for each that says where it was and
// when it was deleted.
#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "platform/linux/files/mount_table.h"
#include "platform/linux/security/new_object.h"
#include "platform/linux/shell/item_finder.h"

namespace permora::host {

// What belongs into the info file. `hostPath` is absolute, or relative to the folder that holds the trash of
// a volume; `time` is written as local time.
std::string TrashInfoText(const std::string& hostPath, time_t time);

// The trash of one volume, which it is asked for item by item.
class Trash {
  public:
    // The trash for what lies in `folder`: the user's own for the volume of the user's home, else the one at
    // the top of the volume. It is made where there is none. Never one that someone else may have laid out:
    // links, folders of other users and a shared one without sticky bit are none. 0, or an error code when
    // there is no trash to be used; `trash` is then unchanged.
    static DWORD For(const HeldFolder& folder, Trash& trash);

    // Whether it is the one for what lies in `folder` too.
    bool Serves(const HeldFolder& folder) const;

    // Puts an item into it, under a name that is free there. 0 or an error code, and then the item is where
    // it was; ERROR_NOT_SAME_DEVICE when it cannot be moved there.
    DWORD Take(const FoundItem& item);

  private:
    DWORD OpenIn(const ObjectHandle& place, std::string hostPathOfTop);
    DWORD WriteInfo(const std::string& hostName, const std::string& text);

    ObjectHandle volume;  // some folder on it
    ObjectHandle files;
    ObjectHandle info;
    NewObjectSecurity infoSecurity;
    std::string top;  // the host path to which info files are relative; empty: they are absolute
};

// Whether anything is mounted below the item, which would go into the trash with it.
bool HoldsMount(const FoundItem& item, const std::vector<MountEntry>& mounts);

}  // namespace permora::host
