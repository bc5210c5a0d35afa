// Privileges that are switched on around the calls that need them.
#pragma once

#include <initializer_list>

#include "platform/resources.h"

namespace permora {

// Switches on those of the named privileges that this process holds, for the calling thread alone and until
// the end of the scope. Within such a scope another one changes nothing.
class ScopedPrivileges {
  public:
    explicit ScopedPrivileges(std::initializer_list<LPCSTR> names);
    ~ScopedPrivileges();
    ScopedPrivileges(const ScopedPrivileges&) = delete;
    ScopedPrivileges& operator=(const ScopedPrivileges&) = delete;

    bool AreAnyOn() const { return areAnyOn; }

  private:
    bool isImpersonating = false;
    bool areAnyOn = false;
};

// The privileges for reading an object regardless of its list, and its system access list.
inline constexpr std::initializer_list<LPCSTR> kReadingPrivileges = {SE_BACKUP_NAME, SE_SECURITY_NAME};
// The privileges for changing its descriptor regardless of its list, and for giving it to any owner.
inline constexpr std::initializer_list<LPCSTR> kChangingPrivileges = {
    SE_BACKUP_NAME, SE_RESTORE_NAME, SE_SECURITY_NAME, SE_TAKE_OWNERSHIP_NAME};

inline bool IsForWantOfPrivilege(DWORD error) {
    return error == ERROR_ACCESS_DENIED || error == ERROR_PRIVILEGE_NOT_HELD || error == ERROR_INVALID_OWNER;
}

// `work` returns a system error code. It is done as an ordinary user does it, and once more with the
// privileges when that is refused.
template <typename Work>
DWORD WithPrivileges(std::initializer_list<LPCSTR> names, Work work) {
    const DWORD error = work();
    if (!IsForWantOfPrivilege(error)) return error;
    const ScopedPrivileges privileges(names);
    return privileges.AreAnyOn() ? work() : error;
}

}  // namespace permora
