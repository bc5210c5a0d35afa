// Loops, modality and sizes of the half for Windows, beyond what all halves are asked.
#include <gtest/gtest.h>

#include "framework/dialog.h"
#include "framework/native.h"
#include "framework/styles.h"
#include "framework/win32/application.h"
#include "framework/win32/window.h"
#include "tests/framework/test_resource_ids.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

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
