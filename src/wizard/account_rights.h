// What the wizard's permissions page decides, without its window: the accounts that a list names, the boxes
// that say what one of them may do, what a changed box makes of the account's own rights, and the list that
// comes of it all.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "security/access_entry_list.h"
#include "security/access_rights.h"
#include "security/object_security.h"

namespace permora {

// One account, with the rights of all its entries, whose masks are joined as they stand there.
struct WizardAccountRow {
    AccountRecord account;
    DWORD explicitAllow = 0;   // its own entries, as changed here
    DWORD explicitDeny = 0;    // likewise
    DWORD inheritedAllow = 0;  // what comes from above is only looked at
    DWORD inheritedDeny = 0;

    bool Inherits() const { return (inheritedAllow | inheritedDeny) != 0; }
};

enum class ItemKind { kFolder, kFile };

// A ready-made set of rights.
struct UsableCombination {
    const char* text;
    DWORD mask;
};

// "Full control" as one right, where a mask without SYNCHRONIZE would be the single rights one by one.
inline constexpr DWORD kFullControlAsOne = FILE_ALL_ACCESS;

// In the order in which the page lists them.
// clang-format off
inline constexpr std::array<UsableCombination, 7> kUsableCombinations = {{
    {"Allow all",      kFullControlAsOne},
    {"Deny all",       0},
    {"Modify",         0x1301BF},
    {"Read & execute", 0x1200A9},
    {"List folder",    0x1200A9},
    {"Read",           0x120089},
    {"Write",          0x100116},
}};
// clang-format on

// Accounts are counted in the order in which the list names them first, rights as in kAccessRights.
class AccountRights {
  public:
    static constexpr std::size_t kRights = kAccessRights.size();

    // Replaces the accounts by those of the allow and deny entries of `acl`; none is selected then.
    void LoadFromDacl(PACL acl);
    // What Entries() leaves out of the object's own entries: those of other types, and allow and deny entries
    // without a valid account.
    std::size_t OtherTypeCount() const { return otherTypeCount; }
    std::size_t UnacceptableCount() const { return unacceptableCount; }

    const std::vector<WizardAccountRow>& Accounts() const { return accounts; }
    // Through which its names are looked up.
    AccountRecord& AccountAt(std::size_t index) { return accounts[index].account; }
    // The place of the account, which is added at the end, without rights, when it is new.
    std::size_t Add(const AccountRecord& account);
    // Forgets an account with its rights; none is selected then.
    void Remove(std::size_t index);

    // The account whose rights the boxes show, and which changed boxes are about; nothing: all are clear.
    void Select(std::optional<std::size_t> index);

    std::optional<std::size_t> Selected() const { return selected; }

    bool IsChecked(std::size_t right) const { return boxes[right]; }
    // A box has been checked or cleared; it was the other way before. Other boxes may follow.
    void ApplyRightChange(std::size_t right, bool isNowChecked);
    // Changes each box that differs from what `mask` holds, one after the other.
    void ApplyCombination(DWORD mask);

    // The list that items of a kind get: a deny entry for each account with denied rights, then the same for
    // allowed ones. Folders hand them down to everything below; nothing inherited is in it.
    std::vector<AccessEntry> Entries(ItemKind kind) const;

  private:
    void CheckByMask(DWORD mask, bool isChecked);

    std::vector<WizardAccountRow> accounts;
    std::size_t otherTypeCount = 0;
    std::size_t unacceptableCount = 0;
    std::optional<std::size_t> selected;
    std::array<bool, kRights> boxes{};
};

// Reads the accounts of an item; `list` is what they were read from, and there are none where the item has no
// list (`list.dacl` is null). On failure there are no accounts either, and `list` is untouched.
Outcome LoadAccountsFromItem(const HeldObject& item, AccountRights& rights, ReadParts& list);

}  // namespace permora
