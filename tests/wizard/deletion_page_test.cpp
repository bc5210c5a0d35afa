// The wizard's deletion of real files, and its end at every moment.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <optional>
#include <thread>

#include "framework/native.h"
#include "framework/window.h"
#include "framework/window_access.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "tests/support/command.h"
#include "tests/support/patience.h"
#include "tests/support/places.h"
#include "tests/support/refused_leases.h"
#include "tests/support/refused_threads.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_backend.h"
#include "tests/support/ui_driver.h"
#include "wizard/wizard_sheet.h"

namespace {

// Services that wait on demand (CMakeLists.txt).
enum class Gate { kNone, kWrite, kFlush };
std::atomic<Gate> closedGate = Gate::kNone;
std::atomic<bool> isWaiting = false;
std::promise<void>* opening = nullptr;

void PassGate(Gate gate) {
    if (closedGate != gate) return;
    closedGate = Gate::kNone;
    std::future<void> opened = opening->get_future();
    isWaiting = true;
    opened.wait();
    isWaiting = false;
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

BOOL __real_WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD written, LPOVERLAPPED overlapped);
BOOL __wrap_WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD written, LPOVERLAPPED overlapped) {
    PassGate(Gate::kWrite);
    return __real_WriteFile(file, buffer, bytes, written, overlapped);
}

BOOL __real_FlushFileBuffers(HANDLE file);
BOOL __wrap_FlushFileBuffers(HANDLE file) {
    PassGate(Gate::kFlush);
    return __real_FlushFileBuffers(file);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

using test::SheetButton;
using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kTitle = "Security Wizard";

// Tells when the sheet goes.
class WatchedWizard : public CWizard {
  public:
    WatchedWizard(const Place& place, const WizardSettings& settings, ChangeSession& changes,
                  std::atomic<bool>& leaving)
        : CWizard(nullptr, RememberPlace(place), settings, changes), isLeaving(leaving) {}

  protected:
    void OnDestroy() override {
        isLeaving = true;
        CWizard::OnDestroy();
    }

  private:
    std::atomic<bool>& isLeaving;
};

class WizardDeletionPage : public ::testing::Test {
  protected:
    WizardDeletionPage() {
        std::filesystem::current_path(folder.Path());
        settings.askBeforeSecureDeletion = false;
    }
    ~WizardDeletionPage() override {
        std::filesystem::current_path("/");
        test::areThreadsRefused = false;
        closedGate = Gate::kNone;
    }

    void MakeFile(const std::string& name, std::size_t bytes) const {
        std::ofstream(folder.Path(name)) << std::string(bytes, 'x');
    }
    // The wizard on `names`, at the first page; the sheet's result.
    int Run(std::vector<std::string> names, const UiDriver::Script& script) {
        return Run(test::InCurrentFolder(std::move(names)), script);
    }
    int Run(const Place& place, const UiDriver::Script& script) {
        WatchedWizard wizard(place, settings, changes, isLeaving);
        sheet = &wizard;
        ui.ExpectSheet(kTitle, script);
        return wizard.DoModal();
    }
    static void GoToDeletion(WindowDriver& window) {
        window.Click(IDC_TASK_DELETION);
        window.Click(SheetButton::kNext);
    }
    static void WaitForEnd(WindowDriver& window) {
        EXPECT_TRUE(window.WaitUntil([&] { return window.IsEnabled(SheetButton::kFinish); }));
    }
    void ExpectQuestion(int answer) {
        ui.ExpectMessageBox("Are you sure want to delete selected items?", "Secure deletion",
                            MB_YESNO | MB_ICONQUESTION, answer);
    }

    const test::TemporaryFolder folder;
    WizardSettings settings;
    ChangeSession changes{History::UsualPath(), {}};
    UiDriver ui;
    CWizard* sheet = nullptr;  // the latest
    std::atomic<bool> isLeaving = false;
};

TEST_F(WizardDeletionPage, ListsWhatBecomesOfEachAndCountsWhatIsGone) {
    folder.MakeFolder("top");
    folder.MakeFolder("top/empty");
    MakeFile("top/empty/a && b", 700);
    folder.MakeFolder("kept");
    MakeFile("kept/readonly", 1);
    std::filesystem::permissions("kept/readonly", std::filesystem::perms::owner_read);
    MakeFile("last", 0);
    Run({"top", "kept", "missing", "last"}, [&](WindowDriver& window) {
        GoToDeletion(window);
        WaitForEnd(window);
        EXPECT_THAT(
            window.Rows(IDC_DELETION_STATUS),
            ElementsAre("a && b: deleted successefully", "empty: deleted successefully",
                        "top: deleted successefully", "readonly: deleting... ",
                        "cannot open file: " + GetSystemMessageText(ERROR_ACCESS_DENIED),
                        "kept: cannot remove directory: " + GetSystemMessageText(ERROR_DIR_NOT_EMPTY),
                        "missing: cannot get attributes: " + GetSystemMessageText(ERROR_FILE_NOT_FOUND),
                        "last: deleted successefully", "", "Total deleted: 4"));
        EXPECT_FALSE(window.IsEnabled(SheetButton::kBack));
        ui.ExpectDialog(IDD_CHANGE_RESULTS, [&](WindowDriver& results) {
            EXPECT_EQ(results.Text(IDC_RESULTS_SUMMARY), "3 objects failed, 2 are done.");
            std::filesystem::permissions("kept/readonly", std::filesystem::perms::owner_all);
            ui.ExpectDialog(IDD_SECURE_DELETION);
            results.Click(IDC_TRY_AGAIN);
            EXPECT_EQ(results.Text(IDC_RESULTS_SUMMARY), "1 object failed, 4 are done.");
            results.Press("Esc");
        });
        window.Click(IDC_SHOW_LEFT_OVER);
        window.Click(SheetButton::kFinish);
    });
    EXPECT_FALSE(std::filesystem::exists("kept"));
    EXPECT_FALSE(std::filesystem::exists("top"));
    EXPECT_FALSE(std::filesystem::exists("last"));
}

TEST_F(WizardDeletionPage, WhatGotTheNameSinceTheChoiceStays) {
    MakeFile("file", 1);
    MakeFile("important", 1);
    Run({"file"}, [&](WindowDriver& window) {
        std::filesystem::rename("important", "file");
        GoToDeletion(window);
        WaitForEnd(window);
        EXPECT_THAT(window.Rows(IDC_DELETION_STATUS),
                    ElementsAre("file: deleting... ",
                                "file: not deleted, its name leads to something else by now: " +
                                    GetSystemMessageText(ERROR_FILE_INVALID),
                                "", "Total deleted: 0"));
        window.Click(SheetButton::kFinish);
    });
    EXPECT_TRUE(std::filesystem::exists("file"));
}

TEST_F(WizardDeletionPage, WhatOthersMayHaveOpenStaysAndIsListed) {
    MakeFile("file", 1);
    test::areLeasesRefused = true;
    Run({"file"}, [&](WindowDriver& window) {
        GoToDeletion(window);
        WaitForEnd(window);
        EXPECT_THAT(window.Rows(IDC_DELETION_STATUS),
                    ElementsAre("file: deleting... ",
                                "not deleted: whether another program has it open cannot be known", "",
                                "Total deleted: 0"));
        window.Click(SheetButton::kFinish);
    });
    test::areLeasesRefused = false;
    EXPECT_EQ(test::ReadWholeFile("file"), "x");
}

TEST_F(WizardDeletionPage, DeletesNothingWithoutAYesAndNoDrives) {
    MakeFile("file", 1);
    settings.askBeforeSecureDeletion = true;
    Run({"file"}, [&](WindowDriver& window) {
        for (int i = 0; i < 2; ++i) {  // each activation asks anew
            ExpectQuestion(IDNO);
            GoToDeletion(window);
            EXPECT_FALSE(window.IsEnabled(SheetButton::kFinish));
            EXPECT_THAT(window.Rows(IDC_DELETION_STATUS), IsEmpty());
            window.Click(SheetButton::kBack);
        }
        ExpectQuestion(IDYES);
        test::areThreadsRefused = true;
        ui.ExpectError(GetSystemMessageText(ERROR_NOT_ENOUGH_MEMORY));
        GoToDeletion(window);
        test::areThreadsRefused = false;
        for (const SheetButton button : {SheetButton::kBack, SheetButton::kFinish})
            EXPECT_FALSE(window.IsEnabled(button)) << "only Cancel is left";
        window.Click(SheetButton::kCancel);
    });
    Run(Place{PlaceKind::kDrives, nullptr, {"file"}}, [&](WindowDriver& window) {
        EXPECT_TRUE(window.IsChecked(IDC_TASK_PERMISSIONS)) << "whatever was chosen before";
        ui.ExpectMessageBox(
            "Security Wizard can not delete disk drives.\nPlease, select folders and files to delete.",
            kTitle, MB_OK, IDOK);
        GoToDeletion(window);
        EXPECT_TRUE(window.IsEnabled(SheetButton::kBack));
        window.Press("Esc");
    });
    EXPECT_TRUE(std::filesystem::exists("file"));
}

// Where a run is when its user closes the window.
enum class Moment { kBefore, kRefused, kInAFile, kBetweenEntries, kAfter };

class WizardDeletionEnds : public WizardDeletionPage,
                           public ::testing::WithParamInterface<std::tuple<Moment, bool>> {};

TEST_P(WizardDeletionEnds, AtEveryMoment) {
    const Moment moment = std::get<0>(GetParam());
    const bool byCloseBox = std::get<1>(GetParam());
    folder.MakeFolder("top");
    MakeFile("top/file", 2048);
    MakeFile("later", 0);  // nothing to overwrite, so no stop point before it goes
    const auto leave = [byCloseBox](WindowDriver& window) {
        byCloseBox ? window.ClickCloseBox() : window.Click(SheetButton::kCancel);
    };
    const bool isStoppedAtWork = moment == Moment::kInAFile || moment == Moment::kBetweenEntries;
    std::promise<void> gate;
    opening = &gate;
    if (moment == Moment::kInAFile) closedGate = Gate::kWrite;
    if (moment == Moment::kBetweenEntries) closedGate = Gate::kFlush;
    settings.askBeforeSecureDeletion = moment == Moment::kRefused;
    Run({"top", "later"}, [&](WindowDriver& window) {
        if (moment == Moment::kBefore) return leave(window);
        if (moment == Moment::kRefused) ExpectQuestion(IDNO);
        GoToDeletion(window);
        if (moment == Moment::kAfter) WaitForEnd(window);
        if (!isStoppedAtWork) return leave(window);
        EXPECT_TRUE(window.WaitUntil([&] { return isWaiting && !window.Rows(IDC_DELETION_STATUS).empty(); }));
        leave(window);
        EXPECT_TRUE(window.IsOpen()) << "until the worker has stopped";
        EXPECT_FALSE(window.IsEnabled(SheetButton::kCancel));
        EXPECT_THAT(window.Rows(IDC_DELETION_STATUS), ElementsAre("file: deleting... "));
        gate.set_value();
    });
    const bool isFileGone = moment == Moment::kBetweenEntries || moment == Moment::kAfter;
    EXPECT_EQ(std::filesystem::exists("top/file"), !isFileGone);
    EXPECT_EQ(std::filesystem::exists("top"), moment != Moment::kAfter);
    EXPECT_EQ(std::filesystem::exists("later"), moment != Moment::kAfter);
    if (moment == Moment::kInAFile)
        EXPECT_EQ(test::ReadWholeFile("top/file"), std::string(512, '\0') + std::string(1536, 'x'));
    // Nothing of it reaches the next run.
    settings.askBeforeSecureDeletion = false;
    MakeFile("next", 1);
    const int result = Run({"next"}, [&](WindowDriver& window) {
        GoToDeletion(window);
        WaitForEnd(window);
        EXPECT_THAT(window.Rows(IDC_DELETION_STATUS),
                    ElementsAre("next: deleted successefully", "", "Total deleted: 1"));
        EXPECT_TRUE(window.IsEnabled(SheetButton::kCancel));
        window.Click(SheetButton::kFinish);
    });
    EXPECT_EQ(result, static_cast<int>(SheetButton::kFinish));
}

std::string NameOf(const ::testing::TestParamInfo<std::tuple<Moment, bool>>& tested) {
    constexpr const char* kNames[] = {"Before", "AfterANo", "InAFile", "BetweenEntries", "After"};
    const auto [moment, byCloseBox] = tested.param;
    return std::string(kNames[static_cast<std::size_t>(moment)]) + (byCloseBox ? "ByCloseBox" : "ByCancel");
}

INSTANTIATE_TEST_SUITE_P(Wizard, WizardDeletionEnds,
                         ::testing::Combine(::testing::Values(Moment::kBefore, Moment::kRefused,
                                                              Moment::kInAFile, Moment::kBetweenEntries,
                                                              Moment::kAfter),
                                            ::testing::Bool()),
                         NameOf);

// A question that the desktop closes is not answered with Yes, and the sheet below it closes.
TEST_F(WizardDeletionPage, TheSessionsEndAnswersTheQuestionWithNo) {
    MakeFile("file", 1);
    settings.askBeforeSecureDeletion = true;
    Run({"file"}, [&](WindowDriver& window) {
        ui.ExpectMessageBox(::testing::_, "Secure deletion", MB_YESNO | MB_ICONQUESTION,
                            [](WindowDriver&) { test::CloseAllWindows(); });
        GoToDeletion(window);
    });
    EXPECT_EQ(test::ReadWholeFile("file"), "x");
}

// The desktop ends the program, which does not ask the sheet.
TEST_F(WizardDeletionPage, TheProgramsEndWaitsForTheWorker) {
    MakeFile("file", 2048);
    std::promise<void> gate;
    opening = &gate;
    closedGate = Gate::kWrite;
    std::thread opener;
    Run({"file"}, [&](WindowDriver& window) {
        GoToDeletion(window);
        EXPECT_TRUE(window.WaitUntil([] { return isWaiting.load(); }));
        // While the sheet goes, this is served only by the wait for the worker, which has been told to stop.
        opener = std::thread([&] {
            EXPECT_TRUE(test::Await([&] { return isLeaving.load(); }));
            CallOnUiThread([&] { gate.set_value(); });
        });
        WindowAccess::NativeAs<NativeDialog>(*sheet)->EndModal();
    });
    opener.join();
    EXPECT_EQ(test::ReadWholeFile("file"), std::string(512, '\0') + std::string(1536, 'x'));
}

}  // namespace
}  // namespace permora
