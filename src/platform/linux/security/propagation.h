// Carries a folder's changed access list down to all objects that inherit from it.
#pragma once

#include <cstddef>
#include <optional>

#include "platform/held_object.h"
#include "platform/linux/files/object_handle.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/recorded_top.h"
#include "platform/nt/security_descriptor.h"
#include "platform/tree_security.h"

namespace permora::host {

// Replaces the inherited entries of an object's descriptor by those that a folder with the list `parent`
// hands down to it now, and marks the list as kept up to date. The descriptor must have a list.
void JoinInherited(nt::SecurityDescriptor& descriptor, const nt::Acl& parent, const ObjectHandle& object);

// Gives every object below `folder` the inherited entries that `list`, the folder's own list, now hands down;
// explicit entries stay. Left alone with everything below them: objects whose list is protected, objects
// without a list (everyone may do everything with them, which no entry could add to, and they have nothing to
// hand on), links' targets and what cannot hold a list. An object without stored descriptor gets one, with
// the entries that its mode gives as explicit ones, if there is anything for it to inherit.
//
// Each object is written at most once, and only when its descriptor changes. A failure leaves that object and
// what is below it as they were, and the walk goes on. `store` is that of the volume, `top` where the changes
// are recorded (the folder itself has been); `threads` are those of WalkTree. 0, or the recorder's code,
// which has ended the walk; `failures` then has those up to the end.
DWORD PropagateList(const ObjectHandle& folder, const nt::Acl& list, const DescriptorStore& store,
                    const RecordedTop& top, FailuresBelow& failures,
                    std::optional<std::size_t> threads = std::nullopt);

// Counts what PropagateList would do, by the same walk, and writes nothing. ERROR_OPERATION_ABORTED when
// `observer`, which is told of no failure, has ended it.
DWORD CountPropagation(const ObjectHandle& folder, const nt::Acl& list, TreeObserver& observer,
                       TreeCounts& counts);

}  // namespace permora::host
