#include "platform/linux/shell/operation_walk.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <utility>
#include <vector>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/folder_listing.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/shell/item_finder.h"

namespace permora::host {
namespace {

struct EnteredFolder {
    EnteredFolder(UniqueFd opened, std::string name)
        : listing(std::move(opened)), hostName(std::move(name)) {}

    FolderListing listing;
    std::string hostName;
};

class ItemWalk {
  public:
    ItemWalk(const WalkedItem& item, OperationTalk& user, WalkHandler& doer)
        : top(item), talk(user), handler(doer), path(item.folderPath) {}

    void Run() {
        talk.progress.fromFolder = path;
        Handle(top);
        while (!entered.empty() && talk.GoesOn()) {
            DWORD error = ERROR_SUCCESS;
            if (FolderListing::Entry entry{}; entered.back()->listing.Next(entry, error)) {
                HandleEntry(entry.name);
            } else {
                // The listing cannot be taken up again in the middle.
                if (error != ERROR_SUCCESS) talk.FailsForGood({.path = path, .isFolder = true}, error);
                LeaveFolder();
            }
        }
    }

  private:
    // Of the folder that is listed now; of the one that holds the item when none is.
    int Descriptor() const { return entered.empty() ? top.folder : entered.back()->listing.Descriptor(); }

    void Handle(const WalkedItem& item) {
        talk.progress.name = EncodeName(item.hostName);
        if (!talk.GoesOn()) return;
        if (item.object.IsFolder()) {
            if (handler.Enter(item) && EnterFolder(item)) return;
        } else {
            handler.File(item);
        }
        ++talk.progress.itemsDone;
    }

    void HandleEntry(const std::string& hostName) {
        ObjectHandle object;
        for (;;) {
            const DWORD error = ObjectHandle::OpenUnmountedAt(Descriptor(), hostName.c_str(), object);
            if (error == ERROR_FILE_NOT_FOUND) return;
            if (error == ERROR_SUCCESS) return Handle({Descriptor(), path, hostName, object});
            FileOperationObject failed;
            failed.path = JoinShownPath(path, EncodeName(hostName));
            if (talk.Fails(std::move(failed), error) == OperationTalk::AfterFailure::kPassOver) return;
        }
    }

    // False when it cannot be listed; it is left then.
    bool EnterFolder(const WalkedItem& item) {
        UniqueFd listing;
        DWORD error = item.object.OpenForListing(listing);
        while (error != ERROR_SUCCESS &&
               talk.Fails(item.Described(), error) == OperationTalk::AfterFailure::kRetry)
            error = item.object.OpenForListing(listing);
        if (error != ERROR_SUCCESS) {
            if (!talk.IsCancelled()) handler.Leave(item);
            return false;
        }
        entered.push_back(std::make_unique<EnteredFolder>(std::move(listing), item.hostName));
        path = JoinShownPath(path, EncodeName(item.hostName));
        talk.progress.fromFolder = path;
        return true;
    }

    void LeaveFolder() {
        const std::unique_ptr<EnteredFolder> left = std::move(entered.back());
        entered.pop_back();
        path = entered.empty() ? top.folderPath : path.substr(0, path.rfind('\\'));
        talk.progress.fromFolder = path;
        // Of the folder that was listed, whatever has its name by now.
        UniqueFd opened(
            open(DescriptorPath(left->listing.Descriptor()).Text(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        ObjectHandle object;
        const DWORD error = opened ? ObjectHandle::Adopt(std::move(opened), object) : ErrorFromErrno(errno);
        if (error != ERROR_SUCCESS) {
            talk.FailsForGood({.path = JoinShownPath(path, EncodeName(left->hostName)), .isFolder = true},
                              error);
            talk.Cancel();
            return;
        }
        talk.progress.name = EncodeName(left->hostName);
        handler.Leave({Descriptor(), path, left->hostName, object});
        ++talk.progress.itemsDone;
    }

    const WalkedItem& top;
    OperationTalk& talk;
    WalkHandler& handler;
    std::string path;  // of the folder that is listed now, as shown
    std::vector<std::unique_ptr<EnteredFolder>> entered;
};

}  // namespace

std::string WalkedItem::ShownPath() const {
    return JoinShownPath(folderPath, EncodeName(hostName));
}

void WalkItem(const WalkedItem& top, OperationTalk& talk, WalkHandler& handler) {
    ItemWalk(top, talk, handler).Run();
}

void RemoveName(const WalkedItem& item, int flags, OperationTalk& talk) {
    while (unlinkat(item.folder, item.hostName.c_str(), flags) != 0 && errno != ENOENT) {
        const DWORD error = ErrorFromErrno(errno);
        if (talk.Fails(item.Described(), error) == OperationTalk::AfterFailure::kPassOver) return;
    }
}

}  // namespace permora::host
