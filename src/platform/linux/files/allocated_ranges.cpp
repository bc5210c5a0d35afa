#include "platform/linux/files/allocated_ranges.h"

#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/linux/base/host_errors.h"

namespace permora::host {
namespace {

constexpr off_t kStatusBlockBytes = 512;  // of st_blocks: stat(2)

constexpr off_t kSmallFileBytes = 64 << 10;

// Bytes: one read, one piece of it that is examined, the zeros that end a range (overwriting fewer is faster
// than skipping them), and the zeros after which the search returns.
constexpr std::size_t kReadBytes = std::size_t{1} << 20;
constexpr off_t kPieceBytes = 4096;
constexpr off_t kLeastZeros = off_t{64} << 10;
constexpr off_t kMostZeros = off_t{64} << 20;

// Adjacent extents are one range here.
int FindExtent(int descriptor, off_t from, off_t size, FileRange& range) {
    constexpr std::size_t kMostExtents = 32;
    alignas(fiemap) std::array<std::byte, sizeof(fiemap) + kMostExtents * sizeof(fiemap_extent)> space{};
    auto* request = reinterpret_cast<fiemap*>(space.data());
    request->fm_start = static_cast<std::uint64_t>(from);
    request->fm_length = static_cast<std::uint64_t>(size - from);
    request->fm_extent_count = kMostExtents;
    // Without FIEMAP_FLAG_SYNC: contents that are not on the disk yet need not be written first.
    if (ioctl(descriptor, FS_IOC_FIEMAP, request) != 0) return errno;
    FileRange found{size, size};
    for (std::size_t i = 0; i < request->fm_mapped_extents; ++i) {
        const fiemap_extent& extent = request->fm_extents[i];
        const auto begin = static_cast<LONGLONG>(extent.fe_logical);
        const auto end = static_cast<LONGLONG>(extent.fe_logical + extent.fe_length);
        if (i == 0) found = {begin, end};
        if (begin > found.end) break;
        found.end = end;
    }
    range = {std::clamp<LONGLONG>(found.begin, from, size), std::clamp<LONGLONG>(found.end, from, size)};
    return 0;
}

int FindData(int descriptor, off_t from, off_t size, FileRange& range) {
    const off_t data = lseek(descriptor, from, SEEK_DATA);
    if (data < 0 && errno != ENXIO) return errno;
    const off_t hole = data < 0 ? size : lseek(descriptor, data, SEEK_HOLE);
    if (hole < 0) return errno;
    range = {std::min(data < 0 ? size : data, size), std::min(hole, size)};
    return 0;
}

bool IsZeros(const std::uint8_t* bytes, std::size_t count) {
    return count == 0 || (bytes[0] == 0 && std::memcmp(bytes, bytes + 1, count - 1) == 0);
}

DWORD FindContents(int descriptor, off_t from, off_t size, FileRange& range) {
    std::vector<std::uint8_t> bytes(kReadBytes);
    const off_t last = from + std::min(size - from, kMostZeros);
    for (off_t place = from; place < last;) {
        const ssize_t count = pread(descriptor, bytes.data(), bytes.size(), place);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return ErrorFromErrno(errno);
        if (count == 0) return ERROR_IO_DEVICE;  // its own size is not true
        const auto isEmpty = [&](off_t piece) {
            return IsZeros(bytes.data() + piece,
                           static_cast<std::size_t>(std::min(kPieceBytes, count - piece)));
        };
        off_t begin = 0;
        while (begin < count && isEmpty(begin))
            begin += kPieceBytes;
        off_t end = begin;
        for (off_t piece = begin; piece < count && piece - end < kLeastZeros; piece += kPieceBytes)
            if (!isEmpty(piece)) end = piece + kPieceBytes;
        if (begin < count) {
            range = {std::min(place + begin, size), std::min(place + std::min<off_t>(end, count), size)};
            return ERROR_SUCCESS;
        }
        place += count;
    }
    range = {last, last};
    return ERROR_SUCCESS;
}

}  // namespace

RangeSource FindRangeSource(int descriptor, const struct stat& status) {
    const off_t size = status.st_size;
    if (size == 0) return RangeSource::kWhole;
    FileRange first;
    if (FindExtent(descriptor, 0, size, first) == 0)
        return first.begin == 0 && first.end >= size ? RangeSource::kWhole : RangeSource::kExtents;
    // A file without holes looks like one on a file system that does not report holes.
    const off_t hole = lseek(descriptor, 0, SEEK_HOLE);
    if (hole >= 0 && hole < size) return RangeSource::kHoles;
    // A small file cannot fill a disk, and contents in the volume's own tables have no blocks.
    const bool isWhole =
        size <= kSmallFileBytes || status.st_blocks >= (size + kStatusBlockBytes - 1) / kStatusBlockBytes;
    return isWhole ? RangeSource::kWhole : RangeSource::kContents;
}

DWORD FindRange(RangeSource source, int descriptor, off_t from, off_t size, DataAhead& ahead,
                FileRange& range) {
    if (source == RangeSource::kWhole || from >= size) {
        range = {std::min(from, size), size};
        return ERROR_SUCCESS;
    }
    if (source == RangeSource::kContents) return FindContents(descriptor, from, size, range);
    int problem = 0;
    if (ahead.from < 0 || from < ahead.from || from > ahead.range.begin) {
        FileRange found;
        problem = FindData(descriptor, from, size, found);
        if (problem == 0) ahead = {from, found};
    }
    const FileRange data = ahead.range;
    FileRange extent = data;
    // Contents that wait in memory for their place are data, but no extent yet. Reserved space is an extent,
    // but no data.
    if (problem == 0 && source == RangeSource::kExtents) problem = FindExtent(descriptor, from, size, extent);
    if (problem != 0) return ErrorFromErrno(problem);
    const FileRange& first =
        extent.begin < data.begin || (extent.begin == data.begin && extent.end > data.end) ? extent : data;
    // A driver may report ranges without end.
    if (first.begin < from || first.end <= from || first.end > size) return ERROR_INVALID_DATA;
    range = first;
    return ERROR_SUCCESS;
}

}  // namespace permora::host
