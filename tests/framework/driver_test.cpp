// The driver of the user interface tests must notice windows that a test did not declare, and never hang.
#include "tests/support/ui_driver.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "framework/dialog.h"
#include "resources/resource_ids.h"

namespace permora::test {
namespace {

int Ask(const char* question) {
    return MessageBoxA(nullptr, question, "Permora Information", MB_YESNO | MB_ICONQUESTION);
}

TEST(UiDriver, FailsForWindowsThatWereNotDeclaredOrDoNotComeAndAnswersThemSafely) {
    UiDriver ui;
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(Ask("Really?"), IDNO), "undeclared message box");
    ui.ExpectDialog(IDD_RENAME, [](WindowDriver& dialog) {
        EXPECT_NONFATAL_FAILURE(EXPECT_EQ(CDialog(IDD_NEW_FOLDER).DoModal(), IDCANCEL), "undeclared dialog");
        dialog.Press("Esc");
    });
    EXPECT_EQ(CDialog(IDD_RENAME).DoModal(), IDCANCEL);
    ui.ExpectMessageBox("Sure?", "Permora Information", MB_YESNO | MB_ICONQUESTION, IDYES);
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(Ask("Really?"), IDNO), "declared next: message box");
    EXPECT_EQ(Ask("Sure?"), IDYES);
    const auto declareOnly = [] { UiDriver().ExpectDialog(IDD_RENAME); };
    EXPECT_NONFATAL_FAILURE(declareOnly(), "did not come: dialog");
}

}  // namespace
}  // namespace permora::test
