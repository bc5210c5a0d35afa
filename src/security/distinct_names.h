// Accounts that are shown beside each other never look alike.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>

#include "platform/nt/sid.h"
#include "security/account_record.h"

namespace permora {

// "EXAMPLE\anna (S-1-5-21-...)".
std::string NameWithSid(const std::string& name, const AccountRecord& account);

// The names of the accounts of one list. Two accounts may have the same: a user and a group, the accounts of
// two domains of one short name, one that was made anew after it had been deleted.
class DistinctNames {
  public:
    // An account of the list is called so. Accounts may come several times.
    void Note(const std::string& name, const AccountRecord& account);
    // Whether accounts that were noted share this name.
    bool IsShared(const std::string& name) const;
    // What the list shows for an account: its name, with the SID behind it where another one has the same.
    std::string Of(const std::string& name, const AccountRecord& account) const;

  private:
    std::unordered_map<std::string, std::optional<nt::Sid>> holders;  // nothing: several accounts
};

}  // namespace permora
