#include "platform/linux/shares/samba_user_share_files.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <set>
#include <utility>

#include "platform/linux/accounts/account_names.h"
#include "platform/linux/accounts/samba_output.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/letter_case.h"
#include "platform/linux/base/unique_listing.h"
#include "platform/linux/shares/samba_tools.h"

namespace permora::host {

namespace {

// One byte more than the server reads. It treats a longer file as damaged.
constexpr std::size_t kLongestFile = (10 << 10) + 1;
constexpr mode_t kMode = 0644;

DWORD ReadShareText(int file, std::string& text) {
    std::string read(kLongestFile, '\0');
    std::size_t length = 0;
    while (length < read.size()) {
        const ssize_t count =
            pread(file, read.data() + length, read.size() - length, static_cast<off_t>(length));
        if (count == 0) break;
        if (count > 0)
            length += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            return ErrorFromErrno(errno);
    }
    read.resize(length);
    text = std::move(read);
    return ERROR_SUCCESS;
}

DWORD WriteShareText(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(file, text.data(), text.size());
        if (count > 0)
            text.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return ErrorFromErrno(errno);
    }
    return ERROR_SUCCESS;
}

// The file changes its owner while it is empty and unknown to anybody.
DWORD MakeFile(int folder, const std::string& name, const std::string& text, const struct stat& like) {
    const UniqueFd file(
        openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kMode));
    if (!file) return ErrorFromErrno(errno);
    DWORD error = ERROR_SUCCESS;
    if (fchown(file.Get(), like.st_uid, like.st_gid) != 0 || fchmod(file.Get(), kMode) != 0)
        error = ErrorFromErrno(errno);
    if (error == ERROR_SUCCESS) error = WriteShareText(file.Get(), text);
    if (error == ERROR_SUCCESS && fsync(file.Get()) != 0) error = ErrorFromErrno(errno);
    if (error != ERROR_SUCCESS) unlinkat(folder, name.c_str(), 0);
    return error;
}

// Samba ignores names that begin with a colon, and uses them for its own unfinished files.
DWORD NewTemporaryName(std::string& name) {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) return ErrorFromErrno(errno);
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), ":tmp%016llx", static_cast<unsigned long long>(number));
    name = text.data();
    return ERROR_SUCCESS;
}

bool IsSameState(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino &&
           one.st_ctim.tv_sec == other.st_ctim.tv_sec && one.st_ctim.tv_nsec == other.st_ctim.tv_nsec;
}

}  // namespace

DWORD UserShareFolder::Open() {
    std::string settings;
    if (const DWORD error = ReadGlobalSettings(settings); error != ERROR_SUCCESS) return error;
    if (ParseGlobalParameter(settings, "usershare max shares") == "0") return ERROR_FILE_READ_ONLY;
    const std::string path = ParseGlobalParameter(settings, "usershare path");
    UniqueFd opened(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) return errno == ENOENT ? ERROR_FILE_READ_ONLY : ErrorFromErrno(errno);
    folder = std::move(opened);
    return ERROR_SUCCESS;
}

DWORD UserShareFolder::ListNames(std::vector<std::string>& names) const {
    const int again = openat(folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (again < 0) return ErrorFromErrno(errno);
    const UniqueListing listing(fdopendir(again));
    if (!listing) {
        const int problem = errno;
        close(again);
        return ErrorFromErrno(problem);
    }
    std::set<std::string> all;
    errno = 0;
    while (const dirent* entry = readdir(listing.get())) {
        const std::string_view name = entry->d_name;
        if (!name.starts_with('.') && !name.starts_with(':') && IsPlainAccountName(name)) all.emplace(name);
        errno = 0;
    }
    if (errno != 0) return ErrorFromErrno(errno);
    names.clear();
    for (const std::string& name : all) {
        const std::string small = InSmallLetters(name);
        if (small == name || !all.contains(small)) names.push_back(name);
    }
    return ERROR_SUCCESS;
}

DWORD UserShareFolder::FindName(std::string_view share, std::string& name) const {
    std::vector<std::string> names;
    if (const DWORD error = ListNames(names); error != ERROR_SUCCESS) return error;
    std::erase_if(names, [share](const std::string& listed) { return !IsSameShare(listed, share); });
    if (names.empty()) return NERR_NetNameNotFound;
    if (names.size() > 1) return NERR_DuplicateShare;
    name = std::move(names.front());
    return ERROR_SUCCESS;
}

DWORD UserShareFolder::Hold(const std::string& name, UserShareFile& file) const {
    UserShareFile held;
    held.name = name;
    held.file.Reset(openat(folder.Get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (!held.file || fstat(held.file.Get(), &held.status) != 0) return ErrorFromErrno(errno);
    if (!S_ISREG(held.status.st_mode)) return ERROR_ACCESS_DENIED;
    if (const DWORD error = ReadShareText(held.file.Get(), held.text); error != ERROR_SUCCESS) return error;
    file = std::move(held);
    return ERROR_SUCCESS;
}

DWORD UserShareFolder::CheckUnchanged(const UserShareFile& held) const {
    struct stat now {};
    if (fstatat(folder.Get(), held.name.c_str(), &now, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? NERR_NetNameNotFound : ErrorFromErrno(errno);
    return IsSameState(now, held.status) ? ERROR_SUCCESS : ERROR_FILE_INVALID;
}

// Where the two files can change places, what was put aside is looked at once more: a user who has replaced
// his own share in that very moment gets it back. Where that fails, what is aside
// is his and stays.
DWORD UserShareFolder::Replace(const UserShareFile& held, const std::string& text) const {
    if (held.status.st_nlink != 1) return ERROR_ACCESS_DENIED;
    std::string temporary;
    DWORD error = NewTemporaryName(temporary);
    if (error == ERROR_SUCCESS) error = MakeFile(folder.Get(), temporary, text, held.status);
    if (error != ERROR_SUCCESS) return error;
    const char* from = temporary.c_str();
    const char* to = held.name.c_str();
    error = CheckUnchanged(held);
    if (error == ERROR_SUCCESS && renameat2(folder.Get(), from, folder.Get(), to, RENAME_EXCHANGE) == 0) {
        struct stat aside {};
        const bool isOurs = fstatat(folder.Get(), from, &aside, AT_SYMLINK_NOFOLLOW) == 0 &&
                            aside.st_dev == held.status.st_dev && aside.st_ino == held.status.st_ino;
        if (!isOurs) {
            error = ERROR_FILE_INVALID;
            if (renameat2(folder.Get(), from, folder.Get(), to, RENAME_EXCHANGE) != 0) return error;
        }
    } else if (error == ERROR_SUCCESS && (errno == EINVAL || errno == ENOSYS)) {
        if (renameat(folder.Get(), from, folder.Get(), to) == 0) return ERROR_SUCCESS;
        error = ErrorFromErrno(errno);
    } else if (error == ERROR_SUCCESS) {
        error = ErrorFromErrno(errno);
    }
    unlinkat(folder.Get(), from, 0);
    return error;
}

DWORD UserShareFolder::Remove(const UserShareFile& held) const {
    if (const DWORD error = CheckUnchanged(held); error != ERROR_SUCCESS) return error;
    return unlinkat(folder.Get(), held.name.c_str(), 0) == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

DWORD CopyUserShareFile(const UserShareFile& source, const std::string& folder) {
    const UniqueFd target(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!target) return ErrorFromErrno(errno);
    return MakeFile(target.Get(), source.name, source.text, source.status);
}

}  // namespace permora::host
