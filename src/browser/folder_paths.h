// Paths of folders, as text.
#pragma once

#include <string>

namespace permora {

// "C:\a" of "C:\a\b", "C:\" of "C:\a", and nothing above a drive's root.
std::string FolderAbove(const std::string& path);
// "b" of "C:\a\b", and nothing of a drive's root.
std::string NameInFolder(const std::string& path);

}  // namespace permora
