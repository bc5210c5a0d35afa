// Ways through folders and drives.
#include <unistd.h>

#include <filesystem>

#include "platform/linux/files/drives.h"
#include "resources/resource_ids.h"
#include "tests/browser/browser_fixture.h"

namespace permora::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class BrowserNavigation : public BrowserTest {
  protected:
    BrowserNavigation() {
        folder.MakeFolder("a");
        folder.MakeFolder("a/b");
        folder.MakeFile("a/file");
    }
};

TEST_F(BrowserNavigation, BackAndForwardMoveAlongTheHistory) {
    Start("");
    Open(R"(T:\)");
    Open("a");
    EXPECT_THAT(view.History().Locations(), ElementsAre("", R"(T:\)", R"(T:\a)"));
    EXPECT_EQ(view.History().Position(), 2);
    view.MoveInHistory(HistoryStep::kForward);
    EXPECT_EQ(view.History().Position(), 2);
    view.MoveInHistory(HistoryStep::kBack);
    view.MoveInHistory(HistoryStep::kBack);
    EXPECT_TRUE(view.IsShowing(PlaceKind::kDrives));
    EXPECT_EQ(view.Rows().Folder(), "");
    view.MoveInHistory(HistoryStep::kBack);
    EXPECT_EQ(view.History().Position(), 0);
    view.MoveInHistory(HistoryStep::kForward);
    EXPECT_THAT(Names(), ElementsAre("a"));

    // What cannot be listed leaves everything as it was, without a message.
    std::filesystem::rename(folder.Path("a"), folder.Path("c"));
    view.MoveInHistory(HistoryStep::kForward);
    EXPECT_EQ(view.History().Position(), 1);
    EXPECT_EQ(view.Rows().Folder(), R"(T:\)");
    EXPECT_THAT(Names(), ElementsAre("c"));
    Open("c");
    EXPECT_THAT(view.History().Locations(), ElementsAre("", R"(T:\)", R"(T:\c)"));
}

TEST_F(BrowserNavigation, UpLeadsThroughTheRootToTheDrives) {
    Start(R"(T:\a\b)");
    view.GoUp();
    EXPECT_EQ(view.Rows().Folder(), R"(T:\a)");
    EXPECT_THAT(view.SelectedNames(), ElementsAre("b"));
    view.GoUp();
    view.GoUp();
    EXPECT_TRUE(view.IsShowing(PlaceKind::kDrives));
    EXPECT_THAT(view.SelectedNames(), ElementsAre(R"(T:\)"));
    EXPECT_THAT(view.History().Locations(), ElementsAre("", R"(T:\a\b)", R"(T:\a)", R"(T:\)", ""));
    Open(R"(T:\)");
    view.GoToRoot();
    EXPECT_EQ(view.History().Position(), 6);
    EXPECT_EQ(view.Rows().Folder(), "");
}

TEST_F(BrowserNavigation, ALocationThatIsTypedIsShownInFull) {
    Start(R"(T:\a)");
    view.GoToLocation("b");
    EXPECT_EQ(view.Rows().Folder(), R"(T:\a\b)");
    view.GoToLocation("..");
    EXPECT_EQ(view.Rows().Folder(), R"(T:\a)");
    EXPECT_THAT(view.History().Locations(), ElementsAre("", R"(T:\a)", R"(T:\a\b)", R"(T:\a)"));

    ExpectError("No such file or directory");
    view.GoToLocation("nowhere");
    ExpectError("No such file or directory");
    view.GoToLocation("");
    ExpectError("No such file or directory");
    view.GoToLocation(kDriveListLocation);
    ExpectError("Not a directory");
    view.GoToLocation("file");
    ExpectError("The path specified is too long");
    view.GoToLocation(std::string(261, 'x'));
    ExpectError("File name too long");
    view.GoToLocation(std::string(260, 'x'));
    EXPECT_EQ(view.History().Position(), 3);

    view.GoToRoot();
    view.GoToLocation(kDriveListLocation);
    EXPECT_EQ(view.History().Position(), 4);
}

// Only a backslash begins at the root of the drive that is shown.
TEST_F(BrowserNavigation, ASlashBeginsAPathOfTheHostWhateverTheDrive) {
    Start(R"(T:\a)");
    view.GoToLocation("/usr");
    EXPECT_EQ(view.Rows().Folder(), R"(C:\usr)");
    view.GoToLocation(folder.Path("a/b/"));
    EXPECT_EQ(view.Rows().Folder(), R"(T:\a\b)");
    view.GoToLocation(folder.Path("a"));
    view.GoToLocation(R"(\a\b)");
    EXPECT_EQ(view.Rows().Folder(), R"(T:\a\b)");
    ExpectError("No such file or directory");
    view.GoToLocation("/a/b");
    EXPECT_EQ(view.Rows().Folder(), R"(T:\a\b)");
}

TEST_F(BrowserNavigation, AFolderThatIsGoneLeadsToTheNearestOneAboveIt) {
    Start(R"(T:\a\b)");
    std::filesystem::remove_all(folder.Path("a"));
    ui.ExpectInformation(HasSubstr(R"(The folder "T:\a\b" does not exist any more.)"));
    view.RefreshList();
    EXPECT_EQ(view.Rows().Folder(), R"(T:\)");
    EXPECT_THAT(view.History().Locations(), ElementsAre("", R"(T:\a\b)", R"(T:\)"));

    folder.MakeFolder("x");
    view.GoToLocation("x");
    rmdir(folder.Path("x").c_str());
    ui.ExpectInformation(HasSubstr(R"(Showing "T:\" instead.)"));
    view.GoUp();
    EXPECT_EQ(view.Rows().Folder(), R"(T:\)");

    host::PinDrive('T', "");
    ui.ExpectInformation(HasSubstr("Showing the list of disk drives instead."));
    view.RefreshList();
    EXPECT_TRUE(view.IsShowing(PlaceKind::kDrives));
    EXPECT_EQ(view.Rows().Folder(), "");
}

TEST_F(BrowserNavigation, TheAddressBarSaysWhereWeAreAndLeadsElsewhere) {
    Start(R"(T:\a)");
    view.RefreshList();
    constexpr unsigned int kField = 1002;
    EXPECT_EQ(Window().Text(kField), R"(T:\a)");
    Window().SetText(kField, R"(T:\a\b)");
    EXPECT_EQ(frame.addressBar.locationText, R"(T:\a\b)");
    Window().Press("Return");
    EXPECT_TRUE(Window().WaitUntil([this] { return view.Rows().Folder() == R"(T:\a\b)"; }));
    Window().SetText(kField, "..");
    constexpr unsigned int kGo = 152;
    Window().Click(kGo);
    EXPECT_TRUE(Window().WaitUntil([this] { return view.Rows().Folder() == R"(T:\a)"; }));

    const auto fieldRight = [&] { return frame.addressBar.GetDlgItem(kField)->GetWindowRect().right; };
    EXPECT_EQ(frame.addressBar.GetWindowRect().right, view.GetWindowRect().right);
    EXPECT_EQ(fieldRight(), view.GetWindowRect().right - 52);
    frame.addressBar.MoveWindow({100, 2, 400, 25});  // as when its gripper is dragged
    EXPECT_EQ(fieldRight(), frame.addressBar.GetWindowRect().right - 52);
}

TEST_F(BrowserNavigation, EscapeInTheAddressBarTakesBackWhatWasTyped) {
    Start(R"(T:\a)");
    view.RefreshList();
    for (const unsigned int id : {unsigned{IDC_LOCATION}, unsigned{ID_GO_TO_LOCATION}}) {
        Window().SetText(IDC_LOCATION, "elsewhere");
        if (id == ID_GO_TO_LOCATION) Window().Press("Tab");
        EXPECT_EQ(Window().FocusedControl(), id);
        Window().Press("Esc");
        EXPECT_EQ(Window().Text(IDC_LOCATION), R"(T:\a)");
        EXPECT_TRUE(Window().HasFocus(BrowserView::kListId));
    }
    WindowDriver window = Window();
    window.Press("Esc");
    EXPECT_TRUE(window.WaitUntil([this] { return !frame.HasWindow(); })) << "in the list it ends the program";
}

}  // namespace
}  // namespace permora::test
