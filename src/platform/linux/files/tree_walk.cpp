#include "platform/linux/files/tree_walk.h"

#include <fcntl.h>

#include <cerrno>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/folder_listing.h"
#include "platform/linux/files/unmounted_entry.h"

namespace permora::host {

namespace {

// A folder on the way down, with its own bare name.
struct WalkedFolder {
    WalkedFolder(UniqueFd opened, const char* hostName) : listing(std::move(opened)), name(hostName) {}

    FolderListing listing;
    std::string name;
};

class TreeWalk {
  public:
    explicit TreeWalk(TreeVisitor& caller) : visitor(caller) {}

    void Run(const ObjectHandle& folder) {
        Enter(folder, "");
        while (!open.empty() && !isStopped) {
            DWORD error = ERROR_SUCCESS;
            if (FolderListing::Entry entry{}; open.back()->listing.Next(entry, error)) {
                VisitEntry(entry.name);
                continue;
            }
            const std::unique_ptr<WalkedFolder> ended = std::move(open.back());
            open.pop_back();
            if (error != ERROR_SUCCESS) visitor.Fail(error, ended->name.c_str(), DepthOf(open.size()));
        }
    }

  private:
    // The depth of a folder that is listed while `above` others are: the walked one has none, nor a name.
    static std::size_t DepthOf(std::size_t above) { return above == 0 ? 0 : above - 1; }

    void Enter(const ObjectHandle& folder, const char* name) {
        UniqueFd listing;
        const DWORD error = folder.OpenForListing(listing);
        if (error == ERROR_FILE_NOT_FOUND) return;
        if (error != ERROR_SUCCESS) {
            visitor.Fail(error, name, DepthOf(open.size()));
            return;
        }
        open.push_back(std::make_unique<WalkedFolder>(std::move(listing), name));
    }

    void VisitEntry(const char* name) {
        const std::size_t depth = open.size() - 1;
        ObjectHandle object;
        const int folder = open.back()->listing.Descriptor();
        const DWORD error = ObjectHandle::OpenUnmountedAt(folder, name, object);
        if (error == ERROR_FILE_NOT_FOUND) return;
        if (error != ERROR_SUCCESS) {
            visitor.Fail(error, name, depth);
            return;
        }
        visitor.SetFolder(folder);
        const WalkDecision decision = visitor.Visit(object, name, depth);
        isStopped = decision == WalkDecision::kStop;
        if (decision == WalkDecision::kDescend && object.IsFolder()) Enter(object, name);
    }

    TreeVisitor& visitor;
    std::vector<std::unique_ptr<WalkedFolder>> open;  // from the walked folder down to the current one
    bool isStopped = false;
};

}  // namespace

void WalkTree(const ObjectHandle& folder, TreeVisitor& visitor) {
    RaiseDescriptorLimit();
    TreeWalk(visitor).Run(folder);
}

}  // namespace permora::host
