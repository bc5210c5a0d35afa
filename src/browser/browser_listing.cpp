// Filling the list, and the texts of the bars.
#include <algorithm>
#include <chrono>
#include <string>
#include <unordered_set>
#include <utility>

#include "browser/address_bar.h"
#include "browser/browser_view.h"
#include "browser/list_presentation.h"
#include "framework/bars.h"
#include "platform/host_path.h"
#include "platform/visible_text.h"
#include "platform/volume_question.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr int kMessagePane = 0;
constexpr int kCountPane = 1;
constexpr int kHostPathPane = 2;

}  // namespace

// What a source has told, on another thread.
struct BrowserView::Listing : RowReceiver {
    std::vector<Row> rows;
    int count = 0;
    PatientWork::Running* running = nullptr;  // while it reads
    Outcome outcome;                          // of the rows
    std::shared_ptr<Place> place;             // that the rows are in; null: none that has a security

    bool Add(Row row) override {
        if (running->isGivenUp) return false;
        rows.push_back(std::move(row));
        return true;
    }
    void ShowCount(int found) override { count = found; }
    bool GoOn() override {
        ++running->done;
        return !running->isGivenUp;
    }

    Outcome Read(RowSource& source, const RowOptions& options, PatientWork::Running& reading) {
        running = &reading;
        if (Outcome opened = source.Open(); !opened.IsDone()) return opened;
        outcome = source.List(options, *this);
        auto held = std::make_shared<Place>();
        if (source.Kind() != PlaceKind::kShares && source.Hold({}, *held).IsDone()) place = std::move(held);
        return {};
    }
};

// Of a source that is not open yet. On a failure, there is no listing, and the source must not be used any
// more.
Outcome BrowserView::Read(const std::shared_ptr<RowSource>& source, std::shared_ptr<Listing>& listing) {
    auto read = std::make_shared<Listing>();
    const bool isFolder = source->Kind() == PlaceKind::kFolder;
    if (isFolder) ShowState("Processing...");
    const RowDetail detail = list.GetView() == ListView::kReport ? RowDetail::kAll : RowDetail::kName;
    const auto ask = [source, read, options = RowOptions{detail, rowIcons, dotNames}](
                         PatientWork::Running& running) { return read->Read(*source, options, running); };
    Outcome outcome = Ask(source->Volume(), ask);
    if (isFolder) ShowState("Ready");
    listing = outcome.IsDone() ? std::move(read) : std::make_shared<Listing>();
    return outcome;
}

// The outcome of the listing, unless the list has no room for it.
Outcome BrowserView::Fill(const RowSource& source, Listing& listing) {
    StopReadingSecurity();
    security.Restart(nullptr, {});
    if (!list.DeleteAllItems() || !images.Rebuild(list, source.Images())) return {ERROR_NOT_ENOUGH_MEMORY};
    list.SetColumnText(kTypeColumn, source.TypeHeader());
    ArrangeColumns(source);
    for (const Row& row : listing.rows)
        if (!AddRow(row)) return {ERROR_NOT_ENOUGH_MEMORY};
    if (listing.outcome.IsDone()) ShowItemCount(source, listing.count);
    PaintStatusBar();
    if (listing.place != nullptr) security.Restart(listing.place, source.Volume());
    if (listing.outcome.IsDone()) ShowLocation(source);
    return listing.outcome;
}

bool BrowserView::AddRow(const Row& row) {
    const int place = list.GetItemCount();
    const int image = row.image == kShellImage ? images.AddShellIcon(row.shellIcon) : row.image;
    if (!list.InsertItem(place, row.name, image) || !list.SetItemData(place, row.position)) return false;
    const std::pair<int, const std::string&> texts[] = {
        {kTypeColumn, row.type}, {kSizeColumn, row.size}, {kModifiedColumn, row.modified}};
    int column = kFixedColumns;
    for (const std::string& text : row.more)
        if (!list.SetItemText(place, column++, text)) return false;
    return std::ranges::all_of(texts, [&](const auto& each) {
        return each.second.empty() || list.SetItemText(place, each.first, each.second);
    });
}

// On failure, the location and its list are unchanged, unless the list has no room for another one.
Outcome BrowserView::Show(std::shared_ptr<RowSource> source, const std::function<void()>& beforeFilling) {
    std::shared_ptr<Listing> listing;
    Outcome outcome = Read(source, listing);
    if (outcome.IsDone()) outcome = listing->outcome;
    if (!outcome.IsDone()) return outcome;
    if (beforeFilling) beforeFilling();
    outcome = Fill(*source, *listing);
    if (!outcome.IsDone()) return outcome;
    const bool isAside = source->Kind() == PlaceKind::kShares;
    aside = isAside ? source : nullptr;
    if (!isAside) location = std::move(source);
    MakeCurrent();
    return {};
}

Outcome BrowserView::ListAgain(const std::function<void()>& beforeFilling) {
    return Show(Rows().Anew(), beforeFilling);
}

// The folder shown is the process's current directory: what is started from here begins there. Some volumes
// are asked whether this user may enter, so a thread does it, which has no directory of its own. A failure is
// not reported.
void BrowserView::MakeCurrent() {
    constexpr std::chrono::milliseconds kPatience(200);
    VolumeQuestion question;
    const auto ask = [rows = SharedRows()] { static_cast<void>(rows->MakeCurrent()); };
    if (question.Ask(Rows().Volume(), ask) == ERROR_SUCCESS)
        static_cast<void>(question.IsAnswered(kPatience));
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

void BrowserView::RefreshList() {
    if (!GiveUpFor([this] { RefreshList(); })) RefreshList({});
}

bool BrowserView::RefreshList(const std::vector<std::string>& made) {
    if (folderTree != nullptr) folderTree->Refresh();
    std::vector<std::string> selected;
    int focusedRow = -1;
    std::string focusedName;
    int markedRow = -1;
    std::string markedName;
    const Outcome outcome = ListAgain([&] {
        selected = SelectedNames();
        focusedRow = list.GetFocusedRow();
        focusedName = list.GetItemText(focusedRow, kNameColumn);
        markedRow = list.GetSelectionMark();
        markedName = list.GetItemText(markedRow, kNameColumn);
    });
    if (!outcome.IsDone()) {
        const bool isGone =
            !IsUnanswered(outcome) && IsShowing(PlaceKind::kFolder) && IsGone(Rows().Folder());
        if (!isGone || !ShowNearestParent()) Tell(outcome);
        return false;
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
    return true;
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

// ---- The status bar. Its texts are painted at once, since the work that follows may serve no messages. ----

void BrowserView::ShowState(const char* text) {
    if (statusBar == nullptr) return;
    statusBar->SetPaneText(kMessagePane, text);
    PaintStatusBar();
}

void BrowserView::ShowItemCount(const RowSource& source, int count) {
    const char* ending = source.Kind() == PlaceKind::kShares ? "" : " ";
    if (statusBar != nullptr)
        statusBar->SetPaneText(kCountPane, "Total items: " + std::to_string(count) + ending);
}

void BrowserView::PaintStatusBar() {
    if (statusBar != nullptr) statusBar->RedrawWindow();
}

}  // namespace permora
