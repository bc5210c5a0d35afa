// Makes access lists and descriptors that the system takes.
#pragma once

#include <optional>
#include <span>

#include "platform/api/security.h"
#include "platform/resources.h"
#include "security/access_entry_list.h"

namespace permora {

// Whether an object takes up what its parent hands down, or is protected from it.
enum class DaclInheritance { kFromParent, kProtected };

// The library in which BuildDacl looks its functions up. Ends the process when it cannot be loaded.
UniqueLibrary LoadAccessListLibrary(HWND owner);

// A new access list of the acceptable allow and deny entries of `entries`, as they are and in their order; no
// others are written. Null after an error box when the list cannot be initialised (it would exceed 64 KiB) or
// the system refuses one of those entries. Ends the process, after its box, when a function is missing from
// `library` or there is no memory.
UniqueLocal<ACL> BuildDacl(HWND owner, HMODULE library, std::span<const AccessEntry> entries);

// What HeldObject::WriteSecurity must be told to write a list with this choice; nothing: each object keeps
// its own.
SECURITY_INFORMATION DaclWriteInformation(std::optional<DaclInheritance> inheritance);

// Turns a self-relative descriptor into an absolute one whose parts all live in `heap`. On failure both
// outputs are untouched.
[[nodiscard]] bool MakeAbsoluteDescriptor(PSECURITY_DESCRIPTOR descriptor, PSECURITY_DESCRIPTOR& absolute,
                                          UniqueHeap& heap);

}  // namespace permora
