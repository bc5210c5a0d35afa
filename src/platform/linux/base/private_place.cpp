#include "platform/private_place.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/base/user_folders.h"
#include "platform/linux/files/descriptor_path.h"

namespace permora {
namespace {

using host::UniqueFd;

DWORD OpenError(int problem) {
    return problem == ELOOP ? ERROR_CANT_RESOLVE_FILENAME : host::ErrorFromErrno(problem);
}

bool IsOurs(const struct stat& status) {
    return status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// The 22nd field of its line, counted behind the name, which may contain anything.
std::int64_t StartOf(std::int64_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line, '\0');
    std::size_t place = line.rfind(')');
    for (int field = 2; field < 22 && place != std::string::npos; ++field)
        place = line.find(' ', place + 1);
    if (place == std::string::npos) return 0;
    std::int64_t start = 0;
    std::from_chars(line.data() + place + 1, line.data() + line.size(), start);
    return start;
}

}  // namespace

std::string StateFolder() {
    const char* named = std::getenv("XDG_STATE_HOME");
    if (geteuid() == 0 && (named == nullptr || *named == '\0')) return "/var/lib/permora";
    const std::string folder = host::UserStateFolder();
    return folder.empty() ? folder : folder + "/permora";
}

DWORD FindPrivateFolder(const std::string& path, MissingFolder missing, std::string& place) {
    if (missing == MissingFolder::kMake) {
        std::error_code error;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
        if (mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) return OpenError(errno);
    }
    const UniqueFd folder(open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) return errno == ENOENT ? ERROR_PATH_NOT_FOUND : OpenError(errno);
    struct stat status {};
    if (fstat(folder.Get(), &status) != 0) return host::ErrorFromErrno(errno);
    if (S_ISLNK(status.st_mode)) return ERROR_CANT_RESOLVE_FILENAME;
    if (!S_ISDIR(status.st_mode)) return ERROR_DIRECTORY;
    if (!IsOurs(status)) return ERROR_INVALID_OWNER;
    return host::HostPathOf(folder.Get(), place);
}

DWORD CheckPrivateFile(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return OpenError(errno);
    if (S_ISLNK(status.st_mode)) return ERROR_CANT_RESOLVE_FILENAME;
    if (!S_ISREG(status.st_mode)) return ERROR_FILE_CORRUPT;
    return IsOurs(status) && status.st_nlink == 1 ? ERROR_SUCCESS : ERROR_INVALID_OWNER;
}

DWORD MakePrivateFile(const std::string& path) {
    const UniqueFd file(
        open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, S_IRUSR | S_IWUSR));
    return file ? ERROR_SUCCESS : OpenError(errno);
}

ProcessMark ThisProcess() {
    return {getpid(), StartOf(getpid())};
}

bool IsRunning(const ProcessMark& process) {
    const std::int64_t start = StartOf(process.number);
    return start != 0 && start == process.start;
}

}  // namespace permora
