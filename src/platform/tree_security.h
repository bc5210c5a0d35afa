// One access list, or one owner, for everything below a folder: services of our own beside the system's.
//
// SetNamedSecurityInfoA on a folder carries inheritance to everything below it, so a caller who walks a tree
// and calls it for each object pays for every object once for each folder above it. And a caller can descend
// by names only, which others may change between two calls. The system's own call for trees
// (TreeResetNamedSecurityInfoA) rewrites the folder itself too, tells of objects by their full path only, and
// leaves open what it does with links. So the walk is the layer's: each object is read and written once, and
// nothing outside the tree is ever touched.
#pragma once

#include <cstddef>
#include <string>

#include "platform/api/security.h"

namespace permora {

enum class TreeListMode {
    kWrite,
    kCountOnly,  // everything is read and nothing written: counts what kWrite would do
};

struct TreeCounts {
    std::size_t changed = 0;
    std::size_t unchanged = 0;   // they were so already
    std::size_t passedOver = 0;  // each was told with its reason
};

// Called on the thread that called the service. Texts live for the call.
class TreeObserver {
  public:
    virtual ~TreeObserver() = default;

    // The object with this bare name comes next. False ends the walk and leaves it as it is.
    virtual bool Begin(const char* name) = 0;

    // An object that is as it was. `path` begins with the folder's name as it was given; a folder that could
    // itself be changed but whose contents could not be listed is told too.
    virtual void PassOver(const std::string& path, DWORD error) = 0;
};

// Gives every object below `folder` (a path, or a name relative to the current directory) the list `list`,
// unprotected, joined by what the object's own folder hands down: as SetNamedSecurityInfoA with
// UNPROTECTED_DACL_SECURITY_INFORMATION would for each object in turn, a folder before what is in it.
// `folder` itself keeps its list.
//
// A link is an object like any other and gets the list where the volume can hold one for it; it is never
// followed. What is mounted below is passed over with ERROR_NOT_SAME_DEVICE. A folder whose list cannot be
// set is entered all the same. An object that vanishes counts as nothing, one that appears in the middle is
// reached or not. A folder that is moved or replaced in the middle leads nowhere else. The current directory
// stays what it is. Memory and open descriptors grow with the depth only.
//
// 0 when the walk came to its end, with any number of objects passed over; ERROR_OPERATION_ABORTED when
// `observer` ended it. Another code is about `folder` itself: it cannot be found, read or listed to its end,
// is a link (ERROR_CANT_RESOLVE_FILENAME) or a file (ERROR_DIRECTORY), or its volume holds no lists
// (ERROR_NOT_SUPPORTED); or `list` is not valid (ERROR_INVALID_ACL). What was done is added to `counts`,
// whatever the result.
//
// On Windows the walk is made of the system's own calls. There links keep their lists and are passed over
// with ERROR_CANT_RESOLVE_FILENAME, because the system's call would work on their targets, and every object
// that is not passed over counts as changed.
[[nodiscard]] DWORD SetListsBelow(LPCSTR folder, PACL list, TreeListMode mode, TreeObserver& observer,
                                  TreeCounts& counts);

// Gives every object below `folder` the owner `owner`, as SetNamedSecurityInfoA with
// OWNER_SECURITY_INFORMATION would for each; `folder` itself keeps its owner. It walks and answers as
// SetListsBelow does, but on Windows too a link gets the owner itself. ERROR_INVALID_SID when `owner` is not
// valid.
[[nodiscard]] DWORD SetOwnersBelow(LPCSTR folder, PSID owner, TreeObserver& observer, TreeCounts& counts);

}  // namespace permora
