// The editable copy of a discretionary access list: what the permissions pages and the terminal program
// change before a completely new list is built from it (security/dacl_builder.h).
#pragma once

#include <cstddef>
#include <vector>

#include "platform/api/security.h"
#include "security/access_rights.h"
#include "security/account_record.h"

namespace permora {

// One access control entry, as the list held it that it was read from.
struct AccessEntry {
    // Without a SID for an entry of an object type or an unknown one, and for one that holds no valid SID.
    AccountRecord account;
    DWORD mask = 0;
    BYTE aceType = ACCESS_ALLOWED_ACE_TYPE;
    BYTE aceFlags = 0;

    bool IsAllow() const { return aceType == ACCESS_ALLOWED_ACE_TYPE; }
    bool IsDeny() const { return aceType == ACCESS_DENIED_ACE_TYPE; }
    // It has no row, and is in no list that is written.
    bool IsOfOtherType() const { return !IsAllow() && !IsDeny(); }
    // Whether the system takes the entry into a list that is made anew: it does not without a valid SID, or
    // with flags that an allow or deny entry cannot have.
    bool IsAcceptable() const;
    // Generic rights that were left in an entry which applies to the object itself. Access checks pass over
    // them, but they would get their meaning if the entry were set anew with another mask.
    bool HasIdleGenericRights() const {
        return (aceFlags & INHERIT_ONLY_ACE) == 0 && (mask & GENERIC_RIGHTS) != 0;
    }
    bool IsInherited() const { return (aceFlags & INHERITED_ACE) != 0; }
};

// What the user decided in the permission entry dialog.
struct PermissionChoice {
    AccountRecord account;
    DWORD allowMask = 0;  // never with SYNCHRONIZE
    DWORD denyMask = 0;
    int applyIndex = 0;         // place in kInheritanceScopes
    bool childrenOnly = false;  // NO_PROPAGATE_INHERIT_ACE
};

// An allow or deny entry as the dialog starts with it.
PermissionChoice ChoiceOf(const AccessEntry& entry);

// The entries of every type that AcesOf (platform/raw_security.h) gives, with their masks as they stand
// there.
std::vector<AccessEntry> EntriesOfDacl(PACL acl);

// The entries in order. What nobody changes keeps every bit of its mask and flags; what is added or changed
// gets SYNCHRONIZE as MaskOfChangedEntry (security/access_rights.h) says. Reading keeps the order of the list
// read; editing places entries so that a list in canonical order (explicit deny, explicit allow, inherited)
// stays in it.
class AccessEntryList {
  public:
    // Replaces the entries by those of `acl`.
    void LoadFromDacl(PACL acl);

    const std::vector<AccessEntry>& Entries() const { return entries; }
    // The account of entry `index`, through which its names are looked up.
    AccountRecord& AccountOf(std::size_t index) { return entries[index].account; }

    // Adds an explicit entry (INHERITED_ACE in `flags` is dropped): its rights join the first entry of the
    // same type, flags and account, unless one of both has idle generic rights; else a deny entry goes to the
    // top and an allow entry before the first allow or inherited one.
    void AddEntry(AccountRecord account, DWORD mask, BYTE flags, BYTE type);
    // Adds what the dialog gave for a new account: one entry for each mask that is not 0.
    void AddFromDialog(const PermissionChoice& choice);
    // Applies what the dialog gave for entry `index`, an allow or deny entry. An explicit entry is replaced
    // by the choice, unless that is what the dialog began with; an inherited one stays, and the rights in
    // which the choice differs become explicit entries.
    void EditEntry(std::size_t index, const PermissionChoice& choice);
    void RemoveEntry(std::size_t index);

    // Gives every inherited entry an explicit copy; the inherited entries stay.
    void CopyInheritedEntries();
    void RemoveInheritedEntries();

    bool HasInheritedEntries() const;
    // Whoever writes must say first what no list built from this one holds: the entries that are neither
    // allow nor deny, which no row shows either, and the allow and deny entries that are not acceptable.
    std::size_t OtherTypeCount() const;
    std::size_t UnacceptableCount() const;
    // Explicit deny, then explicit allow, then inherited entries; explicit entries of other types may stand
    // anywhere.
    bool IsInCanonicalOrder() const;

  private:
    // Where the entry stands now: a place of its own, or that of the entry which it has joined.
    AccessEntry& Join(AccessEntry added);

    std::vector<AccessEntry> entries;
};

}  // namespace permora
