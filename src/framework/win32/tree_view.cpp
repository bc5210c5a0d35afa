#include "framework/win32/tree_view.h"

#include <cstring>
#include <utility>

#include "framework/win32/controls.h"
#include "framework/win32/image.h"

namespace permora::win32 {
namespace {

constexpr int kTreeIndent = 19;  // of each level, in logical pixels

}  // namespace

TreeViewWindow::TreeViewWindow(CTreeCtrl& shown, CWnd& parent, const ControlSpec& spec)
    : SystemWindow(shown, spec.rect), tree(shown) {
    constexpr DWORD kLook = TVS_HASBUTTONS | TVS_LINESATROOT | TVS_SHOWSELALWAYS | TVS_DISABLEDRAGDROP;
    Adopt(MakeChild(parent,
                    {.className = WC_TREEVIEWW,
                     .style = (spec.style & ~DWORD{WS_BORDER}) | kLook,
                     .extendedStyle = (spec.style & WS_BORDER) != 0 ? DWORD{WS_EX_CLIENTEDGE} : 0,
                     .rect = spec.rect},
                    spec.id, {}));
    Ask(TVM_SETEXTENDEDSTYLE, TVS_EX_DOUBLEBUFFER, TVS_EX_DOUBLEBUFFER);
    Ask(TVM_SETINDENT, static_cast<WPARAM>(ToDevice(kTreeIndent, Dpi())));
}

TreeViewWindow::~TreeViewWindow() {
    DestroyOwn();  // before the images that it shows
    if (images != nullptr) ImageList_Destroy(images);
}

LRESULT TreeViewWindow::Ask(UINT question, WPARAM wide, LPARAM wider) const {
    return SendMessageW(Own(), question, wide, wider);
}

HTREEITEM TreeViewWindow::HandleOf(TreeItem item) const {
    const auto found = handles.find(item);
    return found != handles.end() ? found->second : nullptr;
}

TreeItem TreeViewWindow::ItemAt(HTREEITEM handle) const {
    TVITEMW item{};
    item.mask = TVIF_HANDLE | TVIF_PARAM;
    item.hItem = handle;
    const bool isThere = handle != nullptr && Ask(TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) != 0;
    return isThere ? static_cast<TreeItem>(item.lParam) : kNoTreeItem;
}

bool TreeViewWindow::HasBelow(TreeItem item) const {
    return tree.Items().Count(item) > 0 || tree.Items().Look(item).hasExpander;
}

std::optional<RECT> TreeViewWindow::RectOf(HTREEITEM item, WPARAM isTextAlone) const {
    RECT rect{};
    static_assert(sizeof item <= sizeof rect);
    std::memcpy(&rect, &item, sizeof item);  // the question, where the answer comes
    if (item == nullptr || Ask(TVM_GETITEMRECT, isTextAlone, reinterpret_cast<LPARAM>(&rect)) == 0)
        return std::nullopt;
    return rect;
}

// ---- Looks ----

void TreeViewWindow::SetText(const std::string& text) {
    SystemWindow::SetText(text);
    SetAccessibleName(text);
}

void TreeViewWindow::Redraw() {
    if (tree.Images() != shownImages) ShowImages();
    SystemWindow::Redraw();
}

void TreeViewWindow::OnOtherResolution() {
    SystemWindow::OnOtherResolution();
    Ask(TVM_SETINDENT, static_cast<WPARAM>(ToDevice(kTreeIndent, Dpi())));
    ShowImages();
}

void TreeViewWindow::ShowImages() {
    shownImages = tree.Images();
    HIMAGELIST before = std::exchange(images, MakeImageList(shownImages, Dpi()));
    Ask(TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(images));
    if (before != nullptr) ImageList_Destroy(before);
    Invalidate();
}

void TreeViewWindow::ItemChanged(TreeItem item) {
    if (const auto line = RectOf(HandleOf(item), FALSE)) InvalidateRect(Own(), &*line, TRUE);
}

// ---- Items ----

void TreeViewWindow::BeginInsert(TreeItem parent, int first, int count) {
    change = {parent, first, count};
}

// Items come fast below one that is closed, so the first below an open one wait for its opening.
void TreeViewWindow::EndInsert() {
    const Silence silence(*this);
    const TreeItems& items = tree.Items();
    const bool areFirst = items.Count(change.parent) == change.count;
    TVITEMW state{};
    state.mask = TVIF_HANDLE | TVIF_STATE;
    state.hItem = HandleOf(change.parent);
    state.stateMask = TVIS_EXPANDED;
    if (areFirst && state.hItem != nullptr) Ask(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&state));

    // From the last one on, so that all come behind the same item.
    TVINSERTSTRUCTW made{};
    made.hInsertAfter =
        change.first == 0 ? TVI_FIRST : HandleOf(items.Child(change.parent, change.first - 1));
    made.hParent = change.parent == kTreeRoot ? TVI_ROOT : state.hItem;
    made.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_CHILDREN | TVIF_PARAM;
    made.item.pszText = LPSTR_TEXTCALLBACKW;
    made.item.iImage = I_IMAGECALLBACK;
    made.item.iSelectedImage = I_IMAGECALLBACK;
    made.item.cChildren = I_CHILDRENCALLBACK;
    Ask(WM_SETREDRAW, FALSE);
    for (int number = change.count - 1; number >= 0; --number) {
        const TreeItem item = items.Child(change.parent, change.first + number);
        made.item.lParam = item;
        handles[item] = reinterpret_cast<HTREEITEM>(Ask(TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&made)));
    }
    if (areFirst && IsExpanded(change.parent)) ShowOpen(change.parent);
    Ask(WM_SETREDRAW, TRUE);
    Invalidate();
}

// The item that is selected instead of one that is about to be deleted: behind them, before them or above
// them. kNoTreeItem: there is no other.
TreeItem TreeViewWindow::BesideDeleted() const {
    const TreeItems& items = tree.Items();
    const TreeItem behind = items.Child(change.parent, change.first + change.count);
    if (behind != kNoTreeItem) return behind;
    const TreeItem before = items.Child(change.parent, change.first - 1);
    if (before != kNoTreeItem) return before;
    return change.parent != kTreeRoot ? change.parent : kNoTreeItem;
}

void TreeViewWindow::BeginDelete(TreeItem parent, int first, int count) {
    change = {parent, first, count};
    const TreeItems& items = tree.Items();
    for (int number = first; number < first + count; ++number)
        doomed.push_back(HandleOf(items.Child(parent, number)));
    TreeItem selected = Selected();
    while (selected != kNoTreeItem && items.Parent(selected) != parent)
        selected = items.Parent(selected);
    const int number = items.Place(selected);
    if (selected != kNoTreeItem && number >= first && number < first + count) Select(BesideDeleted());
}

void TreeViewWindow::EndDelete() {
    const Silence silence(*this);
    Ask(WM_SETREDRAW, FALSE);
    for (HTREEITEM item : std::exchange(doomed, {}))
        Ask(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(item));
    if (tree.Items().Count(change.parent) == 0) ShowOpen(change.parent);
    Ask(WM_SETREDRAW, TRUE);
    Invalidate();
}

// ---- What is selected and open ----

TreeItem TreeViewWindow::Selected() const {
    return ItemAt(reinterpret_cast<HTREEITEM>(Ask(TVM_GETNEXTITEM, TVGN_CARET)));
}

void TreeViewWindow::Select(TreeItem item) {
    const Silence silence(*this);
    HTREEITEM shown = HandleOf(item);
    Ask(TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(shown));
    if (shown != nullptr) Ask(TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(shown));
}

void TreeViewWindow::Expand(TreeItem item, bool isOpen) {
    if (item == kTreeRoot || IsExpanded(item) == isOpen) return;
    if (isOpen)
        open.insert(item);
    else
        open.erase(item);
    ShowOpen(item);
}

// The control opens and closes only what has items below it; the mark of the others is all that there is to
// change.
void TreeViewWindow::ShowOpen(TreeItem item) {
    const Silence silence(*this);
    TVITEMW state{};
    state.mask = TVIF_HANDLE | TVIF_STATE;
    state.hItem = HandleOf(item);
    state.state = IsExpanded(item) ? TVIS_EXPANDED : 0;
    state.stateMask = TVIS_EXPANDED;
    if (state.hItem == nullptr) return;
    if (tree.Items().Count(item) > 0)
        Ask(TVM_EXPAND, IsExpanded(item) ? TVE_EXPAND : TVE_COLLAPSE, reinterpret_cast<LPARAM>(state.hItem));
    else
        Ask(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&state));
}

std::unique_ptr<NativeWindow> MakeTreeView(CTreeCtrl& tree, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<TreeViewWindow>(tree, parent, spec);
}

}  // namespace permora::win32
