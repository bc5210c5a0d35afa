#include "platform/linux/shell/file_contents.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/api/errors.h"
#include "platform/linux/base/host_errors.h"

namespace permora::host {
namespace {

constexpr std::size_t kBufferBytes = std::size_t{1} << 20;
constexpr std::size_t kKernelBytes = std::size_t{4} << 20;
// The smallest hole of usual file systems.
constexpr std::size_t kHoleBytes = 4096;
// The size of one write that the kernel sends from the page cache to a program that serves a volume, unless
// the program accepts more, as ntfs-3g does only with its option big_writes.
constexpr off_t kBytesOfCachedWrite = 4096;
constexpr off_t kBytesOfBlockCount = 512;  // stat(2)

// Whether the error means that another way of copying may work.
bool IsNoWay(int problem) {
    return problem == EOPNOTSUPP || problem == ENOTTY || problem == EXDEV || problem == EINVAL ||
           problem == ENOSYS || problem == EPERM || problem == ETXTBSY || problem == EBADF;
}

bool IsZero(const char* bytes, std::size_t count) {
    return bytes[0] == 0 && std::memcmp(bytes, bytes + 1, count - 1) == 0;
}

// Past the page cache, which would send single pages to such a program, and would be filled with the zeros
// that the program reads from holes.
void PassCacheBy(const VolumeFile& file) {
    if (!file.volume.isServedByProgram) return;
    const int flags = fcntl(file.descriptor, F_GETFL);
    // If that is refused, the cache is used.
    if (flags >= 0) (void)fcntl(file.descriptor, F_SETFL, flags | O_DIRECT);
}

// False when it is already in use.
bool UseCache(int file) {
    const int flags = fcntl(file, F_GETFL);
    return flags >= 0 && (flags & O_DIRECT) != 0 && fcntl(file, F_SETFL, flags & ~O_DIRECT) == 0;
}

DWORD WriteAll(int target, const char* bytes, std::size_t count, off_t offset) {
    while (count > 0) {
        const ssize_t written = pwrite(target, bytes, count, offset);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0 && errno == EINVAL && UseCache(target)) continue;
        if (written < 0) return ErrorFromErrno(errno);
        if (written == 0) return ERROR_DISK_FULL;
        bytes += written;
        count -= static_cast<std::size_t>(written);
        offset += written;
    }
    return ERROR_SUCCESS;
}

// Writes the parts that are not zero.
DWORD WriteWithHoles(int target, const char* bytes, std::size_t count, off_t offset) {
    for (std::size_t start = 0; start < count;) {
        std::size_t end = start;
        while (end < count && !IsZero(bytes + end, std::min(kHoleBytes, count - end)))
            end += std::min(kHoleBytes, count - end);
        const DWORD error = WriteAll(target, bytes + start, end - start, offset + static_cast<off_t>(start));
        if (error != ERROR_SUCCESS) return error;
        start = end;
        while (start < count && IsZero(bytes + start, std::min(kHoleBytes, count - start)))
            start += std::min(kHoleBytes, count - start);
    }
    return ERROR_SUCCESS;
}

}  // namespace

DWORD ContentsCopier::Advance(off_t bytes) {
    talk.progress.bytesDone += static_cast<ULONGLONG>(bytes);
    return talk.GoesOn() ? ERROR_SUCCESS : ERROR_OPERATION_ABORTED;
}

// Whether a short read has reached the expected end of the file. Another read would cost small files on NTFS
// a tenth of their time.
bool ContentsCopier::IsToldEnd(std::size_t taken, std::size_t wanted, off_t position) const {
    return taken < wanted && knownSize > 0 && position >= knownSize;
}

DWORD ContentsCopier::Copy(const VolumeFile& from, const struct stat& status, const VolumeFile& to) {
    const int source = from.descriptor;
    const int target = to.descriptor;
    if (status.st_dev != sourceVolume) {
        sourceVolume = status.st_dev;
        mayShareExtents = mayCopyInKernel = true;
    }
    knownSize = status.st_size;
    if (mayShareExtents && status.st_size > 0) {
        if (ioctl(target, FICLONE, source) == 0) return Advance(status.st_size);
        if (!IsNoWay(errno)) return ErrorFromErrno(errno);
        mayShareExtents = false;
    }
    if (status.st_size > kBytesOfCachedWrite) PassCacheBy(to);
    const bool mayHaveHoles = status.st_blocks < status.st_size / kBytesOfBlockCount;
    return mayHaveHoles ? CopySparse(from, status.st_size, target)
                        : CopyRange(source, target, 0, std::nullopt);
}

DWORD ContentsCopier::CopySparse(const VolumeFile& from, off_t size, int target) {
    const int source = from.descriptor;
    for (off_t position = 0; position < size;) {
        off_t data = lseek(source, position, SEEK_DATA);
        if (data < 0 && errno != ENXIO && errno != EINVAL) return ErrorFromErrno(errno);
        const bool isRestHole = data < 0 && errno == ENXIO;
        if (isRestHole) data = size;
        off_t end = data < 0 ? -1 : data;
        if (data >= 0 && data < size) end = lseek(source, data, SEEK_HOLE);
        // A driver that does not report holes, such as ntfs-3g, reports everything as data.
        const bool isUntold = end < 0 || (data == 0 && end >= size);
        if (isUntold) {
            PassCacheBy(from);
            const DWORD error = ReadAndWrite(source, target, position, std::nullopt, Zeros::kLeaveOut);
            if (error != ERROR_SUCCESS) return error;
            break;
        }
        data = std::min(data, size);
        end = std::min(end, size);
        DWORD error = Advance(data - position);
        if (error == ERROR_SUCCESS && data < end) error = CopyRange(source, target, data, end);
        if (error != ERROR_SUCCESS) return error;
        position = end;
    }
    // A hole at the end.
    struct stat status {};
    if (fstat(target, &status) != 0) return ErrorFromErrno(errno);
    if (status.st_size < size && ftruncate(target, size) != 0) return ErrorFromErrno(errno);
    return ERROR_SUCCESS;
}

// Up to the end of the file unless another end is given: the file may have grown, and some files report size
// 0.
DWORD ContentsCopier::CopyRange(int source, int target, off_t start, std::optional<off_t> end) {
    off_t from = start;
    off_t to = start;
    while (mayCopyInKernel && (!end || from < *end)) {
        const std::size_t wanted =
            end ? std::min(kKernelBytes, static_cast<std::size_t>(*end - from)) : kKernelBytes;
        const ssize_t copied = copy_file_range(source, &from, target, &to, wanted, 0);
        if (copied < 0 && errno == EINTR) continue;
        if (copied < 0 && !IsNoWay(errno)) return ErrorFromErrno(errno);
        if (copied < 0) mayCopyInKernel = false;
        // The files of some virtual file systems report no contents, but have some when they are read.
        if (copied == 0 && from == start) break;
        if (copied == 0) return ERROR_SUCCESS;
        if (copied < 0) continue;
        const DWORD error = Advance(copied);
        if (error != ERROR_SUCCESS || IsToldEnd(static_cast<std::size_t>(copied), wanted, from)) return error;
    }
    if (end && from >= *end) return ERROR_SUCCESS;
    return ReadAndWrite(source, target, from, end, Zeros::kWrite);
}

DWORD ContentsCopier::ReadAndWrite(int source, int target, off_t start, std::optional<off_t> end,
                                   Zeros zeros) {
    buffer.resize(kBufferBytes / sizeof(Page));
    char* const bytes = buffer.front().bytes.data();
    for (off_t position = start; !end || position < *end;) {
        const std::size_t wanted =
            end ? std::min(kBufferBytes, static_cast<std::size_t>(*end - position)) : kBufferBytes;
        const ssize_t taken = pread(source, bytes, wanted, position);
        if (taken < 0 && errno == EINTR) continue;
        if (taken < 0 && errno == EINVAL && UseCache(source)) continue;
        if (taken < 0) return ErrorFromErrno(errno);
        if (taken == 0) break;
        const auto count = static_cast<std::size_t>(taken);
        DWORD error = zeros == Zeros::kWrite ? WriteAll(target, bytes, count, position)
                                             : WriteWithHoles(target, bytes, count, position);
        if (error == ERROR_SUCCESS) error = Advance(taken);
        if (error != ERROR_SUCCESS) return error;
        position += taken;
        if (IsToldEnd(count, wanted, position)) break;
    }
    return ERROR_SUCCESS;
}

}  // namespace permora::host
