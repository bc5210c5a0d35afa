#include "tests/support/own_mounts.h"

#include <mntent.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {

namespace {

struct MountTableCloser {
    void operator()(FILE* table) const { endmntent(table); }
};

std::vector<std::string> MountsOfTests() {
    const std::unique_ptr<FILE, MountTableCloser> table(setmntent("/proc/self/mounts", "re"));
    std::vector<std::string> places;
    while (const mntent* entry = table ? getmntent(table.get()) : nullptr)
        if (std::string place = entry->mnt_dir; place.find(kTemporaryFolderPrefix) != std::string::npos)
            places.push_back(std::move(place));
    return places;
}

}  // namespace

std::string EnterOwnMounts() {
    if (unshare(CLONE_NEWNS) != 0) return std::string("unshare: ") + std::strerror(errno);
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return std::string("private mounts: ") + std::strerror(errno);
    for (const std::string& place : MountsOfTests())
        umount2(place.c_str(), MNT_DETACH | UMOUNT_NOFOLLOW);  // one that has gone meanwhile is no loss
    return {};
}

std::string HaveOwnFolder(const std::string& folder, FolderContents contents) {
    struct stat status {};
    if (stat(folder.c_str(), &status) != 0) return folder + ": " + std::strerror(errno);
    const TemporaryFolder aside;
    if (contents == FolderContents::kCopied) {
        const CommandResult copied = RunCommand({"cp", "-a", folder + "/.", aside.Path()});
        if (copied.exitCode != 0) return copied.output;
    }
    if (mount("tmpfs", folder.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, nullptr) != 0 ||
        chmod(folder.c_str(), status.st_mode & 07777) != 0)
        return folder + ": " + std::strerror(errno);
    if (contents == FolderContents::kNone) return {};
    const CommandResult filled = RunCommand({"cp", "-a", aside.Path() + "/.", folder});
    return filled.exitCode == 0 ? "" : filled.output;
}

}  // namespace permora::test
