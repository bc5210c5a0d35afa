// What a change would do, for --dry-run.
#pragma once

#include <string>

#include "cli/change_output.h"
#include "cli/messages.h"
#include "cli/nested_targets.h"
#include "cli/target.h"
#include "cli/tree_progress.h"
#include "security/change_preview.h"

namespace permora {

// Looks at one object after the other, and prints what would become of all at the end. From now on Ctrl-C
// ends the work between two objects.
class ChangeForesight {
  public:
    explicit ChangeForesight(ChangeOutput& changeOutput);

    // Tells the output what would become of the object, which it has begun.
    void Add(const Target& target, const HeldObject& object, const PlannedWrite& write);
    // What a walk that counts has found below the objects.
    void AddBelow(const TreeCounts& counts) { previewing.AddBelow(counts); }
    // Prints the preview. Returns whether everything could be looked at.
    bool End();

  private:
    // What is known so far: how many of each.
    struct Told {
        std::size_t changed;
        std::size_t lost;
        std::size_t closed;
        std::size_t closedToMe;
        std::size_t failures;
        TreeCounts below;
    };

    void Tell(const Target& target, const HeldObject& object, const PlannedWrite& write);
    void Warn(const Told& before);

    ChangeOutput& output;
    ConsoleMessages& messages;
    TreeProgress progress;
    ChangePreviewing previewing;
    NestedTargets nested;
};

}  // namespace permora
