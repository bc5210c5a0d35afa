// The accounts of this machine, its own and its file server's: a source.
#pragma once

#include "platform/linux/accounts/account_source.h"

namespace permora::host {

class MachineAccounts : public AccountSource {
  public:
    DWORD FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) override;
    DWORD FindSid(const NameText& text, LetterCase letterCase, nt::Sid& sid) override;
    DWORD FindGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) override;
    DWORD Search(const std::atomic<bool>& isStopped, FoundRows& rows) override;
    std::string Name() override;
};

}  // namespace permora::host
