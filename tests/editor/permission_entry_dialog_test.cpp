#include "editor/permission_entry_dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "framework/dialog_controls.h"
#include "resources/resource_ids.h"
#include "security/account_lookup.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;

AccountRecord Account(const char* name) {
    AccountRecord record;
    EXPECT_EQ(LookupAccountByName(name, record), 0U) << name;
    return record;
}

class PermissionEntryDialog : public ::testing::Test {
  protected:
    int Run(const UiDriver::Script& script) {
        ui.ExpectDialog(IDD_PERMISSION_ENTRY, script);
        return dialog.DoModal();
    }

    UiDriver ui;
    CDlgPermissions dialog;
};

TEST_F(PermissionEntryDialog, GivesBackWhatTheUserChose) {
    dialog.choice.account = Account("Everyone");
    dialog.choice.allowMask = FULL_CONTROL_RIGHTS;
    dialog.choice.applyIndex = 1;
    const int result = Run([](WindowDriver& window) {
        EXPECT_EQ(window.Text(IDC_ENTRY_ACCOUNT), "Everyone");
        EXPECT_FALSE(window.IsEnabled(IDC_ENTRY_ACCOUNT));
        EXPECT_TRUE(window.IsChecked(IDC_ALLOW_FULL_CONTROL));
        EXPECT_EQ(window.ComboItems(IDC_APPLY_ONTO).size(), kInheritanceScopes.size());
        window.Click(IDC_ALLOW_DELETE);
        EXPECT_FALSE(window.IsChecked(IDC_ALLOW_FULL_CONTROL));
        window.Click(IDC_DENY_WRITE_DATA);
        EXPECT_FALSE(window.IsChecked(IDC_ALLOW_WRITE_DATA));
        window.SelectItem(IDC_APPLY_ONTO, "Files only");
        window.Click(IDC_CHILDREN_ONLY);
        window.Press("Return");
    });
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(dialog.choice.allowMask, 0xE01FFU & ~DWORD{FILE_WRITE_DATA});
    EXPECT_EQ(dialog.choice.denyMask, DWORD{FILE_WRITE_DATA});
    EXPECT_EQ(dialog.choice.applyIndex, 6);
    EXPECT_TRUE(dialog.choice.childrenOnly);
}

TEST_F(PermissionEntryDialog, RightsAreChosenByTheirNamesAndInReadyMadeSets) {
    dialog.choice.account = Account("Everyone");
    const int result = Run([&](WindowDriver& window) {
        const auto clickName = [&](unsigned int box) {
            const Rect area = dialog.GetDlgItem(box)->GetWindowRect();
            const Rect frame = dialog.GetWindowRect();
            window.ClickAt({area.left - frame.left - DialogUnitsToPixels({0, 0, 60, 0}).right,
                            (area.top + area.bottom) / 2 - frame.top});
        };
        window.Click(IDC_ALLOW_ALL);
        EXPECT_TRUE(window.IsChecked(IDC_ALLOW_FULL_CONTROL));
        window.Click(IDC_DENY_MODIFY);
        window.Click(IDC_ALLOW_READ);
        clickName(IDC_ALLOW_TAKE_OWNERSHIP);
        clickName(IDC_ALLOW_READ_DATA);
        EXPECT_FALSE(window.IsChecked(IDC_ALLOW_READ_DATA));
        window.Press("Return");
    });
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(dialog.choice.allowMask,
              DWORD{FILE_READ_ATTRIBUTES | FILE_READ_EA | READ_CONTROL | WRITE_OWNER});
    EXPECT_EQ(dialog.choice.denyMask, DWORD{FILE_EXECUTE | FILE_WRITE_DATA | FILE_APPEND_DATA |
                                            FILE_WRITE_ATTRIBUTES | FILE_WRITE_EA | DELETE});
}

TEST_F(PermissionEntryDialog, ArrowKeysStayInTheirColumnAndPassOverWhatIsInherited) {
    dialog.choice.account = Account("Everyone");
    dialog.choice.allowMask = FILE_READ_DATA;
    dialog.inheritedEntry = true;
    Run([&](WindowDriver& window) {
        dialog.GetDlgItem(IDC_ALLOW_FULL_CONTROL)->SetFocus();
        const struct {
            const char* key;
            unsigned int box;
        } steps[] = {
            {"Up", IDC_ALLOW_FULL_CONTROL},      {"Down", IDC_ALLOW_TRAVERSE},
            {"Down", IDC_ALLOW_READ_ATTRIBUTES}, {"Right", IDC_DENY_READ_ATTRIBUTES},
            {"Right", IDC_DENY_READ_ATTRIBUTES}, {"Up", IDC_DENY_READ_DATA},
            {"Left", IDC_DENY_READ_DATA},        {"Up", IDC_DENY_TRAVERSE},
            {"Left", IDC_ALLOW_TRAVERSE},
        };
        for (const auto& step : steps) {
            window.Press(step.key);
            EXPECT_EQ(window.FocusedControl(), step.box) << step.key;
        }
        window.Press("Esc");
    });
}

TEST_F(PermissionEntryDialog, CancelLeavesTheCallersFields) {
    dialog.choice.account = Account("Everyone");
    dialog.choice.denyMask = DELETE;
    for (const char* way : {"Esc", "button"}) {
        const int result = Run([&](WindowDriver& window) {
            ui.ExpectDialog(IDD_ACCOUNT_PICKER, [](WindowDriver& picker) {
                EXPECT_EQ(picker.Text(IDC_ACCOUNT_NAME), "Everyone");
                picker.SetText(IDC_ACCOUNT_NAME, "Administrators");
                picker.Press("Return");
            });
            window.Click(IDC_CHANGE_ENTRY_ACCOUNT);
            EXPECT_EQ(window.Text(IDC_ENTRY_ACCOUNT), "BUILTIN\\Administrators");
            window.Click(IDC_CLEAR_ALL);
            way == std::string("Esc") ? window.Press("Esc") : window.Click(IDC_ENTRY_CANCEL);
        });
        EXPECT_EQ(result, IDCANCEL);
        EXPECT_EQ(dialog.choice.denyMask, DWORD{DELETE});
        EXPECT_EQ(AccountDisplayName(dialog.choice.account), "Everyone");
    }
}

}  // namespace
}  // namespace permora
