#include "editor/account_picker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "framework/list_ctrl.h"
#include "resources/resource_ids.h"
#include "tests/support/command.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;

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
    EXPECT_FALSE(picker.result.sid) << "a search chooses nothing";
}

// Appends `count` lines to a table of this test's own machine, in an order that is neither that of the names
// nor that of the numbers. Their names in that order.
std::vector<std::string> AddToTable(const std::string& table, const std::string& prefix, int count,
                                    const std::string& restOfLine, const std::string& file) {
    std::vector<std::string> names;
    std::ofstream text(file);
    text << test::ReadWholeFile(table);
    for (int i = 0; i < count; ++i) {
        const int number = i * 7 % count;
        names.push_back(prefix + std::to_string(number));
        text << names.back() << ":x:" << 30000 + number << restOfLine << '\n';
    }
    text.close();
    const test::CommandResult mounted = test::RunCommand({"mount", "--bind", file, table});
    EXPECT_EQ(mounted.exitCode, 0) << mounted.output;
    return names;
}

TEST_F(AccountPicker, ListsThousandsOfAccountsInTheirOrder) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(test::EnterOwnMounts(), "");
    const test::TemporaryFolder folder;
    const auto groups = AddToTable("/etc/group", "team-", 1000, ":", folder.Path("group"));
    const auto users =
        AddToTable("/etc/passwd", "member-", 4000, ":100::/:/bin/false", folder.Path("passwd"));
    Run([&](WindowDriver& window) {
        window.Click(IDC_FIND_ACCOUNTS);
        std::vector<std::string> names = window.Rows(IDC_FOUND_ACCOUNTS);
        for (std::string& row : names)
            row.erase(row.find(" | "));
        const auto found = [&](const std::string& name) {
            return std::find(names.begin(), names.end(), name);
        };
        const auto firstGroup = found(groups.front());
        EXPECT_EQ(names.front(), "Everyone");
        EXPECT_LT(found("Administrators"), firstGroup);
        ASSERT_GE(names.end() - firstGroup, 5000);
        EXPECT_EQ(std::vector(firstGroup, firstGroup + 1000), groups);
        EXPECT_EQ(std::vector(names.end() - 4000, names.end()), users);
        window.Press("Esc");
    });
}

TEST_F(AccountPicker, ARowWithoutANameIsNoAccount) {
    Run([this](WindowDriver& window) {
        auto& list = dynamic_cast<CListCtrl&>(*picker.GetDlgItem(IDC_FOUND_ACCOUNTS));
        list.InsertItem(0, "");
        list.SetItemText(0, 1, "BUILTIN");
        window.SetText(IDC_ACCOUNT_NAME, "root");
        window.SelectRow(IDC_FOUND_ACCOUNTS, 0);
        EXPECT_EQ(window.Text(IDC_ACCOUNT_NAME), "root");
        window.Press("Esc");
    });
}

TEST_F(AccountPicker, StaysOpenUntilTheNameIsAnAccount) {
    EXPECT_EQ(Run([&](WindowDriver& window) {
                  ui.ExpectError("Account name is not valid");
                  window.Press("Return");
                  ui.ExpectError("Account name is not valid user or group name");
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
