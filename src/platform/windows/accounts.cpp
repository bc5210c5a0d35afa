// Names, groups and the domain with the SDK's calls. LookupAccountSidA has time limits of its own and keeps
// what it has found, so names are asked for directly.
#include "platform/accounts.h"

#include <authz.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <mutex>
#include <span>

#include "platform/raw_security.h"
#include "platform/server_accounts.h"
#include "platform/windows/domain.h"

namespace permora {
namespace {

struct AuthzCloser {
    void operator()(AUTHZ_RESOURCE_MANAGER_HANDLE manager) const { AuthzFreeResourceManager(manager); }
};
using UniqueManager = std::unique_ptr<std::remove_pointer_t<AUTHZ_RESOURCE_MANAGER_HANDLE>, AuthzCloser>;

struct AuthzContextCloser {
    void operator()(AUTHZ_CLIENT_CONTEXT_HANDLE context) const { AuthzFreeContext(context); }
};
using UniqueContext = std::unique_ptr<std::remove_pointer_t<AUTHZ_CLIENT_CONTEXT_HANDLE>, AuthzContextCloser>;

DWORD MakeContext(const nt::Sid& account, DWORD flags, UniqueManager& manager, UniqueContext& context) {
    AUTHZ_RESOURCE_MANAGER_HANDLE newManager = nullptr;
    if (AuthzInitializeResourceManager(AUTHZ_RM_FLAG_NO_AUDIT, nullptr, nullptr, nullptr, nullptr,
                                       &newManager) == FALSE)
        return GetLastError();
    manager.reset(newManager);
    AUTHZ_CLIENT_CONTEXT_HANDLE newContext = nullptr;
    if (AuthzInitializeContextFromSid(flags, RawSid(account), manager.get(), nullptr, LUID{}, nullptr,
                                      &newContext) == FALSE)
        return GetLastError();
    context.reset(newContext);
    return ERROR_SUCCESS;
}

DWORD ReadGroups(AUTHZ_CLIENT_CONTEXT_HANDLE context, std::vector<nt::Sid>& sids) {
    DWORD size = 0;
    AuthzGetInformationFromContext(context, AuthzContextInfoGroupsSids, 0, &size, nullptr);
    std::vector<std::uint64_t> block(size / sizeof(std::uint64_t) + 1);
    if (AuthzGetInformationFromContext(context, AuthzContextInfoGroupsSids, size, &size, block.data()) ==
        FALSE)
        return GetLastError();
    const auto* groups = reinterpret_cast<const TOKEN_GROUPS*>(block.data());
    for (const SID_AND_ATTRIBUTES& group : std::span(groups->Groups, groups->GroupCount)) {
        const std::optional<nt::Sid> sid = SidOf(group.Sid);
        if (!sid) return ERROR_INVALID_SID;
        if ((group.Attributes & SE_GROUP_ENABLED) == 0) continue;
        if (std::ranges::find(sids, *sid) == sids.end()) sids.push_back(*sid);
    }
    return ERROR_SUCCESS;
}

DWORD LookUp(const nt::Sid& sid, AccountName& account) {
    // More than any name has.
    std::array<char, 1024> name{};
    std::array<char, 1024> domain{};
    DWORD nameSize = name.size();
    DWORD domainSize = domain.size();
    SID_NAME_USE use = SidTypeUnknown;
    if (LookupAccountSidA(nullptr, RawSid(sid), name.data(), &nameSize, domain.data(), &domainSize, &use) ==
        FALSE)
        return GetLastError();
    account = {name.data(), domain.data(), use};
    return ERROR_SUCCESS;
}

bool IsOfThisMachine(const AccountName& account) {
    std::array<char, MAX_COMPUTERNAME_LENGTH + 1> computer{};
    DWORD size = computer.size();
    GetComputerNameA(computer.data(), &size);
    return account.use == SidTypeWellKnownGroup || account.domain == computer.data() ||
           account.domain == "BUILTIN" || account.domain == "NT AUTHORITY";
}

}  // namespace

NameAnswer FindAccountName(const nt::Sid& sid, std::chrono::milliseconds /*wait*/, AccountName& account) {
    account = {};
    const DWORD error = LookUp(sid, account);
    if (error == ERROR_SUCCESS) return NameAnswer::kKnown;
    if (error == ERROR_NONE_MAPPED) return NameAnswer::kNobody;
    TheDomain().HasAnswered(error);
    return NameAnswer::kFailed;
}

std::uint64_t AccountNews() {
    return TheDomain().News();
}

DomainState StateOfDomain() {
    return TheDomain().State();
}

DWORD FindAccountGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) {
    AccountName name;
    if (const DWORD error = LookUp(account, name); error != ERROR_SUCCESS) return error;
    const bool isThisMachines = IsOfThisMachine(name);
    const bool isExact = request == GroupsRequest::kExact && !isThisMachines;
    UniqueManager manager;
    UniqueContext context;
    AccountGroups found;
    found.sids.push_back(account);
    DWORD error = MakeContext(account, isExact ? AUTHZ_REQUIRE_S4U_LOGON : 0, manager, context);
    if (error == ERROR_SUCCESS) error = ReadGroups(context.get(), found.sids);
    if (!isThisMachines) error = TheDomain().HasAnswered(error);
    if (error != ERROR_SUCCESS) return error;
    found.origin = isThisMachines ? GroupsOrigin::kThisMachine
                   : isExact      ? GroupsOrigin::kExact
                                  : GroupsOrigin::kWithoutLogon;
    groups = std::move(found);
    return ERROR_SUCCESS;
}

// The system judges by the path, also of another server.
DWORD FindGroupsOfServer(const std::string& /*server*/, const nt::Sid& account, GroupsRequest request,
                         AccountGroups& groups) {
    return FindAccountGroups(account, request, groups);
}

void WaitLongerForServers() {}

bool MayAskForExactGroups() {
    return TheDomain().State().availability != DomainAvailability::kNone;
}

}  // namespace permora
