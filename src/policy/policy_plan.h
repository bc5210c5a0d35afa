// In which order a policy is applied, and to which trees.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "policy/policy_edit.h"

namespace permora {

struct PolicyTree {
    std::size_t first;  // of the policy's rules, one whose path is the tree's top
    bool isWalked;      // a rule of it has a pattern; else it is about the top alone
    std::vector<std::size_t> rules;
    std::vector<RuleInTree> parts;  // for the same
};

// The trees of all rules with a top: the absolute path of the object at the rule's path, empty where there is
// none, or none that is still to be looked at. A folder comes before what is in it, and a rule for something
// in a tree that is walked belongs to that tree. The policy is borrowed.
std::vector<PolicyTree> PlanTrees(const Policy& policy, const std::vector<std::string>& tops);

}  // namespace permora
