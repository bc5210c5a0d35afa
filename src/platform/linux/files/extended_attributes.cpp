#include "platform/linux/files/extended_attributes.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>
#include <string>

#include "platform/linux/base/lost_requests.h"
#include "platform/linux/files/descriptor_path.h"

namespace permora::host {
namespace {

// Large enough for nearly every attribute at the first attempt, small enough that the kernel does not clear
// 64 KiB for each of them.
constexpr std::size_t kUsualSize = 4096;

// getxattrat(2), which the C library's headers do not know yet. Linux 6.13 or newer.
constexpr long kGetAttributeAt = 464;

struct GetAttributeArguments {
    std::uint64_t value;
    std::uint32_t size;
    std::uint32_t flags;
};

ssize_t GetAttributeAt(int folder, const char* hostName, const char* name, void* value, std::size_t size) {
    GetAttributeArguments arguments{reinterpret_cast<std::uintptr_t>(value), static_cast<std::uint32_t>(size),
                                    0};
    return syscall(kGetAttributeAt, folder, hostName, AT_SYMLINK_NOFOLLOW, name, &arguments,
                   sizeof arguments);
}

// A kernel without the call, or a container that forbids unknown calls, may return any error.
bool HasGetAttributeAt() {
    static const bool answer = [] {
        return GetAttributeAt(AT_FDCWD, "/", "user.permora.question", nullptr, 0) >= 0 || errno == ENODATA ||
               errno == ENOTSUP;
    }();
    return answer;
}

// Reads with `get`, which is getxattr(2) for one attribute, into a buffer that grows as needed.
int ReadGrowing(const std::function<ssize_t(void*, std::size_t)>& get, std::vector<std::uint8_t>& value) {
    value.resize(std::max(value.size(), kUsualSize));
    for (;;) {
        const ssize_t size = RequestAgain([&] { return get(value.data(), value.size()); });
        if (size >= 0) {
            value.resize(static_cast<std::size_t>(size));
            return 0;
        }
        const int error = errno;
        // ntfs-3g returns EIO where others return ERANGE. Asking for the size tells a buffer that was too
        // small from a broken disk. The attribute may grow before the next attempt, but each attempt has a
        // larger buffer.
        if (error != ERANGE && error != EIO) return error;
        const ssize_t needed = get(nullptr, 0);
        if (needed < 0) return errno;
        if (static_cast<std::size_t>(needed) <= value.size()) return error;
        value.resize(static_cast<std::size_t>(needed));
    }
}

}  // namespace

bool IsAbsent(int error) {
    return error == ENODATA || error == ENOTSUP;
}

int ReadExtendedAttribute(const ObjectHandle& object, const char* name, std::vector<std::uint8_t>& value) {
    const int descriptor = object.Descriptor();
    if (object.IsReadable()) {
        return ReadGrowing(
            [&](void* buffer, std::size_t size) { return fgetxattr(descriptor, name, buffer, size); }, value);
    }
    const DescriptorPath path(descriptor);
    return ReadGrowing(
        [&](void* buffer, std::size_t size) { return getxattr(path.Text(), name, buffer, size); }, value);
}

int ReadExtendedAttributeAt(int folder, const char* hostName, const char* name,
                            std::vector<std::uint8_t>& value) {
    if (HasGetAttributeAt()) {
        return ReadGrowing(
            [&](void* buffer, std::size_t size) {
                return GetAttributeAt(folder, hostName, name, buffer, size);
            },
            value);
    }
    const std::string path = std::string(DescriptorPath(folder).Text()) + "/" + hostName;
    return ReadGrowing(
        [&](void* buffer, std::size_t size) { return lgetxattr(path.c_str(), name, buffer, size); }, value);
}

std::vector<std::string> SplitAttributeList(std::span<const std::uint8_t> list) {
    std::vector<std::string> texts;
    for (auto start = list.begin(); start != list.end();) {
        const auto end = std::find(start, list.end(), std::uint8_t{0});
        if (end != start) texts.emplace_back(start, end);
        start = end == list.end() ? end : end + 1;
    }
    return texts;
}

int ListExtendedAttributes(const ObjectHandle& object, std::vector<std::string>& names) {
    const DescriptorPath path(object.Descriptor());
    std::vector<std::uint8_t> list;
    for (;;) {
        const ssize_t size = listxattr(path.Text(), nullptr, 0);
        if (size < 0) return errno;
        list.resize(static_cast<std::size_t>(size));
        const ssize_t length =
            size == 0 ? 0 : listxattr(path.Text(), reinterpret_cast<char*>(list.data()), list.size());
        if (length >= 0) {
            names = SplitAttributeList(std::span(list).first(static_cast<std::size_t>(length)));
            return 0;
        }
        if (errno != ERANGE) return errno;  // ERANGE: it grew meanwhile
    }
}

int AskExtendedAttribute(const ObjectHandle& object, const char* name) {
    const DescriptorPath path(object.Descriptor());
    return RequestAgain([&] { return getxattr(path.Text(), name, nullptr, 0); }) >= 0 ? 0 : errno;
}

bool HasRoom(const ObjectHandle& object) {
    struct statvfs volume {};
    return fstatvfs(object.Descriptor(), &volume) == 0 && volume.f_bavail > 0;
}

int WriteExtendedAttribute(const ObjectHandle& object, const char* name,
                           std::span<const std::uint8_t> value) {
    const DescriptorPath path(object.Descriptor());
    int error = 0;
    const int result = RequestAgain([&] {
        const int written = object.IsReadable()
                                ? fsetxattr(object.Descriptor(), name, value.data(), value.size(), 0)
                                : setxattr(path.Text(), name, value.data(), value.size(), 0);
        error = errno;
        // Where the connection breaks off under a writing, the kernel says ENOTSUP for EAGAIN.
        if (written != 0 && error == ENOTSUP) errno = EAGAIN;
        return written;
    });
    return result == 0 ? 0 : error;
}

int RemoveExtendedAttribute(const ObjectHandle& object, const char* name) {
    const bool isGone = removexattr(DescriptorPath(object.Descriptor()).Text(), name) == 0;
    return isGone || errno == ENODATA ? 0 : errno;
}

}  // namespace permora::host
