#include "platform/linux/files/unmounted_entry.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace permora::host {

int OpenUnmountedEntry(int folder, const char* hostName, int flags, UniqueFd& opened, mode_t mode) {
    open_how how{};
    how.flags = static_cast<unsigned>(flags | O_NOFOLLOW | O_CLOEXEC);
    how.mode = mode;
    how.resolve = RESOLVE_NO_XDEV;
    const long descriptor = syscall(SYS_openat2, folder, hostName, &how, sizeof how);
    if (descriptor < 0) return errno;
    opened.Reset(static_cast<int>(descriptor));
    return 0;
}

void RaiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace permora::host
