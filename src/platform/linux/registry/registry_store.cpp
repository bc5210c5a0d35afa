#include "platform/linux/registry/registry_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/unique_fd.h"

namespace permora::host {
namespace {

constexpr const char* kFileName = "registry.reg";
constexpr const char* kNewFileName = "registry.reg.new";
constexpr const char* kLockName = "registry.lock";

// Larger than any real registry.
constexpr off_t kLargestFile = off_t{16} << 20;

// Every file in the folder is opened in this way.
DWORD OpenOwn(int folder, const char* name, int flags, UniqueFd& file) {
    // Without waiting, in case there is a pipe.
    UniqueFd opened(openat(folder, name, flags | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
    if (!opened) return ErrorFromErrno(errno);
    struct stat status {};
    if (fstat(opened.Get(), &status) != 0) return ErrorFromErrno(errno);
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) return ERROR_ACCESS_DENIED;
    if (status.st_uid != geteuid() && status.st_uid != 0) return ERROR_ACCESS_DENIED;
    file = std::move(opened);
    return ERROR_SUCCESS;
}

DWORD OpenStoreFolder(const std::string& path, UniqueFd& folder) {
    if (path.empty()) return ERROR_PATH_NOT_FOUND;
    return OpenOwn(AT_FDCWD, path.c_str(), O_RDONLY | O_DIRECTORY, folder);
}

DWORD MakeFolder(const std::string& path, RegistryAudience audience) {
    if (path.empty()) return ERROR_PATH_NOT_FOUND;
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    if (error) return ErrorFromErrno(error.value());
    const mode_t mode = audience == RegistryAudience::kOwner ? 0700 : 0755;
    if (mkdir(path.c_str(), mode) != 0 && errno != EEXIST) return ErrorFromErrno(errno);
    return ERROR_SUCCESS;
}

DWORD ReadText(int folder, std::string& text) {
    UniqueFd file;
    const DWORD error = OpenOwn(folder, kFileName, O_RDONLY, file);
    if (error == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return error;
    struct stat status {};
    if (fstat(file.Get(), &status) != 0) return ErrorFromErrno(errno);
    if (status.st_size > kLargestFile) return ERROR_FILE_TOO_LARGE;
    // With room for additions, so that the text need not be moved.
    constexpr std::size_t kRoom = 4096;
    std::string found(static_cast<std::size_t>(status.st_size) + kRoom, '\0');
    std::size_t size = 0;
    for (;;) {
        const ssize_t count = read(file.Get(), found.data() + size, found.size() - size);
        if (count == 0) break;
        if (count < 0 && errno != EINTR) return ErrorFromErrno(errno);
        if (count > 0) size += static_cast<std::size_t>(count);
        if (size == found.size()) found.resize(2 * size);
    }
    found.resize(size);
    text = std::move(found);
    return ERROR_SUCCESS;
}

DWORD ReadDocument(int folder, RegistryDocument& document) {
    std::string text;
    const DWORD error = ReadText(folder, text);
    if (error != ERROR_SUCCESS) return error;
    std::optional<RegistryDocument> parsed = RegistryDocument::Parse(std::move(text));
    if (!parsed) return ERROR_BADDB;
    document = *std::move(parsed);
    return ERROR_SUCCESS;
}

// The lock ends with `lock`, however this process ends.
DWORD TakeLock(int folder, UniqueFd& lock) {
    constexpr std::chrono::seconds kPatience{5};
    UniqueFd file;
    const DWORD error = OpenOwn(folder, kLockName, O_RDWR | O_CREAT, file);
    if (error != ERROR_SUCCESS) return error;
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return ErrorFromErrno(errno);
        if (std::chrono::steady_clock::now() > deadline) return ERROR_BUSY;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    lock = std::move(file);
    return ERROR_SUCCESS;
}

DWORD WriteNewFile(int folder, std::string_view text, mode_t mode) {
    // A killed process left it behind while it held the lock.
    unlinkat(folder, kNewFileName, 0);
    UniqueFd file;
    const DWORD error = OpenOwn(folder, kNewFileName, O_WRONLY | O_CREAT | O_EXCL, file);
    if (error != ERROR_SUCCESS) return error;
    while (!text.empty()) {
        const ssize_t count = write(file.Get(), text.data(), text.size());
        if (count < 0 && errno != EINTR) return ErrorFromErrno(errno);
        if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
    }
    if (fchmod(file.Get(), mode) != 0 || fsync(file.Get()) != 0) return ErrorFromErrno(errno);
    return ERROR_SUCCESS;
}

DWORD ReplaceText(int folder, std::string_view text, mode_t mode) {
    DWORD error = WriteNewFile(folder, text, mode);
    if (error == ERROR_SUCCESS && renameat(folder, kNewFileName, folder, kFileName) != 0)
        error = ErrorFromErrno(errno);
    if (error != ERROR_SUCCESS) {
        unlinkat(folder, kNewFileName, 0);
        return error;
    }
    // The new file is in place. Syncing the folder makes its name survive a power cut.
    fsync(folder);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD RegistryStore::Read(RegistryDocument& document) const {
    UniqueFd folder;
    const DWORD error = OpenStoreFolder(path, folder);
    if (error == ERROR_FILE_NOT_FOUND) {
        document = RegistryDocument();
        return ERROR_SUCCESS;
    }
    return error == ERROR_SUCCESS ? ReadDocument(folder.Get(), document) : error;
}

DWORD RegistryStore::Change(const std::function<DWORD(RegistryDocument&)>& change) const {
    UniqueFd folder;
    UniqueFd lock;
    RegistryDocument document;
    DWORD error = MakeFolder(path, audience);
    if (error == ERROR_SUCCESS) error = OpenStoreFolder(path, folder);
    if (error == ERROR_SUCCESS) error = TakeLock(folder.Get(), lock);
    if (error == ERROR_SUCCESS) error = ReadDocument(folder.Get(), document);
    if (error == ERROR_SUCCESS) error = change(document);
    if (error != ERROR_SUCCESS || !document.IsChanged()) return error;
    return ReplaceText(folder.Get(), document.Text(), audience == RegistryAudience::kOwner ? 0600 : 0644);
}

}  // namespace permora::host
