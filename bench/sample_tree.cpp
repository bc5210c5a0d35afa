#include "bench/sample_tree.h"

#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstdint>

#include "platform/api/errors.h"
#include "tests/support/access_lists.h"

namespace permora::bench {

namespace {

constexpr std::size_t kFilesInAFolder = 100;
constexpr const char* kTopDescriptor = "O:BAG:BUD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)";

// The state of nftw's function, which takes no argument of ours.
const char* attributeName = nullptr;
std::size_t attributeCount = 0;
std::optional<uid_t> hostOwner;

bool MakeFile(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    return file >= 0 && close(file) == 0;
}

int RewriteAttribute(const char* path, const struct stat*, int, FTW*) {
    std::array<std::uint8_t, 65536> value;
    const ssize_t size = lgetxattr(path, attributeName, value.data(), value.size());
    if (size <= 0) return 1;
    ++attributeCount;
    // The last byte belongs to a SID's highest sub-authority.
    value[static_cast<std::size_t>(size) - 1] ^= 1U;
    if (hostOwner && lchown(path, *hostOwner, static_cast<gid_t>(-1)) != 0) return 1;
    return lsetxattr(path, attributeName, value.data(), static_cast<std::size_t>(size), 0) == 0 ? 0 : 1;
}

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

std::size_t RewriteAttributes(const std::string& top, const char* name, std::optional<uid_t> owner) {
    constexpr int kOpenFolders = 20;
    attributeName = name;
    hostOwner = owner;
    attributeCount = 0;
    return nftw(top.c_str(), RewriteAttribute, kOpenFolders, FTW_PHYS) == 0 ? attributeCount : 0;
}

}  // namespace permora::bench
