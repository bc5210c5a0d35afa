#include "platform/linux/shell/new_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/new_name.h"
#include "platform/linux/shell/unfinished_files.h"

namespace permora::host {
namespace {

constexpr off_t kSmallFile = 64 << 10;
constexpr int kOpenFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW;

bool HasNoNamelessFiles(int problem) {
    return problem == EOPNOTSUPP || problem == EISDIR || problem == EINVAL || problem == ENOENT;
}

}  // namespace

DWORD FinishWriting(const ObjectHandle& file) {
    const int copy = fcntl(file.Descriptor(), F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return ErrorFromErrno(errno);
    return close(copy) == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

NewFile::~NewFile() {
    if (!isPublished && !nameNow.empty()) RemoveUnfinished(target->Handle(), nameNow, object);
}

// The number of attempts is limited, since the program behind a volume may return anything.
DWORD NewFile::MakeNamed(mode_t mode, FirstName first) {
    const bool isFinal = first == FirstName::kFinal;
    constexpr int kMostAttempts = 100;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        const std::string name = isFinal ? finalName : TemporaryName();
        UniqueFd opened(openat(target->Descriptor(), name.c_str(), kOpenFlags | O_CREAT | O_EXCL, mode));
        if (!opened && errno == EEXIST && !isFinal) continue;
        if (!opened) return ErrorFromErrno(errno);
        const int descriptor = opened.Get();
        const DWORD error = ObjectHandle::Adopt(std::move(opened), object);
        if (error != ERROR_SUCCESS) return error;
        nameNow = name;
        if (isFinal) return ERROR_SUCCESS;
        // A clean-up may have removed it before it was marked. Then the next name is tried.
        if (MarkUnfinished(descriptor) && IsUnfinished(target->Handle(), name, object)) return ERROR_SUCCESS;
        RemoveUnfinished(target->Handle(), name, object);
    }
    return ERROR_FILE_INVALID;
}

DWORD NewFile::Make(TargetFolder& folder, const std::string& hostName, mode_t mode, off_t size,
                    NewFilePlace place) {
    target = &folder;
    finalName = hostName;
    newPlace = place;
    folder.SweepOnce();
    DWORD error = ERROR_NOT_SUPPORTED;
    if (folder.Volume().hasNamelessFiles) {
        // Relative to the folder itself, through the magic link: "." needs the right to enter it.
        UniqueFd opened(
            open(DescriptorPath(folder.Descriptor()).Text(), O_RDWR | O_CLOEXEC | O_TMPFILE, mode));
        if (opened)
            error = ObjectHandle::Adopt(std::move(opened), object);
        else if (HasNoNamelessFiles(errno))
            folder.Volume().hasNamelessFiles = false;
        else
            return ErrorFromErrno(errno);
    }
    if (!folder.Volume().hasNamelessFiles)
        error = MakeNamed(mode, size <= kSmallFile && place == NewFilePlace::kFree ? FirstName::kFinal
                                                                                   : FirstName::kTemporary);
    return error == ERROR_SUCCESS ? folder.Secure(object) : error;
}

// For a file without a name.
DWORD NewFile::TakeName(const std::string& name) {
    static_cast<void>(MarkUnfinished(object.Descriptor()));  // nobody else has it yet
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
