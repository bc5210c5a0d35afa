#include "security/rights_comparison.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/nt/granted_rights.h"
#include "platform/raw_security.h"
#include "platform/server_accounts.h"
#include "security/effective_rights.h"
#include "security/object_server.h"

namespace permora {
namespace {

constexpr DWORD kEveryRight = 0xFFFFFFFF;

std::vector<std::string> RemarksOnCompared(RightsHolder& account, GroupsRequest request) {
    if (account.error != ERROR_SUCCESS) return {NoRightsText(account.error, request, account.account)};
    return RemarksOnAccount(account.groups.origin, account.account);
}

void CountRights(const nt::Acl& list, RightsHolder& account) {
    if (account.error != ERROR_SUCCESS) return;
    const DWORD rights = nt::GrantedRights(list, account.groups.sids);
    account.onAll &= rights;
    account.onSome |= rights;
}

}  // namespace

void RightsComparison::AddObject(PACL dacl, const std::string& itsServer) {
    if (!server) server = itsServer;
    if (*server != itsServer || CheckListOfServer(*server, dacl) != ERROR_SUCCESS) return AddUnknownObject();
    if (dacl == nullptr) {
        ++known;
        isAnyOpen = true;
        for (RightsHolder& account : accounts)
            account.onSome |= FILE_ALL_ACCESS;
        return;
    }
    const std::span<const BYTE> bytes = ClaimedBytes(dacl);
    std::string key(bytes.begin(), bytes.end());
    if (keys.contains(key)) {
        ++known;
        return;
    }
    std::optional<nt::Acl> list = AclOf(dacl);
    if (!list) return AddUnknownObject();
    ++known;
    for (RightsHolder& account : accounts)
        CountRights(*list, account);
    keys.insert(std::move(key));
    lists.push_back(*std::move(list));
}

void RightsComparison::AddAccount(AccountRecord account) {
    const auto isThere = [&](const RightsHolder& each) { return IsSameAccount(each.account, account); };
    if (std::ranges::any_of(accounts, isThere)) return;
    RightsHolder added;
    added.account = std::move(account);
    added.error = FindAccountGroupsAt(Server(), *added.account.sid, request, added.groups);
    added.remarks = RemarksOnCompared(added, request);
    if (isAnyOpen) added.onSome = FILE_ALL_ACCESS;
    for (const nt::Acl& list : lists)
        CountRights(list, added);
    accounts.push_back(std::move(added));
}

void RightsComparison::RemoveAccount(std::size_t place) {
    accounts.erase(accounts.begin() + static_cast<std::ptrdiff_t>(place));
}

RightsComparison RightsComparison::WithoutObjects() const {
    RightsComparison made(request);
    made.server = server;
    made.accounts = accounts;
    for (RightsHolder& account : made.accounts) {
        account.onAll = kEveryRight;
        account.onSome = 0;
    }
    return made;
}

Holding RightsComparison::Of(const RightsHolder& account, const AccessRight& right) const {
    const bool isOnSome = known > 0 && (account.onSome & right.bits) != 0;
    if (account.error != ERROR_SUCCESS || known == 0 || (unknown > 0 && !isOnSome)) return Holding::kUnknown;
    if (!isOnSome) return Holding::kOnNone;
    return unknown == 0 && (account.onAll & right.bits) != 0 ? Holding::kOnAll : Holding::kOnSome;
}

const char* RightsComparison::TextOf(const RightsHolder& account, const AccessRight& right) const {
    const bool isOne = ObjectCount() == 1;
    switch (Of(account, right)) {
        case Holding::kOnAll:
            return isOne ? "yes" : "all";
        case Holding::kOnSome:
            return "some";
        case Holding::kOnNone:
            return isOne ? "no" : "none";
        case Holding::kUnknown:
            break;
    }
    return "?";
}

}  // namespace permora
