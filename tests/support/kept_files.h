// Files as versions of the program have written them: tests/kept has a folder for each version whose files
// differ from those of the one before.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace permora::test {

// The paths of copies of the file `name` of every version in `folder`, and of one that `make` writes there
// now. Where PERMORA_KEEP names a folder, the latter is copied into it: so a version's files are made.
std::vector<std::string> KeptFiles(const std::string& folder, const std::string& name,
                                   const std::function<void(const std::string& path)>& make);

}  // namespace permora::test
