// The wizard's permissions page without its window: the accounts that a list names, the boxes that show the
// rights of one of them, how a changed box changes the account's own rights, and the resulting list.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "security/access_entry_list.h"
#include "security/access_rights.h"
#include "security/object_security.h"
#include "security/usable_combinations.h"

namespace permora {

// One account with the rights of all its entries; the masks are joined as they are.
struct WizardAccountRow {
    AccountRecord account;
    DWORD explicitAllow = 0;   // of explicit entries, as changed here
    DWORD explicitDeny = 0;    // the same
    DWORD inheritedAllow = 0;  // of inherited entries; never changed
    DWORD inheritedDeny = 0;

    bool Inherits() const { return (inheritedAllow | inheritedDeny) != 0; }
};

enum class ItemKind { kFolder, kFile };

// Indexes of accounts follow the order in which the list first names them, those of rights kAccessRights.
class AccountRights {
  public:
    static constexpr std::size_t kRights = kAccessRights.size();

    AccountRights() = default;
    // The accounts of the allow and deny entries of a list; none is selected.
    explicit AccountRights(const AccessEntryList& list);
    // How many explicit entries Entries() leaves out: those of other types, and allow and deny entries
    // without a valid account.
    std::size_t OtherTypeCount() const { return otherTypeCount; }
    std::size_t UnacceptableCount() const { return unacceptableCount; }

    const std::vector<WizardAccountRow>& Accounts() const { return accounts; }
    // Not const, since it looks its names up.
    AccountRecord& AccountAt(std::size_t index) { return accounts[index].account; }
    // The index of the account. A new one is added at the end, without rights.
    std::size_t Add(const AccountRecord& account);
    // Removes an account; none is selected then.
    void Remove(std::size_t index);

    // Selects the account whose rights the boxes show and change; without one all boxes are clear.
    void Select(std::optional<std::size_t> index);

    std::optional<std::size_t> Selected() const { return selected; }

    bool IsChecked(std::size_t right) const { return boxes[right]; }
    // The user has checked or cleared a box. Other boxes may change too.
    void ApplyRightChange(std::size_t right, bool isNowChecked);
    // Changes the boxes that differ from `mask`, one after the other.
    void ApplyCombination(DWORD mask);

    // The list for items of a kind, without inherited entries: a deny entry for each account with denied
    // rights, then an allow entry for each with allowed rights. Those of folders are inherited by everything
    // below.
    std::vector<AccessEntry> Entries(ItemKind kind) const;

  private:
    void CheckByMask(DWORD mask, bool isChecked);

    std::vector<WizardAccountRow> accounts;
    std::size_t otherTypeCount = 0;
    std::size_t unacceptableCount = 0;
    std::optional<std::size_t> selected;
    std::array<bool, kRights> boxes{};
};

// Reads the list of an item into `list`, and its accounts into `rights`; a null list has none. On failure
// there are no accounts, and `list` is untouched.
Outcome LoadAccountsFromItem(const HeldObject& item, AccountRights& rights, ReadParts& list);

}  // namespace permora
