// What the system knows of the accounts whose rights a file server's mode bits decide.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "survey/group_people.h"
#include "survey/mode_comparison.h"

namespace permora {

// The accounts of the system, each asked for once. One thread at a time.
class SystemModeAccounts : public ModeAccounts {
  public:
    SystemModeAccounts() = default;
    // Of a larger group only so many are taken, with ERROR_MORE_DATA: each takes a domain a moment.
    explicit SystemModeAccounts(std::size_t mostOfGroup) : most(mostOfGroup) {}

    const MeantPeople& PeopleOf(const nt::Sid& account) override;
    DWORD FindHost(const nt::Sid& person, HostAccount& found) override;
    DWORD FindSids(const nt::Sid& account, std::vector<nt::Sid>& sids) override;
    nt::Sid HostOwner(const HostPermissions& permissions) override { return HostOwnerSid(permissions); }
    nt::Sid HostGroup(const HostPermissions& permissions) override { return HostGroupSid(permissions); }

  private:
    template <typename Value>
    using BySid = std::unordered_map<std::string, Value>;

    std::size_t most = std::numeric_limits<std::size_t>::max();
    GroupDirectory directory;
    BySid<MeantPeople> people;
    BySid<std::pair<DWORD, HostAccount>> hosts;
    BySid<std::pair<DWORD, std::vector<nt::Sid>>> groups;
};

}  // namespace permora
