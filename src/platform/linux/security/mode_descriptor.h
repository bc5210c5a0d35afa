// The security descriptor that an object without a stored one has: what its owner, group and mode say.
#pragma once

#include <sys/types.h>

#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"

namespace permora::host {

// A list of at most five explicit entries that gives each account what the kernel gives it: the owner the
// owner's bits and nothing else, members of the group the group's, everybody else the rest. Three bits
// together are full control for the owner; the owner may always read and change the access list and the
// attributes, whatever the bits say. Writing in a folder includes deleting from it, unless its sticky bit is
// set.
//
// The kernel looks at one class of accounts only, a list at every entry that fits. Where a later entry would
// give the owner or the group what their own bits refuse (mode 0707), an entry that denies it comes first;
// the list is then not in the usual order of denying before allowing entries, and would mean something else
// if it were.
nt::SecurityDescriptor DescriptorFromMode(mode_t mode, nt::ObjectKind kind, const nt::Sid& owner,
                                          const nt::Sid& group);

}  // namespace permora::host
