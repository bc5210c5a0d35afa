#include "results/report_dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "tests/support/ui_driver.h"

namespace permora::test {
namespace {

using testing::HasSubstr;

class ReportDialogTest : public testing::Test {
  protected:
    int Show(UiDriver::Script script) {
        ui.ExpectDialog(IDD_REPORT, std::move(script));
        return dialog.DoModal();
    }

    UiDriver ui;
    CReportDlg dialog{nullptr};
};

TEST_F(ReportDialogTest, NothingChosenIsAWholeReportOfTheSelection) {
    dialog.folder = R"(C:\R&D)";
    dialog.selection = "2 items";
    EXPECT_EQ(Show([](WindowDriver& window) {
                  EXPECT_EQ(window.Text(IDC_REPORT_ON_SELECTION), "The &selection: 2 items");
                  EXPECT_EQ(window.Text(IDC_REPORT_ON_FOLDER), R"(The &folder shown: C:\R&&D)");
                  EXPECT_EQ(window.Rows(IDC_REPORT_REMARKS).size(), kSurveyRemarkCount);
                  window.Press("Return");
              }),
              IDOK);
    EXPECT_EQ(dialog.place, SearchedPlace::kSelection);
    EXPECT_FALSE(dialog.request.depth || dialog.request.account.sid);
    EXPECT_TRUE(dialog.request.only.IsEmpty());
    EXPECT_EQ(dialog.request.members, ReportMembers::kLeftOut);
}

TEST_F(ReportDialogTest, WhatIsTypedIsCheckedAndTaken) {
    dialog.folder = R"(C:\data)";
    SearchedPlace named = SearchedPlace::kSelection;
    dialog.serverOf = [&](SearchedPlace place) {
        named = place;
        return std::string();
    };
    EXPECT_EQ(Show([this](WindowDriver& window) {
                  EXPECT_FALSE(window.IsEnabled(IDC_REPORT_ON_SELECTION));
                  window.SetText(IDC_REPORT_LEVELS, "two");
                  ui.ExpectError("The levels below are not a number: two");
                  window.Click(IDOK);
                  window.SetText(IDC_REPORT_LEVELS, " 2 ");
                  window.SetText(IDC_REPORT_ACCOUNT, "S-1-2-x");
                  ui.ExpectError(HasSubstr("S-1-2-x: "));
                  window.Click(IDOK);
                  window.SetText(IDC_REPORT_ACCOUNT, "Users");
                  window.SelectRow(IDC_REPORT_REMARKS, static_cast<int>(Remark::kStale));
                  window.Press("Space");
                  window.Press("Alt+W");
                  window.Press("Return");
              }),
              IDOK);
    EXPECT_EQ(dialog.place, SearchedPlace::kFolder);
    EXPECT_EQ(named, SearchedPlace::kFolder) << "whose server knows the names";
    EXPECT_EQ(dialog.request.depth, 2U);
    EXPECT_EQ(dialog.request.account.GetSidText(), "S-1-5-32-545");
    EXPECT_EQ(dialog.request.only, RemarkSet{Remark::kStale});
    EXPECT_EQ(dialog.request.members, ReportMembers::kFound);
}

}  // namespace
}  // namespace permora::test
