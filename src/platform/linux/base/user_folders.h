// The user's folders, where freedesktop.org's rules for base directories put them.
//
// The environment is believed only as far as it names places that belong to the user this process runs as or
// to root: sudo may leave another's there. Otherwise the folders are those in that user's home.
#pragma once

#include <string>
#include <vector>

namespace permora::host {

// The user's home as the system knows it; empty when it is no absolute path.
std::string HomeOfAccount();
// For configuration files; empty when the user has no home.
std::string UserConfigurationFolder();
// For what programs remember of their work; empty when the user has no home.
std::string UserStateFolder();
// For data files: the user's, and then the system's, each an absolute path.
std::vector<std::string> DataFolders();

}  // namespace permora::host
