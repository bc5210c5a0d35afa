#include "security/account_lookup.h"

#include <array>
#include <string>

#include "platform/accounts.h"
#include "platform/api/errors.h"
#include "platform/resources.h"
#include "platform/system_message.h"

namespace permora {

DWORD LookupAccountByName(LPCSTR name, AccountRecord& account, const std::string& server) {
    const LPCSTR system = server.empty() ? nullptr : server.c_str();
    alignas(DWORD) std::array<BYTE, SECURITY_MAX_SID_SIZE> sid{};
    // The service requires room for the domain and the type, which are not used here.
    SID_NAME_USE use = SidTypeInvalid;
    DWORD sidSize = sid.size();
    DWORD domainSize = 0;
    if (LookupAccountNameA(system, name, sid.data(), &sidSize, nullptr, &domainSize, &use) == FALSE) {
        if (const DWORD error = GetLastError(); error != ERROR_INSUFFICIENT_BUFFER) return error;
        std::string domain(++domainSize, '\0');
        sidSize = sid.size();
        if (LookupAccountNameA(system, name, sid.data(), &sidSize, domain.data(), &domainSize, &use) == FALSE)
            return GetLastError();
    }
    return account.SetSid(sid.data()) ? ERROR_SUCCESS : ERROR_INVALID_SID;
}

namespace {

// On failure `account` is untouched. Returns a system error code.
DWORD FindAccount(const std::string& text, AccountRecord& account, const std::string& server) {
    // Not the two-letter abbreviations of SIDs, which could be names of users.
    if (!text.starts_with("S-") && !text.starts_with("s-"))
        return LookupAccountByName(text.c_str(), account, server);
    PSID found = nullptr;
    if (ConvertStringSidToSidA(text.c_str(), &found) == FALSE) return GetLastError();
    const UniqueLocal<void> sid(found);
    return account.SetSid(sid.get()) ? ERROR_SUCCESS : ERROR_INVALID_SID;
}

}  // namespace

std::string FindTypedAccount(const std::string& text, AccountRecord& account, const std::string& server) {
    const DWORD error = FindAccount(text, account, server);
    if (error == ERROR_SUCCESS) return {};
    const std::string reason = NotLookedUpText(error);
    return text + ": " + (reason.empty() ? SystemMessageLine(error) : reason);
}

std::string OfflineText(const DomainState& state) {
    if (state.availability != DomainAvailability::kOffline) return {};
    return "The domain " + state.domain + " does not answer: accounts are shown by their SIDs";
}

std::string NotLookedUpText(DWORD error) {
    const std::string domain = StateOfDomain().domain;
    if (error == kAmbiguousName) {
        return "this machine and its domain both have an account of that name. Write whose it is, such as " +
               QualifiedAccountName(domain.empty() ? "DOMAIN" : domain, "name");
    }
    if (error != kDomainOffline && error != kNameNotYet) return {};
    return (domain.empty() ? "the server" : "the domain " + domain) +
           " does not answer, so the name cannot be looked up";
}

}  // namespace permora
