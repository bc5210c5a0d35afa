// The access token of this process, made of its user and its capabilities.
#include "platform/api/token.h"

#include <unistd.h>

#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/base/capabilities.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/base/handle_table.h"
#include "platform/linux/security/privileges.h"

namespace permora::host {
namespace {

class Token : public SystemObject {
  public:
    explicit Token(DWORD granted) : access(granted) {}
    const DWORD access;
};

// Null, with the last error set, unless it is a token that was opened with this right.
std::shared_ptr<const Token> FindToken(HANDLE handle, DWORD access) {
    auto token = OpenHandles().Find<const Token>(handle);
    if (!token) {
        SetLastError(ERROR_INVALID_HANDLE);
    } else if ((token->access & access) != access) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return token;
}

bool IsThisMachineOrNone(LPCSTR system) {
    return system == nullptr || *system == '\0' || IsThisMachine(system);
}

BOOL HandOut(std::span<const BYTE> bytes, LPVOID information, DWORD size, LPDWORD needed) {
    *needed = static_cast<DWORD>(bytes.size());
    if (information == nullptr || size < bytes.size()) return Fail(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(information, bytes.data(), bytes.size());
    return TRUE;
}

// The SID follows the structure that points to it.
BOOL HandOutUser(LPVOID information, DWORD size, LPDWORD needed) {
    const nt::Sid user = SidForUser(geteuid());
    std::vector<BYTE> bytes(sizeof(TOKEN_USER) + user.ByteSize());
    if (information == nullptr) return HandOut(bytes, information, size, needed);
    const TOKEN_USER header{{static_cast<BYTE*>(information) + sizeof(TOKEN_USER), 0}};
    std::memcpy(bytes.data(), &header, sizeof header);
    std::memcpy(bytes.data() + sizeof header, user.Bytes().data(), user.ByteSize());
    return HandOut(bytes, information, size, needed);
}

BOOL HandOutPrivileges(LPVOID information, DWORD size, LPDWORD needed) {
    std::vector<LUID_AND_ATTRIBUTES> held;
    for (const Privilege& privilege : Privileges()) {
        if (!HasCapability(CapabilitySet::kPermitted, privilege.capability)) continue;
        const bool isEnabled = HasCapability(CapabilitySet::kEffective, privilege.capability);
        held.push_back({privilege.id, isEnabled ? SE_PRIVILEGE_ENABLED : 0});
    }
    const auto count = static_cast<DWORD>(held.size());
    const std::size_t entryBytes = held.size() * sizeof(LUID_AND_ATTRIBUTES);
    std::vector<BYTE> bytes(offsetof(TOKEN_PRIVILEGES, Privileges) + entryBytes);
    std::memcpy(bytes.data(), &count, sizeof count);
    if (entryBytes != 0)
        std::memcpy(bytes.data() + offsetof(TOKEN_PRIVILEGES, Privileges), held.data(), entryBytes);
    return HandOut(bytes, information, size, needed);
}

// False when the token does not hold it.
bool Adjust(const LUID_AND_ATTRIBUTES& wanted) {
    const Privilege* privilege = FindPrivilege(wanted.Luid);
    if (privilege == nullptr || !HasCapability(CapabilitySet::kPermitted, privilege->capability))
        return false;
    return (wanted.Attributes & SE_PRIVILEGE_ENABLED) != 0 ? RaiseCapability(privilege->capability)
                                                           : LowerCapability(privilege->capability);
}

// The entries that `state`, of `size` bytes, claims to have; nothing when they do not lie inside it.
bool TakeEntries(PTOKEN_PRIVILEGES state, DWORD size, std::vector<LUID_AND_ATTRIBUTES>& entries) {
    constexpr std::size_t kHeader = offsetof(TOKEN_PRIVILEGES, Privileges);
    if (state == nullptr || size < kHeader) return false;
    DWORD count = 0;
    std::memcpy(&count, state, sizeof count);
    if (count > (size - kHeader) / sizeof(LUID_AND_ATTRIBUTES)) return false;
    entries.resize(count);
    if (count != 0)
        std::memcpy(entries.data(), reinterpret_cast<const BYTE*>(state) + kHeader,
                    count * sizeof(LUID_AND_ATTRIBUTES));
    return true;
}

std::vector<LUID_AND_ATTRIBUTES> AllDisabled() {
    std::vector<LUID_AND_ATTRIBUTES> entries;
    for (const Privilege& privilege : Privileges())
        if (HasCapability(CapabilitySet::kPermitted, privilege.capability))
            entries.push_back({privilege.id, 0});
    return entries;
}

}  // namespace

}  // namespace permora::host

using permora::host::Fail;

HANDLE WINAPI GetCurrentProcess() {
    return INVALID_HANDLE_VALUE;  // the same number, as on Windows
}

BOOL WINAPI OpenProcessToken(HANDLE process, DWORD access, HANDLE* token) {
    if (process != GetCurrentProcess()) return Fail(ERROR_INVALID_HANDLE);
    if (token == nullptr || (access & ~(TOKEN_QUERY | TOKEN_ADJUST_PRIVILEGES)) != 0)
        return Fail(ERROR_INVALID_PARAMETER);
    *token = permora::host::OpenHandles().Add(std::make_shared<permora::host::Token>(access));
    return TRUE;
}

BOOL WINAPI GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS informationClass, LPVOID information,
                                DWORD size, LPDWORD needed) {
    if (!permora::host::FindToken(token, TOKEN_QUERY)) return FALSE;
    if (needed == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    switch (informationClass) {
        case TokenUser:
            return permora::host::HandOutUser(information, size, needed);
        case TokenPrivileges:
            return permora::host::HandOutPrivileges(information, size, needed);
    }
    return Fail(ERROR_INVALID_PARAMETER);
}

BOOL WINAPI AdjustTokenPrivileges(HANDLE token, BOOL disableAll, PTOKEN_PRIVILEGES newState, DWORD size,
                                  PTOKEN_PRIVILEGES previous, LPDWORD needed) {
    if (!permora::host::FindToken(token, TOKEN_ADJUST_PRIVILEGES)) return FALSE;
    if (previous != nullptr || needed != nullptr) return Fail(ERROR_INVALID_PARAMETER);
    std::vector<LUID_AND_ATTRIBUTES> entries;
    if (disableAll != FALSE)
        entries = permora::host::AllDisabled();
    else if (!permora::host::TakeEntries(newState, size, entries))
        return Fail(ERROR_INVALID_PARAMETER);
    DWORD outcome = ERROR_SUCCESS;
    for (const LUID_AND_ATTRIBUTES& entry : entries)
        if (!permora::host::Adjust(entry)) outcome = ERROR_NOT_ALL_ASSIGNED;
    SetLastError(outcome);
    return TRUE;
}

BOOL WINAPI LookupPrivilegeValueA(LPCSTR system, LPCSTR name, PLUID value) {
    if (name == nullptr || value == nullptr || !permora::host::IsThisMachineOrNone(system))
        return Fail(ERROR_INVALID_PARAMETER);
    const permora::host::Privilege* privilege = permora::host::FindPrivilege(name);
    if (privilege == nullptr) return Fail(ERROR_NO_SUCH_PRIVILEGE);
    *value = privilege->id;
    return TRUE;
}

BOOL WINAPI LookupPrivilegeNameA(LPCSTR system, PLUID value, LPSTR name, LPDWORD size) {
    if (value == nullptr || size == nullptr || !permora::host::IsThisMachineOrNone(system))
        return Fail(ERROR_INVALID_PARAMETER);
    const permora::host::Privilege* privilege = permora::host::FindPrivilege(*value);
    if (privilege == nullptr) return Fail(ERROR_NO_SUCH_PRIVILEGE);
    const std::string_view text = privilege->name;
    if (name == nullptr || *size <= text.size()) {
        *size = static_cast<DWORD>(text.size() + 1);
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(name, text.data(), text.size());
    name[text.size()] = '\0';
    *size = static_cast<DWORD>(text.size());
    return TRUE;
}
