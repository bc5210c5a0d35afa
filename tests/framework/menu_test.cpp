// Menus as values: positions, check marks, texts.
#include "framework/menu.h"

#include <gtest/gtest.h>

#include "resources/resource_ids.h"

namespace permora {
namespace {

constexpr int kViewMenu = 2;
constexpr unsigned int kMissing = 9999;

TEST(Menu, PositionsCountSeparatorsAndCopiesAreTheSameMenu) {
    const CMenu menu = CMenu::Load(IDR_MAIN_FRAME);
    CMenu view = menu.GetSubMenu(kViewMenu);

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
    EXPECT_EQ(menu.GetText(kMissing), "");
    EXPECT_EQ(menu.GetText(0), "");  // separators are no entry to find
}

TEST(Menu, AnEmptyMenuAnswers) {
    CMenu none = CMenu::Load(kMissing);
    EXPECT_FALSE(none);
    EXPECT_FALSE(none.GetSubMenu(0));
    none.CheckByPosition(0, true);
    none.Enable(ID_PERMISSIONS, false);
}

}  // namespace
}  // namespace permora
