// What is kept of the security of a tree, as the kernel tells it.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace permora::test {

// Every object of a tree, the folder itself first, by its path from there. Links are not followed.
std::vector<std::string> ObjectsOf(const std::string& root);
std::string PathInTree(const std::string& root, const std::string& object);

// By the same paths: the owner and each byte of the attributes that hold descriptors.
using TreeState = std::map<std::string, std::string>;
TreeState StateOfTree(const std::string& root);

// The objects that are not in both, or have another state in one of them; empty for the same state.
std::string DifferenceOf(const TreeState& one, const TreeState& other);

}  // namespace permora::test
