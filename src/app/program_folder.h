// The folder of the program and its help.
#pragma once

#include <string>

namespace permora {

// The path of the help file in `folder`, whether it is there or not.
std::string HelpFileIn(const std::string& folder);
bool HoldsHelp(const std::string& folder);

// The folder that this program was started from, if its help is there; else empty.
std::string OwnFolderWithHelp();

}  // namespace permora
