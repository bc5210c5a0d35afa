// The list as a person works with it, and the selection as commands get it.
#include "browser/browser_view.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "browser/clipboard_block.h"
#include "browser/list_presentation.h"
#include "framework/clipboard.h"
#include "framework/menu_items.h"
#include "platform/message_presenter.h"
#include "resources/resource_ids.h"
#include "tests/browser/browser_fixture.h"
#include "tests/support/access_lists.h"

namespace permora::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ExitedWithCode;
using ::testing::IsEmpty;

class Browser : public BrowserTest {
  protected:
    // At 14:05 on 7 March 2010.
    void MakeFileOf(const std::string& name, std::uintmax_t bytes) {
        std::filesystem::resize_file(folder.MakeFile(name), bytes);
        constexpr timespec kTime{1'267'970'700, 0};
        const timespec times[2] = {kTime, kTime};
        ASSERT_EQ(utimensat(0, folder.Path(name).c_str(), times, 0), 0);
    }
    void Press(const std::string& key) { Window().Press(key); }
};

TEST_F(Browser, KeysOpenLeaveAndFindRows) {
    folder.MakeFolder("alpha");
    folder.MakeFolder("alpha/inner");
    folder.MakeFolder("beta");
    Start(R"(T:\)");
    Press("A");
    EXPECT_EQ(view.List().GetSelectionMark(), Row("alpha"));
    Press("F5");
    EXPECT_THAT(view.SelectedNames(), ElementsAre("alpha"));
    EXPECT_EQ(view.List().GetFocusedRow(), Row("alpha"));
    EXPECT_EQ(view.List().GetSelectionMark(), Row("alpha"));
    Press("Return");
    EXPECT_EQ(view.Rows().Folder(), R"(T:\alpha)");
    Window().DoubleClickRow(BrowserView::kListId, Row("inner"));
    EXPECT_EQ(view.Rows().Folder(), R"(T:\alpha\inner)");
    Press("Backspace");
    Press("Backspace");
    EXPECT_EQ(view.Rows().Folder(), R"(T:\)");
    EXPECT_THAT(view.SelectedNames(), ElementsAre("alpha"));
    view.InvertSelection();
    view.List().SetSelected(Row("beta"), false);
    ui.ExpectInformation("Please, select items to work with them.");
    Press("Del");
    Press("Ctrl+A");
    EXPECT_TRUE(Window().WaitUntil([this] { return view.List().GetSelectedCount() == 2; }));
    view.List().SetSelected(0, false);
    view.InvertSelection();
    EXPECT_THAT(Window().SelectedRows(BrowserView::kListId), ElementsAre(0));
}

TEST_F(Browser, FilesAreOpenedByTheShell) {
    folder.MakeFile("letter.txt");
    ASSERT_EQ(symlink("nowhere", folder.Path("missing").c_str()), 0);
    Start(R"(T:\)");
    Open("letter.txt");
    EXPECT_EQ(TheFaults().opened, "open letter.txt");
    ExpectError("Error: cannot open \"missing\"");
    Open("missing");
    EXPECT_EQ(view.Rows().Folder(), R"(T:\)");
}

TEST_F(Browser, DetailsFillTheColumnsAndStay) {
    MakeFileOf("big", 5'000'000'000);
    folder.MakeFolder("sub");
    Start(R"(T:\)");
    std::vector<std::uint32_t> modes;
    view.SetViewModeObserver([&](std::uint32_t mode) { modes.push_back(mode); });
    EXPECT_EQ(view.List().GetItemText(1, 2), "");
    const auto run = [this](unsigned int command) { frame.RunCommand(command); };
    run(ID_VIEW_DETAILS);
    EXPECT_EQ(view.List().GetItemText(1, 2), "4 GB");
    EXPECT_EQ(view.List().GetItemText(1, 3), "7:3:2010  5:14");
    EXPECT_EQ(view.List().GetItemText(0, 2), "");
    EXPECT_NE(view.List().GetItemText(0, 1), "");
    const auto isChecked = [](unsigned int command) {
        return UiDriver::MainWindow().ReadMenu(command).isChecked;
    };
    EXPECT_TRUE(isChecked(ID_VIEW_DETAILS));
    run(ID_VIEW_ICONS);
    EXPECT_TRUE(isChecked(ID_VIEW_ICONS));
    EXPECT_FALSE(isChecked(ID_VIEW_DETAILS));
    EXPECT_EQ(view.List().GetItemText(1, 2), "4 GB");
    EXPECT_THAT(modes, ElementsAre(3, 0));

    view.ApplyViewSettings(7, RowIcons::kShell);
    EXPECT_FALSE(isChecked(ID_VIEW_OWN_ICONS));
    EXPECT_EQ(view.List().GetView(), ListView::kIcons);
    view.ApplyViewSettings(2, RowIcons::kOwn);
    EXPECT_TRUE(isChecked(ID_VIEW_OWN_ICONS));
    EXPECT_EQ(view.List().GetView(), ListView::kList);
}

TEST_F(Browser, AHeaderSortsUntilTheNextListing) {
    MakeFileOf("small", 900 * 1024);
    MakeFileOf("large", 12 << 20);
    MakeFileOf("Middle", 100 * 1024);
    folder.MakeFolder("zoo");
    Start(R"(T:\)");
    view.SetViewMode(ListView::kReport);
    const std::vector<std::string> listed = Names();
    Window().ClickHeader(BrowserView::kListId, 2);
    EXPECT_THAT(Names(), ElementsAre("zoo", "large", "Middle", "small"));
    Window().ClickHeader(BrowserView::kListId, 0);
    EXPECT_THAT(Names(), ElementsAre("large", "Middle", "small", "zoo"));
    view.RefreshList();
    EXPECT_EQ(Names(), listed);
}

// The texts of the columns from `first` on, row by row, once all are known.
class SecurityColumnsTest : public Browser {
  protected:
    static constexpr int kFirst = 4;
    std::string Texts() {
        std::string texts;
        for (int row = 0; row < view.List().GetItemCount(); ++row)
            for (int column = kFirst; column < static_cast<int>(view.List().Columns().size()); ++column)
                texts += view.List().GetItemText(row, column) + (column == kFirst ? ": " : ";");
        return texts;
    }
    void ExpectTexts(const std::string& texts) {
        EXPECT_TRUE(Window().WaitUntil([&] { return Texts().find("...") == std::string::npos; }));
        EXPECT_EQ(Texts(), texts);
    }
};

TEST_F(SecurityColumnsTest, TellWhatIsSeenAndSort) {
    for (const char* name : {"b", "gone"})
        folder.MakeFile(name);
    MakeFileOf("a", 1536);
    ASSERT_EQ(chmod(folder.Path("a").c_str(), 0640), 0);
    ASSERT_EQ(SetDescriptorText(folder.Path("a"), "O:BAD:P(A;;FA;;;WD)(A;;FA;;;BA)"), ERROR_SUCCESS);
    ASSERT_EQ(SetDescriptorText(folder.Path("b"), "O:SYD:P(A;;FR;;;WD)"), ERROR_SUCCESS);
    Start(R"(T:\)");
    int choices = 0;
    view.SetChoiceObserver([&] { ++choices; });
    frame.RunCommand(ID_COLUMN_OWNER);  // shows the details
    EXPECT_EQ(unlink(folder.Path("gone").c_str()), 0);
    ui.ExpectMenu(ID_COLUMN_OWN_ENTRIES);
    Window().RightClickHeader(BrowserView::kListId, 0);
    EXPECT_EQ(choices, 2);
    EXPECT_EQ(view.ChosenSecurityColumns(), 5U);
    EXPECT_TRUE(UiDriver::MainWindow().ReadMenu(ID_COLUMN_OWNER).isChecked);
    const std::string gone = "No such file or directory.: No such file or directory.;";
    ExpectTexts("BUILTIN\\Administrators: 2;NT AUTHORITY\\SYSTEM: 1;" + gone);

    view.SortByColumn(kFirst + 1);  // all is known
    EXPECT_THAT(Names(), ElementsAre("gone", "b", "a"));
    view.RefreshList();
    view.SortByColumn(kFirst);
    EXPECT_TRUE(view.StopWork());
    EXPECT_THAT(Names(), ElementsAre("a", "b"));
    view.SortByColumn(kFirst);
    view.SortByColumn(kSizeColumn);  // at once, and the latest header counts
    EXPECT_FALSE(view.StopWork());
    EXPECT_THAT(Names(), ElementsAre("b", "a"));
    view.RefreshList();
    view.SortByColumn(kFirst);
    view.SortByColumn(kFirst + 1);
    EXPECT_TRUE(Window().WaitUntil([this] { return Names().front() == "b"; }));

    frame.RunCommand(ID_COLUMN_OWNER);
    frame.RunCommand(ID_COLUMN_OWN_ENTRIES);
    frame.RunCommand(ID_COLUMN_INHERITS);
    frame.RunCommand(ID_COLUMN_MODE);
    ExpectTexts("No: rw-r--r--;No: rw-r-----;");
    view.GoToRoot();
    EXPECT_EQ(Window().Headers(BrowserView::kListId).at(kFirst), "Label");
    EXPECT_EQ(view.List().GetItemText(Row(R"(T:\)"), kFirst + 1), folder.Path());
}

TEST_F(Browser, TheTipOfARowTellsWhatTheColumnsDo) {
    MakeFileOf("file", 1536);
    folder.MakeFolder("sub");
    Start(R"(T:\)");
    EXPECT_THAT(view.Rows().Tip("file"), ::testing::EndsWith("Size: 1 KB\nModified: 7:3:2010  5:14"));
    EXPECT_THAT(view.Rows().Tip("sub"), ::testing::Not(::testing::HasSubstr("Size:")));
    EXPECT_EQ(view.Rows().Tip("missing"), "");
    view.ShowShares();
    EXPECT_EQ(view.Rows().Tip("file"), "");
}

TEST_F(Browser, TheContextMenuRunsWhatIsChosen) {
    folder.MakeFile("file");
    Start(R"(T:\)");
    ui.ExpectMenu(ID_SELECT_ALL);
    Window().RightClickRow(BrowserView::kListId, WindowDriver::kBesideRows);
    EXPECT_EQ(view.List().GetSelectedCount(), 1);
}

TEST_F(Browser, TheContextMenuGreysWhatCannotBeDone) {
    folder.MakeFile("file");
    Start(R"(T:\)");
    const auto greyed = [this](int row) {
        std::vector<unsigned int> commands;
        view.List().SetSelected(0, false);
        ui.ExpectMenu([&](const WindowDriver& menu) { commands = menu.GreyedCommands(); });
        Window().RightClickRow(BrowserView::kListId, row);
        return commands;
    };
    struct Case {
        const char* where;
        std::function<void()> goThere;
        std::vector<unsigned int> onRow;
        std::vector<unsigned int> besideRows;
    };
    const auto empty = [this] { EXPECT_TRUE(Clipboard(frame).Empty()); };
    const auto copy = [this] {
        constexpr std::uint8_t kAny[] = {1};
        EXPECT_TRUE(Clipboard(frame).SetData(RegisterClipboardFormat(kClipboardFormatName), kAny));
    };
    // A row replaces a share, since this machine may have none.
    const auto showShares = [this] {
        view.ShowShares();
        view.List().InsertItem(0, "share", 0);
    };
    const Case kCases[] = {
        {"a folder, with nothing copied", empty, {ID_EDIT_PASTE}, {ID_EDIT_PASTE}},
        {"a folder, with something copied", copy, {}, {}},
        {"shares",
         showShares,
         {ID_SECURE_DELETION, ID_WIZARD, ID_EDIT_CUT, ID_EDIT_COPY, ID_EDIT_PASTE, ID_RENAME, ID_ATTRIBUTES},
         {ID_EDIT_PASTE}},
        {"drives",
         [this] {
             view.LeaveShares();
             view.GoToRoot();
         },
         {ID_EDIT_CUT, ID_EDIT_COPY, ID_EDIT_PASTE, ID_DELETE, ID_RENAME, ID_ATTRIBUTES},
         {ID_EDIT_PASTE}},
    };
    for (const Case& each : kCases) {
        each.goThere();
        EXPECT_EQ(greyed(0), each.onRow) << each.where;
        EXPECT_EQ(greyed(WindowDriver::kBesideRows), each.besideRows) << each.where;
    }
}

TEST_F(Browser, TheSelectionIsHandedOutFromTopToBottom) {
    for (const char* name : {"0", "1", "2", "3"})
        folder.MakeFile(name);
    Start(R"(T:\)");
    view.SortByColumn(0);
    EXPECT_THAT(view.SelectedNames(), IsEmpty());
    view.List().SetSelected(3, true);
    view.List().SetSelected(1, true);
    EXPECT_THAT(view.SelectedNames(), ElementsAre("1", "3"));
    EXPECT_THAT(view.SelectedNames(), ElementsAre("1", "3"));
}

TEST_F(Browser, WhatLeavesNoWayOnEndsTheProgram) {
    folder.MakeFolder("sub");
    Start(R"(T:\)");
    view.SelectAll();
    // No row can be shown any more.
    const auto withoutList = [this](const std::function<void()>& work) {
        view.List().DestroyWindow();
        work();
    };
    CWnd notCreated;
    BrowserView other;
    const std::pair<const char*, std::function<void()>> kCases[] = {
        {"Error: cannot initialize main window", [&] { other.Create(notCreated, 1, ""); }},
        {"Cannot get drive list", [&] { withoutList([&] { view.GoToRoot(); }); }},
        {"Cannot get drive list", [&] { withoutList([&] { view.GoUp(); }); }},
        {"Error: unknown error", [&] { withoutList([&] { view.OpenFolderRow("sub"); }); }},
        {"Error: unknown error", [&] { withoutList([&] { view.GoToLocation("sub"); }); }},
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // the toolkit has threads
    for (const auto& [text, work] : kCases) {
        const auto fail = [&work = work] {
            thePresenters.messages = nullptr;  // boxes go to standard error
            work();
        };
        EXPECT_EXIT(fail(), ExitedWithCode(0), text);
    }
}

}  // namespace
}  // namespace permora::test
