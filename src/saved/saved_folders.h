// Saved objects seen as folders with contents, while they come by one after the other.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/folder_files.h"
#include "saved/saved_list.h"

namespace permora {

// The objects of one top.
class SavedFolders {
  public:
    using Names = std::unordered_set<std::string>;
    struct Folder {
        std::string path;
        Names contents;  // by their bare names
        // It was saved itself, with all its contents.
        bool isKnown;
        // The same as soon as it has any contents: the form does not say whether it is a folder.
        bool isKnownWithContents;
    };
    // All that was saved of a folder has come.
    using Complete = std::function<void(const Folder& folder)>;

    // `whenComplete` may be empty.
    explicit SavedFolders(Complete whenComplete) : complete(std::move(whenComplete)) {}

    // The next object. False when it comes twice, or when something of its folder has come before and
    // something else in between: then nobody knows when a folder is complete. Memory is that for the names in
    // the folders on the way to the object.
    bool Pass(const SavedObject& object);
    // There is no further object.
    void End();

  private:
    void Leave();
    bool PassIn(std::string_view folder, std::string_view name);

    Complete complete;
    std::vector<Folder> folders;  // the last object's and those above it
};

// Opens the folder at `path` below `top`, never through a link and never what is mounted there.
DWORD OpenFolderBelow(const FolderHandle& top, std::string_view path, FolderHandle& folder);

// What is in a folder and was not saved, by its path below `top`; the first level only, without what is
// mounted there. A folder that is gone, or another thing now, has nothing. Returns a system error code: the
// folder cannot be listed to its end.
DWORD FindExtra(const FolderHandle& top, const std::string& folder,
                const std::function<bool(const std::string& name)>& isSaved,
                const std::function<void(const std::string& path)>& report);

}  // namespace permora
