#include "app/settings_dialog.h"

#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/app/system_fakes.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

constexpr unsigned int kViews[] = {IDC_SETTINGS_ICONS, IDC_SETTINGS_SMALL_ICONS, IDC_SETTINGS_LIST,
                                   IDC_SETTINGS_DETAILS};
constexpr unsigned int kBoxes[] = {IDC_SETTINGS_OWN_ICONS, IDC_SETTINGS_TOOL_TIPS,
                                   IDC_SETTINGS_ASK_BEFORE_DELETION, IDC_SETTINGS_INTERMEDIATE_INFO,
                                   IDC_SETTINGS_EXPLORER_MENU};

class SettingsDialog : public ::testing::Test {
  protected:
    // The block after the dialog, and the result of its run.
    int Run(SettingsBlock& block, const test::UiDriver::Script& script) {
        CSettingsDlg dialog(nullptr);
        dialog.block = block;
        ui.ExpectDialog(IDD_SETTINGS, script);
        const int result = dialog.DoModal();
        block = dialog.block;
        return result;
    }

    test::UiDriver ui;
    test::SystemFakes system;
};

TEST_F(SettingsDialog, ShowsTheBlockAndGivesBackWhatIsChosen) {
    system.majorVersion = 5;
    SettingsBlock block{2, 1, 0, 1, 0, 1, {}};
    EXPECT_EQ(Run(block,
                  [](test::WindowDriver& dialog) {
                      EXPECT_TRUE(dialog.IsChecked(IDC_SETTINGS_LIST));
                      EXPECT_EQ(dialog.FocusedControl(), unsigned{IDC_SETTINGS_LIST});
                      EXPECT_FALSE(dialog.IsChecked(IDC_SETTINGS_ICONS));
                      EXPECT_TRUE(dialog.IsChecked(IDC_SETTINGS_OWN_ICONS));
                      EXPECT_FALSE(dialog.IsChecked(IDC_SETTINGS_TOOL_TIPS));
                      EXPECT_TRUE(dialog.IsChecked(IDC_SETTINGS_ASK_BEFORE_DELETION));
                      EXPECT_FALSE(dialog.IsChecked(IDC_SETTINGS_INTERMEDIATE_INFO));
                      EXPECT_TRUE(dialog.IsChecked(IDC_SETTINGS_EXPLORER_MENU));
                      dialog.Click(IDC_SETTINGS_DETAILS);
                      for (const unsigned int box : kBoxes)
                          dialog.Click(box);
                      dialog.Click(IDOK);
                  }),
              IDOK);
    EXPECT_EQ(block, (SettingsBlock{3, 0, 1, 0, 1, 0, {}}));
}

TEST_F(SettingsDialog, OnLaterSystemsTheExplorerIsNotOffered) {
    SettingsBlock block;
    Run(block, [](test::WindowDriver& dialog) {
        EXPECT_FALSE(dialog.IsVisible(IDC_SETTINGS_EXPLORER_MENU));
        dialog.Click(IDOK);
    });
    EXPECT_EQ(block.explorerMenu, 0);
}

TEST_F(SettingsDialog, AViewThatThereIsNotStaysUnlessOneIsChosen) {
    SettingsBlock block;
    block.viewMode = 9;
    Run(block, [](test::WindowDriver& dialog) {
        for (const unsigned int view : kViews)
            EXPECT_FALSE(dialog.IsChecked(view)) << view;
        dialog.Press("Enter");
    });
    EXPECT_EQ(block.viewMode, 9U);
}

}  // namespace
}  // namespace permora
