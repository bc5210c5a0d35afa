#include "security/access_rows.h"

#include <string>

#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "tests/security/entries.h"
#include "tests/security/service_fakes.h"

namespace permora {
namespace {

TEST(AccessRows, ShowAllowAndDenyEntriesAndKeepTheIndexOfEach) {
    test::ServiceFakes services;
    services.accounts = {{"S-1-5-32-544", "HOST", "ada", SidTypeUser}};
    AccessEntryList list =
        test::ListOf("(OA;;0x1;;;BA)(D;;0x100002;;;BA)(AU;;0x1;;;BA)(A;OICIIOID;FA;;;BU)(A;IOID;0x3;;;BA)");
    std::string text;
    for (const AccessRow& row : AccessRowsOf(list, AccountDisplayName)) {
        text += std::to_string(row.entryIndex) + '|' + row.type + '|' + row.name + '|' + row.permission +
                '|' + row.inheritance + '|' + row.applyTo + '\n';
    }
    EXPECT_EQ(text,
              "1|Deny|HOST\\ada|Write file/Create file|Not inherited|This folder only\n"
              "3|Allow|S-1-5-32-545|Full control|Inherited|Subfolders and files only\n"
              "4|Allow|HOST\\ada|Special|Inherited|\n");
}

TEST(AccessRows, AccountsOfOneNameAreToldApart) {
    test::ServiceFakes services;
    services.accounts = {{"S-1-5-32-544", "HOST", "ada", SidTypeUser},
                         {"S-1-5-32-545", "HOST", "ada", SidTypeAlias},
                         {"S-1-5-32-546", "HOST", "bea", SidTypeUser}};
    AccessEntryList list = test::ListOf("(A;;FA;;;BA)(A;;FR;;;BU)(A;;FR;;;BG)(D;;FR;;;BG)(A;;FA;;;BA)");
    std::string text;
    for (const AccessRow& row : AccessRowsOf(list, AccountDisplayName))
        text += row.name + '|';
    EXPECT_EQ(text,
              "HOST\\ada (S-1-5-32-544)|HOST\\ada (S-1-5-32-545)|HOST\\bea|HOST\\bea|"
              "HOST\\ada (S-1-5-32-544)|");
}

TEST(AccessRows, EntriesThatANewListWillNotHaveAreCounted) {
    EXPECT_EQ(LossesRemark(0, 0), "");
    EXPECT_EQ(LossesRemark(2, 0), "2 entries of other types are not shown; applying drops them.");
    EXPECT_EQ(LossesRemark(1, 2),
              "1 entry of another type is not shown; applying drops it. "
              "2 entries are not valid; applying drops them.");
}

}  // namespace
}  // namespace permora
