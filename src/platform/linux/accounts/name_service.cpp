#include "platform/linux/accounts/name_service.h"

#include <grp.h>
#include <pwd.h>

#include <cerrno>
#include <vector>

#include "platform/linux/base/host_errors.h"

namespace permora::host {

namespace {

// A group's record holds the names of all its members.
constexpr std::size_t kFirstBuffer = std::size_t{4} << 10;
constexpr std::size_t kLargestBuffer = std::size_t{16} << 20;

// Asks `call` (getpwuid_r and its like) for the record of `key`, with a larger buffer while it wants one, and
// has `take` look at the record before its texts go.
template <typename Record, typename Key, typename Take>
DWORD Ask(int (*call)(Key, Record*, char*, std::size_t, Record**), Key key, Take take) {
    std::vector<char> buffer(kFirstBuffer);
    for (;;) {
        Record record{};
        Record* found = nullptr;
        const int result = call(key, &record, buffer.data(), buffer.size(), &found);
        if (found != nullptr) return take(record);
        switch (result) {
            case 0:
            case ENOENT:
            case ESRCH:
            case EBADF:
            case EPERM:
                return ERROR_NONE_MAPPED;  // each of them means it, says getpwnam(3)
            case EINTR:
                break;
            case ERANGE:
                if (buffer.size() >= kLargestBuffer) return ERROR_INSUFFICIENT_BUFFER;
                buffer.resize(2 * buffer.size());
                break;
            default:
                return ErrorFromErrno(result);
        }
    }
}

DWORD TakeName(const char* found, std::string& name) {
    if (!IsPlainAccountName(found)) return ERROR_NONE_MAPPED;
    name = found;
    return ERROR_SUCCESS;
}

DWORD TakeId(id_t found, id_t& id) {
    id = found;
    return ERROR_SUCCESS;
}

}  // namespace

DWORD FindHostName(AccountKind kind, id_t id, std::string& name) {
    if (kind == AccountKind::kUser) {
        return Ask(getpwuid_r, id, [&](const passwd& user) { return TakeName(user.pw_name, name); });
    }
    return Ask(getgrgid_r, id, [&](const group& found) { return TakeName(found.gr_name, name); });
}

DWORD FindHostId(AccountKind kind, const std::string& name, id_t& id) {
    if (!IsPlainAccountName(name)) return ERROR_NONE_MAPPED;
    if (kind == AccountKind::kUser) {
        return Ask(getpwnam_r, name.c_str(), [&](const passwd& user) { return TakeId(user.pw_uid, id); });
    }
    return Ask(getgrnam_r, name.c_str(), [&](const group& found) { return TakeId(found.gr_gid, id); });
}

}  // namespace permora::host
