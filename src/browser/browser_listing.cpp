// Filling the list, and the texts of the bars.
#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>

#include "browser/address_bar.h"
#include "browser/browser_view.h"
#include "browser/list_presentation.h"
#include "framework/bars.h"
#include "platform/host_path.h"
#include "platform/visible_text.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr int kMessagePane = 0;
constexpr int kCountPane = 1;
constexpr int kHostPathPane = 2;

}  // namespace

// Puts the rows of one source into the list.
class BrowserView::Filling : public RowReceiver {
  public:
    Filling(BrowserView& browser, PlaceKind source)
        : view(browser), ending(source == PlaceKind::kShares ? "" : " ") {}

    bool Add(const Row& row) override {
        const int place = view.list.GetItemCount();
        const int image = row.image == kShellImage ? view.images.AddShellIcon(row.name) : row.image;
        if (!view.list.InsertItem(place, row.name, image) || !view.list.SetItemData(place, row.position))
            return false;
        const std::pair<int, const std::string&> texts[] = {
            {kTypeColumn, row.type}, {kSizeColumn, row.size}, {kModifiedColumn, row.modified}};
        int column = kFixedColumns;
        for (const std::string& text : row.more)
            if (!view.list.SetItemText(place, column++, text)) return false;
        return std::ranges::all_of(texts, [&](const auto& each) {
            return each.second.empty() || view.list.SetItemText(place, each.first, each.second);
        });
    }
    void ShowCount(int count) override {
        view.ShowItemCount("Total items: " + std::to_string(count) + ending);
    }

  private:
    BrowserView& view;
    const char* ending;
};

Outcome BrowserView::Fill(RowSource& source) {
    StopReadingSecurity();
    security.Restart(nullptr);
    if (!list.DeleteAllItems() || !images.Rebuild(list, source.Images())) return {ERROR_NOT_ENOUGH_MEMORY};
    ArrangeColumns(source);
    const bool isFolder = source.Kind() == PlaceKind::kFolder;
    if (isFolder) ShowState("Processing...");
    const bool isReport = list.GetView() == ListView::kReport;
    Filling filling(*this, source.Kind());
    Outcome outcome =
        source.List({isReport ? RowDetail::kAll : RowDetail::kName, rowIcons, dotNames}, filling);
    if (isFolder) ShowState("Ready");
    PaintStatusBar();
    WatchSecurity(source);
    if (outcome.IsDone()) ShowLocation(source);
    return outcome;
}

// On failure, the location is unchanged. The list is unchanged, empty, or shows a part of the source.
Outcome BrowserView::Show(std::unique_ptr<RowSource> source) {
    Outcome outcome = source->Open();
    if (outcome.IsDone()) outcome = Fill(*source);
    if (outcome.IsDone()) (aside ? aside : location) = std::move(source);
    return outcome;
}

Outcome BrowserView::ListAgain() {
    return Show(Rows().Anew());
}

void BrowserView::ArrangeColumns(const RowSource& source) {
    const auto headers = source.MoreHeaders();
    if (headers.size() == moreColumns) return;
    security.Remove();
    for (; moreColumns > 0; --moreColumns)
        list.DeleteColumn(kFixedColumns);
    for (const char* header : headers)
        list.InsertColumn(kFixedColumns + static_cast<int>(moreColumns++), header, kColumnWidth);
    security.Insert();
}

void BrowserView::WatchSecurity(const RowSource& source) {
    auto place = std::make_shared<Place>();
    const bool hasObjects = source.Kind() != PlaceKind::kShares && source.Hold({}, *place).IsDone();
    if (hasObjects) security.Restart(std::move(place));
}

void BrowserView::RefreshList() {
    RefreshList({});
}

void BrowserView::RefreshList(const std::vector<std::string>& made) {
    if (folderTree != nullptr) folderTree->Refresh();
    const std::vector<std::string> selected = SelectedNames();
    const int focusedRow = list.GetFocusedRow();
    const std::string focusedName = list.GetItemText(focusedRow, kNameColumn);
    const int markedRow = list.GetSelectionMark();
    const std::string markedName = list.GetItemText(markedRow, kNameColumn);
    if (const Outcome outcome = ListAgain(); !outcome.IsDone()) {
        const bool isGone = IsShowing(PlaceKind::kFolder) && IsFolderGone(Rows().Folder());
        if (!isGone || !ShowNearestParent()) ShowOutcome(GetSafeHwnd(), outcome);
        return;
    }
    if (markedRow >= 0) list.SetSelectionMark(RowNamed(markedName));
    if (focusedRow >= 0) FocusAgain(focusedName, focusedRow);
    if (SelectNames(made)) {
        const int first = list.NextSelected(0);
        list.SetSelectionMark(first);
        list.SetFocusedRow(first);
    } else {
        SelectNames(selected);
    }
}

bool BrowserView::SelectNames(const std::vector<std::string>& names) {
    const std::unordered_set<std::string> wanted(names.begin(), names.end());
    const int count = wanted.empty() ? 0 : list.GetItemCount();
    for (int row = 0; row < count; ++row)
        if (wanted.contains(list.GetItemText(row, kNameColumn))) list.SetSelected(row, true);
    return list.GetSelectedCount() > 0;
}

void BrowserView::SelectOnly(int row) {
    for (int other = list.NextSelected(0); other >= 0; other = list.NextSelected(other + 1))
        list.SetSelected(other, false);
    list.SetSelected(row, true);
    list.SetSelectionMark(row);
    list.SetFocusedRow(row);
}

// The keyboard continues at the row of that name or, if there is none, where it was.
void BrowserView::FocusAgain(const std::string& name, int row) {
    const int again = RowNamed(name);
    list.SetFocusedRow(again >= 0 ? again : std::min(row, list.GetItemCount() - 1));
}

int BrowserView::RowNamed(const std::string& name) const {
    const int count = list.GetItemCount();
    for (int row = 0; row < count; ++row)
        if (list.GetItemText(row, kNameColumn) == name) return row;
    return -1;
}

void BrowserView::ShowLocation(const RowSource& source) {
    const std::string text = source.Location();
    list.SetWindowText(text);  // as which assistive technology knows it
    if (addressBar != nullptr) addressBar->SetLocationText(text);
    const std::string folder = source.Folder();
    const std::string hostPath = folder.empty() ? "" : VisibleText(HostPathFromPath(folder));
    if (statusBar != nullptr) statusBar->SetPaneText(kHostPathPane, hostPath);
    if (folderTree != nullptr) folderTree->Follow({source.Kind(), folder});
}

// ---- The status bar. No message loop runs while a folder is read, so its texts are painted at once. ----

void BrowserView::ShowState(const char* text) {
    if (statusBar == nullptr) return;
    statusBar->SetPaneText(kMessagePane, text);
    PaintStatusBar();
}

// Painting the count for each tenth row of a fast folder would cost more than reading it, so the display sets
// the pace.
void BrowserView::ShowItemCount(const std::string& text) {
    if (statusBar == nullptr) return;
    constexpr std::chrono::milliseconds kDisplayPace(16);
    statusBar->SetPaneText(kCountPane, text);
    if (std::chrono::steady_clock::now() - statusPainted >= kDisplayPace) PaintStatusBar();
}

void BrowserView::PaintStatusBar() {
    if (statusBar == nullptr) return;
    statusBar->RedrawWindow();
    statusPainted = std::chrono::steady_clock::now();
}

}  // namespace permora
