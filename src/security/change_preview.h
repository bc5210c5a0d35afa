// What a change of lists or owners would do, before it is made. The new lists are computed by the steps that
// write them, so that the preview and the change agree as long as nobody else changes the objects.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/accounts.h"
#include "platform/held_object.h"
#include "security/descriptor_comparison.h"
#include "security/object_security.h"
#include "security/outcome.h"

namespace permora {

// The entries of its own that an item would lose.
struct LostEntries {
    std::string item;
    ComparedObject kind = ComparedObject::kFile;
    std::vector<nt::Ace> entries;  // never none
};

// Items are what the user has chosen; what is below them is counted apart.
struct ChangePreview {
    std::size_t changed = 0;
    std::size_t unchanged = 0;        // they have exactly that already
    std::size_t failed = 0;           // they could not be looked at
    std::optional<TreeCounts> below;  // nothing: no item has anything below it that would be reached
    bool resetsBelow = false;         // what is below is left what it inherits and nothing else
    bool isOfShares = false;          // which have no owners

    std::vector<LostEntries> lost;
    bool loseOthers = false;              // of these entries, one at least is not lost by the first item
    std::vector<std::string> closed;      // items that would let nobody in but their owners
    std::vector<std::string> closedToMe;  // that would let the account in no more that runs the program
    std::optional<nt::Sid> me;            // nothing: its rights are not known

    Outcomes failures;       // items, and what is below them, that could not be looked at
    bool isStopped = false;  // what came behind is missing

    // Whether the change takes what the user may not have seen: entries that other items than the first have
    // alone, or whole lists below.
    bool TakesUnseen() const;
};

// A write to one item.
struct PlannedWrite {
    SECURITY_INFORMATION information;
    NewParts parts;
    // What the change does below a folder; nothing: it leaves that alone.
    std::optional<BelowChange> below = std::nullopt;
};

// Makes a preview item by item. One thread.
class ChangePreviewing {
  public:
    // `watched` hears of each item and of each object below. It must outlive this.
    explicit ChangePreviewing(TreeObserver& watched) : observer(watched) {}

    // `name` is the item's for people. Nothing is done any more once the observer has ended it.
    void Add(const HeldObject& object, const std::string& name, const PlannedWrite& write);
    // A share, through which everybody comes as NETWORK, too. No other items are added then.
    void AddShare(const std::string& name, const SecurityPreview& share);
    // An item that could not be looked at. If it is the first, nothing of the others counts as seen.
    void AddFailure(const Outcome& outcome) {
        preview.failures.push_back(outcome);
        ++preview.failed;
        isFirst = false;
    }
    // What `count` counts below an item; its result is a system error code.
    void AddTree(const std::string& name,
                 const std::function<DWORD(TreeObserver& observer, TreeCounts& counts)>& count);
    // Counts of a tree that was counted elsewhere.
    void AddBelow(const TreeCounts& counts);

    bool IsStopped() const { return preview.isStopped; }
    const ChangePreview& Preview() const { return preview; }

  private:
    void FindMe();
    // `mine` is who the user is where the item is; empty: not known.
    void Judge(const SecurityPreview& item, const std::string& name, ComparedObject kind,
               std::span<const nt::Sid> mine);

    TreeObserver& observer;
    ChangePreview preview;
    bool isFirst = true;
    std::vector<nt::Ace> seen;                   // what the first item would lose
    std::optional<std::vector<nt::Sid>> mySids;  // empty: not known
};

// The preview of WriteListToItems, and of ApplyDlg behind it with kReset. Without `below`, of the items
// alone.
ChangePreview PreviewListOnItems(std::span<const RememberedObject> items,
                                 std::optional<DaclInheritance> inheritance, const ListsByKind& lists,
                                 std::optional<BelowChange> below, TreeObserver& observer);
// The preview of a new owner for the items and, with kToo, for everything below them but files with further
// names.
ChangePreview PreviewOwnerOnItems(std::span<const RememberedObject> items, PSID owner, Contents contents,
                                  TreeObserver& observer);

// The preview for people, a line each. Items are told of by name, a thousand in each paragraph at most; the
// lines below another begin with two spaces.
std::vector<std::string> PreviewLines(const ChangePreview& preview, NameAccount* nameOf);

// What there is to say about losses below items; empty for none.
std::vector<std::string> LossLines(const TreeCounts& below);

}  // namespace permora
