#include "security/effective_rights.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/api/effective_rights.h"
#include "platform/api/errors.h"
#include "security/access_entry_list.h"

namespace permora {
namespace {

// Accounts that the system calls groups although they have no members: ANONYMOUS LOGON, SYSTEM and the
// services.
constexpr std::array<std::string_view, 5> kWithoutMembers = {"S-1-5-7", "S-1-5-17", "S-1-5-18", "S-1-5-19",
                                                             "S-1-5-20"};

bool HasMembers(AccountRecord& account) {
    account.Lookup();
    const bool isGroup =
        account.use == SidTypeGroup || account.use == SidTypeAlias || account.use == SidTypeWellKnownGroup;
    return isGroup && std::ranges::find(kWithoutMembers, account.GetSidText()) == kWithoutMembers.end();
}

bool HasGenericRights(const AccessEntry& entry) {
    return !entry.IsOfOtherType() && entry.HasIdleGenericRights();
}

}  // namespace

DWORD FindEffectiveRights(PACL dacl, PSID account, DWORD& rights) {
    TRUSTEE_A trustee{};
    BuildTrusteeWithSidA(&trustee, account);
    return GetEffectiveRightsFromAclA(dacl, &trustee, &rights);
}

// The system gives only the rights of a whole list. Those of its first entries alone grow with each entry
// that grants something, and only with those.
DWORD FindGrants(PACL dacl, PSID account, std::vector<Grant>& grants) {
    std::vector<Grant> found;
    if (dacl != nullptr) {
        std::vector<std::uint32_t> copy((dacl->AclSize + sizeof(std::uint32_t) - 1) / sizeof(std::uint32_t));
        std::memcpy(copy.data(), dacl, dacl->AclSize);
        PACL beginning = static_cast<PACL>(static_cast<void*>(copy.data()));
        DWORD before = 0;
        for (WORD count = 0; count++ < dacl->AceCount;) {
            void* ace = nullptr;
            if (GetAce(dacl, count - 1U, &ace) == FALSE) return GetLastError();
            if (static_cast<ACE_HEADER*>(ace)->AceType != ACCESS_ALLOWED_ACE_TYPE) continue;
            beginning->AceCount = count;
            DWORD rights = 0;
            if (const DWORD error = FindEffectiveRights(beginning, account, rights); error != ERROR_SUCCESS)
                return error;
            if ((rights & ~before) != 0) found.push_back({count - 1U, rights & ~before});
            before = rights;
        }
    }
    grants = std::move(found);
    return ERROR_SUCCESS;
}

std::string UnknownGroupsText(AccountRecord& account) {
    return "the groups of " + AccountDisplayName(account) + " are not known here";
}

std::vector<std::string> RemarksOnRights(PACL dacl, AccountRecord& account, DWORD rights) {
    std::vector<std::string> remarks;
    if (HasMembers(account)) {
        remarks.push_back("members of " + AccountDisplayName(account) +
                          " may have more or less, by entries for themselves and their other groups");
    }
    if ((rights & FULL_CONTROL_RIGHTS) != 0 && (rights & SYNCHRONIZE) == 0) {
        remarks.emplace_back(
            "over the network these rights cannot be used, since the right to synchronize is not among them");
    }
    const std::vector<AccessEntry> entries = EntriesOfDacl(dacl);
    if (std::ranges::any_of(entries, HasGenericRights))
        remarks.emplace_back("generic rights, which stand in the list, are not counted");
    return remarks;
}

bool IsEffective(const AccessRight& right, DWORD rights) {
    if (right.bits == FULL_CONTROL_RIGHTS) return (rights & RIGHTS_DISPLAY_MASK) == RIGHTS_DISPLAY_MASK;
    return (rights & right.bits) != 0;
}

}  // namespace permora
