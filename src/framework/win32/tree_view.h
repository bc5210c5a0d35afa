// The tree view: the system's control, whose items know their number and ask the shared half for the rest.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "framework/styles.h"
#include "framework/tree_native.h"
#include "framework/win32/window.h"

namespace permora::win32 {

// The control forgets that an item is open while there is nothing below it, and reports some of its changes
// only. So which items are open is kept here, and the control follows.
class TreeViewWindow final : public SystemWindow<NativeTreeView> {
  public:
    TreeViewWindow(CTreeCtrl& shown, CWnd& parent, const ControlSpec& spec);
    ~TreeViewWindow() override;

    void SetText(const std::string& text) override;  // the tree does not show it
    void Redraw() override;
    void OnOtherResolution() override;
    KeyUse OnDialogKey(UINT virtualKey) override;

    void BeginInsert(TreeItem parent, int first, int count) override;
    void EndInsert() override;
    void BeginDelete(TreeItem parent, int first, int count) override;
    void EndDelete() override;
    void ItemChanged(TreeItem item) override;

    TreeItem Selected() const override;
    void Select(TreeItem item) override;
    void Expand(TreeItem item, bool isOpen) override;
    bool IsExpanded(TreeItem item) const override { return open.contains(item); }

    // Null for the root and for what is no item.
    HTREEITEM HandleOf(TreeItem item) const;
    TreeItem ItemAt(HTREEITEM handle) const;  // kNoTreeItem: null
    // Of its line or of its text alone, in the display's pixels; nothing when it is not in view.
    std::optional<RECT> RectOf(HTREEITEM item, WPARAM isTextAlone) const;

  protected:
    LRESULT OnMessage(const Message& message) override;
    std::optional<LRESULT> OnReflected(const Message& message) override;

  private:
    static constexpr UINT kReport = WM_APP + 1;  // a Notify code and an item
    static constexpr UINT kShowImages = WM_APP + 2;

    // While it exists, what the control tells is about what the program does.
    class Silence {
      public:
        explicit Silence(TreeViewWindow& tree) : isSilent(tree.isSilent), before(tree.isSilent) {
            isSilent = true;
        }
        ~Silence() { isSilent = before; }
        Silence(const Silence&) = delete;
        Silence& operator=(const Silence&) = delete;

      private:
        bool& isSilent;
        bool before;
    };

    // A change of the items below `parent`, between its beginning and its end.
    struct Change {
        TreeItem parent = kTreeRoot;
        int first = 0;
        int count = 0;
    };

    LRESULT Ask(UINT question, WPARAM wide = 0, LPARAM wider = 0) const;
    void ShowImages();
    bool HasBelow(TreeItem item) const;  // or may have
    void ShowOpen(TreeItem item);
    TreeItem BesideDeleted() const;

    void GiveItem(TVITEMW& item);
    LRESULT Draw(NMTVCUSTOMDRAW& drawing) const;
    LRESULT OnExpanding(const NMTREEVIEWW& details);
    LRESULT OnOwnNotification(const NMHDR& header, LPARAM details);
    bool ReportKey(UINT virtualKey);
    void PostReport(Notify code, TreeItem item);
    void ReportMenu(HTREEITEM item, POINT client);
    void ReportMenuKey();
    LRESULT OnKey(const Message& message);
    TVHITTESTINFO HitAt(POINT client) const;

    CTreeCtrl& tree;
    std::unordered_map<TreeItem, HTREEITEM> handles;
    std::unordered_set<TreeItem> open;
    Change change;
    std::vector<HTREEITEM> doomed;  // until EndDelete
    HIMAGELIST images = nullptr;
    const CImageList::Images* shownImages = nullptr;
    bool isSilent = false;
    bool isKeyTaken = false;  // so the character that it types is not the tree's
    TreeItem pressedItem = kNoTreeItem;
    // The texts that the control has asked for last; it may still use them.
    std::array<std::wstring, 3> given;
    std::size_t nextGiven = 0;
};

}  // namespace permora::win32
