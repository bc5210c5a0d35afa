#include "tests/support/tree_state.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <filesystem>

namespace permora::test {
namespace {

std::string StateOfObject(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    std::string state = std::to_string(status.st_uid);
    for (const char* name : {"security.NTACL", "user.permora.sd", "system.ntfs_acl"}) {
        std::string value(65536, '\0');
        const ssize_t size = lgetxattr(path.c_str(), name, value.data(), value.size());
        if (size >= 0) state += std::string(" ") + name + value.substr(0, static_cast<std::size_t>(size));
    }
    return state;
}

void AddMissing(const TreeState& one, const TreeState& other, std::string& text) {
    for (const auto& [object, state] : one)
        if (!other.contains(object)) text += '\'' + object + "' ";
}

}  // namespace

std::vector<std::string> ObjectsOf(const std::string& root) {
    std::vector<std::string> objects = {""};
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
        objects.push_back(entry.path().string().substr(root.size() + 1));
    std::ranges::sort(objects);
    return objects;
}

std::string PathInTree(const std::string& root, const std::string& object) {
    return object.empty() ? root : root + '/' + object;
}

TreeState StateOfTree(const std::string& root) {
    TreeState state;
    for (const std::string& object : ObjectsOf(root))
        state[object] = StateOfObject(PathInTree(root, object));
    return state;
}

std::string DifferenceOf(const TreeState& one, const TreeState& other) {
    std::string text;
    AddMissing(one, other, text);
    AddMissing(other, one, text);
    for (const auto& [object, state] : one)
        if (const auto found = other.find(object); found != other.end() && found->second != state)
            text += '\'' + object + "' ";
    return text;
}

}  // namespace permora::test
