#include "wizard/account_rights.h"

#include <algorithm>
#include <iterator>

#include "platform/raw_security.h"

namespace permora {
namespace {

constexpr std::size_t kFullControl = 0;

// Not a right of files, although earlier versions put it into "Full control".
constexpr DWORD kMeaninglessBit = RIGHTS_DISPLAY_MASK & ~DWORD{FILE_ALL_ACCESS};

// Removes rights from a mask. Bits that are not rights by themselves are removed with the last right.
void TakeAway(DWORD rights, DWORD& mask) {
    // A denial of everything includes SYNCHRONIZE; a denial of less with that bit would lock the account out.
    // An allow entry gets the bit again when it is written.
    if ((mask & FULL_CONTROL_RIGHTS) == FULL_CONTROL_RIGHTS) mask = WithoutSynchronize(mask);
    mask &= ~rights;
    if ((WithoutSynchronize(mask) & ~kMeaninglessBit) == 0) mask = 0;
}

void AppendEntries(const std::vector<WizardAccountRow>& accounts, BYTE type, DWORD WizardAccountRow::*mask,
                   BYTE flags, std::vector<AccessEntry>& entries) {
    for (const WizardAccountRow& row : accounts) {
        const DWORD held = row.*mask & ~kMeaninglessBit;
        if (held != 0) entries.push_back({row.account, MaskOfChangedEntry(type, held), type, flags});
    }
}

}  // namespace

AccountRights::AccountRights(const AccessEntryList& list) {
    for (const AccessEntry& entry : list.Entries()) {
        const bool isOther = entry.IsOfOtherType();
        const bool isLost = isOther || !entry.account.sid;
        if (isLost && !entry.IsInherited()) ++(isOther ? otherTypeCount : unacceptableCount);
        if (isLost) continue;
        WizardAccountRow& row = accounts[Add(entry.account)];
        // Generic rights without meaning in this entry would have one in a new entry.
        const DWORD mask = entry.HasIdleGenericRights() ? entry.mask & ~GENERIC_RIGHTS : entry.mask;
        if (entry.IsInherited())
            (entry.IsAllow() ? row.inheritedAllow : row.inheritedDeny) |= mask;
        else
            (entry.IsAllow() ? row.explicitAllow : row.explicitDeny) |= mask;
    }
}

std::size_t AccountRights::Add(const AccountRecord& account) {
    const auto found = std::find_if(accounts.begin(), accounts.end(), [&](const WizardAccountRow& row) {
        return IsSameAccount(row.account, account);
    });
    const auto place = static_cast<std::size_t>(found - accounts.begin());
    if (found == accounts.end()) accounts.push_back({account});
    return place;
}

void AccountRights::Remove(std::size_t index) {
    accounts.erase(std::next(accounts.begin(), static_cast<std::ptrdiff_t>(index)));
    Select(std::nullopt);
}

// Each mask overrides the ones before it.
void AccountRights::Select(std::optional<std::size_t> index) {
    selected = index;
    boxes.fill(false);
    if (!selected) return;
    const WizardAccountRow& row = accounts[*selected];
    CheckByMask(row.inheritedAllow, true);
    CheckByMask(row.inheritedDeny, false);
    CheckByMask(row.explicitAllow, true);
    CheckByMask(row.explicitDeny, false);
    if (std::find(boxes.begin(), boxes.end(), false) != boxes.end()) boxes[kFullControl] = false;
}

void AccountRights::CheckByMask(DWORD mask, bool isChecked) {
    for (std::size_t right = 0; right < kRights; ++right)
        if ((kAccessRights[right].bits & mask) != 0) boxes[right] = isChecked;
}

void AccountRights::ApplyRightChange(std::size_t right, bool isNowChecked) {
    boxes[right] = isNowChecked;
    if (right == kFullControl) {
        if (!isNowChecked) return;  // the single rights stay as they are
        boxes.fill(true);
    }
    if (!selected) return;
    WizardAccountRow& row = accounts[*selected];
    const DWORD mask = kAccessRights[right].bits;
    TakeAway(mask, row.explicitAllow);
    TakeAway(mask, row.explicitDeny);
    const bool isGrantedFromAbove = (row.inheritedAllow & mask) != 0 && (row.inheritedDeny & mask) == 0;
    if (isNowChecked) {
        if (!isGrantedFromAbove) row.explicitAllow |= mask;
        return;
    }
    // Only an explicit deny entry removes an inherited right.
    if (isGrantedFromAbove) row.explicitDeny |= mask;
    boxes[kFullControl] = false;
}

void AccountRights::ApplyCombination(DWORD mask) {
    if ((mask & kFullControlAsOne) == kFullControlAsOne) {
        if (!boxes[kFullControl]) ApplyRightChange(kFullControl, true);
        return;
    }
    for (std::size_t right = kFullControl + 1; right < kRights; ++right) {
        const bool isWanted = (kAccessRights[right].bits & mask) != 0;
        if (boxes[right] != isWanted) ApplyRightChange(right, isWanted);
    }
}

std::vector<AccessEntry> AccountRights::Entries(ItemKind kind) const {
    const BYTE flags = kind == ItemKind::kFolder ? OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE : 0;
    std::vector<AccessEntry> entries;
    AppendEntries(accounts, ACCESS_DENIED_ACE_TYPE, &WizardAccountRow::explicitDeny, flags, entries);
    AppendEntries(accounts, ACCESS_ALLOWED_ACE_TYPE, &WizardAccountRow::explicitAllow, flags, entries);
    return entries;
}

Outcome LoadAccountsFromItem(const HeldObject& item, AccountRights& rights, ReadParts& list) {
    Outcome outcome = ReadListOfObject(item, HiddenVolume::kFail, list);
    rights = outcome.IsDone() ? AccountRights(AccessEntryList(AcesOf(list.dacl))) : AccountRights();
    return outcome;
}

}  // namespace permora
