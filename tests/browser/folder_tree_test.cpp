// The tree of folders beside the list, on real folders.
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "resources/resource_ids.h"
#include "tests/browser/browser_fixture.h"

namespace permora::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

class FolderTreeTest : public BrowserTest {
  protected:
    void StartWithTree(const std::string& path) {
        Start(path);
        frame.RunCommand(ID_VIEW_FOLDER_TREE);
        EXPECT_TRUE(Tree().HasWindow());
    }
    CTreeCtrl& Tree() {
        static CTreeCtrl none;
        CWnd* pane = view.GetDlgItem(IDC_FOLDER_TREE);
        auto* tree = pane != nullptr ? pane->GetDlgItem<CTreeCtrl>(IDC_FOLDER_TREE) : nullptr;
        return tree != nullptr ? *tree : none;
    }
    std::string Selected() { return Tree().Items().Text(Tree().GetSelectedItem()); }
    bool AwaitSelected(const std::string& start) {
        return Window().WaitUntil([&] { return Selected().starts_with(start); });
    }
    bool AwaitFolder(const std::string& path) {
        return Window().WaitUntil([&] { return view.Rows().Folder() == path; });
    }
    // The texts below the selected item, or below one that is beside it.
    std::vector<std::string> Below(const std::string& name = {}) {
        const TreeItems& items = Tree().Items();
        TreeItem item = Tree().GetSelectedItem();
        for (int place = 0; !name.empty() && place < items.Count(items.Parent(item)); ++place)
            if (items.Text(items.Child(items.Parent(item), place)) == name)
                item = items.Child(items.Parent(item), place);
        std::vector<std::string> texts;
        for (int place = 0; place < items.Count(item); ++place)
            texts.push_back(items.Text(items.Child(item, place)));
        return texts;
    }
    bool AwaitBelow(const ::testing::Matcher<const std::vector<std::string>&>& texts) {
        return Window().WaitUntil([&] { return ::testing::Value(Below(), texts); });
    }
};

TEST_F(FolderTreeTest, FollowsTheListAndLeadsIt) {
    folder.MakeFolder("a");
    folder.MakeFolder("a/b");
    folder.MakeFolder("a/.dot");
    folder.MakeFile("a/file");
    folder.MakeFolder("z");
    ASSERT_EQ(symlink("../z", folder.Path("a/link").c_str()), 0);
    StartWithTree(R"(T:\a\b)");
    EXPECT_TRUE(AwaitSelected("b"));
    EXPECT_TRUE(Window().HasFocus(BrowserView::kListId));
    view.GoUp();
    EXPECT_EQ(Selected(), "a");
    EXPECT_THAT(Below(), ElementsAre("b", "link"));

    // The link is followed by the list, and keeps the selection.
    view.GoToLocation(R"(T:\a\b)");
    EXPECT_TRUE(AwaitSelected("b"));
    Tree().SetFocus();
    Window().Press("Down");
    EXPECT_TRUE(AwaitFolder(R"(T:\z)"));
    view.RefreshList();
    EXPECT_EQ(Selected(), "link");
    EXPECT_TRUE(Window().HasFocus(IDC_FOLDER_TREE));

    Window().Press("Left");
    Window().Press("Left");  // to the folder above, and closes it
    EXPECT_TRUE(AwaitFolder(R"(T:\a)"));
    EXPECT_TRUE(AwaitBelow(IsEmpty()));
    Window().Press("Backspace");
    EXPECT_TRUE(AwaitSelected(R"(T:\)"));
    Window().Press("Return");
    EXPECT_TRUE(Window().HasFocus(BrowserView::kListId));
    view.GoToRoot();
    EXPECT_EQ(Selected(), "Accessible disk drives");

    view.GoToLocation(R"(T:\a\.dot)");
    EXPECT_TRUE(AwaitSelected("a")) << "the nearest that is there";
    frame.RunCommand(ID_VIEW_DOT_NAMES);
    EXPECT_TRUE(AwaitSelected(".dot"));
}

TEST_F(FolderTreeTest, ShowsWhatComesAndGoesAndKeepsWhatIsOpen) {
    constexpr int kMany = 600;
    for (int i = 0; i < kMany; ++i)
        folder.MakeFolder("many" + std::to_string(10000 + i));
    folder.MakeFolder("many10400/inner");
    StartWithTree(R"(T:\many10400\inner)");
    EXPECT_TRUE(AwaitSelected("inner"));
    folder.MakeFolder("many10200x");
    folder.MakeFolder("many10400/inner/new");
    rmdir(folder.Path("many10300").c_str());
    view.RefreshList();
    view.OpenFolderRow("new");
    EXPECT_TRUE(AwaitSelected("new"));
    rmdir(folder.Path("many10400/inner/new").c_str());
    ui.ExpectInformation(::testing::HasSubstr("does not exist any more"));
    view.RefreshList();
    EXPECT_TRUE(AwaitSelected("inner"));
    view.GoToLocation(R"(T:\)");
    EXPECT_TRUE(AwaitBelow(AllOf(Contains("many10200x"), Not(Contains("many10300")))));
    EXPECT_THAT(Below(), SizeIs(kMany));
    EXPECT_TRUE(std::ranges::is_sorted(Below()));

    // A folder with nothing below it loses its expander.
    view.OpenFolderRow("many10000");
    EXPECT_EQ(Selected(), "many10000");
    EXPECT_TRUE(Tree().Items().Look(Tree().GetSelectedItem()).hasExpander);
    Tree().SetFocus();
    Window().Press("Right");
    EXPECT_TRUE(
        Window().WaitUntil([this] { return !Tree().Items().Look(Tree().GetSelectedItem()).hasExpander; }));
}

TEST_F(FolderTreeTest, AFolderThatCannotBeReadSaysSo) {
    folder.MakeFolder("secret");
    ASSERT_EQ(chmod(folder.Path("secret").c_str(), 0700), 0);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    StartWithTree(R"(T:\)");
    EXPECT_TRUE(AwaitSelected(R"(T:\)"));
    Tree().SetFocus();
    Window().Press("Right");
    EXPECT_TRUE(AwaitBelow(ElementsAre("secret")));
    Window().Press("Down");
    EXPECT_TRUE(AwaitFolder(R"(T:\secret)"));
    constexpr uid_t kNobody = 65534;
    setfsuid(kNobody);  // file systems now see an ordinary user
    Window().Press("Right");
    EXPECT_TRUE(AwaitBelow(ElementsAre("Permission denied.")));
    Window().Press("Down");
    EXPECT_EQ(Selected(), "Permission denied.");
    setfsuid(0);
}

std::atomic<bool> areReadersHeld = false;
std::atomic<int> heldReaders = 0;

TEST_F(FolderTreeTest, AVolumeThatHangsHoldsNothingElseUp) {
    folder.MakeFolder("slow");
    folder.MakeFolder("slow/inner");
    folder.MakeFolder("z");
    // The list's own readers search their current directory, those of the tree a full path.
    TheFaults().onSearch = [](const std::string& pattern) {
        if (!areReadersHeld || pattern == "*") return;
        ++heldReaders;
        while (areReadersHeld)
            std::this_thread::yield();
        --heldReaders;
    };
    StartWithTree(R"(T:\slow)");
    EXPECT_TRUE(AwaitSelected("slow"));
    areReadersHeld = true;
    Tree().SetFocus();
    Window().Press("Right");
    EXPECT_TRUE(AwaitBelow(ElementsAre("Reading...")));
    view.GoToLocation(R"(T:\z)");
    EXPECT_EQ(Selected(), "z");
    EXPECT_THAT(Below("slow"), ElementsAre("Reading..."));
    frame.RunCommand(ID_REFRESH);
    areReadersHeld = false;
    EXPECT_TRUE(Window().WaitUntil([this] { return Below("slow") == std::vector<std::string>{"inner"}; }));
    EXPECT_TRUE(Window().WaitUntil([] { return heldReaders == 0; }));
}

TEST_F(FolderTreeTest, SharesTheRoomWithTheList) {
    folder.MakeFolder("a");
    Start(R"(T:\a)");
    const Rect alone = view.List().GetWindowRect();
    frame.RunCommand(ID_VIEW_FOLDER_TREE);
    EXPECT_TRUE(AwaitSelected("a"));
    const int width = view.List().GetWindowRect().Width();
    EXPECT_LT(width, alone.Width() - view.TreeWidth());
    Tree().SetFocus();
    Window().Press("Ctrl+Right");
    EXPECT_LT(view.List().GetWindowRect().Width(), width);
    EXPECT_GT(view.TreeWidth(), BrowserView::kUsualTreeWidth);

    std::string edited;
    view.SetFolderEditor([&](const std::string& path) { edited = path; });
    ui.ExpectMenu(ID_PERMISSIONS);
    Window().Press("Shift+F10");
    EXPECT_EQ(edited, R"(T:\a)");

    frame.SetPlacement({{20, 30, 280, 530}, ShowState::kNormal});
    EXPECT_TRUE(Window().WaitUntil([this] { return !Window().IsVisible(IDC_FOLDER_TREE); }));
    EXPECT_GT(view.List().GetWindowRect().Width(), 200);
    frame.SetPlacement({{20, 30, 720, 530}, ShowState::kNormal});
    EXPECT_TRUE(Window().WaitUntil([this] { return Window().IsVisible(IDC_FOLDER_TREE); }));
    frame.RunCommand(ID_VIEW_FOLDER_TREE);
    EXPECT_FALSE(Window().Has(IDC_FOLDER_TREE));
    EXPECT_EQ(view.List().GetWindowRect(), alone);
}

}  // namespace
}  // namespace permora::test
