// What a policy makes of the objects of a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
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
    bool Misses(std::string_view path, EditGap gap) override;
    bool Enters(std::string_view folder) const override;

    // What has become of the object at a rule's path.
    enum class Meeting : std::uint8_t {
        kNone,
        kMet,        // it was looked at, or told of as missed
        kElsewhere,  // another volume is mounted at its path or above it, which the walk does not enter
    };
    Meeting MeetingOf(std::size_t rule) const { return meetings[rule]; }

  private:
    const PolicyRule* RuleFor(const ObjectToEdit& object);

    std::vector<RuleInTree> rules;
    std::vector<Meeting> meetings;
};

}  // namespace permora
