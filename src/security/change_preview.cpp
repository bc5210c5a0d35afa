#include "security/change_preview.h"

#include <algorithm>
#include <utility>

#include "platform/api/errors.h"
#include "platform/grouped_number.h"
#include "platform/nt/entry_effects.h"
#include "platform/nt/granted_rights.h"
#include "platform/security_change.h"
#include "security/dacl_builder.h"
#include "security/object_server.h"
#include "security/owner_candidates.h"

namespace permora {
namespace {

// Who has none of these gets at nothing: to see names, attributes or the list is not enough.
constexpr DWORD kGettingAt = FILE_READ_DATA | FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_EXECUTE |
                             FILE_DELETE_CHILD | DELETE | WRITE_DAC | WRITE_OWNER;

constexpr std::size_t kMostNamed = 1000;

bool LetsIn(const nt::SecurityDescriptor& descriptor, std::span<const nt::Sid> account) {
    return descriptor.daclState != nt::DaclState::kList ||
           (nt::GrantedRights(descriptor.dacl, account) & kGettingAt) != 0;
}

std::string CountsText(const char* where, std::size_t changed, std::size_t unchanged, const char* rest,
                       std::size_t others) {
    return std::string(where) + "would change: " + GroupedNumber(changed) +
           ", already so: " + GroupedNumber(unchanged) + ", " + rest + ": " + GroupedNumber(others);
}

class Lines {
  public:
    void Add(std::string line) { lines.push_back(std::move(line)); }
    // A paragraph of its own; nothing of it when there is nothing to name.
    void Add(const std::string& title, std::size_t count, const auto& lineOf) {
        if (count == 0) return;
        Add(title);
        const std::size_t named = std::min(count, kMostNamed);
        for (std::size_t i = 0; i < named; ++i)
            Add("  " + lineOf(i));
        if (count > named) Add("  and " + GroupedNumber(count - named) + " more");
    }
    void Add(const std::string& title, const std::vector<std::string>& names) {
        Add(title, names.size(), [&](std::size_t i) { return names[i]; });
    }
    std::vector<std::string> Take() { return std::move(lines); }

  private:
    std::vector<std::string> lines;
};

void AddBelow(const ChangePreview& preview, Lines& lines) {
    if (!preview.below) return;
    const TreeCounts& below = *preview.below;
    lines.Add(CountsText("Below them: ", below.changed, below.unchanged, "passed over", below.passedOver));
    for (std::string& line : LossLines(below))
        lines.Add(std::move(line));
}

// Names only those accounts that are shown: a domain may take its time for each.
void AddLost(const std::vector<LostEntries>& lost, NameAccount* nameOf, Lines& lines) {
    std::vector<std::pair<const LostEntries*, const nt::Ace*>> rows;
    for (const LostEntries& item : lost)
        for (const nt::Ace& entry : item.entries)
            rows.emplace_back(&item, &entry);
    lines.Add("Entries of their own that items would lose:", rows.size(), [&](std::size_t i) {
        const auto& [item, entry] = rows[i];
        return item->item + ": " + EntryLine(*entry, item->kind, nameOf);
    });
}

}  // namespace

bool ChangePreview::TakesUnseen() const {
    return loseOthers || (resetsBelow && below && (below->losingOwn > 0 || below->emptied > 0));
}

void ChangePreviewing::AddBelow(const TreeCounts& counts) {
    if (!preview.below) preview.below.emplace();
    AddCounts(counts, *preview.below);
}

void ChangePreviewing::FindMe() {
    if (mySids) return;
    mySids.emplace();
    AccountGroups groups;
    const std::optional<nt::Sid> account = OwnAccount();
    if (!account || FindAccountGroups(*account, GroupsRequest::kUsual, groups) != ERROR_SUCCESS) return;
    preview.me = account;
    mySids = std::move(groups.sids);
}

void ChangePreviewing::Judge(const SecurityPreview& item, const std::string& name, ComparedObject kind,
                             std::span<const nt::Sid> mine) {
    ++(item.changes ? preview.changed : preview.unchanged);
    std::vector<nt::Ace> lost = LostOwnEntries(item.before, item.after);
    // What the first item loses the user has seen and taken away.
    const auto isSeen = [&](const nt::Ace& entry) { return std::ranges::find(seen, entry) != seen.end(); };
    if (isFirst) seen = lost;
    preview.loseOthers = preview.loseOthers || !std::ranges::all_of(lost, isSeen);
    if (!lost.empty()) preview.lost.push_back({name, kind, std::move(lost)});
    if (nt::LetsNobodyIn(item.after) && !nt::LetsNobodyIn(item.before)) preview.closed.push_back(name);
    if (!mine.empty() && LetsIn(item.before, mine) && !LetsIn(item.after, mine))
        preview.closedToMe.push_back(name);
}

void ChangePreviewing::Add(const HeldObject& object, const std::string& name, const PlannedWrite& write) {
    if (preview.isStopped) return;
    preview.isStopped = !observer.Begin(name.c_str());
    if (preview.isStopped) return;
    // On another server this user is somebody else.
    const bool isHere = ServerOfObject(object).empty();
    if (isHere) FindMe();
    const std::span<const nt::Sid> mine = isHere ? *mySids : std::span<const nt::Sid>();
    SecurityPreview item;
    const DWORD error = object.PreviewSecurity(write.information, write.parts, item);
    if (error == ERROR_SUCCESS)
        Judge(item, name, object.IsFolder() ? ComparedObject::kFolder : ComparedObject::kFile, mine);
    else
        AddFailure({error, Step::kNone, name});
    isFirst = false;
    if (error != ERROR_SUCCESS || !write.below || !object.IsFolder()) return;
    preview.resetsBelow = preview.resetsBelow || write.below == BelowChange::kReset;
    AddTree(name, [&](TreeObserver& watched, TreeCounts& counts) {
        return object.PreviewBelow(ListOf(item.after), *write.below, watched, counts);
    });
}

void ChangePreviewing::AddShare(const std::string& name, const SecurityPreview& share) {
    if (preview.isStopped) return;
    preview.isStopped = !observer.Begin(name.c_str());
    if (preview.isStopped) return;
    FindMe();
    const nt::Sid network(5, {2});
    if (!preview.isOfShares && !mySids->empty()) mySids->push_back(network);
    preview.isOfShares = true;
    Judge(share, name, ComparedObject::kFile, *mySids);
    isFirst = false;
}

void ChangePreviewing::AddTree(
    const std::string& name, const std::function<DWORD(TreeObserver& observer, TreeCounts& counts)>& count) {
    TreeCounts counts;
    const DWORD error = count(observer, counts);
    AddBelow(counts);
    if (error == ERROR_OPERATION_ABORTED)
        preview.isStopped = true;
    else if (error != ERROR_SUCCESS)
        preview.failures.push_back({error, Step::kNone, "below " + name});
}

namespace {

ChangePreview PreviewItems(std::span<const RememberedObject> items, TreeObserver& observer, const auto& add) {
    ChangePreviewing previewing(observer);
    for (const RememberedObject& item : items) {
        HeldObject object;
        if (const Outcome outcome = FindItem(item, object); outcome.IsDone())
            add(previewing, object, item.Path());
        else
            previewing.AddFailure(outcome);
        if (previewing.IsStopped()) break;
    }
    return previewing.Preview();
}

}  // namespace

ChangePreview PreviewListOnItems(std::span<const RememberedObject> items,
                                 std::optional<DaclInheritance> inheritance, const ListsByKind& lists,
                                 std::optional<BelowChange> below, TreeObserver& observer) {
    return PreviewItems(
        items, observer,
        [&](ChangePreviewing& previewing, const HeldObject& object, const std::string& name) {
            PACL dacl = object.IsFolder() ? lists.forFolders : lists.forFiles;
            previewing.Add(object, name, {DaclWriteInformation(inheritance), {.dacl = dacl}, below});
        });
}

ChangePreview PreviewOwnerOnItems(std::span<const RememberedObject> items, PSID owner, Contents contents,
                                  TreeObserver& observer) {
    return PreviewItems(items, observer,
                        [&](ChangePreviewing& previewing, const HeldObject& object, const std::string& name) {
                            previewing.Add(object, name, {OWNER_SECURITY_INFORMATION, {.owner = owner}});
                            if (contents == Contents::kNone || !object.IsFolder() || previewing.IsStopped())
                                return;
                            previewing.AddTree(name, [&](TreeObserver& watched, TreeCounts& counts) {
                                return object.SetOwnersBelow(owner, LinkedFiles::kPassOver,
                                                             TreeListMode::kCountOnly, Unrecorded(), watched,
                                                             counts);
                            });
                        });
}

std::vector<std::string> PreviewLines(const ChangePreview& preview, NameAccount* nameOf) {
    Lines lines;
    lines.Add(CountsText("Items: ", preview.changed, preview.unchanged, "failed", preview.failed));
    AddBelow(preview, lines);
    AddLost(preview.lost, nameOf, lines);
    lines.Add(preview.isOfShares ? "Locked out would be everyone, from:"
                                 : "Locked out would be everyone but the owner, from:",
              preview.closed);
    if (preview.me) {
        AccountRecord account;
        account.sid = preview.me;
        lines.Add("Locked out would be you, " + nameOf(account) + ", from:", preview.closedToMe);
    } else {
        lines.Add("Whether you would be locked out is not known");
    }
    lines.Add("Could not be looked at:", preview.failures.size(), [&](std::size_t i) {
        return preview.failures[i].object + ": " + LineText(preview.failures[i]);
    });
    if (preview.isStopped) lines.Add("Stopped: what came behind is not counted");
    return lines.Take();
}

std::vector<std::string> LossLines(const TreeCounts& below) {
    std::vector<std::string> lines;
    if (below.losingOwn > 0)
        lines.push_back("Below them, " + ObjectsText(below.losingOwn) + " would lose entries of their own");
    if (below.emptied > 0) {
        lines.push_back("Below them, " + ObjectsText(below.emptied) +
                        " would have an empty list, which lets nobody in but the owner");
    }
    return lines;
}

}  // namespace permora
