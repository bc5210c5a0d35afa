// Copies items with all that is in them.
#pragma once

#include <sys/stat.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/shell/clash_question.h"
#include "platform/linux/shell/file_contents.h"
#include "platform/linux/shell/new_file.h"
#include "platform/linux/shell/operation_walk.h"
#include "platform/linux/shell/target_folder.h"

namespace permora::host {

// The files that were copied whole, as they were then. What was changed since, or came only then, is not
// among them.
class CopiedFiles {
  public:
    void Add(const struct stat& source);
    bool Hold(const struct stat& source) const;

  private:
    struct State {
        timespec lastWrite;
        off_t size;
    };
    // One volume may number the files of its parts (Btrfs' subvolumes) alike.
    std::map<std::pair<dev_t, ino_t>, State> states;
};

// Questions, failures and progress go through `talk`. An item that cannot be copied is passed over, and what
// had its name stays. Links are copied as links. Pipes, sockets and devices are reported as not supported:
// they may have been meant for another machine.
class TreeCopy : public WalkHandler {
  public:
    // `target` must outlive this.
    TreeCopy(OperationTalk& user, TargetFolder& target) : talk(user), top(target), contents(user) {}

    // Copies one item, which is called `newName` in the target. In NewFilePlace::kReplacing the user has
    // already agreed that it replaces a file with that name. `copied`, which may be null, gets what was
    // copied.
    void Copy(const WalkedItem& item, std::string newName, NewFilePlace place = NewFilePlace::kFree,
              CopiedFiles* copied = nullptr);

    void File(const WalkedItem& item) override;
    bool Enter(const WalkedItem& item) override;
    void Leave(const WalkedItem& item) override;

  private:
    struct EnteredTarget {
        std::unique_ptr<TargetFolder> folder;
        bool isMade;  // rather than merged into
    };
    // What was settled about one file before it was tried again.
    struct FileAnswers {
        NewFilePlace place = NewFilePlace::kFree;
        bool mayLose = false;
    };

    TargetFolder& Current() { return entered.empty() ? top : *entered.back().folder; }
    const std::string& NewNameOf(const WalkedItem& item) const;
    bool ComesIntoItself(const WalkedItem& item);
    mode_t ModeOfCopy(mode_t mode) const;

    PutOutcome CopyOnce(const WalkedItem& item, FileAnswers& answers, DWORD& error);
    PutOutcome CopyFile(const WalkedItem& item, const std::string& hostName, FileAnswers& answers,
                        DWORD& error);
    PutOutcome CopyLink(const WalkedItem& item, const std::string& hostName, NewFilePlace place,
                        DWORD& error);
    // A link that is made as `madeName` and then, where that is another, put in the place of `hostName`.
    DWORD PutLink(const WalkedItem& item, const std::string& text, const std::string& madeName,
                  const std::string& hostName);
    PutOutcome EnterOnce(const WalkedItem& item, DWORD& error);
    bool AgreesToLoss(const WalkedItem& item, DWORD loss);

    OperationTalk& talk;
    TargetFolder& top;
    ContentsCopier contents;
    std::vector<EnteredTarget> entered;  // below `top`, as the walk is below the item
    std::string topName;
    NewFilePlace topPlace = NewFilePlace::kFree;
    VolumeTraits sourceVolume;
    CopiedFiles* record = nullptr;
};

}  // namespace permora::host
