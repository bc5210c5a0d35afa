// Edits of what accounts have in a tree: others take their place, or their entries go.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "changes/descriptor_edit.h"
#include "platform/nt/account_exchange.h"

namespace permora {

// What an object has of its own is changed entry by entry, in its place. What it inherits follows from what
// its folder hands down afterwards, if it was right before or holds entries that the edit is about; the rest
// stays as it is. Entries that become equal to another one of the object's own are joined with it.
class AccountEdit : public DescriptorEdit {
  public:
    EditedSecurity Edit(const ObjectToEdit& object) override;

  protected:
    // What an entry becomes: nothing, itself, another one or several.
    using Entries = std::vector<nt::Ace>;

    // Says what each entry of the list becomes, in its order, and changes everything else of the descriptor.
    // With a fault, both outputs are meaningless.
    virtual EditFault Transform(nt::SecurityDescriptor& descriptor, std::vector<Entries>& become) = 0;

  private:
    // The entries of the object's own after the edit, and the inherited ones as they were. True when the edit
    // is about one of those.
    static bool ChangeOwn(const nt::SecurityDescriptor& present, std::vector<Entries> become,
                          std::vector<nt::Ace>& changed);
    void FollowFolder(const ObjectToEdit& object, bool isAboutInherited, nt::SecurityDescriptor& wanted);
    bool IsAboutInheritedOf(const nt::SecurityDescriptor& descriptor);
};

// Accounts that others take the place of, everywhere in a descriptor.
class ReplaceEdit : public AccountEdit {
  public:
    enum class Manner : std::uint8_t {
        kReplace,         // the list, the owner and group, the system access list
        kReplaceInLists,  // the same without owner and group
        kCopy,  // in the list the other account gets what the first has, which stays; nothing else changes
    };
    // The exchange is borrowed.
    ReplaceEdit(nt::AccountExchange& accountExchange, Manner how) : exchange(accountExchange), manner(how) {}

    bool EditsSystemLists() const override { return manner != Manner::kCopy; }

  private:
    EditFault Transform(nt::SecurityDescriptor& descriptor, std::vector<Entries>& become) override;

    nt::AccountExchange& exchange;
    const Manner manner;
};

// Accounts whose entries go.
class RevokeEdit : public AccountEdit {
  public:
    enum class Types : std::uint8_t {
        kAllowAndDeny,  // entries of other types stay, which is reported
        kAll,
    };
    // Called for accounts in lists; always with the same answer for the same one.
    using IsRevoked = std::function<bool(const nt::Sid& account)>;
    RevokeEdit(IsRevoked isAccountRevoked, Types which)
        : isRevoked(std::move(isAccountRevoked)), types(which) {}

    EditedSecurity Edit(const ObjectToEdit& object) override;

  private:
    EditFault Transform(nt::SecurityDescriptor& descriptor, std::vector<Entries>& become) override;
    bool Removes(const nt::Ace& entry) const;

    const IsRevoked isRevoked;
    const Types types;
};

}  // namespace permora
