#include "security/descriptor_comparison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "platform/nt/sddl.h"

namespace permora {
namespace {

std::string SidText(AccountRecord& account) {
    return account.GetSidText();
}

// One line for each row.
std::string TextOf(const std::vector<ComparedRow>& rows) {
    std::string text;
    for (const ComparedRow& row : rows)
        text += std::string(RowChangeText(row.change)) + '|' + row.what + '|' + row.name + '|' + row.before +
                '|' + row.after + '\n';
    return text;
}

std::string Rows(const std::string& before, const std::string& after,
                 ComparedObject object = ComparedObject::kFolder) {
    const auto one = nt::FromSddl(before);
    const auto other = nt::FromSddl(after);
    EXPECT_TRUE(one && other) << before << " " << after;
    if (!one || !other) return {};
    return TextOf(CompareDescriptors(&*one, &*other, object, SidText));
}

constexpr const char* kHead = "|Owner||none|none\n|Inherits||yes|yes\n";

TEST(DescriptorComparison, PairsTheEntriesThatWereThereWithThoseThatAre) {
    struct Case {
        const char* what;
        const char* before;
        const char* after;
        const char* rows;
    };
    for (const Case& each : {
             Case{"the same", "(A;;FA;;;WD)", "(A;;FA;;;WD)",
                  "|Allow|S-1-1-0|Full control (This folder only)|Full control (This folder only)\n"},
             {"other rights, written out", "(A;OICI;FA;;;WD)", "(A;OICIID;0x100088;;;WD)",
              "Changed|Allow|S-1-1-0|Full control (This folder, subfolders and files)|"
              "Read attributes, Read extended attributes (This folder, subfolders and files; inherited)\n"},
             {"what the wizard has a name for", "(A;;0x1200a9;;;WD)", "(A;;0x1301bf;;;WD)",
              "Changed|Allow|S-1-1-0|Read & execute (This folder only)|Modify (This folder only)\n"},
             {"bits without a name", "(A;;0x10000001;;;WD)", "(A;;0x10000000;;;WD)",
              "Changed|Allow|S-1-1-0|List directory/Read data, 0x10000000 (This folder only)|"
              "0x10000000 (This folder only)\n"},
             {"a denial in the place of a grant", "(A;;FA;;;WD)", "(D;;FA;;;WD)",
              "Removed|Allow|S-1-1-0|Full control (This folder only)|\n"
              "Added|Deny|S-1-1-0||Full control (This folder only)\n"},
             {"between others that stay", "(A;;FA;;;WD)(A;;FA;;;BA)(A;;FA;;;BU)",
              "(A;;FA;;;WD)(A;;FA;;;SY)(A;NP;FA;;;BU)(A;;FA;;;BU)",
              "|Allow|S-1-1-0|Full control (This folder only)|Full control (This folder only)\n"
              "Removed|Allow|S-1-5-32-544|Full control (This folder only)|\n"
              "Added|Allow|S-1-5-18||Full control (This folder only)\n"
              "Added|Allow|S-1-5-32-545||Full control (This folder only)\n"
              "|Allow|S-1-5-32-545|Full control (This folder only)|Full control (This folder only)\n"},
             {"in another order", "(A;;FA;;;BA)(D;;FA;;;WD)", "(D;;FA;;;WD)(A;;FA;;;BA)",
              "Removed|Allow|S-1-5-32-544|Full control (This folder only)|\n"
              "|Deny|S-1-1-0|Full control (This folder only)|Full control (This folder only)\n"
              "Added|Allow|S-1-5-32-544||Full control (This folder only)\n"},
             {"of other types", "(XA;;FX;;;WD;(a == 1))", "(XA;;FX;;;WD;(a == 2))",
              "Changed|Callback allow|S-1-1-0|(XA;;FX;;;WD;(a == 1))|(XA;;FX;;;WD;(a == 2))\n"},
         }) {
        EXPECT_EQ(Rows(std::string("D:") + each.before, std::string("D:") + each.after),
                  kHead + std::string(each.rows))
            << each.what;
    }
}

TEST(DescriptorComparison, SaysWhatElseDiffersInTheDescriptors) {
    EXPECT_EQ(Rows("O:BAG:BAD:P(A;;FA;;;WD)", "O:SYG:SYD:", ComparedObject::kFile),
              "Changed|Owner||S-1-5-32-544|S-1-5-18\n"
              "Changed|Primary group||S-1-5-32-544|S-1-5-18\n"
              "Changed|Inherits||no|yes\n"
              "Changed|Access list|||empty: nobody has access\n"
              "Removed|Allow|S-1-1-0|Full control|\n");
    EXPECT_EQ(Rows("D:NO_ACCESS_CONTROL", "D:S:(AU;SA;FA;;;WD)"),
              std::string(kHead) +
                  "Changed|Access list||none: everyone may do everything|empty: nobody has access\n"
                  "Changed|System access list||none|S:(AU;SA;FA;;;WD)\n");
}

// Some 2,000 entries fit into a list: what was changed is said of such ones too, without gigabytes.
TEST(DescriptorComparison, TakesListsOfAnyLength) {
    std::string before = "D:";
    std::string after = "D:";
    for (int i = 0; i < 2000; ++i) {
        before += "(A;;FA;;;S-1-5-21-" + std::to_string(i) + ')';
        after += "(A;;FR;;;S-1-5-21-" + std::to_string(i) + ')';
    }
    const std::string rows = Rows(before, after);
    EXPECT_EQ(std::ranges::count(rows, '\n'), 2002);
    EXPECT_NE(rows.find("Changed|Allow|S-1-5-21-1999|Full control"), rows.npos);
}

StoredSecurity Stored(const std::string& sddl, std::optional<std::uint32_t> hostOwner = {}) {
    StoredSecurity stored{SecurityForm::kVolume, {}, hostOwner};
    const auto descriptor = nt::FromSddl(sddl);
    EXPECT_TRUE(descriptor && descriptor->AppendTo(stored.bytes)) << sddl;
    return stored;
}

TEST(DescriptorComparison, SaysWhatIsBesideTheDescriptorOfStoredSecurity) {
    const StoredSecurity list = Stored("O:BAD:(A;;FA;;;WD)", 1000);
    EXPECT_EQ(TextOf(CompareStored({}, list, ComparedObject::kFile, SidText)),
              "Changed|Descriptor||none stored: owner and mode on the host count|\n"
              "Changed|Owner on the host|||user 1000\n"
              "Changed|Owner|||S-1-5-32-544\n"
              "Changed|Inherits|||yes\n"
              "Added|Allow|S-1-1-0||Full control\n");
    const StoredSecurity damaged{SecurityForm::kVolume, {1, 2, 3}, {}};
    EXPECT_EQ(TextOf(CompareStored(damaged, damaged, ComparedObject::kFile, SidText)).substr(0, 27),
              "|Descriptor||damaged: it ca");
    StoredSecurity reordered = list;
    reordered.bytes[2] |= 0x04;  // only the bit that says that the list was inherited by default
    reordered.bytes[1] = 0x80;   // resource manager control
    EXPECT_EQ(TextOf(CompareStored(list, reordered, ComparedObject::kFile, SidText)).substr(0, 20),
              "Changed|Stored form|");
    EXPECT_EQ(
        TextOf(CompareStored(list, list, ComparedObject::kFile, SidText)),
        "|Owner||S-1-5-32-544|S-1-5-32-544\n|Inherits||yes|yes\n|Allow|S-1-1-0|Full control|Full control\n");
}

}  // namespace
}  // namespace permora
