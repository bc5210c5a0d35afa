#include "platform/linux/accounts/samba_accounts.h"

#include <chrono>
#include <utility>

#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/samba/samba_questions.h"

namespace permora::host {

namespace {

// Room and time for some hundred thousand accounts in a directory service.
constexpr ToolLimits kListLimits = {std::chrono::seconds(60), std::size_t{256} << 20};

std::vector<SambaAccount> ListUsers(const Machine& machine) {
    std::vector<SambaAccount> users;
    std::string listing;
    if (AskSamba("pdbedit", {"-L", "-v"}, kListLimits, listing) != ERROR_SUCCESS) return users;
    users = ParseUserList(listing, *machine.sid);
    if (const auto guest = machine.sid->Append(kGuestId); guest && IsPlainAccountName(machine.guestAccount))
        users.push_back({machine.guestAccount, *guest, nt::SidUse::kUser, std::nullopt});
    for (SambaAccount& user : users) {
        id_t id = 0;
        if (FindHostId(AccountKind::kUser, user.name, id) == ERROR_SUCCESS) user.id = id;
    }
    return users;
}

std::vector<SambaAccount> ListGroups(const Machine& machine) {
    std::vector<SambaAccount> groups;
    std::string listing;
    if (AskSamba("net", {"groupmap", "list", "verbose"}, kListLimits, listing) != ERROR_SUCCESS)
        return groups;
    groups = ParseGroupMap(listing);
    if (const auto none = machine.sid->Append(kNoneId))
        groups.push_back({"None", *none, nt::SidUse::kGroup, std::nullopt});
    return groups;
}

SambaAliases ListAliases() {
    SambaAliases aliases;
    const std::vector<SambaAccount>& groups = AllSambaAccounts(AccountKind::kGroup).All();
    // A tool that works lists one at least.
    if (groups.empty()) aliases.error = ERROR_NO_SUCH_DOMAIN;
    for (const SambaAccount& group : groups) {
        if (group.use != nt::SidUse::kAlias) continue;
        std::string listing;
        const std::string sid = group.sid.ToText();
        aliases.error = AskSamba("net", {"groupmap", "listmem", sid}, kListLimits, listing);
        if (aliases.error != ERROR_SUCCESS) break;
        std::vector<nt::Sid> members = ParseMembers(listing);
        if (!members.empty()) aliases.list.push_back({group.sid, std::move(members)});
    }
    return aliases;
}

}  // namespace

SambaAccounts::SambaAccounts(std::vector<SambaAccount> list) : accounts(std::move(list)) {
    for (std::size_t i = 0; i < accounts.size(); ++i) {
        bySid.emplace(accounts[i].sid, i);
        if (accounts[i].id) byId.emplace(*accounts[i].id, i);
    }
}

const SambaAccount* SambaAccounts::Find(id_t id) const {
    const auto found = byId.find(id);
    return found != byId.end() ? &accounts[found->second] : nullptr;
}

const SambaAccount* SambaAccounts::Find(const nt::Sid& sid) const {
    const auto found = bySid.find(sid);
    return found != bySid.end() ? &accounts[found->second] : nullptr;
}

const SambaAccount* SambaAccounts::Find(std::string_view name, LetterCase letterCase) const {
    for (const SambaAccount& account : accounts)
        if (IsSameName(account.name, name, letterCase)) return &account;
    return nullptr;
}

const SambaAccounts& AllSambaAccounts(AccountKind kind) {
    if (kind == AccountKind::kUser) {
        static const SambaAccounts users(ListUsers(ThisMachine()));
        return users;
    }
    static const SambaAccounts groups(ListGroups(ThisMachine()));
    return groups;
}

const SambaAliases& AllSambaAliases() {
    static const SambaAliases aliases = ListAliases();
    return aliases;
}

}  // namespace permora::host
