// The rules of modal dialogs, driven through the toolkit's own events.
#include "framework/dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <chrono>
#include <thread>

#include "framework/styles.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

constexpr unsigned int kMissingTemplate = 9999;

// Runs a function once the dialog is shown, and ends a dialog that the function left open.
class TestDialog : public CDialog {
  public:
    using CDialog::CDialog;
    std::function<void(TestDialog&)> onInit;
    std::function<void(TestDialog&)> whenShown;
    int okCount = 0;
    int cancelCount = 0;
    bool wasShown = false;

    QWidget* Widget() const { return QApplication::activeModalWidget(); }
    void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWidget* focus = Widget()->focusWidget();
        QTest::keyClick(focus != nullptr ? focus : Widget(), key, modifiers);
    }
    unsigned int Focused() const {
        for (const int item : {IDC_SETTINGS_ICONS, IDC_SETTINGS_SMALL_ICONS, IDC_SETTINGS_OWN_ICONS, IDOK,
                               IDCANCEL, IDC_NEW_NAME}) {
            const auto id = static_cast<unsigned int>(item);
            const CWnd* control = GetDlgItem(id);
            if (control != nullptr && control->HasFocus()) return id;
        }
        return 0;
    }
    using CDialog::OnCmdMsg;

  protected:
    bool OnInitDialog() override {
        CDialog::OnInitDialog();
        if (onInit) onInit(*this);
        QTimer::singleShot(0, [this] {
            wasShown = IsWindowVisible();
            EXPECT_TRUE(!wasShown || QTest::qWaitForWindowActive(Widget()));
            if (whenShown) whenShown(*this);
            EndDialog(-2);
        });
        return true;
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

struct KeyCase {
    const char* name;
    unsigned int templateId;
    Qt::Key key;
    std::function<void(TestDialog&)> before;
    int okCount;
    int cancelCount;
};

TEST(Dialog, EnterAndEscapePressButtonsOrReachTheDialog) {
    const auto disable = [](unsigned int id) {
        return [id](TestDialog& dialog) { dialog.GetDlgItem(id)->ModifyStyle(0, WS_DISABLED); };
    };
    const auto nothing = [](TestDialog&) {};
    for (const KeyCase& each : {
             KeyCase{"Enter presses the default button", IDD_RENAME, Qt::Key_Return, nothing, 1, 0},
             {"Enter leaves a disabled default button alone", IDD_RENAME, Qt::Key_Return, disable(IDOK), 0,
              0},
             {"Escape presses Cancel", IDD_RENAME, Qt::Key_Escape, nothing, 0, 1},
             {"Escape leaves a disabled Cancel alone", IDD_RENAME, Qt::Key_Escape, disable(IDCANCEL), 0, 0},
             {"Enter without default button", IDD_APPLY_TO_TREE, Qt::Key_Enter, nothing, 1, 0},
             {"Escape without Cancel", IDD_APPLY_TO_TREE, Qt::Key_Escape, nothing, 0, 1},
             {"Enter presses the button with the focus", IDD_RENAME, Qt::Key_Return,
              [](TestDialog& dialog) { dialog.GetDlgItem(IDCANCEL)->SetFocus(); }, 0, 1},
         }) {
        TestDialog dialog(each.templateId);
        dialog.whenShown = [&](TestDialog& shown) {
            each.before(shown);
            shown.Press(each.key);
        };
        dialog.DoModal();
        EXPECT_EQ(dialog.okCount, each.okCount) << each.name;
        EXPECT_EQ(dialog.cancelCount, each.cancelCount) << each.name;
    }
}

TEST(Dialog, TheCloseBoxActsAsEscape) {
    TestDialog dialog(IDD_RENAME);
    dialog.whenShown = [](TestDialog& shown) { shown.Widget()->close(); };
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
    EXPECT_EQ(dialog.cancelCount, 1);
}

TEST(Dialog, AMissingTemplateFails) {
    EXPECT_EQ(TestDialog(kMissingTemplate).DoModal(), -1);
}

TEST(Dialog, EndedByItsInitialisationItIsNeverShown) {
    TestDialog dialog(IDD_RENAME);
    dialog.onInit = [](TestDialog& starting) { starting.EndDialog(3); };
    EXPECT_EQ(dialog.DoModal(), 3);
    EXPECT_FALSE(dialog.HasWindow());
    QCoreApplication::processEvents();
    EXPECT_FALSE(dialog.wasShown);
}

TEST(Dialog, RunsAgainAndNests) {
    TestDialog outer(IDD_RENAME);
    for (int run = 0; run < 2; ++run) {
        outer.whenShown = [](TestDialog& shown) {
            TestDialog inner(IDD_NEW_FOLDER, &shown);
            inner.whenShown = [&](TestDialog& nested) {
                EXPECT_FALSE(shown.IsWindowEnabled());
                nested.EndDialog(7);
            };
            EXPECT_EQ(inner.DoModal(), 7);
            EXPECT_TRUE(shown.IsWindowEnabled());
            shown.EndDialog(8);
        };
        EXPECT_EQ(outer.DoModal(), 8);
    }
}

TEST(Dialog, AWorkerEndsIt) {
    TestDialog dialog(IDD_APPLY_TO_TREE);
    std::thread worker;
    dialog.whenShown = [&](TestDialog& shown) {
        worker = std::thread([&shown] { shown.EndDialog(5); });
        worker.join();
        QCoreApplication::processEvents();
    };
    EXPECT_EQ(dialog.DoModal(), 5);
    // Too late for the run, but not for the object.
    std::thread([&dialog] { dialog.EndDialog(6); }).join();
    QCoreApplication::processEvents();
}

TEST(Dialog, TabFollowsTheTemplateAndArrowsStayInARadioGroup) {
    TestDialog dialog(IDD_SETTINGS);
    dialog.onInit = [](TestDialog& starting) {
        starting.GetDlgItem<CButton>(IDC_SETTINGS_SMALL_ICONS)->SetCheck(CheckState::kChecked);
    };
    dialog.whenShown = [](TestDialog& shown) {
        EXPECT_EQ(shown.Focused(), unsigned{IDC_SETTINGS_SMALL_ICONS});
        shown.Press(Qt::Key_Up);
        EXPECT_EQ(shown.Focused(), unsigned{IDC_SETTINGS_ICONS});
        EXPECT_TRUE(shown.GetDlgItem<CButton>(IDC_SETTINGS_ICONS)->IsChecked());
        EXPECT_FALSE(shown.GetDlgItem<CButton>(IDC_SETTINGS_SMALL_ICONS)->IsChecked());
        shown.Press(Qt::Key_Tab);
        EXPECT_EQ(shown.Focused(), unsigned{IDC_SETTINGS_OWN_ICONS});
        shown.Press(Qt::Key_Tab, Qt::ShiftModifier);
        EXPECT_EQ(shown.Focused(), unsigned{IDC_SETTINGS_ICONS});
    };
    dialog.DoModal();
}

TEST(Dialog, TextsFromAWorkerCostItNothingAndTheLastIsShown) {
    constexpr int kTexts = 1'000'000;
    TestDialog dialog(IDD_APPLY_TO_TREE);
    dialog.whenShown = [](TestDialog& shown) {
        CWnd& label = *shown.GetDlgItem(IDC_APPLY_PROGRESS);
        std::atomic<bool> hasFinished = false;
        std::chrono::duration<double> seconds{};
        std::thread worker([&] {
            const auto start = std::chrono::steady_clock::now();
            for (int i = 1; i <= kTexts; ++i)
                label.SetWindowText(std::to_string(i));
            seconds = std::chrono::steady_clock::now() - start;
            hasFinished = true;
        });
        EXPECT_TRUE(QTest::qWaitFor([&] { return hasFinished.load(); }, 60'000));
        worker.join();
        EXPECT_EQ(label.GetWindowText(), std::to_string(kTexts));
        ::testing::Test::RecordProperty("seconds", std::to_string(seconds.count()));
        std::printf("1,000,000 texts: %.3f s\n", seconds.count());
    };
    dialog.DoModal();
}

TEST(Dialog, ItsControlsOutliveTheirWindowsForWorkers) {
    TestDialog dialog(IDD_APPLY_TO_TREE);
    CWnd* label = nullptr;
    dialog.whenShown = [&](TestDialog& shown) { label = shown.GetDlgItem(IDC_APPLY_PROGRESS); };
    dialog.DoModal();
    std::thread([label] { label->SetWindowText("late"); }).join();
    QCoreApplication::processEvents();
    EXPECT_EQ(label->GetWindowText(), "");
}

struct BoxCase {
    UINT type;
    int answerToEscape;
};

TEST(MessageBoxes, ShowPlainTextAndPreferTheSafestButton) {
    for (const BoxCase& each : {BoxCase{MB_OK | MB_ICONERROR, IDOK},
                                {MB_YESNO | MB_ICONQUESTION, IDNO},
                                {MB_YESNOCANCEL, IDCANCEL}}) {
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
            int answer = 0;
            QTimer whenThere;
            QObject::connect(&whenThere, &QTimer::timeout, [&] {
                if (QApplication::activeModalWidget() == nullptr) return;
                whenThere.stop();
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                ASSERT_NE(box, nullptr);
                EXPECT_EQ(box->textFormat(), Qt::PlainText);
                EXPECT_EQ(box->text(), QStringLiteral("<b>name</b>"));
                QTest::keyClick(box, key);
            });
            whenThere.start(1);
            std::thread worker(
                [&] { answer = MessageBoxA(nullptr, "<b>name</b>", "Permora Error", each.type); });
            EXPECT_TRUE(QTest::qWaitFor([&] { return answer != 0; }));
            worker.join();
            EXPECT_EQ(answer, each.answerToEscape);
        }
    }
}

}  // namespace
}  // namespace permora
