// Which rule is for an object, and what it makes of it.
#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "platform/nt/sddl.h"
#include "policy/policy_plan.h"

namespace permora {
namespace {

nt::SecurityDescriptor Parse(const std::string& sddl) {
    const auto descriptor = nt::FromSddl(sddl);
    EXPECT_TRUE(descriptor) << sddl;
    return descriptor.value_or(nt::SecurityDescriptor());
}

PolicyRule RuleOf(const std::string& entries, PolicyExtent extent) {
    PolicyRule rule;
    rule.extent = extent;
    rule.entries = Parse("D:" + entries).dacl.entries;
    return rule;
}

struct Case {
    const char* before;
    const char* after;  // null: as it is
};

void ExpectEdits(const PolicyRule& rule, nt::ObjectKind kind, std::span<const Case> cases) {
    const nt::Acl above = Parse("D:(A;OICI;FA;;;BA)").dacl;
    PolicyEdit edit({{&rule, ""}});
    for (const Case& each : cases) {
        const nt::SecurityDescriptor present = Parse(each.before);
        const ListsAbove lists{above, above};
        const EditedSecurity edited = edit.Edit({present, kind, EditPlace::kTop, &lists});
        EXPECT_EQ(edited.fault, EditFault::kNone) << each.before;
        EXPECT_EQ(nt::ToSddl(edited.wanted, 7),
                  nt::ToSddl(each.after != nullptr ? Parse(each.after) : present, 7))
            << each.before;
    }
}

TEST(PolicyEdit, MakesOwnEntriesExactlyOrAtLeastTheRules) {
    const PolicyRule exactly = RuleOf("(D;;0x2;;;BG)(A;OICI;FR;;;BU)", PolicyExtent::kExactly);
    const Case kExactly[] = {
        {"D:AI(D;;0x2;;;BG)(A;OICI;FR;;;BU)(A;OICIID;FA;;;BA)", nullptr},
        {"D:PAI(A;OICI;FR;;;BU)", "D:PAI(D;;0x2;;;BG)(A;OICI;FR;;;BU)"},
        // Stale entries from above stay where nothing else is to be changed.
        {"D:AI(D;;0x2;;;BG)(A;OICI;FR;;;BU)(A;OICIID;FA;;;WD)", nullptr},
        {"D:AI(A;OICI;FR;;;BU)(D;;0x2;;;BG)", "D:AI(D;;0x2;;;BG)(A;OICI;FR;;;BU)(A;OICIID;FA;;;BA)"},
        {"D:AI(XA;;FR;;;WD;(a == 1))(A;OICIID;FA;;;WD)",
         "D:AI(D;;0x2;;;BG)(A;OICI;FR;;;BU)(A;OICIID;FA;;;BA)"},
        {"D:NO_ACCESS_CONTROL", "D:AI(D;;0x2;;;BG)(A;OICI;FR;;;BU)(A;OICIID;FA;;;BA)"},
    };
    ExpectEdits(exactly, nt::ObjectKind::kFolder, kExactly);
    const Case kFile[] = {{"D:PAI(A;;FR;;;WD)", "D:PAI(D;;0x2;;;BG)(A;;FR;;;BU)"}};
    ExpectEdits(exactly, nt::ObjectKind::kFile, kFile);

    const PolicyRule least = RuleOf("(D;;0x2;;;BG)(A;OICI;FR;;;BU)", PolicyExtent::kAtLeast);
    const Case kLeast[] = {
        {"D:PAI(D;;0x3;;;BG)(A;;FA;;;WD)(A;OICI;FA;;;BU)", nullptr},
        {"D:PAI(A;OICI;0x1;;;BU)(A;;FA;;;WD)", "D:PAI(D;;0x2;;;BG)(A;OICI;FR;;;BU)(A;;FA;;;WD)"},
        {"D:PAI(A;;FR;;;BU)", "D:PAI(D;;0x2;;;BG)(A;;FR;;;BU)(A;OICI;FR;;;BU)"},
        // A denial behind what allows keeps nobody from it.
        {"D:PAI(D;;0x1;;;WD)(A;OICI;FR;;;BU)(D;;0x3;;;BG)",
         "D:PAI(D;;0x1;;;WD)(D;;0x3;;;BG)(A;OICI;FR;;;BU)"},
    };
    ExpectEdits(least, nt::ObjectKind::kFolder, kLeast);

    PolicyRule open;
    open.isProtected = false;
    open.owner = Parse("O:BAD:").owner;
    const Case kOpen[] = {{"O:BUD:PAI(A;;FR;;;BU)", "O:BAD:AI(A;;FR;;;BU)(A;OICIID;FA;;;BA)"}};
    ExpectEdits(open, nt::ObjectKind::kFolder, kOpen);
}

TEST(PolicyEdit, LeavesAnObjectWithoutAListToRulesThatSayAll) {
    const PolicyRule least = RuleOf("(A;;FR;;;BU)", PolicyExtent::kAtLeast);
    PolicyEdit edit({{&least, ""}});
    const nt::SecurityDescriptor present = Parse("D:NO_ACCESS_CONTROL");
    const EditedSecurity edited = edit.Edit({present, nt::ObjectKind::kFile, EditPlace::kTop, nullptr});
    EXPECT_EQ(edited.fault, EditFault::kNoList);
    EXPECT_EQ(edited.wanted, present);
}

TEST(PolicyEdit, OfSeveralRulesTheLastCounts) {
    Policy policy;
    const struct {
        const char* below;
        PolicyKinds kinds;
    } kRules[] = {{"", PolicyKinds::kAll},
                  {"**", PolicyKinds::kAll},
                  {"sub/*", PolicyKinds::kFiles},
                  {"", PolicyKinds::kAll},  // of top\sub
                  {"*", PolicyKinds::kAll}};
    for (const auto& [below, kinds] : kRules) {
        PolicyRule rule;
        rule.below = below;
        rule.kinds = kinds;
        rule.owner = nt::Sid(5, {32, static_cast<std::uint32_t>(policy.rules.size())});
        policy.rules.push_back(rule);
    }
    // The last one is about another tree, which stands between them in the order of letters.
    std::vector<std::string> tops = {"C:\\top", "C:\\top", "C:\\top", "C:\\top\\sub", "C:\\top more"};
    const std::vector<PolicyTree> trees = PlanTrees(policy, tops);
    ASSERT_EQ(trees.size(), 2U);
    EXPECT_EQ(trees[0].rules, (std::vector<std::size_t>{0, 1, 2, 3}));
    EXPECT_TRUE(trees[0].isWalked);
    PolicyEdit edit(trees[0].parts);
    const nt::SecurityDescriptor present = Parse("O:BAD:");
    const auto ruleFor = [&](const char* path, nt::ObjectKind kind) {
        const EditedSecurity edited = edit.Edit({present, kind, EditPlace::kBelow, nullptr, path});
        for (std::size_t i = 0; i < policy.rules.size(); ++i)
            if (edited.wanted.owner == policy.rules[i].owner) return static_cast<int>(i);
        return -1;
    };
    EXPECT_EQ(ruleFor("", nt::ObjectKind::kFolder), 0);
    using Meeting = PolicyEdit::Meeting;
    EXPECT_EQ(edit.MeetingOf(3), Meeting::kNone);
    EXPECT_EQ(ruleFor("sub", nt::ObjectKind::kFolder), 3);
    EXPECT_EQ(edit.MeetingOf(3), Meeting::kMet);
    EXPECT_EQ(ruleFor("sub\\a", nt::ObjectKind::kFile), 2);
    EXPECT_EQ(ruleFor("sub\\a", nt::ObjectKind::kFolder), 1);
    EXPECT_EQ(ruleFor("subs", nt::ObjectKind::kFolder), 1);

    // What a pattern fits, but has no contents.
    EXPECT_EQ(edit.Edit({present, nt::ObjectKind::kFile, EditPlace::kBelow, nullptr, "sub\\a", false}).wanted,
              present);

    // What is missed is a failure where a rule may be about it.
    PolicyEdit parts({trees[0].parts[0], trees[0].parts[2], trees[0].parts[3]});
    EXPECT_TRUE(parts.Enters("") && parts.Enters("sub"));
    EXPECT_FALSE(parts.Enters("other") || parts.Enters("sub\\a"));
    EXPECT_TRUE(parts.Misses("sub\\a", EditGap::kUnread) && parts.Misses("sub", EditGap::kUnlisted));
    EXPECT_FALSE(parts.Misses("sub\\a", EditGap::kUnlisted) || parts.Misses("other", EditGap::kUnread));
    EXPECT_FALSE(parts.Misses("other", EditGap::kMounted));
    EXPECT_EQ(parts.MeetingOf(2), Meeting::kNone);
    EXPECT_FALSE(parts.Misses("sub", EditGap::kMounted));
    EXPECT_EQ(parts.MeetingOf(2), Meeting::kElsewhere);

    // Without a pattern, each is looked at alone.
    policy.rules.erase(policy.rules.begin() + 1, policy.rules.begin() + 3);
    tops.erase(tops.begin() + 1, tops.begin() + 3);
    EXPECT_EQ(PlanTrees(policy, tops).size(), 3U);
}

}  // namespace
}  // namespace permora
