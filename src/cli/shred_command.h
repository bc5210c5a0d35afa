// The command that deletes files for good: shred.
#pragma once

#include <memory>
#include <vector>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"

namespace permora {

// A target as it was before anybody was asked; `target.object` is what is deleted.
struct HeldTarget {
    Target target;
    std::shared_ptr<const FolderHandle> folder;  // holds the object; null: too many are held, or `error`
    RememberedObject rememberedFolder;           // where the folder is not held
    DWORD error = 0;                             // why the object cannot be deleted
};

// Holds every target from its construction on: what is deleted is what the question was about.
class ShredRun {
  public:
    // All is borrowed and must outlive this.
    ShredRun(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages);

    // Whether the user agrees to the deletion, by --yes or by typing it on a terminal that lists what goes.
    // Says why when not.
    bool Confirm();

    // Overwrites and deletes every target with all that is in it, with a progress line on a terminal, and
    // ends with a line of counts. What stays is named with the reason: a failure, a drive, what has another
    // object's name by now, or without --force a file that cannot be overwritten in place. An interrupt
    // (Ctrl-C) ends it at the next sector. Returns whether all is gone.
    bool Run();

  private:
    const Arguments& arguments;
    const std::vector<Target>& targets;
    ConsoleMessages& messages;
    std::vector<HeldTarget> held;
};

}  // namespace permora
