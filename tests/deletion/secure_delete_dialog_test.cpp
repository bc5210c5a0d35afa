// On real files, with the window without a display.
#include "deletion/secure_delete_dialog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <optional>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/api/threads.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "security/object_security.h"
#include "tests/support/command.h"
#include "tests/support/places.h"
#include "tests/support/refused_leases.h"
#include "tests/support/refused_threads.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace {

// Services that fail or wait on demand (CMakeLists.txt).
std::optional<std::shared_future<void>> writingMayGoOn;
std::atomic<int> writeCount = 0;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

BOOL __real_WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD written, LPOVERLAPPED overlapped);
BOOL __wrap_WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD written, LPOVERLAPPED overlapped) {
    ++writeCount;
    if (writingMayGoOn) writingMayGoOn->wait();
    return __real_WriteFile(file, buffer, bytes, written, overlapped);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr UINT kErrorBox = MB_OK | MB_ICONERROR;

class SecureDeleteDialog : public ::testing::Test {
  protected:
    SecureDeleteDialog() { std::filesystem::current_path(folder.Path()); }
    ~SecureDeleteDialog() override {
        std::filesystem::current_path("/");
        test::areThreadsRefused = false;
        writingMayGoOn.reset();
        writeCount = 0;
    }

    // The folder "top" with the file "a && b" of four sectors.
    void MakeTree() const {
        folder.MakeFolder("top");
        std::ofstream(folder.Path("top/a && b")) << std::string(2048, 'x');
    }
    void MakeReadOnly(const std::string& name) const {
        folder.MakeFile(name);
        std::filesystem::permissions(name, std::filesystem::perms::owner_read);
    }
    // Runs `stop` while the second sector of a && b waits to be written.
    int StopInTheMiddle(const std::function<void(WindowDriver&)>& stop) {
        std::ofstream(folder.Path("empty")).flush();
        MakeTree();
        folder.MakeFile("later");
        writingMayGoOn = gate.get_future().share();
        ui.ExpectDialog(IDD_SECURE_DELETION, [&](WindowDriver& dialog) {
            dialog.WaitUntil([] { return writeCount == 1; });
            EXPECT_TRUE(dialog.WaitUntil([&] { return dialog.Text(IDC_DELETION_PROGRESS) == "a && b"; }));
            EXPECT_EQ(dialog.Title(), "Secure deletion");
            // One of four objects; next to them their few bytes are nothing.
            EXPECT_TRUE(
                dialog.WaitUntil([&] { return dialog.Text(IDC_DELETION_TIME_LEFT).starts_with("24 %"); }));
            stop(dialog);
            EXPECT_FALSE(dialog.IsEnabled(IDC_STOP_DELETION));
            EXPECT_TRUE(dialog.IsOpen());
            gate.set_value();
        });
        const int result = Run({"empty", "top", "later"});
        EXPECT_EQ(test::ReadWholeFile("top/a && b"), std::string(512, '\0') + std::string(1536, 'x'));
        EXPECT_TRUE(std::filesystem::exists("later"));
        return result;
    }
    static int Run(std::vector<std::string> names) {
        return DeleteForGood(nullptr, RememberPlace(test::InCurrentFolder(std::move(names))).items);
    }

    const test::TemporaryFolder folder;
    std::promise<void> gate;
    UiDriver ui;
};

TEST_F(SecureDeleteDialog, StopEndsItAtTheNextSector) {
    EXPECT_EQ(StopInTheMiddle([](WindowDriver& dialog) { dialog.Click(IDC_STOP_DELETION); }), IDCANCEL);
}

TEST_F(SecureDeleteDialog, EscapeStopsAndWaitsForTheWorker) {
    EXPECT_EQ(StopInTheMiddle([](WindowDriver& dialog) { dialog.Press("Esc"); }), IDCANCEL);
}

TEST_F(SecureDeleteDialog, AFailureIsOneBoxAndTheRestGoes) {
    folder.MakeFile("last");
    MakeTree();
    // Boxes come when the dialog is there.
    writingMayGoOn = gate.get_future().share();
    ui.ExpectDialog(IDD_SECURE_DELETION, [&](WindowDriver&) { gate.set_value(); });
    MakeReadOnly("readonly");
    ui.ExpectMessageBox("Opening file: " + GetSystemMessageText(ERROR_ACCESS_DENIED) + "\nreadonly",
                        kErrorCaption, kErrorBox, IDOK);
    EXPECT_EQ(Run({"top", "readonly", "last"}), IDOK);
    EXPECT_TRUE(std::filesystem::exists("readonly"));
    EXPECT_FALSE(std::filesystem::exists("last"));
}

TEST_F(SecureDeleteDialog, SeveralFailuresAreOneListAndNothingElseIsDeletedWithThem) {
    folder.MakeFolder("deep");
    folder.MakeFolder("deep/er");
    MakeReadOnly("deep/er/readonly");
    MakeReadOnly("swapped");
    folder.MakeFile("last");
    const std::string denied = "cannot open file: " + SystemMessageLine(ERROR_ACCESS_DENIED);
    const std::string isNotEmpty = "cannot remove directory: " + SystemMessageLine(ERROR_DIR_NOT_EMPTY);
    const std::string notEmpty = "er | Failed | " + isNotEmpty + " | deep\\er";
    const std::string notEmptyAbove = "deep | Failed | " + isNotEmpty + " | deep";
    ui.ExpectDialog(IDD_SECURE_DELETION);
    ui.ExpectDialog(IDD_CHANGE_RESULTS, [&](WindowDriver& results) {
        EXPECT_THAT(
            results.Rows(IDC_RESULTS),
            ElementsAre("readonly | Failed | " + denied + " | deep\\er\\readonly", notEmpty, notEmptyAbove,
                        "swapped | Failed | " + denied + " | swapped", "last | Done |  | last"));
        std::filesystem::permissions("deep/er/readonly", std::filesystem::perms::owner_all);
        folder.MakeFile("deep/er/saved meanwhile");
        std::filesystem::rename("swapped", "moved");
        folder.MakeFile("swapped");
        ui.ExpectDialog(IDD_SECURE_DELETION);
        results.Click(IDC_TRY_AGAIN);
        EXPECT_THAT(results.Rows(IDC_RESULTS),
                    ElementsAre(notEmpty, notEmptyAbove, HasSubstr("swapped | Failed | not deleted"),
                                "last | Done |  | last", "readonly | Done |  | deep\\er\\readonly"));
        std::filesystem::remove("deep/er/saved meanwhile");
        ui.ExpectDialog(IDD_SECURE_DELETION);
        results.Click(IDC_TRY_AGAIN);
        EXPECT_EQ(results.Text(IDC_RESULTS_SUMMARY), "1 object failed, 4 are done.");
        results.Press("Esc");
    });
    EXPECT_EQ(Run({"deep", "swapped", "last"}), IDOK);
    EXPECT_FALSE(std::filesystem::exists("deep"));
    EXPECT_TRUE(std::filesystem::exists("swapped") && std::filesystem::exists("moved"));
}

TEST_F(SecureDeleteDialog, AsksOnceAboutFilesThatOthersMayHaveOpen) {
    for (const int answer : {IDNO, IDYES}) {
        MakeTree();
        folder.MakeFile("second");
        test::areLeasesRefused = true;
        writingMayGoOn.reset();
        ui.ExpectDialog(IDD_SECURE_DELETION);
        ui.ExpectMessageBox(
            "Whether another program has this file open cannot be known:\n\ntop\\a && b\n\nDelete it, and "
            "the others of "
            "which that cannot be known? No leaves them where they are.",
            "Secure deletion", MB_YESNO | MB_ICONQUESTION, answer);
        if (answer == IDNO)
            ui.ExpectMessageBox("Error: deleting \"top\": " + GetSystemMessageText(ERROR_DIR_NOT_EMPTY),
                                kErrorCaption, kErrorBox, IDOK);
        EXPECT_EQ(Run({"top", "second"}), IDOK);
        test::areLeasesRefused = false;
        EXPECT_EQ(std::filesystem::exists("top/a && b"), answer == IDNO);
        EXPECT_EQ(std::filesystem::exists("second"), answer == IDNO);
    }
}

TEST_F(SecureDeleteDialog, TellsWhyItCannotStartAndTouchesNothing) {
    MakeTree();
    test::areThreadsRefused = true;
    ui.ExpectMessageBox(GetSystemMessageText(ERROR_NOT_ENOUGH_MEMORY), kErrorCaption, kErrorBox, IDOK);
    EXPECT_EQ(Run({"top"}), 3);

    EXPECT_TRUE(std::filesystem::exists("top/a && b"));
}

}  // namespace
}  // namespace permora
