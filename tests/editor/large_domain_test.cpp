// The account picker on the member server of a real domain with five thousand users.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>

#include "editor/account_picker.h"
#include "resources/resource_ids.h"
#include "tests/support/domain_fixture.h"
#include "tests/support/effort.h"
#include "tests/support/thread_time.h"
#include "tests/support/ui_driver.h"

namespace permora::test {
namespace {

class PickerInLargeDomain : public OnDomainMember {
  protected:
    UiDriver ui;
    CDlgUsersAndGroups picker;
};

TEST_F(PickerInLargeDomain, ListsEverybodyAndNeverBlocks) {
    ui.ExpectDialog(IDD_ACCOUNT_PICKER, [&](WindowDriver& window) {
        window.Click(IDC_FIND_ACCOUNTS);
        std::chrono::nanoseconds longest{};
        std::chrono::nanoseconds last = WorkOfThisThread();
        EXPECT_TRUE(window.WaitUntil([&] {
            longest = std::max(longest, WorkOfThisThread() - last);
            last = WorkOfThisThread();
            return window.Text(IDC_SEARCH_STATE).ends_with(" accounts");
        }));
        EXPECT_LT(longest, kSlowness * std::chrono::milliseconds(100));
        EXPECT_THAT(window.Rows(IDC_FOUND_ACCOUNTS),
                    testing::IsSupersetOf({"Everyone |  | Well-known account", "anna | EXAMPLE | User",
                                           "Payroll | EXAMPLE | Alias", "WS1$ | EXAMPLE | Computer",
                                           "person00001 | EXAMPLE | User", "person05000 | EXAMPLE | User"}));

        window.SetText(IDC_ACCOUNT_NAME, "person0123");
        EXPECT_TRUE(window.WaitUntil([&] { return window.Text(IDC_SEARCH_STATE) == "10 accounts"; }));
        window.SelectRow(IDC_FOUND_ACCOUNTS, window.FindRow(IDC_FOUND_ACCOUNTS, "person01234"));
        EXPECT_EQ(window.Text(IDC_ACCOUNT_NAME), "EXAMPLE\\person01234");
        window.Press("Return");
    });
    EXPECT_EQ(picker.DoModal(), IDOK);
    EXPECT_THAT(picker.result.GetSidText(), testing::StartsWith(DomainSid(1).substr(0, 40)));
}

TEST_F(PickerInLargeDomain, SaysWhoIsMissingWhenTheDomainStopsAnswering) {
    Control({"freeze", "winbindd"});
    ui.ExpectDialog(IDD_ACCOUNT_PICKER, [&](WindowDriver& window) {
        window.Click(IDC_FIND_ACCOUNTS);
        EXPECT_TRUE(window.WaitUntil(
            [&] { return window.Text(IDC_SEARCH_STATE).find(" are missing: ") != std::string::npos; }));
        window.Press("Esc");
    });
    EXPECT_EQ(picker.DoModal(), IDCANCEL);
    Control({"thaw", "winbindd"});
}

}  // namespace
}  // namespace permora::test
