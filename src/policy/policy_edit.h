// What a policy makes of the objects of a tree.
#pragma once

#include <string>
#include <vector>

#include "changes/descriptor_edit.h"
#include "policy/policy.h"

namespace permora {

// A rule where its objects are in a tree.
struct RuleInTree {
    const PolicyRule* rule;  // borrowed
    std::string start;       // of its path below the top, with backslashes; empty: the top
};

// Of the rules for an object, the last one alone says what it is to have. What no rule is for stays, and
// inherits what its folder hands down afterwards, where that changes.
class PolicyEdit : public DescriptorEdit {
  public:
    // In the order of the policy.
    explicit PolicyEdit(std::vector<RuleInTree> rulesInTree);

    EditedSecurity Edit(const ObjectToEdit& object) override;
    bool DependsOnPath() const override { return true; }

    // Whether the walk has come to the object at the rule's path.
    bool HasMet(std::size_t rule) const { return met[rule]; }

  private:
    const PolicyRule* RuleFor(const ObjectToEdit& object);

    std::vector<RuleInTree> rules;
    std::vector<bool> met;
};

}  // namespace permora
