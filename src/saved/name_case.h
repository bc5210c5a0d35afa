// Names that differ in the case of letters alone.
#pragma once

#include <string>

namespace permora {

// The name in capital letters, one for one, as NTFS compares names. What is no text of the code page stays as
// it is.
std::string InCapitals(const std::string& name);

}  // namespace permora
