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

// A tool that fails ends without a listing. ERROR_OPERATION_ABORTED, by which RunTool reports that, means
// elsewhere that the user has stopped the work.
DWORD List(const std::string& tool, const std::vector<std::string>& arguments, std::string& listing) {
    const DWORD error = AskSamba(tool, arguments, kListLimits, listing);
    return error == ERROR_OPERATION_ABORTED ? ERROR_NO_SUCH_DOMAIN : error;
}

SambaAccounts ListUsers(const Machine& machine) {
    std::string listing;
    const DWORD error = List("pdbedit", {"-L", "-v"}, listing);
    // The tool comes with the server, without which there are no such users.
    if (error == ERROR_FILE_NOT_FOUND) return SambaAccounts({});
    if (error != ERROR_SUCCESS) return SambaAccounts({}, error);
    std::vector<SambaAccount> users = ParseUserList(listing, *machine.sid);
    if (const auto guest = machine.sid->Append(kGuestId); guest && IsPlainAccountName(machine.guestAccount))
        users.push_back({machine.guestAccount, *guest, nt::SidUse::kUser, std::nullopt});
    for (SambaAccount& user : users) {
        id_t id = 0;
        if (FindHostId(AccountKind::kUser, user.name, id) == ERROR_SUCCESS) user.id = id;
    }
    return SambaAccounts(std::move(users));
}

SambaAccounts ListGroups(const Machine& machine) {
    std::string listing;
    const DWORD error = List("net", {"groupmap", "list", "verbose"}, listing);
    if (error != ERROR_SUCCESS) return SambaAccounts({}, error);
    std::vector<SambaAccount> groups = ParseGroupMap(listing);
    if (const auto none = machine.sid->Append(kNoneId))
        groups.push_back({"None", *none, nt::SidUse::kGroup, std::nullopt});
    return SambaAccounts(std::move(groups));
}

SambaAliases ListAliases() {
    const SambaAccounts& groups = AllSambaAccounts(AccountKind::kGroup);
    SambaAliases aliases{groups.Error(), {}};
    for (const SambaAccount& group : groups.All()) {
        if (group.use != nt::SidUse::kAlias) continue;
        std::string listing;
        const std::string sid = group.sid.ToText();
        aliases.error = List("net", {"groupmap", "listmem", sid}, listing);
        if (aliases.error != ERROR_SUCCESS) break;
        std::vector<nt::Sid> members = ParseMembers(listing);
        if (!members.empty()) aliases.list.push_back({group.sid, std::move(members)});
    }
    return aliases;
}

}  // namespace

SambaAccounts::SambaAccounts(std::vector<SambaAccount> list, DWORD whyUnknown)
    : accounts(std::move(list)), error(whyUnknown) {
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
        static const SambaAccounts users = ListUsers(ThisMachine());
        return users;
    }
    static const SambaAccounts groups = ListGroups(ThisMachine());
    return groups;
}

const SambaAliases& AllSambaAliases() {
    static const SambaAliases aliases = ListAliases();
    return aliases;
}

}  // namespace permora::host
