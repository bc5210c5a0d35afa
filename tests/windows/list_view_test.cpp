// The list view and the clipboard of the half for Windows, beyond what all halves are asked.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "framework/clipboard.h"
#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "framework/styles.h"
#include "tests/framework/test_resource_ids.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;

class SystemListView : public ::testing::Test {
  protected:
    // Shows a dialog with a list of `count` rows, "row 0" and so on, to `script`.
    void Run(int count, const std::function<void(WindowDriver&, CListCtrl&)>& script) {
        ui.ExpectDialog(IDD_CONTROLS, [&](WindowDriver& window) {
            auto& list = *dialog.GetDlgItem<CListCtrl>(IDC_ENTRIES);
            list.InsertColumn(0, "Name", 90);
            for (int row = 0; row < count; ++row)
                list.InsertItem(row, "row " + std::to_string(row));
            script(window, list);
            dialog.EndDialog(IDOK);
        });
        EXPECT_EQ(dialog.DoModal(), IDOK);
    }

    CDialog dialog{IDD_CONTROLS};
    UiDriver ui;
};

TEST_F(SystemListView, ASelectionStaysWithItsRowsWhateverComesBetween) {
    constexpr int kMany = 100'000;
    Run(kMany, [](WindowDriver& window, CListCtrl& list) {
        list.SetSelected(2, true);
        list.SetSelected(kMany - 1, true);
        list.InsertItem(0, "first");
        list.DeleteItem(2);
        EXPECT_THAT(window.SelectedRows(IDC_ENTRIES), ElementsAre(2, kMany - 1));
        EXPECT_FALSE(list.IsItemVisible(kMany - 1));
        list.EnsureVisible(kMany - 1);
        EXPECT_TRUE(list.IsItemVisible(kMany - 1));
        window.SelectRow(IDC_ENTRIES, kMany - 2);
        EXPECT_THAT(window.SelectedRows(IDC_ENTRIES), ElementsAre(kMany - 2));
        window.Press("Up");
        EXPECT_THAT(window.SelectedRows(IDC_ENTRIES), ElementsAre(kMany - 3));
        EXPECT_EQ(list.GetFocusedRow(), kMany - 3);
        list.DeleteAllItems();
        window.WaitUntil([&] { return SendMessageW(list.GetSafeHwnd(), LVM_GETITEMCOUNT, 0, 0) == 0; });
    });
}

TEST_F(SystemListView, ATextStaysUntilTwoMoreHaveBeenAskedFor) {
    Run(3, [](WindowDriver&, CListCtrl& list) {
        const auto ask = [&](int row) {
            NMLVDISPINFOW question{};
            question.hdr = {list.GetSafeHwnd(), IDC_ENTRIES, static_cast<UINT>(LVN_GETDISPINFOW)};
            question.item.mask = LVIF_TEXT;
            question.item.iItem = row;
            SendMessageW(GetParent(list.GetSafeHwnd()), WM_NOTIFY, IDC_ENTRIES,
                         reinterpret_cast<LPARAM>(&question));
            return question.item.pszText;
        };
        const wchar_t* first = ask(0);
        ask(1);
        ask(2);
        EXPECT_STREQ(first, L"row 0");
    });
}

TEST_F(SystemListView, TypingABeginningGoesToItsRow) {
    Run(5, [](WindowDriver& window, CListCtrl& list) {
        list.SetFocus();
        window.SelectRow(IDC_ENTRIES, 0);
        list.InsertItem(3, "Änderung");
        // The control has not been told of the row yet.
        SendMessageW(list.GetSafeHwnd(), WM_CHAR, L'ä', 1);
        EXPECT_THAT(window.SelectedRows(IDC_ENTRIES), ElementsAre(3));
    });
}

TEST_F(SystemListView, TextsGoToTheClipboardAndBack) {
    Run(0, [this](WindowDriver&, CListCtrl&) {
        const std::string text = "Zoë \U0001F512";
        ASSERT_TRUE(CopyText(dialog, text));
        const Clipboard clipboard(dialog);
        std::vector<std::uint8_t> bytes;
        EXPECT_EQ(clipboard.GetData(RegisterClipboardFormat("text/plain"), bytes), ClipboardAnswer::kGiven);
        EXPECT_EQ(std::string(bytes.begin(), bytes.end()), text);
        EXPECT_EQ(clipboard.GetData(RegisterClipboardFormat("text/uri-list"), bytes),
                  ClipboardAnswer::kNothing);
    });
}

}  // namespace
}  // namespace permora
