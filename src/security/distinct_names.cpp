#include "security/distinct_names.h"

namespace permora {

std::string NameWithSid(const std::string& name, const AccountRecord& account) {
    return name + " (" + account.GetSidText() + ')';
}

void DistinctNames::Note(const std::string& name, const AccountRecord& account) {
    if (!account.sid) return;
    const auto [holder, isNew] = holders.try_emplace(name, account.sid);
    if (!isNew && holder->second != account.sid) holder->second.reset();
}

bool DistinctNames::IsShared(const std::string& name) const {
    const auto holder = holders.find(name);
    return holder != holders.end() && !holder->second;
}

std::string DistinctNames::Of(const std::string& name, const AccountRecord& account) const {
    return account.sid && IsShared(name) ? NameWithSid(name, account) : name;
}

}  // namespace permora
