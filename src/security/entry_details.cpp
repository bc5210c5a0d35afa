#include "security/entry_details.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <optional>

#include "platform/nt/sddl_ace.h"
#include "platform/raw_security.h"
#include "security/access_rights.h"

namespace permora {
namespace {

// By type. Source: [MS-DTYP] 2.4.4.1, and for the last two ntifs.h of the driver kit.
constexpr const char* kTypeNames[] = {
    "Allow",
    "Deny",
    "Audit",
    "Alarm",
    "Compound allow",
    "Object allow",
    "Object deny",
    "Object audit",
    "Object alarm",
    "Callback allow",
    "Callback deny",
    "Callback object allow",
    "Callback object deny",
    "Callback audit",
    "Callback alarm",
    "Callback object audit",
    "Callback object alarm",
    "Mandatory label",
    "Resource attribute",
    "Scoped policy",
    "Process trust label",
    "Access filter",
};

std::string TextOf(const std::optional<nt::Guid>& guid) {
    std::string text;
    if (guid) nt::AppendGuid(*guid, text);
    return text;
}

// What follows the sixth semicolon of an entry's text: no field before it can have one.
std::string DataOfText(const std::string& text) {
    std::size_t end = 0;
    for (int field = 0; field < 6; ++field) {
        end = text.find(';', end);
        if (end == text.npos) return {};
        ++end;
    }
    return text.substr(end, text.size() - end - 1);
}

EntryDetails DetailsOf(const nt::Ace& ace) {
    EntryDetails details;
    details.aceType = ace.type;
    details.aceFlags = ace.flags;
    details.account.sid = ace.sid;
    if (ace.object) {
        details.objectType = TextOf(ace.object->objectType);
        details.inheritedObjectType = TextOf(ace.object->inheritedObjectType);
    }
    if (std::string text = "("; nt::AppendAceAsSddl(ace, nt::SddlWords::kAbbreviations, text)) {
        details.text = text + ')';
        details.condition = DataOfText(details.text);
    }
    return details;
}

}  // namespace

std::vector<EntryDetails> DetailsOfEntries(PACL acl) {
    std::vector<EntryDetails> details;
    std::ranges::transform(AcesOf(acl), std::back_inserter(details), DetailsOf);
    return details;
}

bool IsForDirectChildrenOnly(BYTE aceFlags) {
    return (aceFlags & NO_PROPAGATE_INHERIT_ACE) != 0 &&
           (aceFlags & (OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE)) != 0;
}

std::string MaskDigits(DWORD mask) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%x", static_cast<unsigned>(WithoutSynchronize(mask)));
    return text.data();
}

std::string EntryTypeName(BYTE aceType) {
    if (aceType < std::size(kTypeNames)) return kTypeNames[aceType];
    return "Type " + std::to_string(aceType);
}

}  // namespace permora
