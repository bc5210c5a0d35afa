#include "platform/windows/privileges.h"

#include "platform/api/errors.h"

namespace permora {

ScopedPrivileges::ScopedPrivileges(std::initializer_list<LPCSTR> names) {
    HANDLE opened = nullptr;
    // A thread that has a token of its own is within such a scope.
    if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &opened) != FALSE) {
        CloseHandle(opened);
        return;
    }
    // A copy of the process's token for this thread: other threads notice nothing.
    isImpersonating = ImpersonateSelf(SecurityImpersonation) != FALSE;
    if (!isImpersonating ||
        OpenThreadToken(GetCurrentThread(), TOKEN_QUERY | TOKEN_ADJUST_PRIVILEGES, TRUE, &opened) == FALSE)
        return;
    const UniqueHandle token(opened);
    for (const LPCSTR name : names) {
        TOKEN_PRIVILEGES wanted{};
        wanted.PrivilegeCount = 1;
        wanted.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
        if (LookupPrivilegeValueA(nullptr, name, &wanted.Privileges[0].Luid) == FALSE) continue;
        // The call succeeds for a privilege that is not held, too, and says so by the last error.
        const bool isDone =
            AdjustTokenPrivileges(token.get(), FALSE, &wanted, sizeof wanted, nullptr, nullptr) != FALSE;
        if (isDone && GetLastError() == ERROR_SUCCESS) areAnyOn = true;
    }
}

ScopedPrivileges::~ScopedPrivileges() {
    if (!isImpersonating) return;
    // The caller reads the last error of its own call.
    const DWORD error = GetLastError();
    // A thread that keeps a stronger token than it asked for must not go on.
    if (RevertToSelf() == FALSE) ExitProcess(ERROR_CANNOT_IMPERSONATE);
    SetLastError(error);
}

}  // namespace permora
