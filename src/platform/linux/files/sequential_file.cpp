#include "platform/sequential_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/security/new_object.h"

namespace permora {
namespace host {
namespace {

DWORD RandomName(std::string& name) {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) return ErrorFromErrno(errno);
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), ".permora-new-%016llx", static_cast<unsigned long long>(number));
    name = text.data();
    return ERROR_SUCCESS;
}

// Opens what a path leads to, a device or a pipe too: the user has named it.
DWORD OpenToRead(const std::string& path, UniqueFd& opened) {
    ResolvedPlace place;
    if (const DWORD error = ResolvePlace(path.c_str(), place); error != ERROR_SUCCESS) return error;
    UniqueFd file(openat(place.folder.Descriptor(), place.hostName.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0) return ErrorFromErrno(errno);
    if (S_ISDIR(status.st_mode)) return ERROR_ACCESS_DENIED;
    opened = std::move(file);
    return ERROR_SUCCESS;
}

}  // namespace
}  // namespace host

using host::ErrorFromErrno;
using host::UniqueFd;

struct SequentialFile::Inside {
    UniqueFd file;
};

SequentialFile::SequentialFile() = default;
SequentialFile::SequentialFile(SequentialFile&& other) noexcept = default;
SequentialFile& SequentialFile::operator=(SequentialFile&& other) noexcept = default;
SequentialFile::~SequentialFile() = default;

DWORD SequentialFile::Open(const std::string& path, SequentialFile& file) {
    auto made = std::make_unique<Inside>();
    const DWORD error = host::OpenToRead(path, made->file);
    if (error == ERROR_SUCCESS) file.inside = std::move(made);
    return error;
}

DWORD SequentialFile::Read(std::span<char> block, std::size_t& count) {
    ssize_t got = -1;
    do
        got = read(inside->file.Get(), block.data(), block.size());
    while (got < 0 && errno == EINTR);
    if (got < 0) return ErrorFromErrno(errno);
    count = static_cast<std::size_t>(got);
    return ERROR_SUCCESS;
}

DWORD SequentialFile::Rewind() {
    if (lseek(inside->file.Get(), 0, SEEK_SET) == 0) return ERROR_SUCCESS;
    return errno == ESPIPE ? ERROR_NOT_SUPPORTED : ErrorFromErrno(errno);
}

struct FileReplacement::Inside {
    ~Inside() {
        if (!temporaryName.empty()) unlinkat(place.folder.Descriptor(), temporaryName.c_str(), 0);
    }

    DWORD Make();
    DWORD MakeNamed();
    DWORD GiveTemporaryName();

    host::ResolvedPlace place;
    UniqueFd file;
    std::string temporaryName;  // empty: it has no name so far
};

// Without a name where the volume has such files, so that nothing stays of it if this process is killed.
DWORD FileReplacement::Inside::Make() {
    file.Reset(openat(place.folder.Descriptor(), ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file) return MakeNamed();
    return ERROR_SUCCESS;
}

DWORD FileReplacement::Inside::MakeNamed() {
    std::string name;
    if (const DWORD error = host::RandomName(name); error != ERROR_SUCCESS) return error;
    file.Reset(openat(place.folder.Descriptor(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                      S_IRUSR | S_IWUSR));
    if (!file) return ErrorFromErrno(errno);
    temporaryName = std::move(name);
    // NTFS has lists and no modes.
    host::NewObjectSecurity security;
    host::ObjectHandle made;
    DWORD error = host::NewObjectSecurity::Of(place.folder, security);
    if (error == ERROR_SUCCESS)
        error = host::ObjectHandle::OpenAt(place.folder.Descriptor(), temporaryName.c_str(), made);
    return error == ERROR_SUCCESS ? security.Give(made) : error;
}

DWORD FileReplacement::Inside::GiveTemporaryName() {
    if (!temporaryName.empty()) return ERROR_SUCCESS;
    std::string name;
    if (const DWORD error = host::RandomName(name); error != ERROR_SUCCESS) return error;
    const host::DescriptorPath path(file.Get());
    if (linkat(AT_FDCWD, path.Text(), place.folder.Descriptor(), name.c_str(), AT_SYMLINK_FOLLOW) != 0)
        return ErrorFromErrno(errno);
    temporaryName = std::move(name);
    return ERROR_SUCCESS;
}

FileReplacement::FileReplacement() = default;
FileReplacement::FileReplacement(FileReplacement&& other) noexcept = default;
FileReplacement& FileReplacement::operator=(FileReplacement&& other) noexcept = default;
FileReplacement::~FileReplacement() = default;

DWORD FileReplacement::Begin(const std::string& path, FileReplacement& file) {
    auto made = std::make_unique<Inside>();
    DWORD error = host::ResolvePlace(path.c_str(), made->place);
    if (error != ERROR_SUCCESS) return error;
    struct stat status {};
    const bool isThere = fstatat(made->place.folder.Descriptor(), made->place.hostName.c_str(), &status,
                                 AT_SYMLINK_NOFOLLOW) == 0;
    // A device is not meant to become a file, nor is the link that leads to it ("/dev/stdout").
    if (isThere && S_ISLNK(status.st_mode)) return ERROR_CANT_RESOLVE_FILENAME;
    if (isThere && !S_ISREG(status.st_mode)) return ERROR_ACCESS_DENIED;
    error = made->Make();
    if (error == ERROR_SUCCESS) file.inside = std::move(made);
    return error;
}

DWORD FileReplacement::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(inside->file.Get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return ErrorFromErrno(errno);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return ERROR_SUCCESS;
}

DWORD FileReplacement::Complete() {
    const int folder = inside->place.folder.Descriptor();
    if (fsync(inside->file.Get()) != 0) return ErrorFromErrno(errno);
    const DWORD error = inside->GiveTemporaryName();
    if (error != ERROR_SUCCESS) return error;
    if (renameat(folder, inside->temporaryName.c_str(), folder, inside->place.hostName.c_str()) != 0)
        return ErrorFromErrno(errno);
    inside->temporaryName.clear();
    // So that the new name, too, survives a power failure. Where folders cannot be flushed, nothing can be
    // done.
    const UniqueFd listed(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (listed) fsync(listed.Get());
    inside.reset();
    return ERROR_SUCCESS;
}

}  // namespace permora
