// Trees with lists of many kinds.
#pragma once

#include <string>
#include <vector>

namespace permora::test {

// Makes `count` objects below a folder that gets the list `list` and hands it down; the same for the same
// seed. Their names below the folder, as the host writes them, folders before what is in them.
std::vector<std::string> MakeRandomTree(const std::string& folder, const char* list, int count,
                                        unsigned seed);

}  // namespace permora::test
