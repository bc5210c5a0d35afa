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

TEST(AccessRows, EntriesThatANewListWillNotHaveAreCounted) {
    EXPECT_EQ(LossesRemark(0, 0), "");
    EXPECT_EQ(LossesRemark(2, 0), "2 entries of other types are not shown; applying drops them.");
    EXPECT_EQ(LossesRemark(1, 2),
              "1 entry of another type is not shown; applying drops it. "
              "2 entries are not valid; applying drops them.");
}

}  // namespace
}  // namespace permora
