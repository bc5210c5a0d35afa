#include "security/descriptor_comparison.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <utility>

#include "platform/nt/sddl.h"
#include "platform/nt/sddl_ace.h"
#include "platform/stored_security.h"
#include "security/access_rights.h"
#include "security/entry_details.h"
#include "security/usable_combinations.h"

namespace permora {
namespace {

using Entries = std::span<const nt::Ace>;

void AddPart(std::string& text, const std::string& part) {
    if (!text.empty() && !part.empty()) text += ", ";
    text += part;
}

// The name that the wizard has for these rights together; empty without one.
std::string CombinationText(DWORD mask) {
    for (const UsableCombination& combination : kUsableCombinations)
        if (WithoutSynchronize(combination.mask) == WithoutSynchronize(mask & RIGHTS_DISPLAY_MASK))
            return combination.text;
    return {};
}

// "Read & execute", or every right by its name.
std::string NamedRightsText(DWORD mask) {
    if (std::string permission = PermissionText(mask); permission != "Special") return permission;
    std::string text = CombinationText(mask);
    if (!text.empty()) return text;
    for (const AccessRight& right : std::span(kAccessRights).subspan(1))
        if ((mask & right.bits) != 0) AddPart(text, right.rowName);
    return text;
}

}  // namespace

std::string RightsText(DWORD mask) {
    std::string text = NamedRightsText(mask);
    const DWORD unnamed = mask & ~RIGHTS_DISPLAY_MASK;
    if (unnamed == 0) return text;
    if (text == "None") text.clear();
    char number[16];
    std::snprintf(number, sizeof(number), "0x%X", static_cast<unsigned>(unnamed));
    AddPart(text, number);
    return text;
}

std::string GrantText(const nt::Ace& ace, ComparedObject object) {
    std::string limits;
    if (object == ComparedObject::kFolder || (ace.flags & kScopeFlagsMask) != 0)
        limits = ScopeTextFromFlags(ace.flags);
    const auto addLimit = [&limits](const char* limit) {
        limits += (limits.empty() ? "" : "; ") + std::string(limit);
    };
    if (IsForDirectChildrenOnly(ace.flags)) addLimit("direct children only");
    if ((ace.flags & INHERITED_ACE) != 0) addLimit("inherited");
    return RightsText(ace.mask) + (limits.empty() ? "" : " (" + limits + ')');
}

namespace {

bool IsAllowOrDeny(const nt::Ace& ace) {
    return ace.type == ACCESS_ALLOWED_ACE_TYPE || ace.type == ACCESS_DENIED_ACE_TYPE;
}

std::string EntryText(const nt::Ace& ace, ComparedObject object) {
    if (IsAllowOrDeny(ace) && !ace.IsDamaged()) return GrantText(ace, object);
    std::string text = "(";
    if (!nt::AppendAceAsSddl(ace, nt::SddlWords::kAbbreviations, text)) return "no text says what it holds";
    return text + ')';
}

std::string NameOf(const std::optional<nt::Sid>& sid, NameAccount* nameOf) {
    if (!sid) return {};
    AccountRecord account;
    account.sid = sid;
    return nameOf(account);
}

ComparedRow RowOf(const char* what, std::string before, std::string after) {
    RowChange change = RowChange::kChanged;
    if (before == after) change = RowChange::kNone;
    return {change, what, {}, std::move(before), std::move(after)};
}

std::string AccountText(const std::optional<nt::Sid>& sid, NameAccount* nameOf) {
    return sid ? NameOf(sid, nameOf) : "none";
}

// What there is to say of the list as a whole; empty for an ordinary one.
std::string ListText(const nt::SecurityDescriptor& descriptor) {
    if (descriptor.daclState != nt::DaclState::kList) return "none: everyone may do everything";
    return descriptor.dacl.entries.empty() ? "empty: nobody has access" : "";
}

std::string SystemListText(const nt::SecurityDescriptor& descriptor) {
    if ((descriptor.control & nt::kSaclPresent) == 0) return "none";
    const auto text = nt::ToSddl(descriptor, static_cast<std::uint32_t>(nt::SddlParts::kSacl));
    return text ? *text : std::to_string(descriptor.saclBytes.size()) + " bytes without a text form";
}

Entries EntriesOf(const nt::SecurityDescriptor* descriptor) {
    if (descriptor == nullptr || descriptor->daclState != nt::DaclState::kList) return {};
    return descriptor->dacl.entries;
}

std::string HostOwnerText(const StoredSecurity& stored) {
    return stored.hostOwner ? "user " + std::to_string(*stored.hostOwner) : "";
}

struct StoredDescriptor {
    explicit StoredDescriptor(const StoredSecurity& stored) {
        if (DescriptorIn(stored, descriptor) != ERROR_SUCCESS)
            remark = "damaged: it cannot be shown";
        else if (!descriptor)
            remark = "none stored: owner and mode on the host count";
    }
    const nt::SecurityDescriptor* Get() const { return descriptor ? &*descriptor : nullptr; }

    std::optional<nt::SecurityDescriptor> descriptor;
    std::string remark;  // empty for one that can be shown
};

// The places of an entry that both lists have.
struct CommonEntry {
    std::size_t before;
    std::size_t after;
};

// The longest run of entries that stand in both lists, in the order of both, of lists that begin and end
// differently. None for lists so long that the search would take too much memory.
std::vector<CommonEntry> LongestCommonRun(Entries before, Entries after) {
    constexpr std::size_t kMostPairs = 1'000'000;
    std::vector<CommonEntry> common;
    if (before.empty() || after.empty() || before.size() > kMostPairs / after.size()) return common;
    const std::size_t width = after.size() + 1;
    std::vector<std::uint16_t> lengths((before.size() + 1) * width);  // of the run in what is behind a pair
    const auto lengthAt = [&](std::size_t i, std::size_t j) -> std::uint16_t& {
        return lengths[i * width + j];
    };
    for (std::size_t i = before.size(); i-- > 0;)
        for (std::size_t j = after.size(); j-- > 0;)
            lengthAt(i, j) = before[i] == after[j] ? static_cast<std::uint16_t>(lengthAt(i + 1, j + 1) + 1)
                                                   : std::max(lengthAt(i + 1, j), lengthAt(i, j + 1));
    for (std::size_t i = 0, j = 0; lengthAt(i, j) > 0;)
        if (before[i] == after[j])
            common.push_back({i++, j++});
        else
            ++(lengthAt(i + 1, j) >= lengthAt(i, j + 1) ? i : j);
    return common;
}

// Writes the rows of the entries of two lists.
class EntryRows {
  public:
    EntryRows(ComparedObject comparedObject, NameAccount* naming, std::vector<ComparedRow>& made)
        : object(comparedObject), nameOf(naming), rows(made) {}

    void Compare(Entries before, Entries after) {
        const auto [beforeStart, afterStart] = std::ranges::mismatch(before, after);
        AddSame(Entries(before.begin(), beforeStart));
        before = Entries(beforeStart, before.end());
        after = Entries(afterStart, after.end());
        std::size_t same = 0;
        while (same < std::min(before.size(), after.size()) &&
               before[before.size() - same - 1] == after[after.size() - same - 1])
            ++same;
        CompareMiddle(before.first(before.size() - same), after.first(after.size() - same));
        AddSame(before.last(same));
    }

  private:
    void CompareMiddle(Entries before, Entries after) {
        CommonEntry next{0, 0};
        for (const CommonEntry& common : LongestCommonRun(before, after)) {
            AddDifferent(before.subspan(next.before, common.before - next.before),
                         after.subspan(next.after, common.after - next.after));
            AddSame(before.subspan(common.before, 1));
            next = {common.before + 1, common.after + 1};
        }
        AddDifferent(before.subspan(next.before), after.subspan(next.after));
    }

    void AddSame(Entries entries) {
        for (const nt::Ace& ace : entries)
            Add(RowChange::kNone, ace, EntryText(ace, object), EntryText(ace, object));
    }

    // Entries of the same type for the same account are taken for one that was changed.
    void AddDifferent(Entries before, Entries after) {
        std::vector<bool> isPaired(after.size());
        for (const nt::Ace& ace : before) {
            std::size_t i = 0;
            while (i < after.size() &&
                   (isPaired[i] || after[i].type != ace.type || after[i].sid != ace.sid || !ace.sid))
                ++i;
            if (i < after.size()) isPaired[i] = true;
            Add(i < after.size() ? RowChange::kChanged : RowChange::kRemoved, ace, EntryText(ace, object),
                i < after.size() ? EntryText(after[i], object) : "");
        }
        for (std::size_t i = 0; i < after.size(); ++i)
            if (!isPaired[i]) Add(RowChange::kAdded, after[i], "", EntryText(after[i], object));
    }

    void Add(RowChange change, const nt::Ace& ace, std::string before, std::string after) {
        rows.push_back(
            {change, EntryTypeName(ace.type), NameOf(ace.sid, nameOf), std::move(before), std::move(after)});
    }

    ComparedObject object;
    NameAccount* nameOf;
    std::vector<ComparedRow>& rows;
};

}  // namespace

const char* RowChangeText(RowChange change) {
    switch (change) {
        case RowChange::kNone:
            return "";
        case RowChange::kChanged:
            return "Changed";
        case RowChange::kAdded:
            return "Added";
        case RowChange::kRemoved:
            return "Removed";
    }
    return "";
}

std::string EntryLine(const nt::Ace& ace, ComparedObject object, NameAccount* nameOf) {
    const std::string name = NameOf(ace.sid, nameOf);
    return EntryTypeName(ace.type) + (name.empty() ? "" : ' ' + name) + ": " + EntryText(ace, object);
}

std::vector<ComparedRow> CompareDescriptors(const nt::SecurityDescriptor* before,
                                            const nt::SecurityDescriptor* after, ComparedObject object,
                                            NameAccount* nameOf) {
    std::vector<ComparedRow> rows;
    const auto add = [&](const char* what, const auto& textOf) {
        rows.push_back(
            RowOf(what, before != nullptr ? textOf(*before) : "", after != nullptr ? textOf(*after) : ""));
    };
    const auto differ = [&](const auto& partOf) {
        return before != nullptr && after != nullptr && partOf(*before) != partOf(*after);
    };
    using Descriptor = nt::SecurityDescriptor;
    add("Owner", [nameOf](const Descriptor& each) { return AccountText(each.owner, nameOf); });
    if (differ([](const Descriptor& each) { return each.group; }))
        add("Primary group", [nameOf](const Descriptor& each) { return AccountText(each.group, nameOf); });
    add("Inherits",
        [](const Descriptor& each) { return std::string(each.IsDaclProtected() ? "no" : "yes"); });
    add("Access list", ListText);
    if (rows.back().before.empty() && rows.back().after.empty()) rows.pop_back();
    EntryRows(object, nameOf, rows).Compare(EntriesOf(before), EntriesOf(after));
    if (differ(SystemListText)) add("System access list", SystemListText);
    return rows;
}

std::vector<ComparedRow> CompareStored(const StoredSecurity& before, const StoredSecurity& after,
                                       ComparedObject object, NameAccount* nameOf) {
    const StoredDescriptor one(before);
    const StoredDescriptor other(after);
    std::vector<ComparedRow> rows = CompareDescriptors(one.Get(), other.Get(), object, nameOf);
    if (before.hostOwner != after.hostOwner)
        rows.insert(rows.begin(), RowOf("Owner on the host", HostOwnerText(before), HostOwnerText(after)));
    if (!one.remark.empty() || !other.remark.empty())
        rows.insert(rows.begin(), RowOf("Descriptor", one.remark, other.remark));
    const bool isDifferenceShown =
        std::ranges::any_of(rows, [](const ComparedRow& row) { return row.change != RowChange::kNone; });
    if (before != after && !isDifferenceShown)
        rows.insert(rows.begin(),
                    {RowChange::kChanged, "Stored form", "", "as it was", "same meaning, other bytes"});
    return rows;
}

}  // namespace permora
