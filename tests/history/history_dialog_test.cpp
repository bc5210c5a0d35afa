// The windows of the history on real files, without a display.
#include "history/history_dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <optional>

#include "history/undo_dialog.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "tests/history/recorded_changes.h"
#include "tests/support/refused_threads.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::DaclText;
using test::UiDriver;
using test::WindowDriver;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kBefore = "D:PAI(A;;FR;;;WD)";
constexpr const char* kAfter = "D:PAI(A;;FA;;;BA)";
constexpr UINT kQuestion = MB_YESNO | MB_ICONQUESTION;

class HistoryDialog : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* name : {"a", "b", "c"}) {
            files.push_back(folder.MakeFile(name));
            const DWORD error = test::SetDescriptorText(files.back(), kBefore);
            if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
            ASSERT_EQ(error, ERROR_SUCCESS);
        }
    }
    void TearDown() override { test::areThreadsRefused = false; }

    std::string Path() const { return folder.Path("state/history.db"); }
    void ChangeFiles() { test::ChangeLists(Path(), ChangeKind::kPermissions, files, kAfter); }
    // Shows the dialog, and returns how often it reported that something was taken back.
    int Show(UiDriver::Script script) {
        ui.ExpectDialog(IDD_HISTORY, std::move(script));
        int times = 0;
        CHistoryDlg dialog(Path(), nullptr);
        dialog.undone = [&times] { ++times; };
        EXPECT_EQ(dialog.DoModal(), IDCANCEL);
        return times;
    }
    void ExpectLists(const char* sddl) {
        for (const std::string& file : files)
            EXPECT_EQ(DaclText(file), sddl) << file;
    }

    const test::TemporaryFolder folder;
    std::vector<std::string> files;
    UiDriver ui;
};

TEST_F(HistoryDialog, ShowsAChangeItsObjectsAndWhatTheyHad) {
    test::ChangeMadeUpFiles(Path(), 1001);
    ChangeFiles();
    Show([&](WindowDriver& dialog) {
        EXPECT_EQ(dialog.Title(), "History");
        EXPECT_THAT(dialog.Headers(IDC_CHANGES), ElementsAre("When", "Who", "What", "Objects", "State"));
        EXPECT_EQ(dialog.Rows(IDC_CHANGES).size(), 2U);
        EXPECT_THAT(dialog.SelectedRows(IDC_CHANGES), ElementsAre(0));
        EXPECT_TRUE(dialog.HasFocus(IDC_CHANGES));
        EXPECT_THAT(dialog.Rows(IDC_CHANGED_OBJECTS),
                    ElementsAre(HasSubstr("\\a | File"), HasSubstr("\\b | File"), HasSubstr("\\c | File")));
        EXPECT_THAT(dialog.Rows(IDC_BEFORE_AND_AFTER),
                    ElementsAre(StartsWith(" | Owner |"), StartsWith(" | Inherits |"),
                                StartsWith("Removed | Allow |"), StartsWith("Added | Allow |")));
        dialog.SelectRow(IDC_CHANGES, 1);
        EXPECT_EQ(dialog.Rows(IDC_CHANGED_OBJECTS).size(), 1000U);
        EXPECT_EQ(dialog.Text(IDC_OBJECTS_TITLE),
                  "&Objects of the selected change (the first 1,000 of 1,001):");
        // By the keyboard.
        dialog.Press("Home");
        EXPECT_EQ(dialog.Rows(IDC_CHANGED_OBJECTS).size(), 3U);
        dialog.Press("Alt+O");
        dialog.Press("Down");
        EXPECT_THAT(dialog.SelectedRows(IDC_CHANGED_OBJECTS), ElementsAre(1));
        EXPECT_THAT(dialog.TabThrough(), ElementsAre(IDC_CHANGED_OBJECTS, IDC_BEFORE_AND_AFTER,
                                                     IDC_UNDO_CHANGE, IDCANCEL, IDC_CHANGES));
        dialog.Press("Esc");
    });
}

TEST_F(HistoryDialog, TakesTheSelectedChangeBackWhenTheUserWantsIt) {
    ChangeFiles();
    EXPECT_EQ(Show([&](WindowDriver& dialog) {
                  ui.ExpectMessageBox(AllOf(StartsWith("Take back this change?"), HasSubstr("3 objects")),
                                      "Undo", kQuestion, IDNO);
                  dialog.Click(IDC_UNDO_CHANGE);
                  ExpectLists(kAfter);
                  dialog.Click(IDCANCEL);
              }),
              0);
    EXPECT_EQ(Show([&](WindowDriver& dialog) {
                  ui.ExpectMessageBox(StartsWith("Take back this change?"), "Undo", kQuestion, IDYES);
                  ui.ExpectDialog(IDD_UNDO);
                  ui.ExpectInformation("3 objects have what was there before the change.");
                  dialog.Press("Alt+U");
                  // The undo is a change of its own, above the selected one, which cannot be taken back
                  // again.
                  EXPECT_EQ(dialog.Rows(IDC_CHANGES).size(), 2U);
                  EXPECT_THAT(dialog.SelectedRows(IDC_CHANGES), ElementsAre(1));
                  EXPECT_FALSE(dialog.IsEnabled(IDC_UNDO_CHANGE));
                  dialog.SelectRow(IDC_CHANGES, 0);
                  EXPECT_TRUE(dialog.IsEnabled(IDC_UNDO_CHANGE));
                  dialog.Click(IDCANCEL);
              }),
              1);
    ExpectLists(kBefore);
}

TEST_F(HistoryDialog, NamesWhatItLeavesAlone) {
    ChangeFiles();
    ASSERT_EQ(test::SetDescriptorText(files[1], "D:PAI(A;;FX;;;WD)"), ERROR_SUCCESS);
    Show([&](WindowDriver& dialog) {
        ui.ExpectMessageBox(StartsWith("Take back this change?"), "Undo", kQuestion, IDYES);
        ui.ExpectDialog(IDD_UNDO);
        ui.ExpectError(AllOf(StartsWith("2 objects have what was there before the change.\n\nLeft alone:\n"),
                             HasSubstr("\\b: ")));
        dialog.Click(IDC_UNDO_CHANGE);
        dialog.Click(IDCANCEL);
    });
    EXPECT_EQ(DaclText(files[0]), kBefore);
    EXPECT_EQ(DaclText(files[1]), "D:PAI(A;;FX;;;WD)");
    EXPECT_EQ(DaclText(files[2]), kBefore);
}

TEST_F(HistoryDialog, SaysWhatIsWrongWithTheHistory) {
    std::filesystem::create_directory(folder.Path("state"));
    std::ofstream(Path()) << "no history at all, and that for longer than a header";
    Show([&](WindowDriver& dialog) {
        EXPECT_THAT(dialog.Text(IDC_HISTORY_REMARK), HasSubstr("damaged"));
        EXPECT_FALSE(dialog.IsEnabled(IDC_UNDO_CHANGE));
        EXPECT_TRUE(dialog.Rows(IDC_CHANGES).empty());
        dialog.Press("Esc");
    });
}

TEST_F(HistoryDialog, AnUndoThatCannotStartChangesNothing) {
    ChangeFiles();
    EXPECT_EQ(Show([&](WindowDriver& dialog) {
                  ui.ExpectMessageBox(StartsWith("Take back"), "Undo", kQuestion, IDYES);
                  ui.ExpectError(HasSubstr("memory"));
                  test::areThreadsRefused = true;
                  dialog.Click(IDC_UNDO_CHANGE);
                  test::areThreadsRefused = false;
                  dialog.Click(IDCANCEL);
              }),
              0);
    ExpectLists(kAfter);
}

}  // namespace
}  // namespace permora
