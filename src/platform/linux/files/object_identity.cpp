#include "platform/linux/files/object_identity.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <cstddef>
#include <cstring>

#include "platform/linux/files/extended_attributes.h"

namespace permora::host {
namespace {

// On FUSE, an object's handle changes after the kernel has forgotten the object. On an overlay, its time of
// birth changes when the lower layer is copied up.
bool HasLastingMarks(const ObjectHandle& object) {
    struct statfs volume {};
    if (fstatfs(object.Descriptor(), &volume) != 0) return false;
    return volume.f_type != FUSE_SUPER_MAGIC && volume.f_type != OVERLAYFS_SUPER_MAGIC;
}

// The file system's own handle of the object, which contains its generation; empty when it has none.
std::vector<std::uint8_t> FileHandleOf(const ObjectHandle& object) {
    alignas(file_handle) std::uint8_t block[sizeof(file_handle) + MAX_HANDLE_SZ];
    file_handle header{};
    header.handle_bytes = MAX_HANDLE_SZ;
    std::memcpy(block, &header, sizeof header);
    int mountId = 0;
    auto* handle = reinterpret_cast<file_handle*>(block);
    if (name_to_handle_at(object.Descriptor(), "", handle, &mountId, AT_EMPTY_PATH) != 0) return {};
    std::memcpy(&header, block, sizeof header);
    return {block, block + offsetof(file_handle, f_handle) + header.handle_bytes};
}

std::optional<statx_timestamp> StatxBirthOf(const ObjectHandle& object) {
    struct statx status {};
    if (statx(object.Descriptor(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_BTIME, &status) != 0 ||
        (status.stx_mask & STATX_BTIME) == 0) {
        return std::nullopt;
    }
    return status.stx_btime;
}

template <typename Number>
void Append(std::vector<std::uint8_t>& bytes, Number number) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(&number);
    bytes.insert(bytes.end(), first, first + sizeof number);
}

std::vector<std::uint8_t> BirthOf(const ObjectHandle& object) {
    std::vector<std::uint8_t> bytes;
    if (const std::optional<statx_timestamp> birth = StatxBirthOf(object)) {
        Append(bytes, birth->tv_sec);
        Append(bytes, birth->tv_nsec);
    }
    return bytes;
}

// The volume's own time of creation, which ntfs-3g reports: 64 bits, in units of 100 ns since 1601.
std::vector<std::uint8_t> NtfsBirthOf(const ObjectHandle& object) {
    std::vector<std::uint8_t> birth;
    if (ReadExtendedAttribute(object, "system.ntfs_crtime", birth) != 0) birth.clear();
    return birth;
}

// Elsewhere the number of a volume is that of its device, or none.
bool HasLastingNumber(const struct statfs& volume) {
    return volume.f_type == EXT4_SUPER_MAGIC || volume.f_type == BTRFS_SUPER_MAGIC ||
           volume.f_type == TMPFS_MAGIC;
}

}  // namespace

ObjectIdentity::ObjectIdentity(const ObjectHandle& object)
    : device(object.Status().st_dev), number(object.Status().st_ino) {
    if (!HasLastingMarks(object)) {
        mark = NtfsBirthOf(object);
        return;
    }
    mark = FileHandleOf(object);
    if (mark.empty()) mark = BirthOf(object);
}

// The root of a volume has the same number and generation on every volume of its kind.
std::vector<std::uint8_t> LastingMark(const ObjectHandle& object) {
    struct statfs volume {};
    std::vector<std::uint8_t> mark;
    if (fstatfs(object.Descriptor(), &volume) != 0) return mark;
    Append(mark, std::uint64_t(volume.f_type));
    if (HasLastingNumber(volume)) Append(mark, volume.f_fsid);
    Append(mark, std::uint64_t(object.Status().st_ino));
    const auto append = [&mark](const std::vector<std::uint8_t>& bytes) {
        mark.insert(mark.end(), bytes.begin(), bytes.end());
    };
    if (!HasLastingMarks(object)) {
        append(NtfsBirthOf(object));
        return mark;
    }
    append(FileHandleOf(object));
    append(BirthOf(object));
    return mark;
}

BirthPlace BirthPlaceOf(const ObjectHandle& object) {
    return HasLastingMarks(object) ? BirthPlace::kInStatus : BirthPlace::kOnNtfs;
}

std::optional<std::int64_t> BirthTimeOf(const ObjectHandle& object, BirthPlace place) {
    constexpr std::int64_t kUnitsInSecond = 10'000'000;
    constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;
    if (place == BirthPlace::kInStatus) {
        const std::optional<statx_timestamp> birth = StatxBirthOf(object);
        return birth ? std::optional(std::int64_t{birth->tv_sec}) : std::nullopt;
    }
    const std::vector<std::uint8_t> ntfs = NtfsBirthOf(object);
    std::uint64_t units = 0;
    if (ntfs.size() != sizeof units) return std::nullopt;
    std::memcpy(&units, ntfs.data(), sizeof units);
    return static_cast<std::int64_t>(units / kUnitsInSecond) - kSecondsTo1970;
}

}  // namespace permora::host
