#include "browser/security_texts.h"

#include <algorithm>
#include <iterator>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/host_permissions.h"
#include "platform/system_message.h"
#include "security/object_security.h"

namespace permora {
namespace {

std::string& TextOf(SecurityTexts& texts, SecurityColumn column) {
    return texts[static_cast<std::size_t>(column)];
}

DWORD HoldItem(const Place& place, const std::string& name, HeldObject& object) {
    return place.folder != nullptr ? place.folder->HoldObject(name, object) : HeldObject::Hold(name, object);
}

std::string OwnerTextOf(const HeldObject& object) {
    AccountRecord owner;
    if (const DWORD error = ReadObjectOwner(object, owner); error != ERROR_SUCCESS)
        return SystemMessageLine(error);
    return owner.sid ? AccountDisplayName(owner) : "none";
}

void AddList(const HeldObject& object, SecurityTexts& texts) {
    ObjectSecurity security;
    std::string& inherits = TextOf(texts, SecurityColumn::kInherits);
    std::string& entries = TextOf(texts, SecurityColumn::kOwnEntries);
    if (const Outcome outcome = ReadObjectDacl(object, security); !outcome.IsDone()) {
        const bool hasLists = outcome.step != Step::kUseAccessControl;
        inherits = entries = hasLists ? SystemMessageLine(outcome.code) : "no access control";
        return;
    }
    if (security.inheritance) inherits = security.inheritance == DaclInheritance::kFromParent ? "Yes" : "No";
    const auto& all = security.entries.Entries();
    const auto own = std::ranges::count_if(all, [](const AccessEntry& each) { return !each.IsInherited(); });
    entries = security.dacl == nullptr ? "no list" : std::to_string(own);
}

std::string ModeTextOf(const HeldObject& object) {
    HostPermissions permissions;
    const DWORD error = object.ReadHostPermissions(permissions);
    if (error == ERROR_NOT_SUPPORTED) return {};
    if (error != ERROR_SUCCESS) return SystemMessageLine(error);
    const std::string text = ModeText(permissions.mode);
    return permissions.list.empty() ? text : text + '+';
}

}  // namespace

const char* HeaderOf(SecurityColumn column) {
    constexpr std::array<const char*, kSecurityColumnCount> kHeaders = {"Owner", "Inherits", "Own Entries",
                                                                        "Mode"};
    return kHeaders[static_cast<std::size_t>(column)];
}

SecurityTexts ReadSecurityTexts(const Place& place, const std::string& name) {
    SecurityTexts texts;
    HeldObject object;
    if (const DWORD error = HoldItem(place, name, object); error != ERROR_SUCCESS) {
        texts.fill(SystemMessageLine(error));
        return texts;
    }
    TextOf(texts, SecurityColumn::kOwner) = OwnerTextOf(object);
    AddList(object, texts);
    TextOf(texts, SecurityColumn::kMode) = ModeTextOf(object);
    return texts;
}

}  // namespace permora
