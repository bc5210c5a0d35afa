// The command line in the form of the system.
#pragma once

#include <string>
#include <vector>

namespace permora::host {

// `program` and `arguments` as the host writes them.
std::string CommandLineOf(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace permora::host
