#include "platform/linux/files/closed_folder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/unmounted_entry.h"

namespace permora::host {
namespace {

// What name_to_handle_at(2) tells, without the array at its end that C++ does not know.
struct FileKey {
    file_handle* Handle() { return reinterpret_cast<file_handle*>(bytes.data()); }

    alignas(file_handle) std::array<std::byte, sizeof(file_handle) + MAX_HANDLE_SZ> bytes{};
};

std::vector<std::byte> KeyOf(int folder) {
    FileKey key;
    key.Handle()->handle_bytes = MAX_HANDLE_SZ;
    int mount = 0;
    if (name_to_handle_at(folder, "", key.Handle(), &mount, AT_EMPTY_PATH) != 0) return {};
    const std::byte* begin = key.bytes.data();
    return {begin, begin + sizeof(file_handle) + key.Handle()->handle_bytes};
}

// On the mount of an open folder.
UniqueFd OpenByKey(int onMount, const std::vector<std::byte>& bytes, int flags) {
    FileKey key;
    std::ranges::copy(bytes, key.bytes.begin());
    return UniqueFd(open_by_handle_at(onMount, key.Handle(), flags | O_DIRECTORY | O_CLOEXEC));
}

}  // namespace

std::optional<ClosedFolder> ClosedFolder::Of(int folder, bool isInView) {
    struct stat status {};
    if (fstat(folder, &status) != 0) return std::nullopt;
    ClosedFolder closed;
    closed.device = status.st_dev;
    closed.inode = status.st_ino;
    // There the kernel looks at all levels for each "..".
    if (isInView) closed.key = KeyOf(folder);
    return closed;
}

DWORD ClosedFolder::Open(int below, int flags, UniqueFd& opened) const {
    UniqueFd found;
    if (!key.empty()) found = OpenByKey(below, key, flags);
    const int problem = found ? 0 : OpenUnmountedEntry(below, "..", flags | O_DIRECTORY, found);
    if (problem == ENOENT) return ERROR_FILE_INVALID;  // it was moved out of what can be reached
    if (problem != 0) return ErrorFromErrno(problem);
    struct stat status {};
    if (fstat(found.Get(), &status) != 0) return ErrorFromErrno(errno);
    if (status.st_dev != device || status.st_ino != inode) return ERROR_FILE_INVALID;
    opened = std::move(found);
    return ERROR_SUCCESS;
}

}  // namespace permora::host
