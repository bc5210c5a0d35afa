#include "security/entry_details.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

#include "platform/guid_text.h"
#include "platform/resources.h"
#include "security/access_entry_list.h"

namespace permora {
namespace {

// What stands between the mask and the SID. Source: [MS-DTYP] 2.4.4.
enum class EntryLayout { kPlain, kObject, kUnknown };

struct EntryType {
    const char* name;
    EntryLayout layout;
};

constexpr std::array<EntryType, 22> kEntryTypes = {{
    {"Allow", EntryLayout::kPlain},
    {"Deny", EntryLayout::kPlain},
    {"Audit", EntryLayout::kPlain},
    {"Alarm", EntryLayout::kPlain},
    {"Compound allow", EntryLayout::kUnknown},
    {"Object allow", EntryLayout::kObject},
    {"Object deny", EntryLayout::kObject},
    {"Object audit", EntryLayout::kObject},
    {"Object alarm", EntryLayout::kObject},
    {"Callback allow", EntryLayout::kPlain},
    {"Callback deny", EntryLayout::kPlain},
    {"Callback object allow", EntryLayout::kObject},
    {"Callback object deny", EntryLayout::kObject},
    {"Callback audit", EntryLayout::kPlain},
    {"Callback alarm", EntryLayout::kPlain},
    {"Callback object audit", EntryLayout::kObject},
    {"Callback object alarm", EntryLayout::kObject},
    {"Mandatory label", EntryLayout::kPlain},
    {"Resource attribute", EntryLayout::kPlain},
    {"Scoped policy", EntryLayout::kPlain},
    {"Process trust label", EntryLayout::kPlain},
    {"Access filter", EntryLayout::kPlain},
}};

EntryLayout LayoutOf(BYTE aceType) {
    return aceType < kEntryTypes.size() ? kEntryTypes.at(aceType).layout : EntryLayout::kUnknown;
}

using Bytes = std::span<BYTE>;

// The whole entry that `ace` begins.
Bytes EntryBytes(void* ace) {
    ACE_HEADER header{};
    std::memcpy(&header, ace, sizeof header);
    return {static_cast<BYTE*>(ace), std::max<std::size_t>(header.AceSize, sizeof header)};
}

// The number at the beginning of `rest`, which is taken off it.
std::optional<DWORD> TakeDword(Bytes& rest) {
    DWORD value = 0;
    if (rest.size() < sizeof value) return std::nullopt;
    std::memcpy(&value, rest.data(), sizeof value);
    rest = rest.subspan(sizeof value);
    return value;
}

bool TakeGuid(Bytes& rest, std::string& text) {
    if (rest.size() < kGuidBytes) return false;
    AppendGuid(std::span<const std::uint8_t, kGuidBytes>(rest.first<kGuidBytes>()), text);
    rest = rest.subspan(kGuidBytes);
    return true;
}

// What an object entry has in front of its SID, which is taken off `rest`.
bool TakeObjectTypes(Bytes& rest, EntryDetails& details) {
    constexpr DWORD kObjectType = 1;
    constexpr DWORD kInheritedObjectType = 2;
    const auto present = TakeDword(rest);
    return present && ((*present & kObjectType) == 0 || TakeGuid(rest, details.objectType)) &&
           ((*present & kInheritedObjectType) == 0 || TakeGuid(rest, details.inheritedObjectType));
}

void ReadAccount(Bytes rest, EntryDetails& details) {
    constexpr std::size_t kSidHeaderSize = 8;
    if (rest.size() < kSidHeaderSize || rest.size() < kSidHeaderSize + rest[1] * sizeof(DWORD) ||
        IsValidSid(rest.data()) == FALSE)
        return;
    // Without memory the entry stays without an account.
    static_cast<void>(details.account.SetSid(rest.data(), {}));
}

// A list of one entry as text, without the "D:".
std::string TextOfEntry(Bytes entry, BYTE revision) {
    if (entry.size() + sizeof(ACL) > 0xFFFF) return {};
    std::vector<BYTE> list(sizeof(ACL) + entry.size());
    const ACL header{revision, 0, static_cast<WORD>(list.size()), 1, 0};
    std::memcpy(list.data(), &header, sizeof header);
    std::memcpy(list.data() + sizeof header, entry.data(), entry.size());
    SECURITY_DESCRIPTOR descriptor{};
    char* text = nullptr;
    if (InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) == FALSE ||
        SetSecurityDescriptorDacl(&descriptor, TRUE, reinterpret_cast<PACL>(list.data()), FALSE) == FALSE ||
        ConvertSecurityDescriptorToStringSecurityDescriptorA(
            &descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr) == FALSE)
        return {};
    const UniqueLocal<char> owned(text);
    return std::string(text).substr(std::strlen("D:"));
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

EntryDetails DetailsOf(Bytes entry, BYTE revision) {
    EntryDetails details;
    details.aceType = entry[0];
    details.aceFlags = entry[1];
    details.text = TextOfEntry(entry, revision);
    details.condition = DataOfText(details.text);
    const EntryLayout layout = LayoutOf(details.aceType);
    Bytes rest = entry.subspan(sizeof(ACE_HEADER));
    if (layout == EntryLayout::kUnknown || !TakeDword(rest)) return details;
    if (layout == EntryLayout::kObject && !TakeObjectTypes(rest, details)) return details;
    ReadAccount(rest, details);
    return details;
}

}  // namespace

std::vector<EntryDetails> DetailsOfEntries(PACL acl) {
    std::vector<EntryDetails> details;
    const DWORD count = GetAceCount(acl);
    for (DWORD index = 0; index < count; ++index)
        if (void* ace = nullptr; GetAce(acl, index, &ace) != FALSE)
            details.push_back(DetailsOf(EntryBytes(ace), acl->AclRevision));
    return details;
}

bool IsForDirectChildrenOnly(BYTE aceFlags) {
    return (aceFlags & NO_PROPAGATE_INHERIT_ACE) != 0 &&
           (aceFlags & (OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE)) != 0;
}

std::string EntryTypeName(BYTE aceType) {
    if (aceType < kEntryTypes.size()) return kEntryTypes.at(aceType).name;
    return "Type " + std::to_string(aceType);
}

}  // namespace permora
