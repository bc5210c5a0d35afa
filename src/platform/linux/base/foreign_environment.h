// What another user's environment says about where code, settings and files are. sudo and su may leave it to
// root, and the C library, the windows' toolkit and all that these load would believe it.
#pragma once

#include <string>
#include <vector>

namespace permora::host {

// Whether nobody but root decides what is found under a path, now and later: root owns everything on the way,
// links too, and nobody else may write there. A folder in which all may only make files of their own (sticky)
// may stand on the way to something of root's, not at the end. Only absolute paths are, and nothing is on a
// volume that a user may have had mounted.
bool IsRootsAlone(const std::string& path);

// In a process that runs as root, forgets the variables by which the libraries of this program find code,
// settings and files (their families and HOME, PATH), where they name a place that is not root's alone. HOME
// and PATH become root's own, and a display's socket that was found by such a variable is still found. Hands
// back the names of those variables, in no order. To be called before any library reads them, while there is
// one thread.
std::vector<std::string> ForgetForeignPlaces();

}  // namespace permora::host
