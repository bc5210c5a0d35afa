// One object's descriptor: handing out what is asked for, and making the changes that a caller wants.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/api/security.h"
#include "platform/held_object.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/nt/security_descriptor.h"
#include "platform/resources.h"

namespace permora::host {

// The parts asked for, self-relative, as GetNamedSecurityInfoA hands them out.
DWORD HandOutDescriptor(nt::SecurityDescriptor descriptor, SECURITY_INFORMATION parts,
                        UniqueLocal<void>& block);

// What a caller wants to be written, checked and taken out of the caller's memory.
struct SecurityChange {
    SECURITY_INFORMATION information = 0;
    nt::Sid owner;
    nt::Sid group;
    std::optional<nt::Acl> dacl;     // nothing: a null list
    std::vector<std::uint8_t> sacl;  // empty: no list

    bool Has(SECURITY_INFORMATION bit) const { return (information & bit) != 0; }
};

// By the contract of SetNamedSecurityInfoA, whose parts these are. On failure `change` is half made.
DWORD TakeChange(SECURITY_INFORMATION information, PSID owner, PSID group, PACL dacl, PACL sacl,
                 SecurityChange& change);

// Makes a change and carries a new list to all that inherits below. `expected` may be null; otherwise it is
// the DACL part as HandOutDescriptor gave it, and a list that is another one by now is left alone
// (ERROR_REVISION_MISMATCH). The list is looked at right before the write: what happens in between the two
// calls of the kernel is not seen. 0 when the object itself was written; what could not be below is told in
// `below`.
DWORD ChangeSecurity(const ResolvedObject& target, const SecurityChange& change,
                     PSECURITY_DESCRIPTOR expected, FailuresBelow& below);

}  // namespace permora::host
