// FindGroupMembers with the SDK's calls: local groups and those of a domain have one each.
#include "platform/group_members.h"

#include <dsgetdc.h>
#include <windows.h>

#include <lm.h>

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string>

#include "platform/accounts.h"
#include "platform/api/network.h"
#include "platform/raw_security.h"
#include "platform/resources.h"
#include "platform/windows/domain.h"
#include "platform/windows/network_listing.h"

namespace permora {
namespace {

constexpr std::size_t kLongestName = 1024;

struct GroupName {
    std::array<WCHAR, kLongestName> name{};
    std::array<WCHAR, kLongestName> domain{};
    SID_NAME_USE use = SidTypeUnknown;
};

DWORD LookUp(const nt::Sid& sid, GroupName& group) {
    DWORD nameSize = kLongestName;
    DWORD domainSize = kLongestName;
    if (LookupAccountSidW(nullptr, RawSid(sid), group.name.data(), &nameSize, group.domain.data(),
                          &domainSize, &group.use) == FALSE)
        return GetLastError();
    return ERROR_SUCCESS;
}

void AddNew(const std::optional<nt::Sid>& sid, std::vector<nt::Sid>& sids) {
    if (sid && std::ranges::find(sids, *sid) == sids.end()) sids.push_back(*sid);
}

DWORD AddLocalMembers(const GroupName& group, std::vector<nt::Sid>& sids) {
    return TakeListed<LOCALGROUP_MEMBERS_INFO_0>(
        [&](LPBYTE* block, DWORD* count, DWORD* total, DWORD_PTR* resume) {
            return NetLocalGroupGetMembers(nullptr, group.name.data(), 0, block, MAX_PREFERRED_LENGTH, count,
                                           total, resume);
        },
        [&](std::span<const LOCALGROUP_MEMBERS_INFO_0> members) -> DWORD {
            for (const LOCALGROUP_MEMBERS_INFO_0& member : members)
                AddNew(SidOf(member.lgrmi0_sid), sids);
            return ERROR_SUCCESS;
        });
}

// The controller that knows the domain's groups; none for this machine's own.
DWORD FindController(const GroupName& group, std::wstring& controller) {
    std::array<WCHAR, MAX_COMPUTERNAME_LENGTH + 1> computer{};
    DWORD size = computer.size();
    GetComputerNameW(computer.data(), &size);
    if (std::wstring_view(group.domain.data()) == computer.data()) return ERROR_SUCCESS;
    DOMAIN_CONTROLLER_INFOW* info = nullptr;
    const DWORD error = DsGetDcNameW(nullptr, group.domain.data(), nullptr, nullptr, 0, &info);
    if (error != ERROR_SUCCESS) return error;
    const UniqueNetworkBuffer<DOMAIN_CONTROLLER_INFOW> buffer(info);
    controller = info->DomainControllerName;
    return ERROR_SUCCESS;
}

// Names without their domain, which is the group's.
std::optional<nt::Sid> SidOfMember(LPCWSTR server, const GroupName& group, LPCWSTR name) {
    const std::wstring qualified = std::wstring(group.domain.data()) + L'\\' + name;
    alignas(DWORD) std::array<BYTE, SECURITY_MAX_SID_SIZE> sid{};
    DWORD sidSize = sid.size();
    std::array<WCHAR, kLongestName> domain{};
    DWORD domainSize = domain.size();
    SID_NAME_USE use = SidTypeUnknown;
    if (LookupAccountNameW(server, qualified.c_str(), sid.data(), &sidSize, domain.data(), &domainSize,
                           &use) == FALSE)
        return std::nullopt;
    return SidOf(sid.data());
}

DWORD AddDomainMembers(const GroupName& group, std::vector<nt::Sid>& sids) {
    std::wstring controller;
    if (const DWORD error = FindController(group, controller); error != ERROR_SUCCESS) return error;
    LPCWSTR const server = controller.empty() ? nullptr : controller.c_str();
    return TakeListed<GROUP_USERS_INFO_0>(
        [&](LPBYTE* block, DWORD* count, DWORD* total, DWORD_PTR* resume) {
            return NetGroupGetUsers(server, group.name.data(), 0, block, MAX_PREFERRED_LENGTH, count, total,
                                    resume);
        },
        [&](std::span<const GROUP_USERS_INFO_0> members) -> DWORD {
            for (const GROUP_USERS_INFO_0& member : members) {
                const std::optional<nt::Sid> sid = SidOfMember(server, group, member.grui0_name);
                // Without it the list would be incomplete.
                if (!sid) return GetLastError();
                AddNew(sid, sids);
            }
            return ERROR_SUCCESS;
        });
}

}  // namespace

DWORD FindGroupMembers(const nt::Sid& group, GroupMembers& members) {
    GroupName name;
    if (const DWORD error = LookUp(group, name); error != ERROR_SUCCESS)
        return TheDomain().HasAnswered(error);
    GroupMembers found;
    DWORD error = ERROR_NONE_MAPPED;
    if (name.use == SidTypeWellKnownGroup) {
        found.isOpen = true;
        error = ERROR_SUCCESS;
    } else if (name.use == SidTypeAlias) {
        error = AddLocalMembers(name, found.sids);
    } else if (name.use == SidTypeGroup) {
        error = TheDomain().HasAnswered(AddDomainMembers(name, found.sids));
    }
    if (error == ERROR_SUCCESS) members = std::move(found);
    return error;
}

}  // namespace permora
