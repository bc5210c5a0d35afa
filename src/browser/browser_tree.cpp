// The tree of folders at the side of the list.
#include <algorithm>

#include "browser/browser_view.h"
#include "framework/frame_window.h"
#include "framework/styles.h"
#include "platform/api/shell.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr int kTreeEntry = 11;  // in the frame's View menu
constexpr int kLeastTree = 80;
constexpr int kLeastList = 220;

}  // namespace

void BrowserView::ShowFolderTree(bool shows, int width) {
    treeWidth = std::max(width, kLeastTree);
    if (shows != ShowsFolderTree()) {
        const bool hadKeyboard = shows || folderTree->HasKeyboard();
        splitter.DestroyWindow();
        folderTree = shows ? std::make_unique<FolderTree>() : nullptr;
        if (shows && (!folderTree->Create(*this, *this, dotNames) ||
                      !splitter.Create(
                          *this, 0, [this](int left) { SetTreeWidth(left); }, [this] { choiceMade(); }))) {
            folderTree.reset();
            ShowErrorBox(GetSafeHwnd(), "Error: cannot show the folder tree");
        }
        if (!shows && hadKeyboard) list.SetFocus();
    }
    if (CMenu menu = ViewMenu()) menu.CheckByPosition(kTreeEntry, ShowsFolderTree());
    LayOutPanes();
    if (folderTree != nullptr) folderTree->Follow({Rows().Kind(), Rows().Folder()});
}

// The list keeps its room first.
void BrowserView::LayOutPanes() {
    const Rect client = GetClientRect();
    int width = 0;
    if (folderTree != nullptr) {
        width = std::min(treeWidth, client.right - kLeastList - CSplitter::kWidth);
        if (width < kLeastTree) width = 0;
        folderTree->ShowWindow(width > 0 ? SW_SHOW : SW_HIDE);
        splitter.ShowWindow(width > 0 ? SW_SHOW : SW_HIDE);
        folderTree->MoveWindow({0, 0, width, client.bottom});
        splitter.MoveWindow({width, 0, width + CSplitter::kWidth, client.bottom});
        if (width > 0) width += CSplitter::kWidth;
    }
    list.MoveWindow({width, 0, client.right, client.bottom});
}

void BrowserView::SetTreeWidth(int width) {
    const int most = GetClientRect().right - kLeastList - CSplitter::kWidth;
    treeWidth = std::clamp(width, kLeastTree, std::max(most, kLeastTree));
    LayOutPanes();
}

void BrowserView::WidenTree(int pixels) {
    SetTreeWidth(treeWidth + pixels);
    choiceMade();
}

void BrowserView::EditFolder(const std::string& path) {
    if (editFolder && !GiveUpFor([this, path] { EditFolder(path); })) editFolder(path);
}

void BrowserView::OnFolderTree() {
    ShowFolderTree(!ShowsFolderTree(), treeWidth);
    choiceMade();
}

}  // namespace permora
