#include "editor/account_picker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "resources/resource_ids.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using testing::UiDriver;
using testing::WindowDriver;

constexpr UINT kErrorBox = MB_OK | MB_ICONERROR;

class AccountPicker : public ::testing::Test {
  protected:
    int Run(const UiDriver::Script& script) {
        ui.ExpectDialog(IDD_ACCOUNT_PICKER, script);
        return picker.DoModal();
    }

    UiDriver ui;
    CDlgUsersAndGroups picker;
};

TEST_F(AccountPicker, FindsEachAccountOnceAndInItsOrder) {
    Run([](WindowDriver& window) {
        EXPECT_EQ(window.FocusedControl(), IDC_ACCOUNT_NAME + 0U);
        EXPECT_THAT(window.Headers(IDC_FOUND_ACCOUNTS), ::testing::ElementsAre("Name", "Domain", "Type"));
        window.Click(IDC_FIND_ACCOUNTS);
        const std::vector<std::string> rows = window.Rows(IDC_FOUND_ACCOUNTS);
        const auto administrators = "Administrators | BUILTIN | Alias";
        EXPECT_EQ(std::count(rows.begin(), rows.end(), administrators), 1);
        ASSERT_FALSE(rows.empty());
        EXPECT_EQ(rows.front(), "Everyone |  | Well-known account");
        const auto root = std::find_if(rows.begin(), rows.end(),
                                       [](const std::string& row) { return row.starts_with("root | "); });
        ASSERT_NE(root, rows.end());
        EXPECT_GT(root, std::find(rows.begin(), rows.end(), administrators)) << "users come last";

        window.Click(IDC_FIND_ACCOUNTS);
        EXPECT_EQ(window.Rows(IDC_FOUND_ACCOUNTS), rows);

        window.SelectRow(IDC_FOUND_ACCOUNTS, window.FindRow(IDC_FOUND_ACCOUNTS, "Everyone"));
        EXPECT_EQ(window.Text(IDC_ACCOUNT_NAME), "Everyone");
        window.SelectRow(IDC_FOUND_ACCOUNTS, window.FindRow(IDC_FOUND_ACCOUNTS, "Administrators"));
        EXPECT_EQ(window.Text(IDC_ACCOUNT_NAME), "BUILTIN\\Administrators");
        window.Press("Esc");
    });
    EXPECT_EQ(picker.result.sid, nullptr) << "a search chooses nothing";
}

TEST_F(AccountPicker, ADoubleClickChooses) {
    EXPECT_EQ(Run([](WindowDriver& window) {
                  window.Click(IDC_FIND_ACCOUNTS);
                  window.DoubleClickRow(IDC_FOUND_ACCOUNTS, window.FindRow(IDC_FOUND_ACCOUNTS, "Users"));
              }),
              IDOK);
    EXPECT_EQ(picker.result.GetSidText(), "S-1-5-32-545");
}

TEST_F(AccountPicker, StaysOpenUntilTheNameIsAnAccount) {
    EXPECT_EQ(Run([&](WindowDriver& window) {
                  ui.ExpectMessageBox("Account name is not valid", "Permora Error", kErrorBox, IDOK);
                  window.Press("Return");
                  ui.ExpectMessageBox("Account name is not valid user or group name", "Permora Error",
                                      kErrorBox, IDOK);
                  window.SetText(IDC_ACCOUNT_NAME, "no such account");
                  window.Click(IDC_PICKER_OK);
                  window.SetText(IDC_ACCOUNT_NAME, "S-1-5-21-1-2-3-500");
                  window.Press("Return");
              }),
              IDOK);
    EXPECT_EQ(picker.result.GetSidText(), "S-1-5-21-1-2-3-500");
}

}  // namespace
}  // namespace permora
