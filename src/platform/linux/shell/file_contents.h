// Copying what is in files.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "platform/linux/shell/operation_talk.h"
#include "platform/linux/shell/target_folder.h"

namespace permora::host {

// An open file, and what serves it.
struct VolumeFile {
    int descriptor;
    const VolumeTraits& volume;
};

// By the fastest way that the volumes of both files have: shared extents, a copy within the kernel, or
// reading and writing. Holes stay holes. One for an operation, since it remembers what a volume cannot do.
class ContentsCopier {
  public:
    explicit ContentsCopier(OperationTalk& user) : talk(user) {}

    // From the beginning of one open file to that of an empty one. `status` is the source's. Counts the
    // bytes, and asks every few MiB whether the work goes on. 0 or an error code: ERROR_OPERATION_ABORTED
    // when it was cancelled. May set O_DIRECT for either.
    DWORD Copy(const VolumeFile& from, const struct stat& status, const VolumeFile& to);

  private:
    enum class Zeros { kWrite, kLeaveOut };
    // So that the kernel can hand over whole pages of it.
    struct alignas(4096) Page {
        std::array<char, 4096> bytes;
    };
    DWORD CopySparse(const VolumeFile& from, off_t size, int target);
    DWORD CopyRange(int source, int target, off_t start, std::optional<off_t> end);
    DWORD ReadAndWrite(int source, int target, off_t start, std::optional<off_t> end, Zeros zeros);
    DWORD Advance(off_t bytes);
    bool IsToldEnd(std::size_t taken, std::size_t wanted, off_t position) const;

    OperationTalk& talk;
    std::vector<Page> buffer;
    dev_t sourceVolume = 0;
    bool mayShareExtents = true;
    bool mayCopyInKernel = true;
    off_t knownSize = 0;  // of the file that is being copied, when its copying began
};

}  // namespace permora::host
