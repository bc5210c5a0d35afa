// Edits of whole trees (replace, clone, revoke --tree) as a user sees them: progress, preview, what failed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "changes/tree_edit.h"
#include "cli/change_output.h"
#include "cli/messages.h"
#include "cli/nested_targets.h"
#include "cli/target.h"
#include "cli/tree_progress.h"

namespace permora {

// --linked.
struct LinkedFlag : Flag {
    explicit LinkedFlag(OptionPlace place)
        : Flag(place, "--linked",
               "Change also the owners of files with further names (hard links), which may be\n"
               "others' files, under all of them") {}
};

class TreeEditRun : private TreeEditHost {
  public:
    struct How {
        Progress progress;
        LinkedFiles linked;
        LinkedFiles linkedTop = LinkedFiles::kChange;  // TreeEditOptions::linkedTop
    };
    // The recorder and the output are borrowed. From now on Ctrl-C ends the work between two objects.
    TreeEditRun(const How& manner, ChangeRecorder& changeRecorder, ChangeOutput& changeOutput);

    // Edits the target and everything below it, which the output has begun. In a dry run it prints what would
    // become of each object.
    void Edit(const Target& next, DescriptorEdit& edit);
    // Prints the counts. Returns whether all was done.
    bool End();

  private:
    bool Begin(std::string_view path) override;
    bool IsStopped() const override;
    void Preview(const std::string& path, bool isFolder, const nt::SecurityDescriptor& before,
                 const nt::SecurityDescriptor& after) override;
    void Fail(const std::string& path, NotEdited fault, DWORD error) override;
    void Remark(const std::string& path, EditRemark remark) override;
    void Say(const std::string& path, const std::string& text, DWORD code = ERROR_SUCCESS);
    void Stop(bool isDone);

    ObjectCounts CountsSoFar() const { return {counts.changed, counts.unchanged, counts.failed}; }

    const How how;
    ChangeRecorder& recorder;
    ChangeOutput& output;
    ConsoleMessages& messages;
    ProgressLine progress;
    const Target* target = nullptr;
    std::size_t begun = 0;
    TreeEditCounts counts;
    NestedTargets nested;  // of a dry run
    bool isWhole = true;   // every target was found, and the history has kept everything
};

}  // namespace permora
