// Makes access lists and descriptors that the system takes.
#pragma once

#include <optional>
#include <span>

#include "platform/api/security.h"
#include "platform/resources.h"
#include "security/access_entry_list.h"
#include "security/outcome.h"

namespace permora {

// Whether an object inherits from its parent, or is protected from that.
enum class DaclInheritance { kFromParent, kProtected };

// The library in which BuildDacl looks its functions up. Null with the last error set when it cannot be
// loaded.
UniqueLibrary LoadAccessListLibrary();

// Makes an access list of the acceptable allow and deny entries of `entries`, as they are and in their order;
// no others are written. Fails when `library` is null or misses a function (Step::kFindListFunctions),
// without memory (Step::kTakeBuffer), when the list would exceed 64 KiB (Step::kInitializeList), and when the
// system refuses one of the entries. `dacl` is then untouched.
Outcome BuildDacl(HMODULE library, std::span<const AccessEntry> entries, UniqueLocal<ACL>& dacl);

// The list without entries that everything below a folder gets when it is to keep only what it inherits
// (HeldObject::SetListsBelow). Step::kTakeBuffer or Step::kInitializeList when it cannot be made; `dacl` is
// then untouched.
Outcome MakeEmptyList(UniqueLocal<ACL>& dacl);

// The flags for HeldObject::WriteSecurity to write a list with this choice; nothing: each object keeps its
// own.
SECURITY_INFORMATION DaclWriteInformation(std::optional<DaclInheritance> inheritance);

// Turns a self-relative descriptor into an absolute one whose parts all live in `heap`. On failure both
// outputs are untouched.
[[nodiscard]] bool MakeAbsoluteDescriptor(PSECURITY_DESCRIPTOR descriptor, PSECURITY_DESCRIPTOR& absolute,
                                          UniqueHeap& heap);

}  // namespace permora
