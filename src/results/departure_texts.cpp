#include "results/departure_texts.h"

#include <algorithm>

#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "security/access_rights.h"
#include "security/descriptor_comparison.h"
#include "security/entry_details.h"

namespace permora {
namespace {

constexpr std::size_t kMostEntries = 12;

// What an entry in a list of this object mostly applies to.
BYTE UsualScope(TreeObjectKind kind) {
    return kind == TreeObjectKind::kFolder ? CONTAINER_INHERIT_ACE | OBJECT_INHERIT_ACE : 0;
}

// "Modify"; of many rights that have no name together only that they are special, as in the rows of a list.
std::string ShortRightsText(DWORD mask) {
    constexpr auto kMostNamed = 3;
    std::string text = RightsText(mask);
    return std::ranges::count(text, ',') < kMostNamed ? text : PermissionText(mask);
}

std::string EntryText(const nt::Ace& entry, TreeObjectKind kind, const NameOfSid& nameOf) {
    const bool isAllow = entry.type == ACCESS_ALLOWED_ACE_TYPE;
    const bool isDeny = entry.type == ACCESS_DENIED_ACE_TYPE;
    const std::string name = entry.sid ? nameOf(*entry.sid) : "nobody";
    if (!isAllow && !isDeny) return EntryTypeName(entry.type) + ' ' + name;
    std::string text = (isAllow ? "+ " : "- ") + name + ": " + ShortRightsText(entry.mask);
    std::string limits;
    if ((entry.flags & kScopeFlagsMask) != UsualScope(kind)) limits = ScopeTextFromFlags(entry.flags);
    if (IsForDirectChildrenOnly(entry.flags)) AddPart(limits, "direct children only");
    return limits.empty() ? text : text + " (" + limits + ')';
}

}  // namespace

void AddPart(std::string& line, const std::string& part) {
    if (!line.empty() && !part.empty()) line += "; ";
    line += part;
}

std::string EntriesText(const nt::SecurityDescriptor& descriptor, TreeObjectKind kind, ShownEntries shown,
                        const NameOfSid& nameOf) {
    if (descriptor.daclState != nt::DaclState::kList) return "no list: everyone may do everything";
    std::string line;
    std::size_t count = 0;
    for (const nt::Ace& entry : descriptor.dacl.entries) {
        if (shown == ShownEntries::kOwn && (entry.flags & INHERITED_ACE) != 0) continue;
        if (++count <= kMostEntries) AddPart(line, EntryText(entry, kind, nameOf));
    }
    if (count > kMostEntries) AddPart(line, "and " + std::to_string(count - kMostEntries) + " more");
    return line;
}

std::string DepartureText(const SurveyRow& row, const NameOfSid& nameOf) {
    const nt::SecurityDescriptor descriptor = row.security->own->Descriptor();
    const bool isTop = row.path.empty();
    std::string line;
    if (row.remarks.Has(Remark::kProtected)) AddPart(line, "protected");
    if (isTop || row.remarks.Has(Remark::kOtherOwner))
        AddPart(line, descriptor.owner ? "owner " + nameOf(*descriptor.owner) : "no owner");
    if (row.remarks.Has(Remark::kEmptyList)) AddPart(line, "empty list");
    if (!row.security->own->isStored) AddPart(line, "no list is stored");
    if (row.security->own->isStored || isTop)
        AddPart(line,
                EntriesText(descriptor, row.kind, isTop ? ShownEntries::kAll : ShownEntries::kOwn, nameOf));
    if (row.remarks.Has(Remark::kStale)) AddPart(line, "stale inherited entries");
    return line;
}

std::string RemarksText(RemarkSet remarks, DWORD error) {
    std::string line;
    for (const Remark remark : remarks)
        AddPart(line, TextOf(remark));
    return error == ERROR_SUCCESS ? line : line + ": " + SystemMessageLine(error);
}

}  // namespace permora
