#include "bench/sample_tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/api/errors.h"
#include "tests/support/access_lists.h"

namespace permora::bench {

namespace {

constexpr std::size_t kFilesInAFolder = 100;
constexpr const char* kTopDescriptor = "O:BAG:BUD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)";

bool MakeFile(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    return file >= 0 && close(file) == 0;
}

// The plain loop: as few and as short calls as a loop can make that looks after nothing but speed. Each
// folder becomes the current directory, so that the kernel finds every name at once.
enum class LoopWork { kRead, kRewrite };

class AttributeLoop {
  public:
    AttributeLoop(const char* attribute, LoopWork task, std::optional<uid_t> hostOwner)
        : name(attribute), work(task), owner(hostOwner) {}

    // The current directory with all that is in it.
    bool Run() {
        if (!Rewrite(".")) return false;
        const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("."), closedir);
        if (!folder) return false;
        while (const dirent* entry = readdir(folder.get())) {
            const std::string_view entryName = entry->d_name;
            if (entryName == "." || entryName == "..") continue;
            if (entry->d_type != DT_DIR) {
                if (!Rewrite(entry->d_name)) return false;
            } else if (chdir(entry->d_name) != 0 || !Run() || fchdir(dirfd(folder.get())) != 0) {
                return false;
            }
        }
        return true;
    }

    std::size_t Count() const { return count; }

  private:
    bool Rewrite(const char* path) {
        std::array<std::uint8_t, 4096> value;
        const ssize_t size = lgetxattr(path, name, value.data(), value.size());
        if (size <= 0) return false;
        ++count;
        if (work == LoopWork::kRead) return true;
        // The last byte belongs to a SID's highest sub-authority.
        value[static_cast<std::size_t>(size) - 1] ^= 1U;
        if (owner && lchown(path, *owner, static_cast<gid_t>(-1)) != 0) return false;
        return lsetxattr(path, name, value.data(), static_cast<std::size_t>(size), 0) == 0;
    }

    const char* const name;
    const LoopWork work;
    const std::optional<uid_t> owner;
    std::size_t count = 0;
};

bool IsFolder(std::size_t index) {
    return index % (kFilesInAFolder + 1) == 0;
}

}  // namespace

std::vector<std::string> SampleTreePaths(const std::string& top, std::size_t objects) {
    std::vector<std::string> paths;
    paths.reserve(objects);
    std::string folder;
    for (std::size_t i = 0; i < objects; ++i) {
        if (IsFolder(i)) folder = top + "/folder" + std::to_string(i);
        paths.push_back(IsFolder(i) ? folder : folder + "/file" + std::to_string(i));
    }
    return paths;
}

bool MakeSampleTree(const std::string& top, std::size_t objects) {
    if (mkdir(top.c_str(), 0755) != 0) return false;
    if (test::SetDescriptorText(top, kTopDescriptor) != ERROR_SUCCESS) return false;
    const std::vector<std::string> paths = SampleTreePaths(top, objects);
    for (std::size_t i = 0; i < objects; ++i) {
        const bool isMade = IsFolder(i) ? mkdir(paths[i].c_str(), 0755) == 0 : MakeFile(paths[i]);
        // An empty list that is not protected takes what the folder hands down.
        if (!isMade || test::SetDescriptorText(paths[i], "O:BAG:BUD:") != ERROR_SUCCESS) return false;
    }
    return true;
}

namespace {

std::size_t RunLoop(const std::string& top, AttributeLoop loop) {
    const int before = open(".", O_PATH | O_DIRECTORY | O_CLOEXEC);
    const bool isDone = before >= 0 && chdir(top.c_str()) == 0 && loop.Run();
    const bool isBack = before >= 0 && fchdir(before) == 0;
    close(before);
    return isDone && isBack ? loop.Count() : 0;
}

}  // namespace

std::size_t ReadAttributes(const std::string& top, const char* name) {
    return RunLoop(top, AttributeLoop(name, LoopWork::kRead, std::nullopt));
}

std::size_t RewriteAttributes(const std::string& top, const char* name, std::optional<uid_t> owner) {
    return RunLoop(top, AttributeLoop(name, LoopWork::kRewrite, owner));
}

}  // namespace permora::bench
