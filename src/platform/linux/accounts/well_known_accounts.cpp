#include "platform/linux/accounts/well_known_accounts.h"

#include "platform/nt/well_known_sids.h"

namespace permora::host {

namespace {

AccountName NameOf(const nt::WellKnownSid& row) {
    return {std::string(row.name), std::string(row.domain), static_cast<SID_NAME_USE>(row.use)};
}

class WellKnownSource : public AccountSource {
  public:
    DWORD FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) override;
    DWORD FindSid(const NameText& text, LetterCase letterCase, nt::Sid& sid) override;
    DWORD FindGroups(const nt::Sid& /*account*/, GroupsRequest /*request*/,
                     AccountGroups& /*groups*/) override {
        return ERROR_NONE_MAPPED;
    }
    DWORD Search(const std::atomic<bool>& isStopped, FoundRows& rows) override;
    std::string Name() override { return {}; }
};

DWORD WellKnownSource::FindName(const nt::Sid& sid, std::chrono::milliseconds /*wait*/,
                                AccountName& account) {
    const nt::WellKnownSid* row = nt::FindWellKnownSid(sid);
    if (row == nullptr) return ERROR_NONE_MAPPED;
    account = NameOf(*row);
    return ERROR_SUCCESS;
}

DWORD WellKnownSource::FindSid(const NameText& text, LetterCase letterCase, nt::Sid& sid) {
    for (const nt::WellKnownSid& row : nt::WellKnownSids()) {
        if (!IsSameName(row.name, text.name, letterCase)) continue;
        if (text.isQualified && !IsSameName(row.domain, text.domain, LetterCase::kIgnored)) continue;
        sid = row.sid;
        return ERROR_SUCCESS;
    }
    return ERROR_NONE_MAPPED;
}

DWORD WellKnownSource::Search(const std::atomic<bool>& /*isStopped*/, FoundRows& rows) {
    for (const nt::WellKnownSid& row : nt::WellKnownSids()) {
        // Domains and integrity levels are no accounts.
        if (row.use == nt::SidUse::kDomain || row.use == nt::SidUse::kLabel) continue;
        const AccountName name = NameOf(row);
        rows.Add({row.sid, name.use, name.name, name.domain, {}});
    }
    return ERROR_SUCCESS;
}

}  // namespace

AccountSource& WellKnownAccounts() {
    static WellKnownSource kSource;
    return kSource;
}

}  // namespace permora::host
