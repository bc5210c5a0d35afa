#include "security/account_lookup.h"

#include <algorithm>
#include <utility>

#include "platform/api/errors.h"

namespace permora {
namespace {

constexpr DWORD kUsualNameSize = 256;

UniqueLocal<char> ZeroedText(DWORD size) {
    return UniqueLocal<char>(static_cast<char*>(LocalAlloc(LPTR, size)));
}

}  // namespace

DWORD LookupSidByName(LPCSTR name, UniqueLocal<void>& sid) {
    UniqueLocal<void> found(LocalAlloc(LMEM_FIXED, SECURITY_MAX_SID_SIZE));
    if (!found) return GetLastError();
    // The services insist on telling the domain and the type, which nobody here wants.
    SID_NAME_USE use = SidTypeInvalid;
    DWORD sidSize = SECURITY_MAX_SID_SIZE;
    DWORD domainSize = 0;
    if (LookupAccountNameA(nullptr, name, found.get(), &sidSize, nullptr, &domainSize, &use) == FALSE) {
        if (const DWORD error = GetLastError(); error != ERROR_INSUFFICIENT_BUFFER) return error;
        ++domainSize;
        sidSize = SECURITY_MAX_SID_SIZE;
        const UniqueLocal<char> domain = ZeroedText(domainSize);
        if (!domain || LookupAccountNameA(nullptr, name, found.get(), &sidSize, domain.get(), &domainSize,
                                          &use) == FALSE) {
            return GetLastError();
        }
    }
    sid = std::move(found);
    return ERROR_SUCCESS;
}

DWORD LookupNameBySid(PSID sid, UniqueLocal<char>& name, UniqueLocal<char>& domain, PSID_NAME_USE use) {
    name.reset();
    domain.reset();
    DWORD nameSize = kUsualNameSize;
    DWORD domainSize = kUsualNameSize;
    SID_NAME_USE foundUse = SidTypeInvalid;
    UniqueLocal<char> foundName;
    UniqueLocal<char> foundDomain;
    const auto look = [&] {
        foundName = ZeroedText(nameSize);
        foundDomain = foundName ? ZeroedText(domainSize) : nullptr;
        return foundDomain && LookupAccountSidA(nullptr, sid, foundName.get(), &nameSize, foundDomain.get(),
                                                &domainSize, &foundUse) != FALSE;
    };
    if (!look()) {
        const DWORD error = GetLastError();
        const bool tooSmall = nameSize > kUsualNameSize || domainSize > kUsualNameSize;
        if (!tooSmall) return error;
        // Of a text that did fit, the length without its NUL may have been reported.
        nameSize = std::max(nameSize, kUsualNameSize);
        domainSize = std::max(domainSize, kUsualNameSize);
        if (!look()) return GetLastError();
    }
    name = std::move(foundName);
    domain = std::move(foundDomain);
    if (use != nullptr) *use = foundUse;
    return ERROR_SUCCESS;
}

}  // namespace permora
