// Menus as values: positions, check marks, texts.
#include "framework/menu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "resources/resource_ids.h"

namespace permora {
namespace {

constexpr int kViewMenu = 2;
constexpr unsigned int kMissing = 9999;

TEST(Menu, PositionsCountSeparatorsAndCopiesAreTheSameMenu) {
    const CMenu menu = CMenu::Load(IDR_MAIN_FRAME);
    ASSERT_EQ(menu.GetMenuItemCount(), 5);
    CMenu view = menu.GetSubMenu(kViewMenu);
    EXPECT_EQ(view.GetMenuItemCount(), 8);
    EXPECT_EQ(view.GetMenuItemID(2), unsigned{ID_VIEW_OWN_ICONS});
    EXPECT_EQ(view.GetMenuItemID(3), 0U);
    EXPECT_EQ(view.GetMenuItemID(8), 0U);

    view.CheckByPosition(2, true);
    view.CheckByPosition(8, true);
    EXPECT_TRUE(menu.GetSubMenu(kViewMenu).IsCheckedByPosition(2));
    view.CheckRadioByPosition(4, 7, 6);
    view.CheckRadioByPosition(4, 7, 5);
    for (int position = 4; position <= 7; ++position)
        EXPECT_EQ(view.IsCheckedByPosition(position), position == 5) << position;
    EXPECT_TRUE(view.IsCheckedByPosition(2));
}

TEST(Menu, EntriesAreFoundByCommandInPopups) {
    CMenu menu = CMenu::Load(IDR_MAIN_FRAME);
    menu.SetText(ID_NEW_FOLDER, "&New Share...");
    EXPECT_EQ(menu.GetSubMenu(0).GetText(ID_NEW_FOLDER), "&New Share...");
    menu.Check(ID_SHOW_SHARES, true);
    EXPECT_TRUE(menu.GetSubMenu(1).IsCheckedByPosition(9));
    EXPECT_EQ(menu.GetText(kMissing), "");
    EXPECT_EQ(menu.GetText(0), "");  // separators are no entry to find
}

TEST(Menu, AnEmptyMenuAnswers) {
    CMenu none = CMenu::Load(kMissing);
    EXPECT_FALSE(none);
    EXPECT_EQ(none.GetMenuItemCount(), 0);
    EXPECT_FALSE(none.GetSubMenu(0));
    none.CheckByPosition(0, true);
    none.Enable(ID_PERMISSIONS, false);
}

}  // namespace
}  // namespace permora
