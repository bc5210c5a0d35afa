// The list on real folders and drives.
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/linux/files/drives.h"
#include "resources/resource_ids.h"
#include "tests/browser/browser_fixture.h"
#include "tests/support/ntfs_volume.h"

namespace permora::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

class BrowserListing : public BrowserTest {};

TEST_F(BrowserListing, FoldersComeBeforeFilesAndDotsAreLeftOut) {
    folder.MakeFile("a");
    folder.MakeFolder("z");
    folder.MakeFile(".profile");
    folder.MakeFolder(".hidden");
    Start(R"(T:\)");
    EXPECT_THAT(Names(), ElementsAre("z", "a"));
    view.RefreshList();
    EXPECT_EQ(Pane(0), "Ready");
    EXPECT_EQ(Pane(1), "Total items: 2 ");
    EXPECT_EQ(frame.addressBar.locationText, R"(T:\)");

    view.GoToLocation("z");
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(Pane(1), "Total items: 0 ");
    EXPECT_EQ(view.Rows().Folder(), R"(T:\z)");
    EXPECT_EQ(Pane(2), folder.Path("z"));

    folder.MakeFile("..name");  // passes for the parent
    view.GoToLocation(R"(T:\)");
    EXPECT_THAT(Names(), ElementsAre("z", "a"));
    frame.RunCommand(ID_VIEW_DOT_NAMES);
    EXPECT_THAT(Names(), ElementsAre(".hidden", "z", StartsWith("."), ".profile", "a"));
    frame.RunCommand(ID_VIEW_DOT_NAMES);
    EXPECT_THAT(Names(), ElementsAre("z", "a"));
}

TEST_F(BrowserListing, EveryNameThatTheHostHasLeadsToItsOwnFile) {
    for (const char* name :
         {"文書", "עברית", "a\\b", "c:d", "line\nbreak", "\xFF\xFE", "trailing.", "e\xCC\x81"})
        folder.MakeFolder(name);
    ASSERT_EQ(symlink("nowhere", folder.Path("dangling").c_str()), 0);
    ASSERT_EQ(symlink("loop", folder.Path("loop").c_str()), 0);
    ASSERT_EQ(symlink(folder.Path("文書").c_str(), folder.Path("link").c_str()), 0);
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    Start(R"(T:\)");
    const std::vector<std::string> names = Names();
    EXPECT_THAT(names, SizeIs(12));
    for (const std::string& name : names) {
        const bool isFolder = (GetFileAttributesA((R"(T:\)" + name).c_str()) & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (!isFolder) continue;
        view.OpenFolderRow(name);
        EXPECT_EQ(view.Rows().Folder(), name == "link" ? R"(T:\文書)" : R"(T:\)" + name);
        view.GoUp();
        EXPECT_EQ(Names(), names);
    }
}

TEST_F(BrowserListing, AFileThatVanishesBetweenThePassesIsNotShown) {
    folder.MakeFolder("kept");
    folder.MakeFile("gone");
    Start(R"(T:\)");
    int searches = 0;
    TheFaults().onSearch = [&](const std::string&) {
        if (++searches == 2) unlink(folder.Path("gone").c_str());
    };
    view.GoToLocation(R"(T:\)");
    EXPECT_THAT(Names(), ElementsAre("kept"));

    TheFaults().onSearch = nullptr;
    rmdir(folder.Path("kept").c_str());
    ExpectError("No such file or directory");
    Open("kept");
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(BrowserListing, TheFolderItselfMayVanishBetweenThePasses) {
    folder.MakeFolder("here");
    Start(R"(T:\here)");
    int searches = 0;
    TheFaults().onSearch = [&](const std::string&) {
        if (++searches == 2) rmdir(folder.Path("here").c_str());
    };
    ui.ExpectInformation(HasSubstr("does not exist any more"));
    view.RefreshList();
    EXPECT_EQ(view.Rows().Folder(), R"(T:\)");
}

TEST_F(BrowserListing, AFolderThatCannotBeReadIsToldAndLeft) {
    folder.MakeFolder("secret");
    ASSERT_EQ(chmod(folder.Path("secret").c_str(), 0700), 0);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    Start(R"(T:\)");
    constexpr uid_t kNobody = 65534;
    setfsuid(kNobody);  // file systems now see an ordinary user
    ExpectError("Permission denied");
    Open("secret");
    setfsuid(0);
    EXPECT_THAT(Names(), ElementsAre("secret"));
    EXPECT_EQ(view.Rows().Folder(), R"(T:\)");
    EXPECT_THAT(view.History().Locations(), ElementsAre("", R"(T:\)"));
}

// The frame lists again when it applies the settings, and then reports the reason.
TEST_F(BrowserListing, AStartFolderThatCannotBeReadIsToldOnce) {
    folder.MakeFile("first");
    folder.MakeFile("second");
    TheFaults().onSearch = [](const std::string&) { TheFaults().searchFailsAfter = 1; };
    Start(R"(T:\)");
    ExpectError("Input/output error");
    view.ApplyViewSettings(3, RowIcons::kOwn);
    EXPECT_EQ(view.Rows().Folder(), R"(T:\)");
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(BrowserListing, AVolumeThatFailsInTheMiddleIsReported) {
    folder.MakeFolder("a");
    folder.MakeFolder("a/inner");
    Start(R"(T:\a)");
    TheFaults().searchFailsAfter = 1;
    ExpectError("Input/output error");
    view.GoUp();
    EXPECT_EQ(Pane(0), "Ready");
    EXPECT_EQ(view.Rows().Folder(), R"(T:\a)");
    TheFaults().searchFailsAfter = 1;
    ExpectError("Input/output error");
    view.RefreshList();
}

TEST_F(BrowserListing, AVolumeWhoseDriverDiesIsReportedAndCanBeLeft) {
    if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const test::NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_EQ(mkdir(volume.Path("sub").c_str(), 0700), 0);
    ASSERT_TRUE(host::PinDrive('N', volume.Root()));
    Start(R"(N:\)");
    EXPECT_THAT(Names(), ElementsAre("sub"));

    ASSERT_EQ(kill(volume.Driver(), SIGKILL), 0);
    const auto isDead = [&] { return access(volume.Path("sub").c_str(), F_OK) != 0 && errno == ENOTCONN; };
    ASSERT_TRUE(Window().WaitUntil(isDead));
    ExpectError("Transport endpoint is not connected");
    view.RefreshList();
    view.GoToRoot();
    EXPECT_TRUE(view.IsShowing(PlaceKind::kDrives));
    ExpectError("Transport endpoint is not connected");
    view.OpenFolderRow(R"(N:\)");
    EXPECT_THAT(Names(), Contains(R"(C:\)"));
    EXPECT_TRUE(host::PinDrive('N', ""));
    EXPECT_EQ(chdir("/"), 0);
}

TEST_F(BrowserListing, DrivesAreShownWithTypeAndSize) {
    Start("");
    EXPECT_TRUE(view.IsShowing(PlaceKind::kDrives));
    EXPECT_THAT(Names(), AllOf(Contains(R"(C:\)"), Contains(R"(T:\)")));
    const std::vector<std::string> rows = Window().Rows(BrowserView::kListId);
    EXPECT_THAT(rows, Contains(AllOf(HasSubstr(R"(T:\)"), HasSubstr("(Available: "))));
    view.GoUp();
    EXPECT_THAT(view.History().Locations(), ElementsAre(""));
    view.RefreshList();
    EXPECT_EQ(frame.addressBar.locationText, "Accessible disk drives");
    EXPECT_THAT(Pane(1), ::testing::MatchesRegex("Total items: [0-9]+ "));
    EXPECT_THAT(view.Rows().Tip(R"(T:\)"),
                AllOf(HasSubstr("Name: "), HasSubstr("\nFile System: "), HasSubstr("\nTotal Space: "),
                      HasSubstr("\nAvailable Space: ")));
    EXPECT_EQ(view.Rows().Tip(R"(?:\)"), "");
}

}  // namespace
}  // namespace permora::test
