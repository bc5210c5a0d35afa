#include "cli/shred_command.h"

#include <cstddef>
#include <string>
#include <utility>

#include "cli/consent.h"
#include "cli/terminal_output.h"
#include "cli/tree_progress.h"
#include "deletion/folder_trail.h"
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
    const DWORD error = EnterFolder(target);
    return error == ERROR_SUCCESS ? FolderHandle::OpenCurrent(folder) : error;
}

// The current directory itself is found by its name in the folder above, which may lead elsewhere already.
DWORD VerifyStart(const Target& target, const EntryIdentity& identity) {
    const bool isStart = target.start && target.folderFromStart == "..\\";
    return isStart ? target.start->VerifyItself(identity) : ERROR_SUCCESS;
}

// `before`, which may be null, was held last.
HeldTarget Hold(const Target& target, const HeldTarget* before, std::size_t& folderCount) {
    HeldTarget held;
    held.target = target;
    held.item.name = target.name;
    if (target.place == PlaceKind::kDrives) return held;
    std::shared_ptr<const FolderHandle> folder;
    if (before != nullptr && before->folder && LieInOneFolder(before->target, target) &&
        !target.endsWithSeparator) {
        folder = before->folder;
    } else {
        auto opened = std::make_shared<FolderHandle>();
        held.item.error = OpenFolderOf(target, *opened);
        if (held.item.error != ERROR_SUCCESS) return held;
        folder = std::move(opened);
        ++folderCount;
    }
    held.item = HoldDeletionItem(*folder, target.name);
    if (held.item.error == ERROR_SUCCESS) held.item.error = VerifyStart(target, held.item.identity);
    if (folderCount <= kMostHeldFolders)
        held.folder = std::move(folder);
    else if (held.item.error == ERROR_SUCCESS)
        held.item.error = folder->IdentifyItself(held.folderIdentity);
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
        trail.Clear();
    }
    std::size_t DeletedCount() const { return deletedCount; }
    std::size_t LeftCount() const { return leftCount; }

    void BeginEntry(const std::string& name) override { progress.Show(deletedCount, name.c_str()); }
    void EnterFolder(const std::string& name) override { trail.Enter(name); }
    void LeaveFolder() override { trail.Leave(); }
    void Deleted(const std::string& /*name*/) override { ++deletedCount; }
    void Failed(const DeletionFailure& failure) override { Leave(failure.name, StatusText(failure)); }

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
        trail.Clear();
        seclusion.End();
        for (const Seclusion::Leftover& left : seclusion.TakeLeftovers())
            Failed({DeletionStep::kRemoveSeclusion, target->name, left.error, left.name});
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
    FolderTrail trail;  // from the target down to the current folder
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
    if (held.item.error != ERROR_SUCCESS) {
        host.Failed({DeletionStep::kExamine, target.name, held.item.error});
        return;
    }
    if (held.folder) {
        SecureDeleteItem(host, *held.folder, held.item);
        return;
    }
    FolderHandle folder;
    DWORD error = OpenFolderOf(target, folder);
    if (error == ERROR_SUCCESS) error = folder.VerifyItself(held.folderIdentity);
    if (error != ERROR_SUCCESS) {
        host.Failed({DeletionStep::kCompare, target.name, error});
        return;
    }
    SecureDeleteItem(host, folder, held.item);
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
        each.item.identity = {};  // a file that is remembered keeps its space
    }
    if (!held.empty()) host.EndSeclusion();
    Print("deleted: " + std::to_string(host.DeletedCount()) + ", left: " + std::to_string(host.LeftCount()) +
          '\n');
    if (IsInterrupted())
        SayInterrupted(messages, "the rest is as it was, but for the file that was being overwritten");
    return host.LeftCount() == 0 && !IsInterrupted();
}

}  // namespace permora
