#include "platform/linux/shell/new_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/new_name.h"

namespace permora::host {
namespace {

constexpr off_t kSmallBytes = 64 << 10;
constexpr int kOpenFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW;

bool HasNoNamelessFiles(int problem) {
    return problem == EOPNOTSUPP || problem == EISDIR || problem == EINVAL || problem == ENOENT;
}

}  // namespace

std::string TemporaryName() {
    std::uint64_t number = 0;
    // Not for secrecy: whoever guesses it makes the file's making fail, no more.
    if (getrandom(&number, sizeof number, 0) != sizeof number) number = static_cast<std::uint64_t>(getpid());
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), ".permora-%016llx", static_cast<unsigned long long>(number));
    return name.data();
}

DWORD FinishWriting(const ObjectHandle& file) {
    const int copy = fcntl(file.Descriptor(), F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return ErrorFromErrno(errno);
    return close(copy) == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

NewFile::~NewFile() {
    if (isPublished || nameNow.empty()) return;
    // Only what is still ours.
    struct stat status {};
    const int folder = target->Descriptor();
    if (fstatat(folder, nameNow.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        AreOneObject(status, object.Status()))
        unlinkat(folder, nameNow.c_str(), 0);
}

DWORD NewFile::MakeNamed(mode_t mode, bool isFinal) {
    for (;;) {
        const std::string name = isFinal ? finalName : TemporaryName();
        UniqueFd opened(openat(target->Descriptor(), name.c_str(), kOpenFlags | O_CREAT | O_EXCL, mode));
        if (!opened && errno == EEXIST && !isFinal) continue;
        if (!opened) return ErrorFromErrno(errno);
        nameNow = name;
        const DWORD error = ObjectHandle::Adopt(std::move(opened), object);
        if (error != ERROR_SUCCESS) nameNow.clear();
        return error;
    }
}

DWORD NewFile::Make(TargetFolder& folder, const std::string& hostName, mode_t mode, off_t size,
                    NewFilePlace place) {
    target = &folder;
    finalName = hostName;
    newPlace = place;
    DWORD error = ERROR_NOT_SUPPORTED;
    if (folder.Volume().hasNamelessFiles) {
        // Relative to the folder itself: the magic link, since "." may not be entered.
        UniqueFd opened(
            open(DescriptorPath(folder.Descriptor()).Text(), O_RDWR | O_CLOEXEC | O_TMPFILE, mode));
        if (opened) {
            error = ObjectHandle::Adopt(std::move(opened), object);
        } else if (HasNoNamelessFiles(errno)) {
            folder.Volume().hasNamelessFiles = false;
        } else {
            return ErrorFromErrno(errno);
        }
    }
    if (!folder.Volume().hasNamelessFiles)
        error = MakeNamed(mode, size <= kSmallBytes && place == NewFilePlace::kFree);
    return error == ERROR_SUCCESS ? folder.Secure(object) : error;
}

// For a file without a name.
DWORD NewFile::TakeName(const std::string& name) {
    const DescriptorPath path(object.Descriptor());
    if (linkat(AT_FDCWD, path.Text(), target->Descriptor(), name.c_str(), AT_SYMLINK_FOLLOW) != 0)
        return ErrorFromErrno(errno);
    nameNow = name;
    return ERROR_SUCCESS;
}

DWORD NewFile::Publish() {
    const int folder = target->Descriptor();
    DWORD error = target->Volume().hasNamelessFiles ? ERROR_SUCCESS : FinishWriting(object);
    if (error != ERROR_SUCCESS) return error;
    if (newPlace == NewFilePlace::kFree) {
        if (nameNow.empty()) {
            error = TakeName(finalName);
        } else if (nameNow != finalName) {
            const int problem =
                RenameToFreeName(folder, nameNow.c_str(), folder, finalName.c_str(), RenamedKind::kOther);
            if (problem != 0) error = ErrorFromErrno(problem);
        }
    } else {
        if (nameNow.empty()) error = TakeName(TemporaryName());
        if (error == ERROR_SUCCESS && renameat(folder, nameNow.c_str(), folder, finalName.c_str()) != 0)
            error = ErrorFromErrno(errno);
    }
    if (error != ERROR_SUCCESS) return error;
    isPublished = true;
    nameNow = finalName;
    target->Took(finalName, object);
    return ERROR_SUCCESS;
}

}  // namespace permora::host
