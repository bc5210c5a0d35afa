#include "framework/tree_items.h"

#include <gmock/gmock.h>

namespace permora {
namespace {

TEST(TreeItems, KnowTheirPlacesWhateverComesAndGoes) {
    TreeItems items;
    const std::vector<TreeItemLook> looks = {{.text = "a"}, {.text = "b"}, {.text = "c"}};
    items.Insert(kTreeRoot, 0, looks);
    const TreeItem c = items.Child(kTreeRoot, 2);
    items.Insert(c, 0, looks);
    const TreeItem below = items.Child(c, 1);
    items.Insert(kTreeRoot, 1, looks);
    EXPECT_EQ(items.Place(c), 5);
    items.Delete(kTreeRoot, 0, 2);
    EXPECT_EQ(items.Place(c), 3);
    EXPECT_EQ(items.Parent(below), c);
    EXPECT_EQ(items.Text(below), "b");
    items.Delete(kTreeRoot, 3, 1);
    EXPECT_FALSE(items.Has(c));
    EXPECT_FALSE(items.Has(below));
    EXPECT_EQ(items.Parent(below), kNoTreeItem);
    EXPECT_EQ(items.Child(kTreeRoot, 3), kNoTreeItem);
}

}  // namespace
}  // namespace permora
