#include "browser/folder_tree.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "browser/drive_rows.h"
#include "browser/share_rows.h"
#include "framework/keyboard.h"
#include "framework/menu.h"
#include "framework/styles.h"
#include "framework/worker_updates.h"
#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "platform/volume_question.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

constexpr std::size_t kRootLength = 3;  // "C:\", with which the text of a drive begins
constexpr std::size_t kPortion = 500;   // of items that are inserted at once

}  // namespace

const MessageMap& FolderTree::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<FolderTree>(
        CWnd::GetMessageMap(), {
                                   {IDC_FOLDER_TREE, Notify::kSelectionChanged, &FolderTree::OnSelected},
                                   {IDC_FOLDER_TREE, Notify::kItemChanged, &FolderTree::OnOpenedOrClosed},
                                   {IDC_FOLDER_TREE, Notify::kClick, &FolderTree::OnClick},
                                   {IDC_FOLDER_TREE, Notify::kRightClick, &FolderTree::OnRightClick},
                                   {IDC_FOLDER_TREE, Notify::kKeyDown, &FolderTree::OnKeyDown},
                               });
    return kMap;
}

bool FolderTree::Create(CWnd& window, TreeOwner& owner, DotNames names) {
    browser = &owner;
    dots = names;
    if (!CreateChild(window, {}, IDC_FOLDER_TREE) || !images.Create(SmallIconSize()) ||
        !tree.Create(*this, WS_VISIBLE | WS_TABSTOP, {}, IDC_FOLDER_TREE))
        return false;
    std::vector<unsigned int> icons = {IDI_FOLDER, IDI_SHARED_FOLDER};
    const auto ofDrives = DriveRows().Images();
    icons.insert(icons.end(), ofDrives.begin(), ofDrives.end());
    for (const unsigned int icon : icons)
        imageOf[icon] = images.Add(CIcon::Load(icon));
    tree.SetImageList(images);
    tree.SetWindowText("Folders");
    drives = tree.InsertItem(
        kTreeRoot, 0, {.text = kDriveListLocation, .image = imageOf[IDI_DRIVE_FIXED], .hasExpander = true});
    shares = tree.InsertItem(kTreeRoot, 1, {.text = kShareListLocation, .image = imageOf[IDI_SHARED_FOLDER]});
    tree.SelectItem(drives);
    tree.Expand(drives, true);
    ReadFolder(drives);
    return true;
}

void FolderTree::OnDestroy() {
    leadLater.Stop();
    remarkLater.Stop();
    for (const auto& each : opened)
        Stop(each.second);
    opened.clear();
}

// ---- Places ----

TreePlace FolderTree::PlaceOf(TreeItem item) const {
    if (item == drives) return {PlaceKind::kDrives, {}};
    if (item == shares) return {PlaceKind::kShares, {}};
    const TreeItem itemAbove = tree.Items().Parent(item);
    const std::string& text = tree.Items().Text(item);
    if (itemAbove == drives) return {PlaceKind::kFolder, text.substr(0, kRootLength)};
    const std::string above = PlaceOf(itemAbove).folder;
    return {PlaceKind::kFolder, above + (above.ends_with('\\') ? "" : "\\") + text};
}

TreeItem FolderTree::FindChild(TreeItem item, const std::string& name) const {
    for (int place = 0; place < tree.Items().Count(item); ++place) {
        const TreeItem child = tree.Items().Child(item, place);
        const std::string& text = tree.Items().Text(child);
        const bool isNamed = item == drives ? text.starts_with(name) : text == name;
        if (isNamed && !tree.Items().Look(child).isDimmed) return child;
    }
    return kNoTreeItem;
}

void FolderTree::Follow(const TreePlace& place) {
    if (place == followed) return;
    followed = place;
    if (isLeading) return;
    leadLater.Stop();
    goal = place;
    Seek();
}

// As far as the folders have been read. Merge goes on with it.
void FolderTree::Seek() {
    TreeItem item = goal.kind == PlaceKind::kShares ? shares : drives;
    std::string rest = goal.folder;
    isSeeking = false;
    while (!rest.empty()) {
        if (!opened.contains(item)) {
            tree.SetExpander(item, true);
            tree.Expand(item, true);
            ReadFolder(item);
        }
        const std::size_t length = item == drives ? kRootLength : std::min(rest.find('\\'), rest.size());
        const TreeItem child = FindChild(item, rest.substr(0, length));
        isSeeking = child == kNoTreeItem && opened.at(item).reading != nullptr;
        if (child == kNoTreeItem) break;
        rest.erase(0, item == drives ? length : length + 1);
        item = child;
    }
    tree.SelectItem(item);
}

// The browser may end up elsewhere: a link leads to the folder that it names. The tree stays at the link.
void FolderTree::Lead(TreeItem item) {
    leadLater.Stop();
    if (!tree.Items().Has(item) || tree.Items().Look(item).isDimmed) return;
    const TreePlace place = PlaceOf(item);
    if (place == goal) return;
    isSeeking = false;
    isLeading = true;
    const bool isShown = browser->ShowPlace(place);
    isLeading = false;
    goal = isShown ? place : followed;
    if (!isShown) Seek();
}

// ---- Notifications ----

// A user who passes over items by keyboard does not want to see each folder.
void FolderTree::OnSelected(Notification& notification) {
    if (notification.row != tree.GetSelectedItem()) return;  // the browser has gone elsewhere meanwhile
    constexpr std::chrono::milliseconds kPause(250);
    isSeeking = false;
    leadLater.Start(kPause, [this] { Lead(tree.GetSelectedItem()); });
}

void FolderTree::OnClick(Notification& notification) {
    Lead(notification.row);
}

void FolderTree::OnOpenedOrClosed(Notification& notification) {
    const TreeItem item = notification.row;
    if (!tree.Items().Has(item)) return;
    if (!tree.IsExpanded(item))
        CloseFolder(item);
    else if (!opened.contains(item))
        ReadFolder(item);
}

void FolderTree::OnKeyDown(Notification& notification) {
    constexpr unsigned int kBackspace = 0x08;
    constexpr unsigned int kEnter = 0x0D;
    constexpr unsigned int kLeft = 0x25;
    constexpr unsigned int kRight = 0x27;
    constexpr int kWiden = 16;
    if (notification.key == kEnter) {
        Lead(tree.GetSelectedItem());
        browser->LeaveTree();
    } else if (notification.key == kBackspace) {
        browser->GoUp();
    } else if (IsControlKeyDown() && (notification.key == kLeft || notification.key == kRight)) {
        browser->WidenTree(notification.key == kLeft ? -kWiden : kWiden);
    } else {
        notification.handled = false;
    }
}

void FolderTree::OnRightClick(Notification& notification) {
    const TreeItem item = notification.row;
    const CMenu menu = CMenu::Load(IDC_FOLDER_TREE);
    if (!menu || tree.Items().Look(item).isDimmed) return;
    const TreePlace place = PlaceOf(item);
    CMenu popup = menu.GetSubMenu(0);
    popup.Enable(ID_PERMISSIONS, place.kind == PlaceKind::kFolder);
    const Rect corner = tree.GetWindowRect();
    const Point clicked{corner.left + notification.point.x, corner.top + notification.point.y};
    const unsigned int command = popup.TrackPopup(clicked, *this);
    if (command == ID_PERMISSIONS) browser->EditFolder(place.folder);
    if (command == ID_REFRESH) browser->RefreshList();
}

// ---- Reading ----

// What is being read is not read by a second thread.
void FolderTree::Refresh() {
    for (auto& [item, open] : opened)
        if (open.reading != nullptr && !open.isRead)
            open.isStale = true;
        else
            ReadFolder(item);
}

void FolderTree::Stop(const Open& open) {
    if (open.reading != nullptr) open.reading->isStopped = true;
}

void FolderTree::ReadFolder(TreeItem item) {
    Open& open = opened[item];
    open.reading = std::make_shared<Subfolders>();
    open.reading->folder = PlaceOf(item).folder;
    open.reading->dots = dots;
    open.isRead = open.isStale = false;
    const std::string& folder = open.reading->folder;
    const DWORD error =
        open.question.Ask([reading = open.reading] { reading->Read(); }, [this, item] { TakeRead(item); },
                          folder.empty() ? folder : VolumeOfPath(folder));
    if (error != ERROR_SUCCESS) {
        open.reading->error = error;
        TakeRead(item);
    }
    constexpr std::chrono::milliseconds kUnnoticed(200);
    remarkLater.Start(kUnnoticed, [this] { ShowRemarks(); });
}

// Where a folder takes long.
void FolderTree::ShowRemarks() {
    remarkLater.Stop();
    for (const auto& [item, open] : opened)
        if (open.reading != nullptr && tree.Items().Count(item) == 0)
            tree.InsertItem(item, 0, {.text = "Reading...", .isDimmed = true});
}

void FolderTree::CloseFolder(TreeItem item) {
    const auto found = opened.find(item);
    if (found == opened.end()) return;
    Stop(found->second);
    opened.erase(found);
    isSeeking = false;
    const TreeItem selected = tree.GetSelectedItem();
    TreeItem above = selected;
    while (above != item && above != kNoTreeItem)
        above = tree.Items().Parent(above);
    const bool hadSelection = above == item && selected != item;
    if (hadSelection) tree.SelectItem(item);
    DeleteChildren(item, 0, tree.Items().Count(item));
    if (hadSelection) Lead(item);
}

void FolderTree::DeleteChildren(TreeItem item, int place, int count) {
    const TreeItem selected = tree.GetSelectedItem();
    tree.DeleteItems(item, place, count);
    if (!tree.Items().Has(selected)) isSeeking = true;
    std::erase_if(opened, [this](const auto& each) {
        const bool isGone = !tree.Items().Has(each.first);
        if (isGone) Stop(each.second);
        return isGone;
    });
}

void FolderTree::TakeRead(TreeItem item) {
    Open& open = opened.at(item);
    if (open.isStale) return ReadFolder(item);
    open.isRead = true;
    open.next = 0;
    open.place = 0;
    open.names.clear();
    if (tree.Items().Count(item) > 0)
        for (const Subfolder& each : open.reading->found)
            open.names.insert(each.text);
    QueueWork(tree, [this] { Merge(); });
}

// In turns, between which the window lives: there may be a hundred thousand folders in one.
void FolderTree::Merge() {
    constexpr std::chrono::milliseconds kTurn(20);
    const auto end = Clock::now() + kTurn;
    bool hasMore = false;
    std::vector<TreeItem> read;
    for (const auto& [item, open] : opened)
        if (open.isRead) read.push_back(item);
    for (const TreeItem item : read) {
        const auto found = opened.find(item);
        if (found == opened.end()) continue;  // gone with a folder above it
        hasMore = !MergeSome(item, found->second, end) || hasMore;
    }
    if (isSeeking) Seek();
    if (hasMore) QueueWork(tree, [this] { Merge(); });
}

// Walks along the items and the names read, which have the same order. Returns true at the end.
bool FolderTree::MergeSome(TreeItem item, Open& open, Clock::time_point end) {
    const auto& found = open.reading->found;
    const TreeItems& items = tree.Items();
    while (open.next < found.size() || open.place < items.Count(item)) {
        if (Clock::now() >= end) return false;
        const TreeItem there = items.Child(item, open.place);
        const bool isThere = there != kNoTreeItem;
        const bool isKept = isThere && !items.Look(there).isDimmed && open.next < found.size() &&
                            open.names.contains(items.Text(there));
        if (isThere && !isKept) {
            DeleteChildren(item, open.place, 1);
        } else if (isKept && items.Text(there) == found[open.next].text) {
            tree.SetExpander(there, true);  // it may have subfolders by now
            ++open.place;
            ++open.next;
        } else {
            InsertSome(item, open);
        }
    }
    FinishFolder(item, *std::exchange(open.reading, nullptr));
    return true;
}

// Up to the name that is there.
void FolderTree::InsertSome(TreeItem item, Open& open) {
    const auto& found = open.reading->found;
    const std::string& there = tree.Items().Text(tree.Items().Child(item, open.place));
    std::vector<TreeItemLook> looks;
    for (; open.next < found.size() && looks.size() < kPortion; ++open.next) {
        const Subfolder& each = found[open.next];
        if (each.text == there) break;
        looks.push_back({.text = each.text, .image = imageOf[each.icon], .hasExpander = true});
    }
    tree.InsertItems(item, open.place, looks);
    open.place += static_cast<int>(looks.size());
}

void FolderTree::FinishFolder(TreeItem item, const Subfolders& read) {
    Open& open = opened.at(item);
    open.isRead = false;
    open.names.clear();
    if (read.error != ERROR_SUCCESS) {
        const std::string text = read.error == ERROR_TIMEOUT ? kNoAnswer : SystemMessageLine(read.error);
        tree.InsertItem(item, tree.Items().Count(item), {.text = text, .isDimmed = true});
    } else if (read.found.empty()) {
        if (tree.GetSelectedItem() == item) isSeeking = false;  // what is sought is not here
        opened.erase(item);
        tree.Expand(item, false);
        tree.SetExpander(item, false);
    }
}

}  // namespace permora
