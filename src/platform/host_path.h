// Paths as the host's own users type them.
#pragma once

#include <string>

namespace permora {

// The absolute path, in the form of platform/api/files.h, of what someone typed as an argument: a path with a
// drive letter or a leading backslash as it is, anything else as the host writes it, relative to the current
// directory. Empty (no path at all) when that directory was deleted. Text only; the object need not exist.
// Both forms of a path mean the same object.
std::string PathFromArgument(const char* argument);

}  // namespace permora
