// shred: deletes files for good.
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/consent.h"
#include "cli/interrupts.h"
#include "cli/object_command.h"
#include "cli/terminal_text.h"
#include "cli/tree_progress.h"
#include "deletion/deletion_progress.h"
#include "deletion/item_sizes.h"
#include "deletion/obstacle_texts.h"
#include "deletion/secure_delete.h"
#include "platform/api/errors.h"

namespace permora {
namespace {

// At most so many folders are held for their targets. Most command lines name objects of one folder.
constexpr std::size_t kMostHeldFolders = 256;

// A target as it was before the question; `target.object` is the object to delete.
struct HeldTarget {
    Target target;
    std::shared_ptr<const FolderHandle> folder;  // holds the object; null: too many are held, or `error`
    RememberedObject rememberedFolder;           // where the folder is not held
    DWORD error = 0;                             // why the object cannot be deleted
};

bool LieInOneFolder(const Target& one, const Target& other) {
    return one.folder == other.folder && one.start == other.start &&
           one.folderFromStart == other.folderFromStart;
}

// The current directory itself is found by its name in the folder above. That name may already lead
// elsewhere.
DWORD VerifyStart(const Target& target) {
    const bool isStart = target.start && target.folderFromStart == "..\\";
    return isStart ? target.object.Verify(*target.start) : ERROR_SUCCESS;
}

// `before` is the last held target, or null.
HeldTarget HoldForDeletion(const Target& target, const HeldTarget* before, std::size_t& folderCount) {
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
    ShredHost(FileScrutiny asked, Progress line, ConsoleMessages& console)
        : SecureDeleteHost(IsInterrupted()), scrutiny(asked), messages(console), progress(line) {}

    void SetTarget(const Target& next) {
        target = &next;
        trail = {};
    }
    std::size_t DeletedCount() const { return deletedCount; }
    std::size_t LeftCount() const { return leftCount; }

    // Counts what is to be deleted, if that is shown.
    void Count(const std::vector<HeldTarget>& targets) {
        if (!progress.IsUsed()) return;
        ItemSizes sizes;
        for (const HeldTarget& each : targets) {
            current = each.target.name;
            state.AddItem(sizes.Measure(each.target.object, [this](const DeletionSize& soFar) {
                state.Counting(soFar);
                ShowState();
                return !stopRequested;
            }));
        }
        state.Start();
    }
    void EndItem() { state.EndItem(); }

    void BeginEntry(const std::string& name) override {
        current = name;
        ShowState();
    }
    void BeginDeleting(const std::string& name) override { BeginEntry(name); }
    void Overwritten(ULONGLONG bytes) override {
        state.Overwritten(bytes);
        ShowState();
    }
    void Deleted(const std::string& /*name*/) override {
        ++deletedCount;
        state.Deleted();
    }
    void Failed(const Outcome& failure) override { Leave(failure.object, LineText(failure), failure.code); }

    FileScrutiny Scrutiny() const override { return scrutiny; }
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

    // Folders in which names were counted are removed here at the latest.
    void EndSeclusion() {
        progress.Clear();
        trail = {};
        seclusion.End();
        for (Outcome& left : seclusion.TakeLeftovers()) {
            left.object = target->name;
            Failed(left);
        }
    }

    // Prints why an object of the current folder stays.
    void Leave(const std::string& name, const std::string& reason, DWORD code = ERROR_SUCCESS) {
        ++leftCount;
        progress.Clear();
        // The first name is the target's own, as the user typed it.
        const std::string path = trail.PathOf(name);
        const std::size_t separator = path.find('\\');
        const std::string below = separator == path.npos ? "" : path.substr(separator);
        messages.SetSubject(TypedPath(*target, below));
        messages.Say(reason, code);
    }

  private:
    void ShowState() {
        if (progress.IsDue()) progress.ShowNow(state.Look(std::chrono::steady_clock::now()).text, current);
    }

    const FileScrutiny scrutiny;
    ConsoleMessages& messages;
    ProgressLine progress;
    DeletionProgress state;
    std::string current;  // the object at hand
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

class ShredCommand : public ObjectCommand {
  public:
    explicit ShredCommand(const CommandParent& parent)
        : ObjectCommand(parent, "shred",
                        "Overwrite files with zeros on the disk, then delete them; folders with all\n"
                        "that is in them. Links are removed, never followed, and what is mounted\n"
                        "below stays. What the disk itself keeps (spare sectors, flash memory,\n"
                        "journals, snapshots) and copies elsewhere are not reached") {}

  private:
    // Only this command holds the files: a file that another process has open is not deleted.
    void Hold(Target& /*target*/) override {}
    ChangeOutput* Output() override { return &output; }
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;
    bool Look(const HeldTarget& each);

    ChangeOutput output{*this, messages,
                        "Look for the objects and delete nothing; what stands in the way of overwriting is\n"
                        "found by the deletion alone"};
    YesFlag yes{*this};
    Flag force{*this, "--force",
               "Delete also files whose contents are known to stay on the disk or under\n"
               "another name: on copy-on-write file systems, compressed, encrypted or sparse\n"
               "ones on NTFS, ones with hard links, ones with named streams that move, ones\n"
               "that are written by way of a journal; and those of which it cannot be known\n"
               "whether they have further names or another program has them open"};
    QuietFlag quiet{*this};

    std::vector<HeldTarget> held;  // what is deleted is what the question was about
    std::size_t next = 0;          // of them
    std::optional<ShredHost> host;
};

ExitCode ShredCommand::Begin(const std::vector<Target>& targets) {
    std::size_t folderCount = 0;
    held.reserve(targets.size());
    for (const Target& target : targets)
        held.push_back(HoldForDeletion(target, held.empty() ? nullptr : &held.back(), folderCount));
    const ConsentTexts texts = {
        "shred destroys files for good",
        "These files, and folders with all that is in them, are overwritten and deleted for good:",
        "nothing was deleted"};
    if (!output.IsDryRun() && !yes && !AskForConsent(texts, targets, messages)) return ExitCode::kUsage;
    WatchForInterrupts();
    OutliveReaders();
    if (output.IsDryRun()) return ExitCode::kDone;
    host.emplace(force ? FileScrutiny::kNone : FileScrutiny::kObstacles,
                 quiet ? Progress::kQuiet : Progress::kShown, messages);
    host->Count(held);
    return ExitCode::kDone;
}

// What a dry run says of a target.
bool ShredCommand::Look(const HeldTarget& each) {
    if (each.target.place == PlaceKind::kDrives) {
        messages.Say("not deleted: it is a drive");
        return false;
    }
    if (!messages.Check({each.error, Step::kExamine, each.target.name})) return false;
    messages.PrintForPeople("would delete: " + PrintableText(each.target.argument) + '\n');
    output.SetChanged();
    return true;
}

bool ShredCommand::Do(const Target& /*target*/) {
    HeldTarget& each = held[next];
    if (output.IsDryRun()) {
        ++next;
        return Look(each);
    }
    const ObjectCounts soFar = {host->DeletedCount(), 0, host->LeftCount()};
    Shred(each, *host);
    ++next;
    const bool isLastOfFolder = next == held.size() || held[next].folder != each.folder;
    if (each.folder && (isLastOfFolder || IsInterrupted())) host->EndSeclusion();
    output.Count(ObjectCounts{host->DeletedCount(), 0, host->LeftCount()} - soFar);
    host->EndItem();
    each.target.object = {};  // a file that is remembered keeps its space
    return !IsInterrupted();  // what was left is counted
}

bool ShredCommand::End() {
    if (output.IsDryRun()) return !IsInterrupted();
    const std::size_t left = host->LeftCount();
    if (!held.empty()) host->EndSeclusion();
    output.CountOthers({0, 0, host->LeftCount() - left});
    messages.PrintForPeople("deleted: " + std::to_string(host->DeletedCount()) +
                            ", left: " + std::to_string(host->LeftCount()) + '\n');
    if (IsInterrupted())
        SayInterrupted(messages, "the rest is as it was, but for the file that was being overwritten");
    return host->LeftCount() == 0 && !IsInterrupted();
}

}  // namespace

std::unique_ptr<Command> MakeShred(const CommandParent& parent) {
    return std::make_unique<ShredCommand>(parent);
}

}  // namespace permora
