// The editable copy of a discretionary access list: what the permissions pages and the terminal program
// change before a completely new list is built from it (security/dacl_builder.h).
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "platform/api/security.h"
#include "platform/nt/acl.h"
#include "security/access_rights.h"
#include "security/account_record.h"

namespace permora {

// One access control entry, as it stood in the list that was read.
struct AccessEntry {
    // Without a SID for an entry of an object type or an unknown one, and for one that holds no valid SID.
    AccountRecord account;
    DWORD mask = 0;
    BYTE aceType = ACCESS_ALLOWED_ACE_TYPE;
    BYTE aceFlags = 0;

    bool IsAllow() const { return aceType == ACCESS_ALLOWED_ACE_TYPE; }
    bool IsDeny() const { return aceType == ACCESS_DENIED_ACE_TYPE; }
    // Such an entry has no row and is never written.
    bool IsOfOtherType() const { return !IsAllow() && !IsDeny(); }
    // Whether the system accepts the entry in a new list: it needs a valid SID and no flags but those of
    // allow and deny entries.
    bool IsAcceptable() const;
    // Generic rights in an entry that applies to the object itself. Access checks ignore them, but they would
    // take effect if the entry were set again with another mask.
    bool HasIdleGenericRights() const {
        return (aceFlags & INHERIT_ONLY_ACE) == 0 && (mask & GENERIC_RIGHTS) != 0;
    }
    bool IsInherited() const { return (aceFlags & INHERITED_ACE) != 0; }
};

// The user's choices in the permission entry dialog.
struct PermissionChoice {
    AccountRecord account;
    DWORD allowMask = 0;  // never with SYNCHRONIZE
    DWORD denyMask = 0;
    int applyIndex = 0;         // place in kInheritanceScopes
    bool childrenOnly = false;  // NO_PROPAGATE_INHERIT_ACE
};

// An allow or deny entry as the dialog starts with it.
PermissionChoice ChoiceOf(const AccessEntry& entry);

// The entries in order. Unchanged entries keep every bit of mask and flags; added and changed ones get
// SYNCHRONIZE by MaskOfChangedEntry (security/access_rights.h). Reading keeps the order. A list in
// canonical order (explicit deny, explicit allow, inherited) stays in it when it is edited.
class AccessEntryList {
  public:
    AccessEntryList() = default;
    // Entries of every type, as AcesOf (platform/raw_security.h) reads them, with their masks unchanged.
    explicit AccessEntryList(std::span<const nt::Ace> list);

    const std::vector<AccessEntry>& Entries() const { return entries; }
    // The account of entry `index`, through which its names are looked up.
    AccountRecord& AccountOf(std::size_t index) { return entries[index].account; }

    // Adds an explicit entry (INHERITED_ACE in `flags` is dropped): its rights join the first entry of the
    // same type, flags and account, unless one of both has idle generic rights; else a deny entry goes to the
    // top and an allow entry before the first allow or inherited one.
    void AddEntry(AccountRecord account, DWORD mask, BYTE flags, BYTE type);
    // Adds the dialog's choice for a new account: one entry for each mask that is not 0.
    void AddFromDialog(const PermissionChoice& choice);
    // Applies the dialog's choice for entry `index`, an allow or deny entry. The choice replaces an explicit
    // entry, unless the user changed nothing. An inherited entry stays, and the rights in which the choice
    // differs become explicit entries.
    void EditEntry(std::size_t index, const PermissionChoice& choice);
    void RemoveEntry(std::size_t index);

    // Gives every inherited entry an explicit copy; the inherited entries stay.
    void CopyInheritedEntries();
    void RemoveInheritedEntries();

    bool HasInheritedEntries() const;
    // Entries that a list built from this one will not have: those that are neither allow nor deny, and the
    // allow and deny entries that are not acceptable. The user must be informed before the list is written.
    std::size_t OtherTypeCount() const;
    std::size_t UnacceptableCount() const;
    // Explicit deny, then explicit allow, then inherited entries; explicit entries of other types may be
    // anywhere.
    bool IsInCanonicalOrder() const;

  private:
    // The index of the entry now: its own, or that of the entry which it has joined.
    AccessEntry& Join(AccessEntry added);

    std::vector<AccessEntry> entries;
};

}  // namespace permora
