// Finds what a file operation is to work on.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/files/object_handle.h"

namespace permora::host {

// A folder that is held open, and the path under which it is shown.
struct HeldFolder {
    ObjectHandle handle;
    std::string shownPath;
};

// Holds the folder that a path of platform/api/files.h names, following a link. 0 or an error code.
DWORD HoldFolder(const std::string& path, HeldFolder& folder);

// `folder` and the bare name in it.
std::string JoinShownPath(std::string_view folder, std::string_view shownName);

struct FoundItem {
    std::shared_ptr<const HeldFolder> folder;
    std::string hostName;
    ObjectHandle object;  // the item itself, or what is mounted on it

    std::string ShownPath() const;
};

// Items of one folder after the other, as they are selected, cost the look-up of their folder once.
class ItemFinder {
  public:
    // 0 or an error code, with `item` unchanged.
    DWORD Find(const std::string& path, FoundItem& item);

    // The same for the place where something is to be: without an object.
    DWORD FindPlace(const std::string& path, FoundItem& place);

  private:
    std::string lastFolderText;
    std::shared_ptr<const HeldFolder> lastFolder;
};

}  // namespace permora::host
