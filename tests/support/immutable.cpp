#include "tests/support/immutable.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <utility>

#include "platform/linux/base/unique_fd.h"

namespace permora::test {

Immutable::Immutable(std::string hostPath) : path(std::move(hostPath)), isSet(Set(true)) {}

Immutable::~Immutable() {
    if (isSet) Set(false);
}

bool Immutable::Set(bool immutable) const {
    const host::UniqueFd file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    int flags = 0;
    if (!file || ioctl(file.Get(), FS_IOC_GETFLAGS, &flags) != 0) return false;
    flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    return ioctl(file.Get(), FS_IOC_SETFLAGS, &flags) == 0;
}

}  // namespace permora::test
