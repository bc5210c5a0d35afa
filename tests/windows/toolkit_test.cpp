// Loops, modality and sizes of the half for Windows, beyond what all halves are asked.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "framework/dialog.h"
#include "framework/file_chooser.h"
#include "framework/folder_chooser.h"
#include "framework/native.h"
#include "framework/splitter.h"
#include "framework/styles.h"
#include "framework/win32/application.h"
#include "framework/win32/window.h"
#include "tests/framework/test_resource_ids.h"
#include "tests/support/ui_driver.h"
#include "tests/windows/test_folder.h"

namespace permora {
namespace {

using test::TestFolder;
using test::UiDriver;
using test::WindowDriver;

bool IsToEnd() {
    MSG message;
    return PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_NOREMOVE) != 0;
}

TEST(SystemToolkit, AnEndThatIsAskedForDuringLongWorkComesAfterIt) {
    int served = 0;
    ServeBusyWindowsUntil([&] {
        if (served == 0) StopToolkit();
        return ++served == 3;
    });
    ASSERT_TRUE(IsToEnd());
    EXPECT_EQ(Win32Application::Current()->Run(), 0);
    EXPECT_FALSE(IsToEnd()) << "what comes after the program's loop has none";
}

TEST(SystemToolkit, ThePointerShowsWorkButInADialogThatOpensMeanwhile) {
    UiDriver ui;
    CDialog dialog(IDD_PICKER);
    CDialog meanwhile(IDD_PROGRESS, &dialog);
    ui.ExpectDialog(IDD_PICKER, [&](WindowDriver&) {
        ui.ExpectDialog(IDD_PROGRESS, [&](WindowDriver&) {
            EXPECT_FALSE(win32::ShowBusyCursor());
            meanwhile.EndDialog(IDOK);
        });
        EXPECT_FALSE(win32::ShowBusyCursor());
        ServeBusyWindowsUntil([&] {
            EXPECT_TRUE(win32::ShowBusyCursor());
            meanwhile.DoModal();
            return true;
        });
        dialog.EndDialog(IDOK);
    });
    EXPECT_EQ(dialog.DoModal(), IDOK);
}

TEST(SystemToolkit, TheLeastSizeOfAWindowFitsTheScreen) {
    CDialog dialog(IDD_PICKER);
    ASSERT_TRUE(dialog.Create());
    constexpr int kHuge = 9000;
    auto& native = dynamic_cast<NativeDialog&>(*win32::MessageTarget::Of(dialog.GetSafeHwnd()));
    native.SetClientSize({kHuge, kHuge}, Sizing::kMayGrow);
    MINMAXINFO limits{};
    limits.ptMinTrackSize = {kHuge, kHuge};
    SendMessageW(dialog.GetSafeHwnd(), WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
    EXPECT_LE(limits.ptMinTrackSize.x, GetSystemMetrics(SM_CXSCREEN));
    EXPECT_LE(limits.ptMinTrackSize.y, GetSystemMetrics(SM_CYSCREEN));
}

TEST(SystemToolkit, ADialogEndsWhenItGoesWithItsOwner) {
    UiDriver ui;
    CDialog owner(IDD_PICKER);
    CDialog owned(IDD_PROGRESS, &owner);
    ui.ExpectDialog(IDD_PICKER, [&](WindowDriver&) {
        ui.ExpectDialog(IDD_PROGRESS, [&](WindowDriver&) { DestroyWindow(owner.GetSafeHwnd()); });
        owned.DoModal();
    });
    owner.DoModal();
    EXPECT_FALSE(IsModalWindowOpen());
}

TEST(SystemToolkit, AWindowBesideOthersWaitsForAQuestionOfItsOwnAlone) {
    UiDriver ui;
    CDialog beside(IDD_PROGRESS);
    ASSERT_TRUE(beside.Create());
    ui.ExpectDialog(IDD_PROGRESS);
    beside.ShowBeside();
    const auto takesInputDuring = [&](CWnd* owner) {
        CDialog modal(IDD_PICKER, owner);
        bool takesInput = false;
        ui.ExpectDialog(IDD_PICKER, [&](WindowDriver&) {
            takesInput = IsWindowEnabled(beside.GetSafeHwnd()) != 0;
            modal.EndDialog(IDOK);
        });
        modal.DoModal();
        return takesInput;
    };
    EXPECT_TRUE(takesInputDuring(nullptr));
    EXPECT_FALSE(takesInputDuring(&beside));
    EXPECT_TRUE(beside.IsWindowEnabled());
}

// The field of the name in the system's dialog for files; null in its questions.
HWND NameFieldIn(HWND chooser) {
    HWND field = nullptr;
    const auto find = [](HWND window, LPARAM found) -> BOOL {
        HWND parent = GetParent(window);
        const bool isField =
            win32::ClassOf(window) == L"Edit" && IsWindowVisible(window) != 0 &&
            (win32::ClassOf(parent) == L"ComboBox" || parent == GetAncestor(window, GA_ROOT));
        if (isField) *reinterpret_cast<HWND*>(found) = window;
        return isField ? FALSE : TRUE;
    };
    EnumChildWindows(chooser, find, reinterpret_cast<LPARAM>(&field));
    return field;
}

// What the user does in one of the system's choosers: enters the names one after the other, and cancels it
// after the last. A question that comes in between gets the answer.
struct ChooserSteps {
    CWnd& owner;
    std::vector<std::string> names;
    int answer = IDNO;
    int questions = 0;
    bool isOver = false;
};

void TakeSteps(const std::shared_ptr<ChooserSteps>& steps) {
    constexpr int kPause = 100;
    if (steps->isOver) return;
    PostLater(kPause, [steps] { TakeSteps(steps); });
    HWND own = steps->owner.GetSafeHwnd();
    HWND chooser = GetLastActivePopup(own);
    if (chooser == own || IsWindowVisible(chooser) == 0) return;
    EXPECT_TRUE(IsModalWindowOpen());
    EXPECT_FALSE(steps->owner.IsWindowEnabled());
    EXPECT_EQ(IsWindowEnabled(own), 0);
    HWND field = NameFieldIn(chooser);
    int button = IDOK;
    if (field == nullptr) {
        ++steps->questions;
        button = steps->answer;
    } else if (steps->names.empty()) {
        button = IDCANCEL;
    } else {
        SetWindowTextW(field, win32::Wide(steps->names.front()).c_str());
        steps->names.erase(steps->names.begin());
    }
    PostMessageW(chooser, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(chooser, button)));
}

// The same around `choose`, which shows the chooser; the number of questions.
int Choose(CWnd& owner, std::vector<std::string> names, int answer, const std::function<void()>& choose) {
    const auto steps = std::make_shared<ChooserSteps>(ChooserSteps{owner, std::move(names), answer});
    TakeSteps(steps);
    choose();
    steps->isOver = true;
    EXPECT_FALSE(IsModalWindowOpen());
    EXPECT_TRUE(owner.IsWindowEnabled());
    EXPECT_NE(IsWindowEnabled(owner.GetSafeHwnd()), 0);
    return steps->questions;
}

class SystemChooser : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(owner.Create());
        owner.ShowWindow(SW_SHOW);
    }
    bool Save(const std::string& name, int answer, ChosenFile& file) {
        constexpr FileKind kKinds[] = {{"Web page", "html"}, {"Table", "csv"}};
        bool isChosen = false;
        questions = Choose(owner, {folder.Path(name)}, answer,
                           [&] { isChosen = ChooseFileToSave(owner, "Save", kKinds, file); });
        return isChosen;
    }

    TestFolder folder;
    CDialog owner{IDD_PICKER};
    int questions = 0;
};

TEST_F(SystemChooser, ANameGetsTheExtensionOfItsKind) {
    ChosenFile file;
    ASSERT_TRUE(Save("\xc3\xa4", IDNO, file));
    EXPECT_EQ(file.path, folder.Path("\xc3\xa4.html"));
    EXPECT_EQ(file.kind, 0U);
    EXPECT_EQ(questions, 0);
}

TEST_F(SystemChooser, AnExtensionChoosesItsKind) {
    ChosenFile file;
    ASSERT_TRUE(Save("b.CSV", IDNO, file));
    EXPECT_EQ(file.path, folder.Path("b.CSV"));
    EXPECT_EQ(file.kind, 1U);
}

TEST_F(SystemChooser, AFileIsReplacedOnlyAfterAQuestion) {
    folder.MakeFile("there.html");
    ChosenFile file{"before", 1};
    EXPECT_FALSE(Save("there.html", IDNO, file));
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(file.path, "before");
    EXPECT_TRUE(Save("there.html", IDYES, file));
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(file.path, folder.Path("there.html"));
}

TEST_F(SystemChooser, AFolderIsTheOneThatTheDialogBeginsIn) {
    std::string path = folder.MakeFolder("\xc3\xa4 b");
    const std::string begin = path;
    bool isChosen = true;
    Choose(owner, {}, IDNO, [&] { isChosen = ChooseFolder(owner, "Choose", path); });
    EXPECT_FALSE(isChosen);
    EXPECT_EQ(path, begin);
    Choose(owner, {begin}, IDNO, [&] { isChosen = ChooseFolder(owner, "Choose", path); });
    EXPECT_TRUE(isChosen);
    EXPECT_EQ(path, begin);
}

TEST(SystemToolkit, ASplitterIsDraggedUntilTheMouseIsTakenFromIt) {
    CDialog dialog(IDD_PICKER);
    ASSERT_TRUE(dialog.Create());
    std::vector<int> places;
    int drops = 0;
    CSplitter splitter;
    ASSERT_TRUE(splitter.Create(
        dialog, 1, [&](int left) { places.push_back(left); }, [&] { ++drops; }));
    splitter.MoveWindow({50, 0, 50 + CSplitter::kWidth, 60});
    const auto send = [&](UINT code, int x) {
        SendMessageW(splitter.GetSafeHwnd(), code, 0, MAKELPARAM(x, 9));
    };
    send(WM_MOUSEMOVE, 4);
    send(WM_LBUTTONDOWN, 2);
    send(WM_MOUSEMOVE, 12);
    send(WM_MOUSEMOVE, -38);
    EXPECT_EQ(places, (std::vector<int>{60, 10}));
    send(WM_LBUTTONUP, -38);
    EXPECT_EQ(drops, 1);
    send(WM_LBUTTONDOWN, 2);
    SetCapture(dialog.GetSafeHwnd());
    EXPECT_EQ(drops, 2);
    send(WM_MOUSEMOVE, 12);
    EXPECT_EQ(places.size(), 2U);
    ReleaseCapture();
}

TEST(SystemToolkit, KeysReachADialogWhoseControlsTakeNone) {
    UiDriver ui;
    CDialog dialog(IDD_PICKER);
    ui.ExpectDialog(IDD_PICKER, [&](WindowDriver& window) {
        dialog.GetDlgItem(IDC_PICKER_OK)->ModifyStyle(0, WS_DISABLED);
        dialog.GetDlgItem(IDC_ACCOUNT)->ModifyStyle(0, WS_DISABLED);
        EXPECT_EQ(GetFocus(), dialog.GetSafeHwnd());
        window.Press("Esc");
    });
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
}

}  // namespace
}  // namespace permora
