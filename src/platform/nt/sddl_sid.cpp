#include "platform/nt/sddl_sid.h"

#include <algorithm>

#include "platform/nt/well_known_sids.h"

namespace permora::nt {

void AppendSidAsSddl(const Sid& sid, SddlWords words, std::string& text) {
    const WellKnownSid* known = FindWellKnownSid(sid);
    if (words == SddlWords::kAbbreviations && known != nullptr && !known->sddlAlias.empty())
        text += known->sddlAlias;
    else
        text += sid.ToText();
}

std::optional<Sid> SidFromSddl(std::string_view text, const Sid* machine) {
    if (text.size() != 2) return Sid::FromText(text);
    const auto known = WellKnownSids();
    const auto row = std::ranges::find(known, text, &WellKnownSid::sddlAlias);
    if (row != known.end()) return row->sid;
    if (machine == nullptr) return std::nullopt;
    const auto accounts = RelativeAccounts();
    const auto account = std::ranges::find(accounts, text, &RelativeAccount::sddlAlias);
    if (account == accounts.end()) return std::nullopt;
    return machine->Append(account->relativeId);
}

}  // namespace permora::nt
