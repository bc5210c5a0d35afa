#include "cli/shred_command.h"

#include <cstddef>
#include <string>
#include <utility>

#include "cli/consent.h"
#include "cli/terminal_output.h"
#include "cli/tree_progress.h"
#include "deletion/obstacle_texts.h"
#include "deletion/secure_delete.h"
#include "platform/api/errors.h"

namespace permora {
namespace {

// Of so many folders each is held by itself. Targets of a command line mostly lie in one.
constexpr std::size_t kMostHeldFolders = 256;

bool LieInOneFolder(const Target& one, const Target& other) {
    return one.folder == other.folder && one.start == other.start &&
           one.folderFromStart == other.folderFromStart;
}

DWORD OpenFolderOf(const Target& target, FolderHandle& folder) {
    return target.start ? target.start->OpenPath(target.folderFromStart, folder)
                        : FolderHandle::Open(target.folder, folder);
}

// The current directory itself is found by its name in the folder above, which may lead elsewhere already.
DWORD VerifyStart(const Target& target) {
    const bool isStart = target.start && target.folderFromStart == "..\\";
    return isStart ? target.object.Verify(*target.start) : ERROR_SUCCESS;
}

// `before`, which may be null, was held last.
HeldTarget Hold(const Target& target, const HeldTarget* before, std::size_t& folderCount) {
    HeldTarget held;
    held.target = target;
    if (target.place == PlaceKind::kDrives) return held;
    if (before != nullptr && before->folder && LieInOneFolder(before->target, target)) {
        held.folder = before->folder;
    } else if (folderCount < kMostHeldFolders) {
        auto opened = std::make_shared<FolderHandle>();
        held.error = OpenFolderOf(target, *opened);
        if (held.error != ERROR_SUCCESS) return held;
        held.folder = std::move(opened);
        ++folderCount;
    } else {
        held.rememberedFolder =
            RememberedObject(target.start, target.start ? target.folderFromStart : target.folder);
    }
    RememberedObject& object = held.target.object;
    if (held.folder)
        object = RememberedObject(held.folder, target.name);
    else
        RememberTarget(held.target);
    held.error = object.Error();
    if (held.error == ERROR_SUCCESS && target.endsWithSeparator && object.Kind() != FolderEntryKind::kFolder)
        held.error = ERROR_DIRECTORY;
    if (held.error == ERROR_SUCCESS) held.error = VerifyStart(held.target);
    return held;
}

class ShredHost : public SecureDeleteHost {
  public:
    ShredHost(const Arguments& userArguments, ConsoleMessages& console)
        : SecureDeleteHost(IsInterrupted()),
          arguments(userArguments),
          messages(console),
          progress(userArguments.quiet) {}

    void SetTarget(const Target& next) {
        target = &next;
        trail = {};
    }
    std::size_t DeletedCount() const { return deletedCount; }
    std::size_t LeftCount() const { return leftCount; }

    void BeginEntry(const std::string& name) override { progress.Show(deletedCount, name.c_str()); }
    void Deleted(const std::string& /*name*/) override { ++deletedCount; }
    void Failed(const Outcome& failure) override { Leave(failure.object, LineText(failure)); }

    FileScrutiny Scrutiny() const override {
        return arguments.force ? FileScrutiny::kNone : FileScrutiny::kObstacles;
    }
    bool MayOverwrite(const std::string& name, const std::vector<OverwriteObstacle>& obstacles) override {
        std::string known;
        std::string unknown;
        for (const OverwriteObstacle obstacle : obstacles) {
            std::string& reasons = IsUncertainty(obstacle) ? unknown : known;
            reasons += (reasons.empty() ? "" : ", ") + std::string(ObstacleText(obstacle));
        }
        const std::string start =
            known.empty() ? "not deleted: " : "not deleted, its contents would stay: " + known;
        Leave(name, start + (known.empty() || unknown.empty() ? "" : "; ") + unknown +
                        " (--force deletes it all the same)");
        return false;
    }

    // No folder in which names were counted stays beyond this.
    void EndSeclusion() {
        trail = {};
        seclusion.End();
        for (Outcome& left : seclusion.TakeLeftovers()) {
            left.object = target->name;
            Failed(left);
        }
    }

    // Tells why an object of the current folder stays.
    void Leave(const std::string& name, const std::string& reason) {
        ++leftCount;
        progress.Clear();
        // The first name is the target's own, which the user has typed.
        const std::string path = trail.PathOf(name);
        const std::size_t separator = path.find('\\');
        const std::string below = separator == path.npos ? "" : path.substr(separator);
        messages.SetSubject(TypedPath(*target, below));
        messages.Say(reason);
    }

  private:
    const Arguments& arguments;
    ConsoleMessages& messages;
    ProgressLine progress;
    const Target* target = nullptr;
    std::size_t deletedCount = 0;
    std::size_t leftCount = 0;
};

void Shred(const HeldTarget& held, ShredHost& host) {
    const Target& target = held.target;
    host.SetTarget(target);
    if (target.place == PlaceKind::kDrives) {
        host.Leave(target.name, "not deleted: it is a drive");
        return;
    }
    if (held.error != ERROR_SUCCESS) return host.Failed({held.error, Step::kExamine, target.name});
    if (held.folder) return SecureDeleteItem(host, *held.folder, target.name, target.object);
    FolderHandle folder;
    DWORD error = OpenFolderOf(target, folder);
    if (error == ERROR_SUCCESS) error = held.rememberedFolder.Verify(folder);
    if (error != ERROR_SUCCESS) return host.Failed({error, Step::kCompare, target.name});
    SecureDeleteItem(host, folder, target.name, target.object);
    host.EndSeclusion();
}

}  // namespace

ShredRun::ShredRun(const Arguments& userArguments, const std::vector<Target>& userTargets,
                   ConsoleMessages& console)
    : arguments(userArguments), targets(userTargets), messages(console) {
    std::size_t folderCount = 0;
    held.reserve(targets.size());
    for (const Target& target : targets)
        held.push_back(Hold(target, held.empty() ? nullptr : &held.back(), folderCount));
}

bool ShredRun::Confirm() {
    if (arguments.yes || targets.empty()) return true;
    return AskForConsent(
        {"shred destroys files for good",
         "These files, and folders with all that is in them, are overwritten and deleted for good:",
         "nothing was deleted"},
        targets, messages);
}

bool ShredRun::Run() {
    ShredHost host(arguments, messages);
    WatchForInterrupts();
    OutliveReaders();
    const FolderHandle* folder = nullptr;
    for (HeldTarget& each : held) {
        if (IsInterrupted()) break;
        if (each.folder.get() != folder && folder != nullptr) host.EndSeclusion();
        folder = each.folder.get();
        Shred(each, host);
        each.target.object = {};  // a file that is remembered keeps its space
    }
    if (!held.empty()) host.EndSeclusion();
    Print("deleted: " + std::to_string(host.DeletedCount()) + ", left: " + std::to_string(host.LeftCount()) +
          '\n');
    if (IsInterrupted())
        SayInterrupted(messages, "the rest is as it was, but for the file that was being overwritten");
    return host.LeftCount() == 0 && !IsInterrupted();
}

}  // namespace permora
