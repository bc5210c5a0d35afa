// The folder of the command line.
#pragma once

#include <string>

namespace permora {

// The first quoted argument of a command line whose program path is quoted; empty when there is none. A
// missing last quote is forgiven.
std::string StartFolderOf(const std::string& commandLine);

}  // namespace permora
