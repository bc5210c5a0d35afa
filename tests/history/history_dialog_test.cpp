// The windows of the history on real files, without a display.
#include "history/history_dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
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

namespace {

// Writes that wait on demand (CMakeLists.txt).
std::optional<std::shared_future<void>> writesMayGoOn;
std::atomic<bool> isWriting = false;

void WaitForWrites() {
    if (!writesMayGoOn) return;
    isWriting = true;
    writesMayGoOn->wait();
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

int __real_setxattr(const char* path, const char* name, const void* value, size_t size, int flags);
int __wrap_setxattr(const char* path, const char* name, const void* value, size_t size, int flags) {
    WaitForWrites();
    return __real_setxattr(path, name, value, size, flags);
}

int __real_fsetxattr(int file, const char* name, const void* value, size_t size, int flags);
int __wrap_fsetxattr(int file, const char* name, const void* value, size_t size, int flags) {
    WaitForWrites();
    return __real_fsetxattr(file, name, value, size, flags);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

using test::DaclText;
using test::UiDriver;
using test::WindowDriver;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
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
    void TearDown() override {
        test::areThreadsRefused = false;
        writesMayGoOn.reset();
    }

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
        EXPECT_THAT(dialog.Headers(IDC_CHANGES),
                    ElementsAre("Number", "When", "Who", "What", "Objects", "State"));
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
        EXPECT_EQ(dialog.Text(IDC_OBJECTS_TITLE), "&Objects of the selected change (1 to 1,000 of 1,001):");
        EXPECT_FALSE(dialog.IsEnabled(IDC_OBJECTS_BEFORE));
        dialog.Press("Alt+N");
        EXPECT_THAT(dialog.Rows(IDC_CHANGED_OBJECTS), ElementsAre("C:\\made up\\file 1000 | File"));
        EXPECT_FALSE(dialog.IsEnabled(IDC_OBJECTS_AFTER));
        EXPECT_EQ(dialog.Rows(IDC_BEFORE_AND_AFTER).size(), 3U);
        dialog.Click(IDC_OBJECTS_BEFORE);
        EXPECT_EQ(dialog.Rows(IDC_CHANGED_OBJECTS).size(), 1000U);
        dialog.SelectRow(IDC_CHANGES, 1);
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

TEST_F(HistoryDialog, StopsAnUndoAndGoesOnWithItLater) {
    const std::string many = folder.MakeFolder("many");
    std::vector<std::string> names;
    files.clear();
    for (int i = 0; i < 1000; ++i) {
        names.push_back(std::to_string(i));
        files.push_back(folder.MakeFile("many/" + names.back()));
        ASSERT_EQ(test::SetDescriptorText(files.back(), kBefore), ERROR_SUCCESS);
    }
    ASSERT_NO_FATAL_FAILURE(test::ChangeListsIn(Path(), many, names, kAfter));
    std::promise<void> gate;
    writesMayGoOn = gate.get_future().share();
    Show([&](WindowDriver& dialog) {
        ui.ExpectMessageBox(StartsWith("Take back"), "Undo", kQuestion, IDYES);
        ui.ExpectDialog(IDD_UNDO, [&](WindowDriver& progress) {
            EXPECT_TRUE(progress.WaitUntil([] { return isWriting.load(); }));
            EXPECT_TRUE(progress.WaitUntil([&] { return !progress.Text(IDC_UNDO_PROGRESS).empty(); }));
            progress.Press("Esc");
            EXPECT_FALSE(progress.IsEnabled(IDC_STOP_UNDO));
            EXPECT_TRUE(progress.IsOpen());
            gate.set_value();
        });
        ui.ExpectError(StartsWith("The undo was stopped. "));
        dialog.Click(IDC_UNDO_CHANGE);
        EXPECT_THAT(dialog.Rows(IDC_CHANGES), Contains(EndsWith("| partly undone")));
        EXPECT_EQ(DaclText(files.front()), kAfter) << "the last one comes first";
        ui.ExpectMessageBox(StartsWith("Take back"), "Undo", kQuestion, IDYES);
        ui.ExpectDialog(IDD_UNDO);
        ui.ExpectInformation(StartsWith("1,000 objects have what was there before the change; "));
        dialog.Click(IDC_UNDO_CHANGE);
        dialog.Click(IDCANCEL);
    });
    ExpectLists(kBefore);
}

}  // namespace
}  // namespace permora
