#include "platform/linux/files/extended_attributes.h"

#include <sys/types.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

namespace permora::host {
namespace {

// Large enough for nearly every attribute at the first attempt, small enough that the kernel does not clear
// 64 KiB for each of them.
constexpr std::size_t kUsualSize = 4096;

// The calls that take a descriptor refuse one opened with O_PATH. The magic link leads to the very object,
// and stops there when the object is itself a link.
class DescriptorPath {
  public:
    explicit DescriptorPath(int descriptor) {
        std::snprintf(text.data(), text.size(), "/proc/self/fd/%d", descriptor);
    }
    const char* Text() const { return text.data(); }

  private:
    std::array<char, 32> text{};
};

}  // namespace

int ReadExtendedAttribute(const ObjectHandle& object, const char* name, std::vector<std::uint8_t>& value) {
    const DescriptorPath path(object.Descriptor());
    value.resize(std::max(value.size(), kUsualSize));
    for (;;) {
        const ssize_t size = getxattr(path.Text(), name, value.data(), value.size());
        if (size >= 0) {
            value.resize(static_cast<std::size_t>(size));
            return 0;
        }
        const int error = errno;
        // ntfs-3g says EIO where others say ERANGE: the size tells a buffer that was too small from a broken
        // disk. It may grow again before the next attempt, but each attempt has a larger buffer than the
        // last.
        if (error != ERANGE && error != EIO) return error;
        const ssize_t needed = getxattr(path.Text(), name, nullptr, 0);
        if (needed < 0) return errno;
        if (static_cast<std::size_t>(needed) <= value.size()) return error;
        value.resize(static_cast<std::size_t>(needed));
    }
}

int AskExtendedAttribute(const ObjectHandle& object, const char* name) {
    return getxattr(DescriptorPath(object.Descriptor()).Text(), name, nullptr, 0) >= 0 ? 0 : errno;
}

int WriteExtendedAttribute(const ObjectHandle& object, const char* name,
                           std::span<const std::uint8_t> value) {
    const DescriptorPath path(object.Descriptor());
    return setxattr(path.Text(), name, value.data(), value.size(), 0) == 0 ? 0 : errno;
}

}  // namespace permora::host
