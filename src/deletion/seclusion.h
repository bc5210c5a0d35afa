// Moves files to where their names can be counted (platform/secluded_folder.h): one folder serves all files
// of a run on one volume, as far as it can.
#pragma once

#include <cstddef>
#include <string>

#include "platform/folder_files.h"
#include "platform/secluded_folder.h"
#include "security/outcome.h"

namespace permora {

// Where a file is.
struct FilePlace {
    const FolderHandle& top;     // holds what is to be deleted as a whole
    const FolderHandle& folder;  // holds the file
    std::size_t level;           // how far that is below the top; 0: the same
};

class Seclusion {
  public:
    // As SecludedFolder::Take; makes the folder when it is needed, as high up as the system lets it.
    DWORD Take(FileHandle& file, const FilePlace& place);
    // As SecludedFolder::GiveBack. A file that cannot go back stays in the folder, which is then left as it
    // is; the outcome names it as the place.
    Outcome GiveBack(FileHandle& file);

    // Whether an entry of the folder of this level is the folder of the seclusion.
    bool StandsIn(std::size_t level, const std::string& name) const;
    // Folders of this level and those below it are about to be removed.
    void Leave(std::size_t level);
    // Removes the folder, if there is one that nobody else has removed.
    void End();

    // The folders that could not be removed since the last call, each as a place.
    Outcomes TakeLeftovers();

  private:
    DWORD MakeAndTake(FileHandle& file, const FolderHandle& place, std::size_t level);

    SecludedFolder folder;
    std::size_t madeAt = 0;  // the level of the folder in which it stands
    Outcomes leftovers;
};

}  // namespace permora
