// Security descriptors as text. Grammar: [MS-DTYP] 2.5.1 and the SDK's "Security Descriptor String Format".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/nt/sddl_sid.h"
#include "platform/nt/security_descriptor.h"

namespace permora::nt {

// Which parts of a descriptor are written; values are those of SECURITY_INFORMATION.
enum class SddlParts : std::uint32_t { kOwner = 1, kGroup = 2, kDacl = 4, kSacl = 8 };

// "O:...G:...D:...S:..." with the parts whose bits are set in `parts`. FromSddl returns the same owner,
// group, lists and inheritance bits. The grammar cannot express the "defaulted" bits, resource manager
// control, a list's revision and unused space. Nothing when an entry or a part of one would be lost: types
// unknown to the grammar, data after the SID that is no condition or resource attribute, or that would become
// other bytes; or when the system list is malformed.
std::optional<std::string> ToSddl(const SecurityDescriptor& descriptor, std::uint32_t parts,
                                  SddlWords words = SddlWords::kAbbreviations);

// The descriptor of the whole `text`; nothing when it breaks the grammar or a list would be too large. The
// parts may come in any order, each at most once; an empty text is an empty descriptor. Letter case matters,
// except in hexadecimal digits and the words of conditions. White space is allowed only in conditions and
// resource attributes. Rights are abbreviations, or one number as in C: 0x1f01ff, 2032127, 07600777.
// `accounts` as for SidFromSddl.
std::optional<SecurityDescriptor> FromSddl(std::string_view text, const SddlAccounts& accounts = {});

}  // namespace permora::nt
