// What every back end's dialogs do. Nothing here knows a toolkit.
#include "framework/dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "framework/controls.h"
#include "framework/list_ctrl.h"
#include "framework/styles.h"
#include "platform/api/messages.h"
#include "tests/framework/test_resource_ids.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;

constexpr unsigned int kMissingTemplate = 9999;
constexpr int kEndedByTest = -2;

// Counts the calls of the dialog's own functions.
class TestDialog : public CDialog {
  public:
    using CDialog::CDialog;
    std::function<void()> onInit;
    int okCount = 0;
    int cancelCount = 0;

  protected:
    bool OnInitDialog() override {
        const bool wantsFocus = CDialog::OnInitDialog();
        if (onInit) onInit();
        return wantsFocus;
    }
    void OnOK() override {
        ++okCount;
        CDialog::OnOK();
    }
    void OnCancel() override {
        ++cancelCount;
        CDialog::OnCancel();
    }
};

class DialogContract : public ::testing::Test {
  protected:
    // Shows the dialog to `script`, and ends it when the script has not.
    int Run(CDialog& dialog, unsigned int templateId, const UiDriver::Script& script) {
        ui.ExpectDialog(templateId, [&](WindowDriver& window) {
            script(window);
            dialog.EndDialog(kEndedByTest);
        });
        return dialog.DoModal();
    }

    UiDriver ui;
};

struct KeyCase {
    const char* name;
    unsigned int templateId;
    const char* key;
    std::function<void(TestDialog&)> before;
    int okCount;
    int cancelCount;
    int result;
};

TEST_F(DialogContract, EnterAndEscapePressButtonsOrReachTheDialog) {
    const auto nothing = [](TestDialog&) {};
    const auto disable = [](unsigned int id) {
        return [id](TestDialog& dialog) { dialog.GetDlgItem(id)->ModifyStyle(0, WS_DISABLED); };
    };
    const auto focus = [](unsigned int id) {
        return [id](TestDialog& dialog) { dialog.GetDlgItem(id)->SetFocus(); };
    };
    for (const KeyCase& each : {
             KeyCase{"the default button", IDD_CONTROLS, "Return", nothing, 1, 0, IDOK},
             {"the keypad's Enter", IDD_CONTROLS, "Enter", nothing, 1, 0, IDOK},
             {"from a list", IDD_CONTROLS, "Return", focus(IDC_ENTRIES), 1, 0, IDOK},
             {"from a combo box", IDD_CONTROLS, "Return", focus(IDC_SCOPE), 1, 0, IDOK},
             {"from a check box", IDD_CONTROLS, "Return", focus(IDC_INHERIT), 1, 0, IDOK},
             {"the button with the focus", IDD_CONTROLS, "Return", focus(IDCANCEL), 0, 1, IDCANCEL},
             {"a disabled default button", IDD_CONTROLS, "Return", disable(IDOK), 0, 0, kEndedByTest},
             {"Cancel", IDD_CONTROLS, "Esc", nothing, 0, 1, IDCANCEL},
             {"Cancel, from a list", IDD_CONTROLS, "Esc", focus(IDC_ENTRIES), 0, 1, IDCANCEL},
             {"a disabled Cancel", IDD_CONTROLS, "Esc", disable(IDCANCEL), 0, 0, kEndedByTest},
             {"no default button", IDD_PICKER, "Return", nothing, 1, 0, IDOK},
             {"no Cancel", IDD_PICKER, "Esc", nothing, 0, 1, IDCANCEL},
             {"no buttons", IDD_PROGRESS, "Return", nothing, 1, 0, IDOK},
         }) {
        TestDialog dialog(each.templateId);
        EXPECT_EQ(Run(dialog, each.templateId,
                      [&](WindowDriver& window) {
                          each.before(dialog);
                          window.Press(each.key);
                      }),
                  each.result)
            << each.name;
        EXPECT_EQ(dialog.okCount, each.okCount) << each.name;
        EXPECT_EQ(dialog.cancelCount, each.cancelCount) << each.name;
    }
}

TEST_F(DialogContract, TheButtonThatEnterPressesIsShownSo) {
    TestDialog picker(IDD_PICKER);
    Run(picker, IDD_PICKER, [&](WindowDriver& window) {
        EXPECT_EQ(window.DefaultButton(), 0U);
        window.Click(IDC_PICKER_OK);
        EXPECT_EQ(window.DefaultButton(), unsigned{IDC_PICKER_OK});
        window.Press("Shift+Tab");
        EXPECT_EQ(window.FocusedControl(), unsigned{IDC_ACCOUNT});
        EXPECT_EQ(window.DefaultButton(), 0U);
        EXPECT_EQ(picker.okCount, 0);
        window.Press("Return");
        EXPECT_EQ(picker.okCount, 1);
    });
    TestDialog controls(IDD_CONTROLS);
    Run(controls, IDD_CONTROLS, [&](WindowDriver& window) {
        EXPECT_EQ(window.DefaultButton(), unsigned{IDOK});
        controls.GetDlgItem(IDC_MORE)->SetFocus();
        EXPECT_EQ(window.DefaultButton(), unsigned{IDC_MORE});
        // Another default button does not take what Enter means from the one with the focus.
        controls.GetDlgItem(IDOK)->ModifyStyle(BS_DEFPUSHBUTTON, 0);
        controls.GetDlgItem(IDCANCEL)->ModifyStyle(0, BS_DEFPUSHBUTTON);
        EXPECT_EQ(window.DefaultButton(), unsigned{IDC_MORE});
        ui.ExpectError("over the dialog");
        MessageBoxA(controls.GetSafeHwnd(), "over the dialog", "Permora Error", MB_OK | MB_ICONERROR);
        EXPECT_EQ(window.DefaultButton(), unsigned{IDC_MORE});
        window.Press("Shift+Tab");
        EXPECT_EQ(window.DefaultButton(), unsigned{IDCANCEL});
        controls.GetDlgItem(IDCANCEL)->SetFocus();
        controls.GetDlgItem(IDCANCEL)->ModifyStyle(0, WS_DISABLED);
        EXPECT_EQ(window.DefaultButton(), 0U);
        window.Press("Return");
        EXPECT_EQ(controls.cancelCount, 0);
    });
}

TEST_F(DialogContract, TheFocusIsSeenAsSoonAsTheDialogIs) {
    for (const int control :
         {IDC_NAME, IDC_INHERIT, IDC_FIRST_LETTER, IDC_SCOPE, IDC_ENTRIES, IDC_MORE, int{IDOK}}) {
        const auto id = static_cast<unsigned int>(control);
        TestDialog dialog(IDD_CONTROLS);
        dialog.onInit = [&] {
            auto* list = dialog.GetDlgItem<CListCtrl>(IDC_ENTRIES);
            list->InsertColumn(0, "Name", 90);
            list->InsertItem(0, "a");
            dialog.GetDlgItem<CComboBox>(IDC_SCOPE)->AddString("a");
        };
        Run(dialog, IDD_CONTROLS, [&](WindowDriver& window) {
            dialog.GetDlgItem(id)->SetFocus();
            EXPECT_TRUE(window.ShowsFocus(id)) << id;
        });
    }
}

TEST_F(DialogContract, TheCloseBoxActsAsEscape) {
    TestDialog dialog(IDD_CONTROLS);
    EXPECT_EQ(Run(dialog, IDD_CONTROLS,
                  [&](WindowDriver& window) {
                      dialog.GetDlgItem(IDCANCEL)->ModifyStyle(0, WS_DISABLED);
                      window.ClickCloseBox();
                      EXPECT_EQ(dialog.cancelCount, 0);
                      dialog.GetDlgItem(IDCANCEL)->ModifyStyle(WS_DISABLED, 0);
                      window.ClickCloseBox();
                  }),
              IDCANCEL);
    EXPECT_EQ(dialog.cancelCount, 1);
}

TEST_F(DialogContract, MissingTemplatesAndDialogsThatEndAtOnceAreNeverShown) {
    TestDialog missing(kMissingTemplate);
    EXPECT_EQ(missing.DoModal(), -1);
    TestDialog ending(IDD_CONTROLS);
    ending.onInit = [&] {
        ending.EndDialog(3);
        ending.EndDialog(4);
    };
    EXPECT_EQ(ending.DoModal(), 3);
    EXPECT_FALSE(ending.HasWindow());
}

TEST_F(DialogContract, OkAfterTheEndDoesNothing) {
    TestDialog dialog(IDD_CONTROLS);
    Run(dialog, IDD_CONTROLS, [](WindowDriver& window) {
        window.Press("Esc");
        window.Press("Return");  // was on its way already
    });
    EXPECT_EQ(dialog.okCount, 0);
    Run(dialog, IDD_CONTROLS, [](WindowDriver& window) { window.Click(IDOK); });
    EXPECT_EQ(dialog.okCount, 1);
}

TEST_F(DialogContract, RadioButtonsExcludeEachOtherInTheirGroup) {
    TestDialog dialog(IDD_CONTROLS);
    Run(dialog, IDD_CONTROLS, [&](WindowDriver& window) {
        EXPECT_FALSE(window.IsChecked(IDC_FIRST_LETTER));
        window.Click(IDC_FIRST_LETTER);
        window.Click(IDC_SECOND_DIGIT);
        EXPECT_TRUE(window.IsChecked(IDC_FIRST_LETTER));
        window.Press("Up");
        EXPECT_EQ(window.FocusedControl(), unsigned{IDC_FIRST_DIGIT});
        EXPECT_TRUE(window.IsChecked(IDC_FIRST_DIGIT));
        window.Press("Left");  // goes round within the group
        EXPECT_TRUE(window.IsChecked(IDC_SECOND_DIGIT));
        EXPECT_TRUE(window.IsChecked(IDC_FIRST_LETTER));
        auto* letter = dialog.GetDlgItem<CButton>(IDC_SECOND_LETTER);
        letter->SetCheck(CheckState::kChecked);
        EXPECT_FALSE(window.IsChecked(IDC_FIRST_LETTER));
        letter->SetCheck(CheckState::kClear);
        EXPECT_FALSE(window.IsChecked(IDC_SECOND_LETTER));
    });
}

TEST_F(DialogContract, WorkersEndDialogs) {
    CDialog dialog(IDD_PROGRESS);
    ui.ExpectDialog(IDD_PROGRESS,
                    [&](WindowDriver&) { std::thread([&dialog] { dialog.EndDialog(5); }).join(); });
    EXPECT_EQ(dialog.DoModal(), 5);
    // Too late for the run, but not for the object.
    std::thread([&dialog] { dialog.EndDialog(6); }).join();
    ui.ExpectDialog(IDD_PROGRESS, [](WindowDriver& window) { window.Press("Esc"); });
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
}

TEST_F(DialogContract, TextsFromAWorkerCostItLittleAndTheLastIsShown) {
    constexpr int kTexts = 100'000;
    TestDialog dialog(IDD_PROGRESS);
    CWnd* label = nullptr;
    Run(dialog, IDD_PROGRESS, [&](WindowDriver& window) {
        label = dialog.GetDlgItem(IDC_PROGRESS);
        std::atomic<bool> hasFinished = false;
        std::thread worker([&] {
            for (int i = 1; i <= kTexts; ++i) {
                label->SetWindowText(std::to_string(i));
                label->RedrawWindow();
            }
            hasFinished = true;
        });
        window.WaitUntil([&] { return hasFinished.load(); });
        worker.join();
        EXPECT_EQ(label->GetWindowText(), std::to_string(kTexts));
        window.WaitUntil([&] { return window.Text(IDC_PROGRESS) == std::to_string(kTexts); });
    });
    // The control outlives its window for workers that are about to end.
    std::thread([label] { label->SetWindowText("late"); }).join();
    EXPECT_EQ(label->GetWindowText(), "");
}

struct BoxCase {
    UINT type;
    int safest;
};

TEST_F(DialogContract, MessageBoxesShowPlainTextAndPreferTheSafestButton) {
    for (const BoxCase& each : {BoxCase{MB_OK | MB_ICONERROR, IDOK},
                                {MB_OK | MB_ICONINFORMATION, IDOK},
                                {MB_YESNO | MB_ICONQUESTION, IDNO},
                                {MB_YESNOCANCEL | MB_ICONWARNING, IDCANCEL}}) {
        for (const char* key : {"Esc", "Return"}) {
            ui.ExpectMessageBox("<b>name</b> & more", "Permora Error", each.type,
                                [key](WindowDriver& box) { box.Press(key); });
            EXPECT_EQ(MessageBoxA(nullptr, "<b>name</b> & more", "Permora Error", each.type), each.safest);
        }
    }
    ui.ExpectMessageBox("Copy?", "Permora", MB_YESNOCANCEL, IDNO);
    EXPECT_EQ(MessageBoxA(nullptr, "Copy?", "Permora", MB_YESNOCANCEL), IDNO);
}

}  // namespace
}  // namespace permora
