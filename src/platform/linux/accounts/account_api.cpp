// Accounts by SID and by name, under the system's names.
#include <cstring>
#include <string_view>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/server_accounts.h"
#include "platform/linux/base/failure.h"

namespace {

using permora::host::Account;
using permora::host::Fail;
using permora::nt::Sid;

constexpr std::uint64_t kAuthorityOfNumbers = 22;

// A caller's text buffer and its size in characters, the NUL included.
struct TextBuffer {
    LPSTR text;
    LPDWORD size;

    // Without a buffer there is no room, whatever its size.
    bool Holds(std::string_view value) const { return text != nullptr && *size > value.size(); }
    void Store(std::string_view value) const {
        std::memcpy(text, value.data(), value.size());
        text[value.size()] = '\0';
        *size = static_cast<DWORD>(value.size());
    }
    void AskFor(std::string_view value) const { *size = static_cast<DWORD>(value.size() + 1); }
};

bool IsAnotherMachine(LPCSTR system) {
    return system != nullptr && *system != '\0' && !permora::host::IsThisMachine(system);
}

}  // namespace

BOOL WINAPI LookupAccountSidA(LPCSTR system, PSID sid, LPSTR name, LPDWORD nameSize, LPSTR domain,
                              LPDWORD domainSize, PSID_NAME_USE use) {
    if (sid == nullptr || nameSize == nullptr || domainSize == nullptr || use == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    if (!IsValidSid(sid)) return Fail(ERROR_INVALID_SID);
    const std::optional<Sid> value = Sid::FromBytes({static_cast<const BYTE*>(sid), GetLengthSid(sid)});
    if (!value) return Fail(ERROR_INVALID_SID);
    const bool isOfServer = IsAnotherMachine(system);
    // The numbers of another machine's own system are not this one's.
    if (isOfServer &&
        (permora::host::FindMountedServer(system) == nullptr || value->Authority() == kAuthorityOfNumbers))
        return Fail(ERROR_NONE_MAPPED);

    Account account;
    const DWORD error = permora::host::FindAccountOfSid(*value, account);
    if (error != ERROR_SUCCESS) return Fail(error);
    const TextBuffer nameBuffer{name, nameSize};
    const TextBuffer domainBuffer{domain, domainSize};
    if (!nameBuffer.Holds(account.name) || !domainBuffer.Holds(account.domain)) {
        nameBuffer.AskFor(account.name);
        domainBuffer.AskFor(account.domain);
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    nameBuffer.Store(account.name);
    domainBuffer.Store(account.domain);
    *use = account.use;
    return TRUE;
}

BOOL WINAPI LookupAccountNameA(LPCSTR system, LPCSTR account, PSID sid, LPDWORD sidSize, LPSTR domain,
                               LPDWORD domainSize, PSID_NAME_USE use) {
    if (account == nullptr || sidSize == nullptr || domainSize == nullptr || use == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    const bool isOfServer = IsAnotherMachine(system);
    permora::host::MountedServer* const server =
        isOfServer ? permora::host::FindMountedServer(system) : nullptr;
    if (isOfServer && server == nullptr) return Fail(ERROR_NONE_MAPPED);

    Sid value;
    DWORD error = permora::host::FindAccountSid(account, value, server);
    if (error != ERROR_SUCCESS) return Fail(error);
    Account found;  // stays an unknown one for a SID given as text that nobody has
    error = permora::host::FindAccountOfSid(value, found);
    if (error != ERROR_SUCCESS && error != ERROR_NONE_MAPPED) return Fail(error);

    const auto needed = static_cast<DWORD>(value.ByteSize());
    const TextBuffer domainBuffer{domain, domainSize};
    if (sid == nullptr || *sidSize < needed || !domainBuffer.Holds(found.domain)) {
        *sidSize = needed;
        domainBuffer.AskFor(found.domain);
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(sid, value.Bytes().data(), needed);
    domainBuffer.Store(found.domain);
    *use = found.use;
    return TRUE;
}
