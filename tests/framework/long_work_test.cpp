// Long work of a window: painting goes on, and input is dropped.
#include "framework/long_work.h"

#include <gtest/gtest.h>

#include <atomic>

#include "framework/dialog.h"
#include "platform/api/messages.h"
#include "tests/framework/test_resource_ids.h"
#include "tests/support/patience.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;

class PaintedDialog : public CDialog {
  public:
    using CDialog::CDialog;
    std::atomic<int> paintings = 0;

    // On another thread: false when it is not painted in time.
    bool IsPaintedAnew() {
        const int before = paintings;
        RedrawWindow();
        return test::Await([&] { return paintings != before; });
    }

  protected:
    void OnPaint(CDC& /*dc*/) override { ++paintings; }
};

TEST(LongWork, LeavesTheWindowPaintedAndDeafButForItsOwnMessages) {
    UiDriver ui;
    PaintedDialog dialog(IDD_CONTROLS);
    ui.ExpectDialog(IDD_CONTROLS, [&](WindowDriver& window) {
        const unsigned int focused = window.FocusedControl();
        bool isPainted = false;
        int answer = 0;
        ui.ExpectMessageBox("Go on?", "Work", MB_YESNO, IDYES);
        DoLongWork(dialog, [&, handle = window.Handle()] {
            isPainted = dialog.IsPaintedAnew();
            CallOnUiThread([&] {
                EXPECT_FALSE(dialog.IsWindowEnabled());
                window.Press("Tab");
                window.Press("Esc");
                window.Click(IDOK);
            });
            answer = MessageBoxA(handle, "Go on?", "Work", MB_YESNO);
        });
        EXPECT_TRUE(isPainted);
        EXPECT_EQ(answer, IDYES);
        EXPECT_TRUE(dialog.IsWindowEnabled());
        EXPECT_EQ(window.FocusedControl(), focused);
        window.Press("Return");
    });
    EXPECT_EQ(dialog.DoModal(), IDOK) << "ended by what was pressed afterwards";
}

}  // namespace
}  // namespace permora
