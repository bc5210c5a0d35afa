// What Samba's tools print about shares. All of it is text from outside: a remark may look like a section of
// its own, a name may be anything.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/shares/share_provider.h"
#include "platform/nt/security_descriptor.h"

namespace permora::host {

// "[name]" and the lines "parameter = value" below it, as `testparm -s`, `net conf showshare` and
// `net usershare info` print them all.
struct SambaSection {
    std::string name;
    std::vector<std::pair<std::string, std::string>> parameters;  // names in small letters

    // The first value of a parameter; nothing when the section does not have it.
    std::optional<std::string> Value(std::string_view parameter) const;
    bool IsSet(std::string_view parameter) const;  // "Yes", in any spelling that Samba takes
};

// All sections, in order. Of several of one name the first counts: what a remark forges stands behind it.
std::vector<SambaSection> ParseSambaSections(std::string_view text);

// Whether a configuration file itself has a section for a share.
bool HasSection(std::string_view fileText, std::string_view share);

// The shares that a section's list describes, with host paths in the place of their own. Left out are what is
// no share (global settings, the patterns for homes and printers), what is switched off, and names that no
// program could be told (not UTF-8, with control characters or backslashes).
std::vector<Share> SharesOfSections(const std::vector<SambaSection>& sections);

// Whom a user's own share allows what: "SID:F,SID:R,SID:D," for everything, reading, nothing. Nothing when
// the descriptor says more than that: entries that are only handed down, other masks, no list, a system list.
// Other flags of entries are left out.
std::optional<std::string> FormatUserShareAcl(const nt::SecurityDescriptor& descriptor);

// One grant of such a text, whose accounts Samba prints as names where it can.
struct UserShareGrant {
    std::string account;
    char access;  // 'F', 'R' or 'D'
};
// Nothing when anything in the text is not of this form.
std::optional<std::vector<UserShareGrant>> ParseUserShareAcl(std::string_view text);
// The entry that the server makes of a grant.
nt::Ace AceOfGrant(char access, const nt::Sid& account);

}  // namespace permora::host
