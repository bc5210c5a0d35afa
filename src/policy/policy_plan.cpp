#include "policy/policy_plan.h"

#include <algorithm>

#include "platform/path_below.h"

namespace permora {
namespace {

// What stands behind the top's path.
std::string BelowTop(const std::string& path, const std::string& top) {
    std::string below = path.substr(top.size());
    if (below.starts_with('\\')) below.erase(0, 1);
    return below;
}

}  // namespace

std::vector<PolicyTree> PlanTrees(const Policy& policy, const std::vector<std::string>& tops) {
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < tops.size(); ++i)
        if (!tops[i].empty()) order.push_back(i);
    std::ranges::stable_sort(order,
                             [&](std::size_t one, std::size_t other) { return tops[one] < tops[other]; });
    std::vector<PolicyTree> trees;
    for (const std::size_t i : order) {
        const auto tree = std::ranges::find_if(trees, [&](const PolicyTree& each) {
            const std::string& top = tops[each.first];
            return tops[i] == top || (each.isWalked && IsAtOrBelow(tops[i], top));
        });
        const bool hasPattern = !policy.rules[i].below.empty();
        if (tree == trees.end())
            trees.push_back({i, hasPattern, {i}, {}});
        else {
            tree->isWalked = tree->isWalked || hasPattern;
            tree->rules.push_back(i);
        }
    }
    for (PolicyTree& tree : trees) {
        std::ranges::sort(tree.rules);  // the last one counts
        for (const std::size_t i : tree.rules)
            tree.parts.push_back({&policy.rules[i], BelowTop(tops[i], tops[tree.first])});
    }
    return trees;
}

}  // namespace permora
