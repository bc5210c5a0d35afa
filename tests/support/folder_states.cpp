#include "tests/support/folder_states.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <utility>

namespace permora::test {

namespace {

namespace fs = std::filesystem;

// Nothing of an object changes without its time of change.
std::string StateOf(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return "unreadable";
    std::ostringstream state;
    state << "inode " << status.st_ino << " mode " << std::oct << status.st_mode << std::dec << " owner "
          << status.st_uid << ':' << status.st_gid << " size " << status.st_size << " changed "
          << status.st_ctim.tv_sec << '.' << status.st_ctim.tv_nsec;
    return state.str();
}

}  // namespace

FolderStates::FolderStates(std::vector<std::string> all, std::vector<std::string> without)
    : folders(std::move(all)), exceptions(std::move(without)), known(Read()) {}

std::map<std::string, std::string> FolderStates::Read() const {
    std::map<std::string, std::string> states;
    for (const std::string& folder : folders) {
        if (std::ranges::find(exceptions, folder) == exceptions.end()) states[folder] = StateOf(folder);
        std::error_code error;
        fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
        for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
            const std::string path = entry->path();
            if (std::ranges::find(exceptions, path) != exceptions.end())
                entry.disable_recursion_pending();
            else
                states[path] = StateOf(path);
        }
        if (error) states[folder] += " not read: " + error.message();
    }
    return states;
}

std::string FolderStates::Changes() {
    std::map<std::string, std::string> now = Read();
    std::string changes;
    for (const auto& [path, state] : now) {
        const auto before = known.find(path);
        if (before == known.end())
            changes += path + " is new\n";
        else if (before->second != state)
            changes.append(path).append(" was ").append(before->second).append(", is ").append(state) += '\n';
    }
    for (const auto& [path, state] : known)
        if (!now.contains(path)) changes += path + " is gone\n";
    known = std::move(now);
    return changes;
}

}  // namespace permora::test
