// The objects that a command line names.
#pragma once

#include <string>
#include <vector>

#include "security/object_security.h"
#include "security/outcome.h"

namespace permora {

struct NamedObjects {
    // Those that were found. With a drive among them, all count as drives: what is possible with each of
    // them.
    RememberedPlace place;
    std::vector<std::string> paths;  // of each: full, with a drive letter
    Outcomes failures;               // of the others, each with what was typed
};

// Finds the objects at once and keeps them, so that they are the ones that were named, however long their
// window is open. A link at the end of a path is the object; with a separator behind it, as with any name,
// the object must be a folder.
NamedObjects FindNamedObjects(const std::vector<std::string>& arguments);

}  // namespace permora
