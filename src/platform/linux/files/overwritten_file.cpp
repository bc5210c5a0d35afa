#include "platform/linux/files/overwritten_file.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "platform/api/files.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/allocated_ranges.h"
#include "platform/linux/files/descriptor_path.h"

namespace permora::host {
namespace {

// Bytes of one write. A system call for each sector would cost more than the disk.
constexpr std::size_t kRunBytes = std::size_t{1} << 20;

// The alignment that direct writing needs, on every disk.
constexpr std::size_t kAlignment = 4096;

struct FreeCloser {
    void operator()(std::uint8_t* block) const { std::free(block); }
};

// Moves the contents of ext4's journal to their place. Needs the rights of an administrator and Linux 5.14.
DWORD EmptyJournal(int descriptor) {
    constexpr unsigned long kCheckpoint = _IOW('f', 43, std::uint32_t);  // the kernel's documents of ext4
    std::uint32_t flags = 0;
    if (ioctl(descriptor, kCheckpoint, &flags) == 0) return ERROR_SUCCESS;
    const bool isNoWay = errno == EPERM || errno == ENOTTY || errno == ENODEV;
    return isNoWay ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

// ext4 keeps small files in its own tables (inline_data), which it writes through the journal.
DWORD AskJournaled(int descriptor, bool& answer) {
    constexpr unsigned kInlineData = 0x10000000;  // in no header: ext4's own source
    unsigned flags = 0;  // the kernel writes 32 bits, whatever the request's number says
    if (ioctl(descriptor, FS_IOC_GETFLAGS, &flags) != 0) return ErrorFromErrno(errno);
    answer = (flags & (kInlineData | FS_JOURNAL_DATA_FL)) != 0;
    return ERROR_SUCCESS;
}

// How a file was opened.
struct Opening {
    UniqueFd descriptor;
    off_t size = 0;
    RangeSource ranges = RangeSource::kWhole;
    bool isKnownAlone = false;
    bool isJournaled = false;
};

class HostFile : public OverwrittenFile {
  public:
    explicit HostFile(Opening opened)
        : descriptor(std::move(opened.descriptor)),
          sizeBefore(opened.size),
          ranges(opened.ranges),
          isKnownAlone(opened.isKnownAlone),
          isJournaled(opened.isJournaled) {}

    DWORD Size(LONGLONG& bytes) const override {
        struct stat status {};
        if (fstat(descriptor.Get(), &status) != 0) return ErrorFromErrno(errno);
        bytes = status.st_size;
        return ERROR_SUCCESS;
    }

    DWORD Find(LONGLONG from, FileRange& range) const override {
        return FindRange(ranges, descriptor.Get(), from, sizeBefore, ahead, range);
    }

    DWORD Seek(LONGLONG place) override {
        const DWORD error = WriteRun();
        if (error == ERROR_SUCCESS) position = place;
        return error;
    }

    DWORD Write(std::span<const std::uint8_t> bytes) override {
        if (!run) run.reset(static_cast<std::uint8_t*>(std::aligned_alloc(kAlignment, kRunBytes)));
        if (!run) return ERROR_NOT_ENOUGH_MEMORY;
        while (!bytes.empty()) {
            const std::size_t count = std::min(kRunBytes - waiting, bytes.size());
            std::memcpy(run.get() + waiting, bytes.data(), count);
            waiting += count;
            bytes = bytes.subspan(count);
            // Also at the last sector of the old contents, so that an error is an error of writing.
            const bool isWhole = static_cast<off_t>(waiting) >= sizeBefore - position;
            if (waiting < kRunBytes && !(isWhole && bytes.empty())) break;
            if (const DWORD error = WriteRun(); error != ERROR_SUCCESS) return error;
        }
        return ERROR_SUCCESS;
    }

    DWORD Flush() override {
        if (const DWORD error = WriteRun(); error != ERROR_SUCCESS) return error;
        if (fdatasync(descriptor.Get()) != 0) return ErrorFromErrno(errno);
        return isJournaled ? EmptyJournal(descriptor.Get()) : ERROR_SUCCESS;
    }

    bool IsJournaled() const override { return isJournaled; }
    bool IsKnownAlone() const override { return isKnownAlone; }

  private:
    // The old contents are overwritten before the file grows: a file system that keeps them in its own tables
    // (NTFS, ext4) moves them when they grow, and would leave a copy behind.
    DWORD WriteRun() {
        const std::span<const std::uint8_t> bytes(run.get(), std::exchange(waiting, 0));
        const auto inPlace = static_cast<std::size_t>(
            std::clamp(sizeBefore - position, off_t{0}, static_cast<off_t>(bytes.size())));
        // Nobody will read the zeros again, so the page cache would only cost time. Whole aligned runs go
        // past it; the rest, and file systems that cannot do without it, are written in the ordinary way.
        if (isDirect != (inPlace == kRunBytes)) SetDirect(!isDirect);
        if (const DWORD error = WriteAll(bytes.first(inPlace)); error != ERROR_SUCCESS) return error;
        // No contents exist beyond the largest size, of files in general or of this volume.
        const off_t room = std::numeric_limits<off_t>::max() - position;
        const std::span<const std::uint8_t> growth = bytes.subspan(inPlace);
        const DWORD error = WriteAll(
            growth.first(static_cast<std::size_t>(std::min(room, static_cast<off_t>(growth.size())))));
        return error == ERROR_FILE_TOO_LARGE ? ERROR_SUCCESS : error;
    }

    void SetDirect(bool wanted) {
        if (wanted && !canBeDirect) return;
        const int flags = fcntl(descriptor.Get(), F_GETFL);
        canBeDirect = fcntl(descriptor.Get(), F_SETFL, wanted ? flags | O_DIRECT : flags & ~O_DIRECT) == 0;
        if (canBeDirect) isDirect = wanted;
    }

    DWORD WriteAll(std::span<const std::uint8_t> bytes) {
        while (!bytes.empty()) {
            const ssize_t count = pwrite(descriptor.Get(), bytes.data(), bytes.size(), position);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0 && errno == EINVAL && isDirect) {
                SetDirect(false);
                isDirect = canBeDirect = false;
                continue;
            }
            if (count < 0) return ErrorFromErrno(errno);
            if (count == 0) return ERROR_DISK_FULL;
            position += count;
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        }
        return ERROR_SUCCESS;
    }

    UniqueFd descriptor;
    off_t sizeBefore;
    RangeSource ranges;
    mutable DataAhead ahead;
    bool isKnownAlone;
    bool isJournaled;
    off_t position = 0;
    std::unique_ptr<std::uint8_t, FreeCloser> run;
    std::size_t waiting = 0;  // bytes of the run
    bool isDirect = false;
    bool canBeDirect = true;
};

DWORD Reserve(int descriptor, bool& isKnownAlone) {
    // The signal when another process wants the file. The default would end the process; this one is
    // ignored.
    isKnownAlone = fcntl(descriptor, F_SETSIG, SIGURG) == 0 && fcntl(descriptor, F_SETLEASE, F_WRLCK) == 0;
    if (isKnownAlone) return ERROR_SUCCESS;
    if (errno == EAGAIN) return ERROR_SHARING_VIOLATION;
    const bool isLocked = flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    return isLocked ? ERROR_SHARING_VIOLATION : ERROR_SUCCESS;
}

DWORD OpenReserved(const ObjectHandle& file, int access, Opening& opening) {
    // Without O_NONBLOCK, opening would wait for another process's lease.
    UniqueFd opened(
        open(DescriptorPath(file.Descriptor()).Text(), access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!opened) return ErrorFromOpening(errno);
    if (const DWORD error = Reserve(opened.Get(), opening.isKnownAlone); error != ERROR_SUCCESS) return error;
    struct stat status {};
    if (fstat(opened.Get(), &status) != 0) return ErrorFromErrno(errno);
    opening.size = status.st_size;
    opening.ranges = FindRangeSource(opened.Get(), status);
    opening.descriptor = std::move(opened);
    return ERROR_SUCCESS;
}

// Runs `work`, which returns an error code, on the file that a handle stands for.
template <typename Work>
BOOL WithFile(HANDLE handle, const Work& work) {
    const std::shared_ptr<OverwrittenFile> file = OpenHandles().Find<OverwrittenFile>(handle);
    const DWORD error = file != nullptr ? work(*file) : ERROR_INVALID_HANDLE;
    return error == ERROR_SUCCESS ? TRUE : Fail(error);
}

}  // namespace

DWORD OpenAlone(const ObjectHandle& file, std::shared_ptr<OverwrittenFile>& opened, Journaled journaled) {
    Opening opening;
    DWORD error = OpenReserved(file, O_WRONLY, opening);
    if (error == ERROR_SUCCESS && opening.ranges == RangeSource::kContents) {
        // The holder of a lease cannot open the file again.
        opening.descriptor.Reset();
        error = OpenReserved(file, O_RDWR, opening);
    }
    opening.isJournaled = journaled == Journaled::kAll;
    if (error == ERROR_SUCCESS && journaled == Journaled::kSome)
        error = AskJournaled(opening.descriptor.Get(), opening.isJournaled);
    if (error == ERROR_SUCCESS) opened = std::make_shared<HostFile>(std::move(opening));
    return error;
}

}  // namespace permora::host

BOOL WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size) {
    using namespace permora::host;
    return WithFile(file, [&](const OverwrittenFile& found) { return found.Size(size->QuadPart); });
}

BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD method) {
    using namespace permora::host;
    if (method != FILE_BEGIN || distance.QuadPart < 0) return Fail(ERROR_INVALID_PARAMETER);
    const BOOL isThere =
        WithFile(file, [&](OverwrittenFile& found) { return found.Seek(distance.QuadPart); });
    if (isThere != FALSE && position != nullptr) *position = distance;
    return isThere;
}

BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD written, LPOVERLAPPED overlapped) {
    using namespace permora::host;
    if (overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
    const BOOL isWritten = WithFile(file, [&](OverwrittenFile& found) {
        return found.Write({static_cast<const std::uint8_t*>(buffer), bytes});
    });
    if (written != nullptr) *written = isWritten != FALSE ? bytes : 0;
    return isWritten;
}

BOOL WINAPI FlushFileBuffers(HANDLE file) {
    using namespace permora::host;
    return WithFile(file, [](OverwrittenFile& found) { return found.Flush(); });
}

namespace permora {

DWORD FindAllocated(HANDLE contents, LONGLONG from, FileRange& range) {
    const auto file = host::OpenHandles().Find<host::OverwrittenFile>(contents);
    return file != nullptr ? file->Find(from, range) : ERROR_INVALID_HANDLE;
}

}  // namespace permora
