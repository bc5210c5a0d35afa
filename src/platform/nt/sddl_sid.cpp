#include "platform/nt/sddl_sid.h"

#include <algorithm>

#include "platform/nt/well_known_sids.h"

namespace permora::nt {
namespace {

const RelativeAccount* FindRelativeAccount(std::string_view alias) {
    const auto accounts = RelativeAccounts();
    const auto found = std::ranges::find(accounts, alias, &RelativeAccount::sddlAlias);
    return found != accounts.end() && !alias.empty() ? &*found : nullptr;
}

}  // namespace

void AppendSidAsSddl(const Sid& sid, SddlWords words, std::string& text) {
    const WellKnownSid* known = FindWellKnownSid(sid);
    if (words == SddlWords::kAbbreviations && known != nullptr && !known->sddlAlias.empty())
        text += known->sddlAlias;
    else
        text += sid.ToText();
}

bool SddlAccounts::Define(std::string_view alias, const Sid& account) {
    if (FindRelativeAccount(alias) == nullptr) return false;
    const auto [known, isNew] = defined.try_emplace(std::string(alias), account);
    return isNew || known->second == account;
}

std::optional<Sid> SddlAccounts::Find(std::string_view alias) const {
    const auto known = defined.find(alias);
    if (known != defined.end()) return known->second;
    const RelativeAccount* account = relativeTo ? FindRelativeAccount(alias) : nullptr;
    return account != nullptr ? relativeTo->Append(account->relativeId) : std::nullopt;
}

std::optional<Sid> SidFromSddl(std::string_view text, const SddlAccounts& accounts) {
    if (text.size() != 2) return Sid::FromText(text);
    const auto known = WellKnownSids();
    const auto row = std::ranges::find(known, text, &WellKnownSid::sddlAlias);
    return row != known.end() ? row->sid : accounts.Find(text);
}

}  // namespace permora::nt
