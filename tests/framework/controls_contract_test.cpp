// What every back end's controls tell and show. Nothing here knows a toolkit.
#include "framework/controls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "platform/api/messages.h"
#include "platform/api/shell.h"
#include "tests/framework/test_resource_ids.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Events = std::vector<std::string>;

// Notes every notification of its controls.
class NotingDialog : public CDialog {
  public:
    NotingDialog() : CDialog(IDD_CONTROLS) {}
    Events Taken() { return std::exchange(events, {}); }

  protected:
    const MessageMap& GetMessageMap() const override {
        constexpr unsigned int kFirst = IDC_NAME;
        constexpr unsigned int kLast = IDC_HIDDEN_BUTTON;
        using Line = MessageLine<NotingDialog>;
        static const MessageMap kMap = MakeMessageMap<NotingDialog>(
            CDialog::GetMessageMap(),
            {
                Line{kFirst, kLast, Notify::kClicked, &NotingDialog::OnClicked},
                Line{kFirst, kLast, Notify::kTextChanged, &NotingDialog::OnText},
                Line{kFirst, kLast, Notify::kSelectionChanged, &NotingDialog::OnChosen},
                Line{kFirst, kLast, Notify::kClick, &NotingDialog::OnClick},
                Line{kFirst, kLast, Notify::kDoubleClick, &NotingDialog::OnDouble},
                Line{kFirst, kLast, Notify::kRightClick, &NotingDialog::OnRight},
                Line{kFirst, kLast, Notify::kItemChanged, &NotingDialog::OnItem},
                Line{kFirst, kLast, Notify::kColumnClick, &NotingDialog::OnColumn},
            });
        return kMap;
    }
    bool OnInitDialog() override {
        auto* list = GetDlgItem<CListCtrl>(IDC_ENTRIES);
        list->InsertColumn(0, "Name", 90);
        list->InsertColumn(1, "Right", 60);
        list->SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kCheckBoxes);
        for (const char* name : {"b", "a", "c"})
            list->InsertItem(list->GetItemCount(), name);
        auto* combo = GetDlgItem<CComboBox>(IDC_SCOPE);
        for (const char* text : {"This folder only", "Files only"})
            combo->AddString(text);
        events.clear();
        return CDialog::OnInitDialog();
    }

  private:
    void Note(const char* what, int number) {
        events.push_back(std::string(what) + " " + std::to_string(number));
    }
    void OnClicked(Notification& n) { Note("clicked", static_cast<int>(n.id)); }
    void OnText(Notification& n) { events.push_back("text " + GetDlgItem(n.id)->GetWindowText()); }
    void OnChosen(Notification& n) { Note("chosen", GetDlgItem<CComboBox>(n.id)->GetCurSel()); }
    void OnClick(Notification& n) { Note("click", n.row); }
    void OnDouble(Notification& n) { Note("double", n.row); }
    void OnRight(Notification& n) { Note("right", n.row); }
    void OnItem(Notification& n) { Note("item", n.row); }
    void OnColumn(Notification& n) { Note("column", n.column); }

    Events events;
};

class ControlsContract : public ::testing::Test {
  protected:
    void Run(const UiDriver::Script& script) {
        ui.ExpectDialog(IDD_CONTROLS, [&](WindowDriver& window) {
            script(window);
            dialog.EndDialog(IDOK);
        });
        dialog.DoModal();
    }
    Events Taken() { return dialog.Taken(); }

    NotingDialog dialog;
    UiDriver ui;
};

TEST_F(ControlsContract, ButtonsTellTheUsersClicksOnly) {
    Run([&](WindowDriver& window) {
        dialog.GetDlgItem<CButton>(IDC_INHERIT)->SetCheck(CheckState::kChecked);
        dialog.GetDlgItem<CButton>(IDC_FIRST_LETTER)->SetCheck(CheckState::kChecked);
        EXPECT_THAT(Taken(), IsEmpty());
        window.Click(IDC_INHERIT);
        EXPECT_FALSE(dialog.GetDlgItem<CButton>(IDC_INHERIT)->IsChecked());
        window.Click(IDC_SECOND_LETTER);
        window.Click(IDC_MORE);
        EXPECT_THAT(Taken(), ElementsAre("clicked 1002", "clicked 1011", "clicked 1050"));
    });
}

TEST_F(ControlsContract, EditFieldsTellEveryChange) {
    Run([&](WindowDriver& window) {
        window.Type(IDC_NAME, "ab");
        EXPECT_THAT(Taken(), ElementsAre("text a", "text ab"));
        dialog.GetDlgItem(IDC_NAME)->SetWindowText("&c <b>");
        EXPECT_THAT(Taken(), ElementsAre("text &c <b>"));
        EXPECT_EQ(window.Text(IDC_NAME), "&c <b>");
        dialog.GetDlgItem<CEdit>(IDC_NAME)->SelectAll();
        window.Press("Del");
        EXPECT_EQ(dialog.GetDlgItem(IDC_NAME)->GetWindowText(), "");
    });
}

TEST_F(ControlsContract, ComboBoxesTellTheUsersChoicesOnly) {
    Run([&](WindowDriver& window) {
        auto* combo = dialog.GetDlgItem<CComboBox>(IDC_SCOPE);
        EXPECT_EQ(combo->GetCurSel(), -1);
        combo->SetCurSel(0);
        EXPECT_EQ(window.Text(IDC_SCOPE), "This folder only");
        EXPECT_THAT(Taken(), IsEmpty());
        window.SelectItem(IDC_SCOPE, "Files only");
        EXPECT_THAT(Taken(), ElementsAre("chosen 1"));
        combo->SetCurSel(7);
        EXPECT_EQ(combo->GetCurSel(), -1);
        EXPECT_EQ(window.Text(IDC_SCOPE), "");
        EXPECT_THAT(Taken(), IsEmpty());
    });
}

TEST_F(ControlsContract, ListsTellClicksAndWhatTheyChange) {
    Run([&](WindowDriver& window) {
        window.SelectRow(IDC_ENTRIES, 1);
        EXPECT_THAT(Taken(), ElementsAre("item 1", "click 1"));
        window.SelectRows(IDC_ENTRIES, {0, 2});
        EXPECT_THAT(window.SelectedRows(IDC_ENTRIES), ElementsAre(0, 2));
        Taken();
        window.DoubleClickRow(IDC_ENTRIES, 2);
        EXPECT_THAT(Taken(), ElementsAre("item 0", "click 2", "double 2"));
        window.RightClickRow(IDC_ENTRIES, 0);
        EXPECT_THAT(Taken(), ElementsAre("item 2", "item 0", "right 0"));
        window.ToggleRowCheck(IDC_ENTRIES, 1);
        EXPECT_TRUE(dialog.GetDlgItem<CListCtrl>(IDC_ENTRIES)->GetCheck(1));
        EXPECT_THAT(Taken(), ElementsAre("item 1", "click 1"));
        window.SelectRow(IDC_ENTRIES, WindowDriver::kBesideRows);
        EXPECT_THAT(Taken(), ElementsAre("item 0", "click -1"));
        window.ClickHeader(IDC_ENTRIES, 1);
        EXPECT_THAT(Taken(), ElementsAre("column 1"));
    });
}

}  // namespace
}  // namespace permora
