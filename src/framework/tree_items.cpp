#include "framework/tree_items.h"

#include <utility>

namespace permora {

TreeItems::TreeItems() {
    nodes.emplace(kTreeRoot, Node{});
}

const TreeItems::Node* TreeItems::Find(TreeItem item) const {
    const auto found = nodes.find(item);
    return found != nodes.end() ? &found->second : nullptr;
}

const TreeItemLook& TreeItems::Look(TreeItem item) const {
    static const TreeItemLook kNone;
    const Node* node = Find(item);
    return node != nullptr ? node->look : kNone;
}

TreeItem TreeItems::Parent(TreeItem item) const {
    const Node* node = Find(item);
    return node != nullptr ? node->parent : kNoTreeItem;
}

int TreeItems::Count(TreeItem parent) const {
    const Node* node = Find(parent);
    return node != nullptr ? static_cast<int>(node->children.size()) : 0;
}

TreeItem TreeItems::Child(TreeItem parent, int place) const {
    if (place < 0 || place >= Count(parent)) return kNoTreeItem;
    return Find(parent)->children[static_cast<std::size_t>(place)];
}

// After a change, the first question numbers all items beside this one.
int TreeItems::Place(TreeItem item) const {
    const Node* node = Find(item);
    if (node == nullptr || item == kTreeRoot) return 0;
    if (Child(node->parent, node->place) != item) {
        int place = 0;
        for (const TreeItem each : Find(node->parent)->children)
            Find(each)->place = place++;
    }
    return node->place;
}

void TreeItems::Insert(TreeItem parent, int place, std::span<const TreeItemLook> looks) {
    std::vector<TreeItem> made;
    made.reserve(looks.size());
    for (const TreeItemLook& look : looks) {
        made.push_back(nextItem++);
        nodes.emplace(made.back(), Node{parent, place + static_cast<int>(made.size()) - 1, {}, look});
    }
    auto& children = nodes.at(parent).children;
    children.insert(children.begin() + place, made.begin(), made.end());
}

void TreeItems::Delete(TreeItem parent, int place, int count) {
    auto& children = nodes.at(parent).children;
    const auto first = children.begin() + place;
    const std::vector<TreeItem> gone(first, first + count);
    children.erase(first, first + count);
    for (const TreeItem item : gone)
        Forget(item);
}

void TreeItems::Forget(TreeItem item) {
    std::vector<TreeItem> left{item};
    while (!left.empty()) {
        const auto found = nodes.extract(std::exchange(left.back(), kNoTreeItem));
        left.pop_back();
        left.insert(left.end(), found.mapped().children.begin(), found.mapped().children.end());
    }
}

}  // namespace permora
