#include "platform/linux/files/entry_identity.h"

#include <sys/resource.h>

#include <atomic>
#include <utility>

namespace permora {
namespace host {
namespace {

std::atomic<rlim_t> pinCount = 0;

// A quarter of what is allowed; the rest is for the work itself, a level of folders each.
bool MayPin() {
    rlimit limit{};
    return getrlimit(RLIMIT_NOFILE, &limit) == 0 && pinCount < limit.rlim_cur / 4;
}

}  // namespace
}  // namespace host

EntryIdentity::Inside::Inside(host::ObjectHandle object) : identity(object) {
    if (!host::MayPin()) return;
    ++host::pinCount;
    pin = std::move(object);
}

EntryIdentity::Inside::~Inside() {
    if (pin) --host::pinCount;
}

DWORD EntryIdentity::Inside::Verify(const host::ObjectHandle& object) const {
    return host::ObjectIdentity(object) == identity ? ERROR_SUCCESS : ERROR_FILE_INVALID;
}

EntryIdentity::EntryIdentity() = default;
EntryIdentity::EntryIdentity(EntryIdentity&& other) noexcept = default;
EntryIdentity& EntryIdentity::operator=(EntryIdentity&& other) noexcept = default;
EntryIdentity::~EntryIdentity() = default;

}  // namespace permora
