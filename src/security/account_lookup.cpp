#include "security/account_lookup.h"

#include <array>
#include <string>

#include "platform/api/errors.h"

namespace permora {

DWORD LookupAccountByName(LPCSTR name, AccountRecord& account) {
    alignas(DWORD) std::array<BYTE, SECURITY_MAX_SID_SIZE> sid{};
    // The service requires room for the domain and the type, which are not used here.
    SID_NAME_USE use = SidTypeInvalid;
    DWORD sidSize = sid.size();
    DWORD domainSize = 0;
    if (LookupAccountNameA(nullptr, name, sid.data(), &sidSize, nullptr, &domainSize, &use) == FALSE) {
        if (const DWORD error = GetLastError(); error != ERROR_INSUFFICIENT_BUFFER) return error;
        std::string domain(++domainSize, '\0');
        sidSize = sid.size();
        if (LookupAccountNameA(nullptr, name, sid.data(), &sidSize, domain.data(), &domainSize, &use) ==
            FALSE)
            return GetLastError();
    }
    return account.SetSid(sid.data()) ? ERROR_SUCCESS : ERROR_INVALID_SID;
}

}  // namespace permora
