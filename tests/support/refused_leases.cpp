#include "tests/support/refused_leases.h"

#include <fcntl.h>

#include <cerrno>

namespace permora::test {

std::atomic<bool> areLeasesRefused = false;

namespace {

bool IsRefused(int command) {
    if (command != F_SETLEASE || !areLeasesRefused) return false;
    errno = EACCES;
    return true;
}

}  // namespace
}  // namespace permora::test

// All arguments of fcntl fit into a pointer.
// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

int __real_fcntl(int descriptor, int command, void* argument);
int __wrap_fcntl(int descriptor, int command, void* argument) {
    return permora::test::IsRefused(command) ? -1 : __real_fcntl(descriptor, command, argument);
}

int __real_fcntl64(int descriptor, int command, void* argument);
int __wrap_fcntl64(int descriptor, int command, void* argument) {
    return permora::test::IsRefused(command) ? -1 : __real_fcntl64(descriptor, command, argument);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
