// What every back end's tree view tells and shows. Nothing here knows a toolkit.
#include "framework/tree_ctrl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "framework/dialog.h"
#include "framework/styles.h"
#include "platform/api/messages.h"
#include "tests/framework/test_resource_ids.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr unsigned int kTreeId = 1100;

// Notes what its tree tells, and fills what is opened.
class TreeDialog : public CDialog {
  public:
    TreeDialog() : CDialog(IDD_PICKER) {}
    std::vector<std::string> Taken() { return std::exchange(events, {}); }
    CTreeCtrl tree;
    Point menuPlace;
    bool takesKeys = false;

  protected:
    const MessageMap& GetMessageMap() const override {
        static const MessageMap kMap = MakeMessageMap<TreeDialog>(
            CDialog::GetMessageMap(), {
                                          {kTreeId, Notify::kSelectionChanged, &TreeDialog::OnSelected},
                                          {kTreeId, Notify::kItemChanged, &TreeDialog::OnItem},
                                          {kTreeId, Notify::kClick, &TreeDialog::OnClick},
                                          {kTreeId, Notify::kRightClick, &TreeDialog::OnRight},
                                          {kTreeId, Notify::kKeyDown, &TreeDialog::OnKey},
                                      });
        return kMap;
    }

  private:
    void Note(const char* what, TreeItem item) { events.push_back(what + tree.Items().Text(item)); }
    void OnSelected(Notification& n) { Note("selected ", n.row); }
    void OnClick(Notification& n) { Note("click ", n.row); }
    void OnRight(Notification& n) {
        Note("menu ", n.row);
        menuPlace = n.point;
    }
    void OnItem(Notification& n) {
        Note(tree.IsExpanded(n.row) ? "open " : "closed ", n.row);
        if (tree.IsExpanded(n.row) && tree.Items().Count(n.row) == 0)
            tree.InsertItem(n.row, 0, {.text = "below " + tree.Items().Text(n.row), .hasExpander = true});
    }
    void OnKey(Notification& n) { n.handled = takesKeys; }

    std::vector<std::string> events;
};

class TreeContract : public ::testing::Test {
  protected:
    // With the items "a" (which can be opened), "b", and "c" (remark).
    void Run(const std::function<void(WindowDriver&, CTreeCtrl&)>& script) {
        ui.ExpectDialog(IDD_PICKER, [&](WindowDriver& window) {
            CTreeCtrl& tree = dialog.tree;
            ASSERT_TRUE(tree.Create(dialog, WS_VISIBLE | WS_TABSTOP, {80, 0, 220, 80}, kTreeId));
            dialog.GetDlgItem(IDC_ACCOUNT)->ShowWindow(SW_HIDE);
            dialog.GetDlgItem(IDC_PICKER_OK)->ShowWindow(SW_HIDE);
            const TreeItemLook looks[] = {
                {.text = "a", .hasExpander = true}, {.text = "b"}, {.text = "c", .isDimmed = true}};
            tree.InsertItems(kTreeRoot, 0, looks);
            tree.SelectItem(At(0));
            tree.SetFocus();
            dialog.Taken();
            script(window, tree);
            dialog.EndDialog(IDOK);
        });
        dialog.DoModal();
    }
    TreeItem At(int place, TreeItem above = kTreeRoot) { return dialog.tree.Items().Child(above, place); }
    std::string Selected() { return dialog.tree.Items().Text(dialog.tree.GetSelectedItem()); }
    std::vector<std::string> Taken() { return dialog.Taken(); }

    TreeDialog dialog;
    UiDriver ui;
};

TEST_F(TreeContract, TellsWhatTheUserDoesAlone) {
    Run([this](WindowDriver& window, CTreeCtrl& tree) {
        tree.Expand(At(0), true);
        EXPECT_TRUE(tree.IsExpanded(At(0))) << "also with nothing below";
        tree.InsertItem(At(0), 0, {.text = "first"});
        tree.Expand(At(0), false);
        tree.SelectItem(At(1));
        window.WaitUntil([&] { return Selected() == "b"; });
        EXPECT_THAT(Taken(), IsEmpty());

        window.Press("Up");
        EXPECT_THAT(Taken(), ElementsAre("selected a"));
        window.Press("Right");
        EXPECT_THAT(Taken(), ElementsAre("open a"));
        window.ClickItem(kTreeId, At(0, At(0)));
        EXPECT_THAT(Taken(), UnorderedElementsAre("selected first", "click first"));
        window.RightClickItem(kTreeId, At(1));
        EXPECT_THAT(Taken(), ElementsAre("menu b"));
        EXPECT_EQ(Selected(), "first");
        const Point ofMouse = dialog.menuPlace;
        window.Press("Shift+F10");
        EXPECT_THAT(Taken(), ElementsAre("menu first"));
        EXPECT_LT(dialog.menuPlace.y, ofMouse.y);
        EXPECT_GT(dialog.menuPlace.y, 0);
    });
}

TEST_F(TreeContract, AnItemIsFilledWhenItIsOpened) {
    Run([this](WindowDriver& window, CTreeCtrl& tree) {
        window.Press("Right");
        EXPECT_THAT(Taken(), ElementsAre("open a"));
        window.Press("Down");
        EXPECT_EQ(Selected(), "below a") << "and is seen open";
        Taken();
        window.Press("*");
        EXPECT_THAT(Taken(), ElementsAre("open below a")) << "and nothing below it";
        window.Press("Left");
        EXPECT_THAT(Taken(), ElementsAre("closed below a"));
        tree.DeleteItems(At(0), 0, 1);
        EXPECT_EQ(Selected(), "a");
        EXPECT_TRUE(tree.IsExpanded(At(0)));
        window.Press("Left");
        EXPECT_THAT(Taken(), ElementsAre("closed a"));
    });
}

TEST_F(TreeContract, AKeyThatAHandlerTakesDoesNothingElse) {
    Run([this](WindowDriver& window, CTreeCtrl&) {
        window.Press("B");
        EXPECT_THAT(Taken(), ElementsAre("selected b"));
        dialog.takesKeys = true;
        window.Press("Up");
        window.Press("A");
        window.Press("Return");
        window.Press("Esc");
        EXPECT_TRUE(window.IsOpen());
        EXPECT_THAT(Taken(), IsEmpty());
        EXPECT_EQ(Selected(), "b");
    });
}

TEST_F(TreeContract, TheSelectionGoesToTheNearestWhatIsDeleted) {
    Run([this](WindowDriver&, CTreeCtrl& tree) {
        constexpr int kMany = 1000;
        tree.InsertItems(At(0), 0, std::vector<TreeItemLook>(kMany, {.text = "many"}));
        tree.InsertItem(At(0), kMany / 2, {.text = "middle"});
        tree.SelectItem(At(kMany / 2, At(0)));
        EXPECT_EQ(Selected(), "middle");
        EXPECT_TRUE(tree.IsExpanded(At(0))) << "so that the item is seen";
        tree.DeleteItems(At(0), 1, kMany - 1);
        EXPECT_EQ(tree.GetSelectedItem(), At(1, At(0))) << "behind";
        tree.DeleteItems(At(0), 1, 1);
        EXPECT_EQ(tree.GetSelectedItem(), At(0, At(0))) << "before";
        tree.DeleteItems(At(0), 0, 1);
        EXPECT_EQ(Selected(), "a") << "above";
        tree.DeleteItems(kTreeRoot, 0, 3);
        EXPECT_EQ(tree.GetSelectedItem(), kNoTreeItem);
    });
}

}  // namespace
}  // namespace permora
