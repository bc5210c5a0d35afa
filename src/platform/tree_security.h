// One access list, or one owner, for everything below a folder (HeldObject::SetListsBelow and
// SetOwnersBelow): services of our own beside the system's. Here stands what they report while they
// work.
//
// SetNamedSecurityInfoA on a folder carries inheritance to everything below it, so a caller who walks a tree
// and calls it for each object pays for every object once for each folder above it. And a caller can descend
// by names only, which others may change between two calls. The system's own call for trees
// (TreeResetNamedSecurityInfoA) rewrites the folder itself too, reports objects by their full path only, and
// leaves open what it does with links. So the walk is the layer's: each object is read and written once, and
// nothing outside the tree is ever touched.
#pragma once

#include <cstddef>
#include <string>

#include "platform/api/errors.h"

namespace permora {

enum class TreeListMode {
    kWrite,
    kCountOnly,  // everything is read and nothing written: counts what kWrite would do
};

// A file with several names (hard links) has one owner under all of them, wherever they stand. Who may write
// a file may mostly give it a name of his own, so a tree that others can write in may hold files that were
// never theirs.
enum class LinkedFiles {
    kPassOver,  // with kHasFurtherNames
    kChange,
};
inline constexpr DWORD kHasFurtherNames = ERROR_TOO_MANY_LINKS;

struct TreeCounts {
    std::size_t changed = 0;
    std::size_t unchanged = 0;   // they were so already
    std::size_t passedOver = 0;  // each was reported with its reason
    // When lists are counted (kCountOnly), of those that would change:
    std::size_t losingOwn = 0;  // have entries of their own that would go
    std::size_t emptied = 0;    // would have a list without entries, which lets nobody in
};

inline void AddCounts(const TreeCounts& more, TreeCounts& counts) {
    counts.changed += more.changed;
    counts.unchanged += more.unchanged;
    counts.passedOver += more.passedOver;
    counts.losingOwn += more.losingOwn;
    counts.emptied += more.emptied;
}

// What a new list on a folder comes to below it.
enum class BelowChange {
    kCarryDown,  // WriteSecurity: what inherits gets what the list hands down
    kReset,      // then SetListsBelow with an empty list: nothing else is left
};

// Texts live for the call.
class TreeObserver {
  public:
    virtual ~TreeObserver() = default;

    // The object with this bare name comes next. False ends the walk and leaves it as it is. One call at a
    // time, on any thread that works for the service: others may just then be at work on other objects, which
    // they end.
    virtual bool Begin(const char* name) = 0;

    // An object that is as it was, by its path below the folder that is walked (the names with backslashes
    // between them); a folder that could itself be changed but whose contents could not be listed is
    // reported too. On the thread that called the service, when the walk has ended, in the order of the
    // paths.
    virtual void PassOver(const std::string& path, DWORD error) = 0;
};

}  // namespace permora
