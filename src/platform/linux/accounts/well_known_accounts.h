// The accounts that are the same on every machine (nt/well_known_sids.h): a source.
#pragma once

#include "platform/linux/accounts/account_source.h"

namespace permora::host {

class WellKnownAccounts : public AccountSource {
  public:
    DWORD FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) override;
    DWORD FindSid(const NameText& text, LetterCase letterCase, nt::Sid& sid) override;
    // The machine decides who belongs to them.
    DWORD FindGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) override;
    DWORD Search(const std::atomic<bool>& isStopped, FoundRows& rows) override;
    std::string Name() override;
};

}  // namespace permora::host
