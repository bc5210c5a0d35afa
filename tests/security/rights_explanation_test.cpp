#include "security/rights_explanation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/nt/ace_bits.h"
#include "platform/nt/sddl.h"
#include "security/effective_rights.h"

namespace permora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const nt::Sid kGuests(5, {32, 546});
const nt::Sid kEveryone(1, {0});
const nt::Sid kUsers(5, {32, 545});

nt::Acl RandomList(std::mt19937& random) {
    constexpr std::uint8_t kTypes[] = {0, 0, 0, 1, 1, 0x05, 0x09};
    constexpr std::uint8_t kFlags[] = {0, 0, nt::kInherited, nt::kInheritOnly | nt::kObjectInherit};
    const auto pick = [&](const auto& values) { return values[random() % std::size(values)]; };
    nt::Acl list;
    const std::size_t count = random() % 9;
    for (std::size_t i = 0; i < count; ++i) {
        nt::Ace& entry = list.entries.emplace_back();
        entry.type = pick(kTypes);
        entry.flags = pick(kFlags);
        if (entry.type == 0x05) entry.object.emplace();
        const nt::Sid sids[] = {kGuests, kEveryone, kUsers, nt::Sid(3, {4})};
        entry.sid = pick(sids);
        entry.mask = static_cast<std::uint32_t>(random() & random());
    }
    return list;
}

// What the rules say of one right alone.
ExplainedRight ByTheRules(const nt::Acl& list, const AccessRight& right, const AccountGroups& groups) {
    for (std::size_t i = 0; i < list.entries.size(); ++i) {
        const nt::Ace& entry = list.entries[i];
        const bool counts = entry.type <= 1 && (entry.flags & nt::kInheritOnly) == 0 &&
                            std::ranges::count(groups.sids, *entry.sid) > 0;
        if (counts && (entry.mask & right.bits) != 0)
            return {&right, entry.type == 0 ? RightAnswer::kGranted : RightAnswer::kDenied, i};
    }
    return {&right, RightAnswer::kNotMentioned, 0};
}

TEST(RightsExplanation, AgreesWithTheEffectiveRightsAndTheRulesForAnyList) {
    std::mt19937 random(20);
    const AccountGroups groups{{kGuests, kEveryone}};
    for (int i = 0; i < 3000; ++i) {
        const nt::Acl list = RandomList(random);
        std::vector<std::uint8_t> bytes;
        ASSERT_TRUE(list.AppendTo(bytes));
        EffectiveRights effective;
        ASSERT_EQ(FindEffectiveRights(reinterpret_cast<PACL>(bytes.data()), groups, effective),
                  ERROR_SUCCESS);
        const RightsExplanation explanation = ExplainRights(list, {}, groups);
        EXPECT_EQ(explanation.rights, effective.rights);
        EXPECT_EQ(explanation.rightsAsOwner, effective.rights) << "without an owner";
        ASSERT_EQ(explanation.single.size(), kAccessRights.size() - 1);
        for (const ExplainedRight& told : explanation.single) {
            const ExplainedRight rule = ByTheRules(list, *told.right, groups);
            EXPECT_EQ(told.answer, rule.answer);
            EXPECT_EQ(told.entry, rule.entry);
            EXPECT_EQ((effective.rights & told.right->bits) != 0, told.answer == RightAnswer::kGranted);
        }
    }
}

std::string NameOf(AccountRecord& account) {
    return account.GetSidText();
}

RightsExplanation Explain(const char* sddl) {
    const std::optional<nt::SecurityDescriptor> object = nt::FromSddl(sddl);
    EXPECT_TRUE(object) << sddl;
    return ExplainRights(object->dacl, object->owner, {{kGuests, kEveryone}});
}

TEST(RightsExplanation, RowsNameTheDecidingEntryAndWhoItIsFor) {
    RightsExplanation explanation = Explain("D:(D;;0x2;;;BG)(A;;0x3;;;WD)(A;;0x1;;;BG)(A;IO;FA;;;BG)");
    explanation.sources = {{SourceKind::kOwn, {}, {}},
                           {SourceKind::kFolder, "C:\\above", {}},
                           {SourceKind::kNobody, {}, {}},
                           {SourceKind::kOwn, {}, {}}};
    const std::vector<ExplanationRow> rows = ExplanationRows(explanation, NameOf);
    EXPECT_THAT(rows[1], ElementsAre("List folder / Read data", "yes", "entry 2: Allow Special", "S-1-1-0",
                                     "C:\\above"));
    EXPECT_THAT(rows[4],
                ElementsAre("Create files / Write data", "no", "entry 1: Deny Write file/Create file",
                            "the account itself", "not inherited"));
    EXPECT_THAT(rows[9], ElementsAre("Delete", "no", "no entry grants it", "", ""));
}

TEST(RightsExplanation, TellsWhatOwnersMayDoAndWhichEntriesAreNotJudged) {
    const struct {
        const char* sddl;
        DWORD rightsAsOwner;
        const char* remark;  // the one part of the one remark; null: no remark
    } cases[] = {
        {"O:BAD:(A;;0x1;;;BG)", 0x1, nullptr},
        {"O:BGD:(D;;FA;;;BG)", 0x60000,
         "S-1-5-32-546 is the owner: it has these rights as well, whatever the list says: Read permissions, "
         "Change permissions"},
        {"O:WDD:(A;;0x60001;;;BG)", 0x60001, nullptr},
        {"O:WDD:", 0x60000, "belongs to the owner, which is a group: it has"},
        {"O:BGD:(D;;0x1;;;OW)(A;;0x3;;;BG)(A;;0x4;;;OW)", 0x6,
         "the entries for OWNER RIGHTS apply to it, and grant it as well: Create folders / Append data, and "
         "deny it: List folder / Read data"},
        {"O:BGD:(A;IO;FA;;;OW)(A;;FA;;;BG)", 0x1F01FF, nullptr},
        {"O:BAD:(A;;FA;;;OW)", 0, nullptr},
        {"D:(XA;;0x1;;;WD;(a == 1))(XA;;0x1;;;BU;(a == 1))(XA;OIIO;0x1;;;WD;(a == 1))", 0,
         "entry 1 (Callback allow), for S-1-1-0, depends on more than the account"},
        {"D:(OD;;0x1;bf967aba-0de6-11d0-a285-00aa003049e2;;BG)(A;;0x1;;;BG)", 0x1,
         "entry 1 (Object deny), for S-1-5-32-546, depends"},
    };
    for (const auto& each : cases) {
        const RightsExplanation explanation = Explain(each.sddl);
        EXPECT_EQ(explanation.rightsAsOwner, each.rightsAsOwner) << each.sddl;
        const std::vector<std::string> remarks = RemarksOnExplanation(explanation, NameOf);
        if (each.remark == nullptr)
            EXPECT_THAT(remarks, IsEmpty()) << each.sddl;
        else
            EXPECT_THAT(remarks, ElementsAre(HasSubstr(each.remark))) << each.sddl;
    }
    nt::Acl unknown;
    unknown.entries.emplace_back().type = 200;
    EXPECT_THAT(RemarksOnExplanation(ExplainRights(unknown, {}, {{kGuests}}), NameOf),
                ElementsAre("entry 1 (Type 200) is of a type that is not known, and is not counted"));
}

}  // namespace
}  // namespace permora
