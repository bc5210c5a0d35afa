#include "platform/linux/files/tree_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/unique_fd.h"

namespace permora::host {

namespace {

// Reads the names in an open folder, a block at a time.
class FolderListing {
  public:
    FolderListing(UniqueFd opened, const char* hostName) : folder(std::move(opened)), name(hostName) {}

    int Descriptor() const { return folder.Get(); }
    const char* Name() const { return name.c_str(); }

    // The next name, or null at the end or on an error (`error` is then not 0). Lives until the next call.
    const char* Next(DWORD& error) {
        for (;;) {
            if (position == filled && !Fill(error)) return nullptr;
            const char* entry = TakeEntry();
            if (std::string_view(entry) != "." && std::string_view(entry) != "..") return entry;
        }
    }

  private:
    static constexpr std::size_t kBlockBytes = 8192;

    bool Fill(DWORD& error) {
        const long count = syscall(SYS_getdents64, folder.Get(), block.data(), block.size());
        // A folder that was removed while it was open has no more names.
        if (count < 0 && errno != ENOENT) error = ErrorFromErrno(errno);
        if (count <= 0) return false;
        filled = static_cast<std::size_t>(count);
        position = 0;
        return true;
    }

    const char* TakeEntry() {
        const std::uint8_t* entry = block.data() + position;
        std::uint16_t length = 0;
        std::memcpy(&length, entry + offsetof(dirent64, d_reclen), sizeof length);
        position += length;
        return reinterpret_cast<const char*>(entry + offsetof(dirent64, d_name));
    }

    UniqueFd folder;
    std::string name;
    std::size_t position = 0;
    std::size_t filled = 0;
    std::array<std::uint8_t, kBlockBytes> block;
};

// Opens an entry of a folder unless something is mounted on it. EXDEV: something is.
int OpenUnmountedEntry(int folder, const char* name, UniqueFd& opened) {
    open_how how{};
    how.flags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
    how.resolve = RESOLVE_NO_XDEV;
    const long descriptor = syscall(SYS_openat2, folder, name, &how, sizeof how);
    if (descriptor < 0) return errno;
    opened.Reset(static_cast<int>(descriptor));
    return 0;
}

// A thousand descriptors is the usual limit, tens of thousands are usually allowed to who asks.
void RaiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

class TreeWalk {
  public:
    explicit TreeWalk(TreeVisitor& caller) : visitor(caller) {}

    void Run(const ObjectHandle& folder) {
        Enter(folder, "");
        while (!open.empty() && !isStopped) {
            DWORD error = ERROR_SUCCESS;
            if (const char* name = open.back()->Next(error); name != nullptr) {
                VisitEntry(name);
                continue;
            }
            const std::unique_ptr<FolderListing> ended = std::move(open.back());
            open.pop_back();
            if (error != ERROR_SUCCESS) visitor.Fail(error, ended->Name(), DepthOf(open.size()));
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
        open.push_back(std::make_unique<FolderListing>(std::move(listing), name));
    }

    void VisitEntry(const char* name) {
        const std::size_t depth = open.size() - 1;
        UniqueFd opened;
        const int problem = OpenUnmountedEntry(open.back()->Descriptor(), name, opened);
        if (problem == ENOENT) return;
        ObjectHandle object;
        const DWORD error =
            problem != 0 ? ErrorFromErrno(problem) : ObjectHandle::Adopt(std::move(opened), object);
        if (error != ERROR_SUCCESS) {
            visitor.Fail(error, name, depth);
            return;
        }
        const WalkDecision decision = visitor.Visit(object, name, depth);
        isStopped = decision == WalkDecision::kStop;
        if (decision == WalkDecision::kDescend && object.IsFolder()) Enter(object, name);
    }

    TreeVisitor& visitor;
    std::vector<std::unique_ptr<FolderListing>> open;  // from the walked folder down to the current one
    bool isStopped = false;
};

}  // namespace

void WalkTree(const ObjectHandle& folder, TreeVisitor& visitor) {
    RaiseDescriptorLimit();
    TreeWalk(visitor).Run(folder);
}

}  // namespace permora::host
