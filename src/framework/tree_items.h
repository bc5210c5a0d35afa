// The items of a tree view: texts, pictures and order, without anything that shows them.
#pragma once

#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace permora {

// An item's number, which no other item of the same tree gets later.
using TreeItem = int;
inline constexpr TreeItem kTreeRoot = 0;  // above all items; not shown (TVI_ROOT)
inline constexpr TreeItem kNoTreeItem = -1;

struct TreeItemLook {
    std::string text;
    int image = -1;
    bool hasExpander = false;  // even while there is nothing below it
    bool isDimmed = false;     // a remark in the place of items
};

// Items below one parent are counted from 0. What is asked about an item that does not exist is nothing.
class TreeItems {
  public:
    TreeItems();

    bool Has(TreeItem item) const { return nodes.contains(item); }
    const TreeItemLook& Look(TreeItem item) const;
    const std::string& Text(TreeItem item) const { return Look(item).text; }
    TreeItem Parent(TreeItem item) const;  // kNoTreeItem: none
    int Count(TreeItem parent) const;
    TreeItem Child(TreeItem parent, int place) const;  // kNoTreeItem: none
    int Place(TreeItem item) const;                    // below its parent

    // `place` is at most the count.
    void Insert(TreeItem parent, int place, std::span<const TreeItemLook> looks);
    // With all that is below them. There are as many from `place` on.
    void Delete(TreeItem parent, int place, int count);
    // Of an item that exists.
    void SetExpander(TreeItem item, bool hasExpander) { nodes.at(item).look.hasExpander = hasExpander; }

  private:
    struct Node {
        TreeItem parent = kNoTreeItem;
        mutable int place = 0;  // where it was; others may have come before it
        std::vector<TreeItem> children;
        TreeItemLook look;
    };
    const Node* Find(TreeItem item) const;
    void Forget(TreeItem item);

    std::unordered_map<TreeItem, Node> nodes;
    TreeItem nextItem = kTreeRoot + 1;
};

}  // namespace permora
