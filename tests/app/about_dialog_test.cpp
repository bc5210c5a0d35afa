#include "app/about_dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/help_commands.h"
#include "framework/native.h"
#include "resources/resource_ids.h"
#include "tests/app/shell_fakes.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

TEST(AboutDialog, AClickOnTheLinkOpensTheWebSiteAndOneBesideItDoesNot) {
    test::UiDriver ui;
    test::ShellFakes shell;
    CAboutDlg about(nullptr);
    ui.ExpectDialog(IDD_ABOUT, [&](test::WindowDriver& dialog) {
        const Size units = DialogBaseUnits();
        const auto at = [&](int x, int y) { return Point{x * units.cx / 6, y * units.cy / 13}; };
        dialog.ClickAt(at(100, 226));
        dialog.ClickAt(at(120, 250));
        EXPECT_TRUE(shell.requests.empty());
        dialog.ClickAt(at(120, 226));
        EXPECT_EQ(shell.requests, std::vector{std::string("open ") + kWebSite});
        dialog.Click(IDOK);
    });
    EXPECT_EQ(about.DoModal(), IDOK);
}

}  // namespace
}  // namespace permora
