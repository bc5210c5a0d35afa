#include "cli/shred_command.h"

#include <cstdint>

#include "cli/consent.h"
#include "cli/terminal_output.h"
#include "cli/tree_progress.h"
#include "deletion/secure_delete.h"
#include "platform/api/errors.h"

namespace permora {
namespace {

const char* TextOf(OverwriteObstacle obstacle) {
    switch (obstacle) {
        case OverwriteObstacle::kSeveralNames:
            return "it has further names (hard links)";
        case OverwriteObstacle::kCopyOnWriteVolume:
            return "its file system never writes over what is there";
        case OverwriteObstacle::kCompressed:
            return "it is compressed";
        case OverwriteObstacle::kEncrypted:
            return "it is encrypted";
        case OverwriteObstacle::kSparse:
            return "it is sparse";
        case OverwriteObstacle::kNamedStreams:
            return "it has named streams, which this mount moves when it writes them";
        case OverwriteObstacle::kJournaled:
            return "its file system writes it by way of the journal";
    }
    return "";
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
        folders.clear();
    }
    std::size_t DeletedCount() const { return deletedCount; }
    std::size_t LeftCount() const { return leftCount; }

    void BeginEntry(const std::string& name) override { progress.Show(deletedCount, name.c_str()); }
    void EnterFolder(const std::string& name) override { folders.push_back(name); }
    void LeaveFolder() override { folders.pop_back(); }
    void Deleted(const std::string& /*name*/) override { ++deletedCount; }
    void Failed(const DeletionFailure& failure) override { Leave(failure.name, StatusText(failure)); }

    bool MayOverwrite(const FileHandle& file, const std::string& name) override {
        if (arguments.force) return true;
        std::vector<OverwriteObstacle> obstacles;
        if (const DWORD error = file.FindObstacles(obstacles); error != ERROR_SUCCESS) {
            Failed({DeletionStep::kExamine, name, error});
            return false;
        }
        if (obstacles.empty()) return true;
        std::string reasons;
        for (const OverwriteObstacle obstacle : obstacles)
            reasons += (reasons.empty() ? "" : ", ") + std::string(TextOf(obstacle));
        Leave(name,
              "not deleted, its contents would stay: " + reasons + " (--force deletes it all the same)");
        return false;
    }

    // Tells why an object of the current folder stays.
    void Leave(const std::string& name, const std::string& reason) {
        ++leftCount;
        progress.Clear();
        // The first of the names is the target's own, which the user has typed.
        std::string below;
        for (std::size_t i = 1; i < folders.size(); ++i)
            below += '\\' + folders[i];
        if (!folders.empty()) below += '\\' + name;
        messages.SetSubject(TypedPath(*target, below));
        messages.Say(reason);
    }

  private:
    const Arguments& arguments;
    ConsoleMessages& messages;
    ProgressLine progress;
    const Target* target = nullptr;
    std::vector<std::string> folders;  // from the target down to the current one
    std::size_t deletedCount = 0;
    std::size_t leftCount = 0;
};

void Shred(const Target& target, ShredHost& host) {
    host.SetTarget(target);
    if (target.place == ItemPlace::kDriveRoot) {
        host.Leave(target.name, "not deleted: it is a drive");
        return;
    }
    FolderHandle folder;
    DWORD error = EnterFolder(target);
    if (error == ERROR_SUCCESS) error = FolderHandle::OpenCurrent(folder);
    if (error != ERROR_SUCCESS) {
        host.Failed({DeletionStep::kExamine, target.name, error});
        return;
    }
    SecureDeleteItem(host, folder, target.name);
}

}  // namespace

bool ConfirmShred(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages) {
    if (arguments.yes || targets.empty()) return true;
    return AskForConsent(
        {"shred destroys files for good",
         "These files, and folders with all that is in them, are overwritten and deleted for good:",
         "nothing was deleted"},
        targets, messages);
}

bool RunShred(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages) {
    ShredHost host(arguments, messages);
    WatchForInterrupts();
    for (const Target& target : targets) {
        if (IsInterrupted()) break;
        Shred(target, host);
    }
    Print("deleted: " + std::to_string(host.DeletedCount()) + ", left: " + std::to_string(host.LeftCount()) +
          '\n');
    if (IsInterrupted())
        SayInterrupted(messages, "the rest is as it was, but for the file that was being overwritten");
    return host.LeftCount() == 0 && !IsInterrupted();
}

}  // namespace permora
