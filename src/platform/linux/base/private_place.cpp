#include "platform/private_place.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/fnv_hash.h"
#include "platform/host_path.h"
#include "platform/linux/base/foreign_environment.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/base/user_folders.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/object_handle.h"

namespace permora {
namespace {

using host::UniqueFd;

DWORD OpenError(int problem) {
    return problem == ELOOP ? ERROR_CANT_RESOLVE_FILENAME : host::ErrorFromErrno(problem);
}

bool IsOurs(const struct stat& status) {
    return status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// The number of this run of the machine; processes of another one may have the same numbers and times.
std::uint64_t RunOfMachine() {
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string id;
    std::getline(file, id);
    return HashFnv(id);
}

// The 22nd field of its line, counted behind the name, which may contain anything. 0: no such process.
std::int64_t StartOf(std::int64_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line, '\0');
    std::size_t place = line.rfind(')');
    for (int field = 2; field < 22 && place != std::string::npos; ++field)
        place = line.find(' ', place + 1);
    if (place == std::string::npos) return 0;
    std::uint64_t start = 0;
    std::from_chars(line.data() + place + 1, line.data() + line.size(), start);
    // The sum of different ones is different, whatever the run's number is.
    return static_cast<std::int64_t>(RunOfMachine() + start);
}

}  // namespace

std::string StateFolder() {
    const char* named = std::getenv("XDG_STATE_HOME");
    if (geteuid() == 0 && (named == nullptr || *named == '\0')) return "/var/lib/permora";
    const std::string folder = host::UserStateFolder();
    return folder.empty() ? folder : folder + "/permora";
}

struct PrivateFolder::Inside {
    UniqueFd folder;
    struct stat status {};
};

PrivateFolder::PrivateFolder() : inside(std::make_unique<Inside>()) {}
PrivateFolder::~PrivateFolder() = default;

std::string PrivateFolder::PathOf(std::string_view name) const {
    return host::DescriptorPath(inside->folder.Get()).Text() + ('/' + std::string(name));
}

DWORD PrivateFolder::Hold(const std::string& path, MissingFolder missing,
                          std::shared_ptr<const PrivateFolder>& folder) {
    if (missing == MissingFolder::kMake) {
        // With all that is missing above it. What fails there makes the last one fail.
        for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1))
            mkdir(path.substr(0, end).c_str(), S_IRWXU);
        if (mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) return OpenError(errno);
    }
    std::shared_ptr<PrivateFolder> held(new PrivateFolder);
    const struct stat& status = held->inside->status;
    held->inside->folder.Reset(open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!held->inside->folder) return errno == ENOENT ? ERROR_PATH_NOT_FOUND : OpenError(errno);
    if (fstat(held->inside->folder.Get(), &held->inside->status) != 0) return host::ErrorFromErrno(errno);
    if (S_ISLNK(status.st_mode)) return ERROR_CANT_RESOLVE_FILENAME;
    if (!S_ISDIR(status.st_mode)) return ERROR_DIRECTORY;
    if (!IsOurs(status)) return ERROR_INVALID_OWNER;
    // A library that knows files by their identity may go on with the path by which it met one first, when
    // the first user is gone: all have the same.
    static struct {
        std::mutex guard;
        std::vector<std::weak_ptr<const PrivateFolder>> folders;
    } known;
    const std::lock_guard lock(known.guard);
    std::erase_if(known.folders, [](const auto& each) { return each.expired(); });
    for (const auto& each : known.folders) {
        std::shared_ptr<const PrivateFolder> same = each.lock();
        if (!same || !host::AreOneObject(same->inside->status, status)) continue;
        folder = std::move(same);
        return ERROR_SUCCESS;
    }
    known.folders.push_back(held);
    folder = std::move(held);
    return ERROR_SUCCESS;
}

DWORD CheckPrivateFile(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return OpenError(errno);
    if (S_ISLNK(status.st_mode)) return ERROR_CANT_RESOLVE_FILENAME;
    if (!S_ISREG(status.st_mode)) return ERROR_FILE_CORRUPT;
    return IsOurs(status) && status.st_nlink == 1 ? ERROR_SUCCESS : ERROR_INVALID_OWNER;
}

// Without opening it: to close a file gives up all locks that this process has on it, those of a database
// too.
DWORD MakePrivateFile(const std::string& path) {
    const bool isThere = mknod(path.c_str(), S_IFREG | S_IRUSR | S_IWUSR, 0) == 0 || errno == EEXIST;
    return isThere ? ERROR_SUCCESS : OpenError(errno);
}

bool MayOthersSteerBy(const std::string& path) {
    return geteuid() == 0 && !host::IsRootsAlone(HostPathFromPath(path));
}

DWORD CheckWritable(const std::string& path) {
    return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 ? ERROR_SUCCESS : OpenError(errno);
}

DWORD ErrorOfHost(int number) {
    return host::ErrorFromErrno(number);
}

ProcessMark ThisProcess() {
    return {getpid(), StartOf(getpid())};
}

bool IsRunning(const ProcessMark& process) {
    const std::int64_t start = StartOf(process.number);
    return start != 0 && start == process.start;
}

}  // namespace permora
