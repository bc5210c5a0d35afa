// FolderTree: the drives, the folders below them and the shares as a tree beside the browser's list. It
// follows the browser, and leads it.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <unordered_set>

#include "browser/row_source.h"
#include "browser/subfolders.h"
#include "framework/background_question.h"
#include "framework/repeated_work.h"
#include "framework/tree_ctrl.h"

namespace permora {

// A place that the browser can show.
struct TreePlace {
    PlaceKind kind = PlaceKind::kDrives;
    std::string folder;  // full path, of PlaceKind::kFolder

    friend bool operator==(const TreePlace&, const TreePlace&) = default;
};

// What the user wants in the tree.
class TreeOwner {
  public:
    virtual ~TreeOwner() = default;
    // False: it cannot be shown, which has been reported.
    virtual bool ShowPlace(const TreePlace& place) = 0;
    virtual void GoUp() = 0;
    virtual void LeaveTree() = 0;  // the keyboard goes to the list
    virtual void WidenTree(int pixels) = 0;
    virtual void EditFolder(const std::string& path) = 0;  // its permissions
    virtual void RefreshList() = 0;                        // and with it the tree
};

// Folders are read by threads of their own when they are opened, and forgotten when they are closed, so that
// a volume that hangs holds up nothing else. Nothing but the list of drives and what leads to the place shown
// is opened by itself.
class FolderTree : public CWnd {
  public:
    FolderTree() = default;
    ~FolderTree() override { DestroyWindow(); }

    // As a child of `window`. `owner` outlives this object.
    bool Create(CWnd& window, TreeOwner& owner, DotNames names);
    // From the next Refresh on.
    void SetDotNames(DotNames names) {
        dots = names;
        isSeeking = true;
    }
    // All open folders are read again. What is still there stays as it is.
    void Refresh();
    // Selects the place that the browser shows, as soon as the folders above it have been read. Of a place
    // that the tree does not have, it selects the nearest folder above.
    void Follow(const TreePlace& place);
    bool HasKeyboard() const { return tree.HasFocus(); }

  protected:
    void OnDestroy() override;
    void OnSize(Size client) override { tree.MoveWindow({0, 0, client.cx, client.cy}); }
    void OnSetFocus() override { tree.SetFocus(); }
    const MessageMap& GetMessageMap() const override;

  private:
    // A folder that is open.
    struct Open {
        std::shared_ptr<Subfolders> reading;  // null: it has been read
        BackgroundQuestion question;
        // Of what was read, while it goes into the tree: the rest, and all names.
        std::size_t next = 0;
        int place = 0;
        std::unordered_set<std::string> names;
        bool isRead = false;   // but not yet in the tree as a whole
        bool isStale = false;  // to be read once more
    };
    using Clock = std::chrono::steady_clock;

    void ReadFolder(TreeItem item);
    void CloseFolder(TreeItem item);
    static void Stop(const Open& open);
    void ShowRemarks();
    void TakeRead(TreeItem item);
    void Merge();
    bool MergeSome(TreeItem item, Open& open, Clock::time_point end);
    void InsertSome(TreeItem item, Open& open);
    void FinishFolder(TreeItem item, const Subfolders& read);
    void DeleteChildren(TreeItem item, int place, int count);

    TreePlace PlaceOf(TreeItem item) const;
    TreeItem FindChild(TreeItem item, const std::string& name) const;
    void Seek();
    void Lead(TreeItem item);

    void OnSelected(Notification& notification);
    void OnOpenedOrClosed(Notification& notification);
    void OnClick(Notification& notification);
    void OnRightClick(Notification& notification);
    void OnKeyDown(Notification& notification);

    CTreeCtrl tree;
    CImageList images;
    std::map<unsigned int, int> imageOf;  // by icon resource
    TreeOwner* browser = nullptr;
    DotNames dots = DotNames::kLeftOut;
    TreeItem drives = kNoTreeItem;
    TreeItem shares = kNoTreeItem;
    std::map<TreeItem, Open> opened;
    TreePlace followed;  // what the browser shows
    TreePlace goal;      // the same, or the link that led there
    bool isSeeking = false;
    bool isLeading = false;
    RepeatedWork leadLater;
    RepeatedWork remarkLater;
};

}  // namespace permora
