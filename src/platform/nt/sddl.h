// Security descriptors as text. Grammar: [MS-DTYP] 2.5.1 and the SDK's "Security Descriptor String Format".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/nt/security_descriptor.h"

namespace permora::nt {

// Which parts of a descriptor are written; values are those of SECURITY_INFORMATION.
enum class SddlParts : std::uint32_t { kOwner = 1, kGroup = 2, kDacl = 4, kSacl = 8 };

// "O:...G:...D:...S:..." with the parts whose bits are set in `parts`. Rights and SIDs are abbreviated where
// the grammar has an abbreviation. Nothing when an entry has no text form (opaque types).
std::optional<std::string> ToSddl(const SecurityDescriptor& descriptor, std::uint32_t parts);

// The descriptor that the whole of `text` describes; nothing when it breaks the grammar. Aliases that need a
// domain or the local machine (DA, LA, ...) are taken relative to `machine` when it is given, else refused.
std::optional<SecurityDescriptor> FromSddl(std::string_view text, const Sid* machine = nullptr);

// A SID as text or as an alias ("BA", "WD"); for FromSddl's callers that take a single account.
std::optional<Sid> SidFromSddl(std::string_view text, const Sid* machine = nullptr);

}  // namespace permora::nt
