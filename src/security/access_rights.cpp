#include "security/access_rights.h"

#include <bit>
#include <cstddef>

namespace permora {

const char* AceTypeText(BYTE aceType) {
    switch (aceType) {
        case ACCESS_ALLOWED_ACE_TYPE:
            return "Allow";
        case ACCESS_DENIED_ACE_TYPE:
            return "Deny";
        default:
            return "";
    }
}

const char* InheritanceText(BYTE aceFlags) {
    return (aceFlags & INHERITED_ACE) != 0 ? "Inherited" : "Not inherited";
}

const char* MaskDisplayName(DWORD mask) {
    const DWORD shown = mask & RIGHTS_DISPLAY_MASK;
    if (shown == 0) return "None";
    if (shown == FULL_CONTROL_RIGHTS) return kAccessRights[0].rowName;
    if (!std::has_single_bit(shown)) return "Special";
    if (shown == SYNCHRONIZE) return "Synchronize";
    for (const AccessRight& right : kAccessRights)
        if (right.bits == shown) return right.rowName;
    return "";
}

const char* PermissionText(DWORD mask) {
    return MaskDisplayName(WithoutSynchronize(mask));
}

DWORD MaskOfChangedEntry(BYTE aceType, DWORD mask) {
    const bool deniesLess =
        aceType == ACCESS_DENIED_ACE_TYPE && (mask & FULL_CONTROL_RIGHTS) != FULL_CONTROL_RIGHTS;
    return deniesLess ? mask : mask | SYNCHRONIZE;
}

BYTE ScopeFlagsFromIndex(int index) {
    const auto place = static_cast<std::size_t>(index);  // a negative index lies beyond the table
    return place < kInheritanceScopes.size() ? kInheritanceScopes[place].flags : BYTE{0};
}

const char* ScopeTextFromFlags(BYTE aceFlags) {
    for (const InheritanceScope& scope : kInheritanceScopes)
        if (scope.flags == (aceFlags & kScopeFlagsMask)) return scope.text;
    return "";
}

int ScopeIndexFromText(std::string_view text) {
    for (std::size_t place = 0; place < kInheritanceScopes.size(); ++place)
        if (text == kInheritanceScopes[place].text) return static_cast<int>(place);
    return 0;
}

}  // namespace permora
