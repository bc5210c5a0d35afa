#include "platform/linux/accounts/account_directory.h"

#include <array>
#include <optional>

#include "platform/linux/accounts/account_names.h"
#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/machine_accounts.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/accounts/server_accounts.h"
#include "platform/linux/accounts/unix_sids.h"
#include "platform/linux/accounts/well_known_accounts.h"
#include "platform/linux/base/wide_text.h"

namespace permora::host {

namespace {

// The host tells "Users" from "users". So do we where both exist: the exact name comes first.
DWORD FindSidHere(const NameText& text, nt::Sid& sid, bool& isWellKnown) {
    for (const LetterCase letterCase : {LetterCase::kSignificant, LetterCase::kIgnored}) {
        isWellKnown = WellKnownAccounts().FindSid(text, letterCase, sid) == ERROR_SUCCESS;
        if (isWellKnown) return ERROR_SUCCESS;
        const DWORD error = MachineAccounts().FindSid(text, letterCase, sid);
        if (error != ERROR_NONE_MAPPED) return error;
    }
    return ERROR_NONE_MAPPED;
}

// The domain's account where a number of the host stands for one.
DWORD FindDomainSid(const nt::Sid& account, nt::Sid& sid) {
    const std::optional<id_t> user = IdOfUnixSid(AccountKind::kUser, account);
    if (user) return TheDomainAccounts().FindSidOf(AccountKind::kUser, *user, sid);
    sid = account;
    return ERROR_SUCCESS;
}

bool IsFound(DWORD error, const Account& account) {
    return error == ERROR_SUCCESS || (error == ERROR_NONE_MAPPED && account.use == SidTypeDeletedAccount);
}

// Of a domain or of a server: by its form a SID may be of either.
DWORD FindForeignAccount(const nt::Sid& sid, Account& account, std::chrono::milliseconds wait) {
    Account found;
    DWORD error = ERROR_NONE_MAPPED;
    if (!ServerAccounts::Owns(sid)) {
        error = TheDomainAccounts().FindName(sid, wait, found);
        // Nobody waits twice.
        if (error == kNameNotYet) wait = {};
    }
    if (!IsFound(error, found)) {
        Account ofServer;
        const DWORD serverError = TheServerAccounts().FindName(sid, wait, ofServer);
        if (IsFound(serverError, ofServer)) found = std::move(ofServer);
        if (error == ERROR_NONE_MAPPED || serverError == ERROR_SUCCESS) error = serverError;
    }
    if (error == ERROR_SUCCESS || error == ERROR_NONE_MAPPED) account = found;
    return error;
}

}  // namespace

std::array<AccountSource*, 4> AccountSources() {
    return {&WellKnownAccounts(), &MachineAccounts(), &TheDomainAccounts(), &TheServerAccounts()};
}

DWORD FindAccountOfSid(const nt::Sid& sid, Account& account, std::chrono::milliseconds wait) {
    // Long lists consist of these.
    if (DomainAccounts::IsOfDomain(sid)) return FindForeignAccount(sid, account, wait);
    for (AccountSource* source : AccountSources()) {
        Account found;
        const DWORD error = source->FindName(sid, wait, found);
        if (error == ERROR_NONE_MAPPED && found.use != SidTypeDeletedAccount) continue;
        account = found;
        return error;
    }
    return ERROR_NONE_MAPPED;
}

DWORD FindAccountHere(const nt::Sid& sid, Account& account) {
    const DWORD error = WellKnownAccounts().FindName(sid, {}, account);
    return error == ERROR_NONE_MAPPED ? MachineAccounts().FindName(sid, {}, account) : error;
}

DWORD FindAccountSid(std::string_view text, nt::Sid& sid, MountedServer* server) {
    if (const std::optional<nt::Sid> read = nt::Sid::FromText(text)) {
        sid = *read;
        return ERROR_SUCCESS;
    }
    const std::size_t separator = text.find('\\');
    const bool isQualified = separator != text.npos;
    const NameText name{isQualified ? text.substr(0, separator) : std::string_view(),
                        isQualified ? text.substr(separator + 1) : text, isQualified};
    if (!IsPlainAccountName(name.name)) return ERROR_NONE_MAPPED;
    bool isWellKnown = false;
    const DWORD error = FindSidHere(name, sid, isWellKnown);
    const bool isHere = error == ERROR_SUCCESS;
    if ((!isHere && error != ERROR_NONE_MAPPED) || isWellKnown || (isHere && isQualified)) return error;
    nt::Sid ofDomain;
    const DWORD domainError = TheDomainAccounts().FindSid(name, LetterCase::kIgnored, ofDomain);
    // While the domain is away a bare name means this machine's account.
    if (isHere) return domainError == ERROR_SUCCESS && ofDomain != sid ? kAmbiguousName : ERROR_SUCCESS;
    if (domainError == ERROR_SUCCESS) sid = ofDomain;
    // While the domain is away, a name without one may be its own.
    if (domainError == ERROR_SUCCESS || (domainError != ERROR_NONE_MAPPED && !isQualified))
        return domainError;
    // The object's own server before others of that name.
    const bool isOfServer = server != nullptr && isQualified && server->IsCalled(name.domain);
    DWORD serverError = isOfServer ? server->FindSid(name, sid)
                                   : TheServerAccounts().FindSid(name, LetterCase::kIgnored, sid);
    if (serverError == ERROR_NONE_MAPPED && server != nullptr && !isOfServer)
        serverError = server->FindSid(name, sid);
    return serverError == ERROR_NONE_MAPPED ? domainError : serverError;
}

DWORD FindGroupsOfAccount(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) {
    nt::Sid sid;
    DWORD error = FindDomainSid(account, sid);
    if (error == ERROR_SUCCESS) error = TheDomainAccounts().FindGroups(sid, request, groups);
    if (error == ERROR_NONE_MAPPED) return MachineAccounts().FindGroups(account, request, groups);
    if (error == ERROR_SUCCESS && sid != account) {
        std::erase(groups.sids, account);
        groups.sids.insert(groups.sids.begin(), account);
    }
    return error;
}

bool IsThisMachine(std::string_view system) {
    if (system.starts_with("\\\\")) system.remove_prefix(2);
    return IsSameName(system, ThisMachine().name, LetterCase::kIgnored);
}

bool IsThisServer(LPCWSTR server) {
    return server == nullptr || *server == u'\0' || IsThisMachine(ToAnsi(server));
}

}  // namespace permora::host
