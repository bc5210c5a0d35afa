#include "browser/security_columns.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

#include "browser/list_presentation.h"
#include "framework/worker_updates.h"
#include "platform/api/errors.h"
#include "platform/system_message.h"

namespace permora {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kNotYet = "...";

// Since a folder's handle is for one thread at a time. The contents of the folder are read by its handle,
// whatever its name is by now.
DWORD OpenAnew(const Place& place, Place& own) {
    own.kind = place.kind;
    if (place.folder == nullptr) return ERROR_SUCCESS;
    auto folder = std::make_shared<FolderHandle>();
    const DWORD error = place.folder->OpenPath("", *folder);
    if (error == ERROR_SUCCESS) own.folder = std::move(folder);
    return error;
}

// Tells a failure in the place of what should have been read.
SecurityTexts TextsOfFailure(DWORD error) {
    SecurityTexts texts;
    texts.fill(SystemMessageLine(error));
    return texts;
}

}  // namespace

// What a worker reads. It may outlive the columns.
struct SecurityColumns::Sweep {
    std::shared_ptr<const Place> rows;
    std::vector<std::string> names;
    std::atomic<std::size_t> done = 0;
    std::atomic<bool> isStopped = false;
    Known found;

    // Up to the first name after `end`.
    void Run(Clock::time_point end = Clock::time_point::max()) {
        Place place;
        const DWORD error = OpenAnew(*rows, place);
        for (const std::string& name : names) {
            if (isStopped) return;
            found.emplace(name,
                          error == ERROR_SUCCESS ? ReadSecurityTexts(place, name) : TextsOfFailure(error));
            ++done;
            if (Clock::now() >= end) return;
        }
    }
};

// ---- Columns ----

void SecurityColumns::Choose(std::uint32_t bits) {
    constexpr std::uint32_t kAll = (1U << kSecurityColumnCount) - 1;
    const bool isInserted = firstColumn != 0;
    if (isInserted) Remove();
    chosen = bits & kAll;
    if (isInserted) Insert();
}

void SecurityColumns::Insert() {
    constexpr int kFirstWidth = 120;
    firstColumn = static_cast<int>(list.Columns().size());
    for (std::size_t i = 0; i < kSecurityColumnCount; ++i) {
        if ((chosen >> i & 1U) == 0) continue;
        if (widths[i] == 0) widths[i] = kFirstWidth;
        const auto column = static_cast<SecurityColumn>(i);
        list.InsertColumn(static_cast<int>(list.Columns().size()), HeaderOf(column), widths[i]);
        columns.push_back(column);
    }
    list.SetTexts(this, firstColumn);
}

void SecurityColumns::Remove() {
    for (; !columns.empty(); columns.pop_back()) {
        const int last = firstColumn + static_cast<int>(columns.size()) - 1;
        widths[static_cast<std::size_t>(columns.back())] =
            list.Columns()[static_cast<std::size_t>(last)].width;
        list.DeleteColumn(last);
    }
}

bool SecurityColumns::Has(int column) const {
    return column >= firstColumn && column < firstColumn + static_cast<int>(columns.size());
}

int SecurityColumns::OrderColumnOf(int column) const {
    if (!Has(column)) return column;
    const bool isNumber = static_cast<SecurityColumn>(PlaceIn(column)) == SecurityColumn::kOwnEntries;
    return isNumber ? kSizeColumn : kNameColumn;
}

std::size_t SecurityColumns::PlaceIn(int column) const {
    return static_cast<std::size_t>(columns[static_cast<std::size_t>(column - firstColumn)]);
}

// ---- Texts ----

void SecurityColumns::Restart(std::shared_ptr<const Place> rows, std::string volumeOfRows) {
    StopReadingAll();
    seen.Forget();
    again.Stop();
    known.clear();
    wanted.clear();
    place = std::move(rows);
    volume = std::move(volumeOfRows);
}

// A row's data is its number, but for drives before the first sorting.
int SecurityColumns::RowOf(std::intptr_t data) const {
    int row = static_cast<int>(data);
    while (row > 0 && list.GetItemData(row) != data)
        --row;
    return row;
}

// The rows that are painted are those that are read.
std::string SecurityColumns::Text(std::intptr_t data, int column) const {
    if (place == nullptr || !Has(column)) return {};
    const std::string name = list.GetItemText(RowOf(data), kNameColumn);
    if (const auto found = known.find(name); found != known.end()) return found->second[PlaceIn(column)];
    constexpr std::size_t kMostWanted = 500;  // more are not seen at once
    if (wanted.size() < kMostWanted && std::ranges::find(wanted, name) == wanted.end()) {
        wanted.push_back(name);
        if (!seen.IsAsking()) QueueWork(list, askForWanted);
    }
    return kNotYet;
}

// What remains unread at the end of a turn is painted, and so wanted, again if it is still seen.
void SecurityColumns::AskForWanted() {
    static constexpr std::chrono::milliseconds kTurn(50);
    auto work = std::make_shared<Sweep>();
    work->names = std::exchange(wanted, {});
    if (work->names.empty() || place == nullptr || seen.IsAsking()) return;
    work->rows = place;
    const DWORD error = seen.Ask([work] { work->Run(Clock::now() + kTurn); },
                                 [this, work] {
                                     known.merge(work->found);
                                     wanted.clear();
                                     QueueRedraw(list);
                                 },
                                 volume);
    if (error == ERROR_TIMEOUT)
        AskAgain(work->names);
    else if (error != ERROR_SUCCESS)
        TakeFailure(work->names, error);
}

// The volume owes the answer to a question that was given up, perhaps for a moment only.
void SecurityColumns::AskAgain(const std::vector<std::string>& names) {
    constexpr std::chrono::milliseconds kPause(300);
    wanted = names;
    again.Start(kPause, [this] {
        again.Stop();
        AskForWanted();
    });
}

void SecurityColumns::TakeFailure(const std::vector<std::string>& names, DWORD error) {
    for (const std::string& name : names)
        known.emplace(name, TextsOfFailure(error));
    QueueRedraw(list);
}

// ---- All rows ----

void SecurityColumns::ReadAll(const std::function<void(std::size_t, std::size_t)>& progress,
                              const std::function<void()>& use) {
    StopReadingAll();
    if (place == nullptr) return;
    auto work = std::make_shared<Sweep>();
    for (int row = 0; row < list.GetItemCount(); ++row)
        if (std::string name = list.GetItemText(row, kNameColumn); !known.contains(name))
            work->names.push_back(std::move(name));
    if (work->names.empty()) return use();
    work->rows = place;
    const DWORD error = all.Ask([work] { work->Run(); },
                                [this, use] {
                                    known.merge(sweep->found);
                                    StopReadingAll();
                                    use();
                                },
                                volume);
    if (error == ERROR_TIMEOUT) return;
    if (error != ERROR_SUCCESS) return TakeFailure(work->names, error);
    sweep = work;
    constexpr std::chrono::milliseconds kPace(100);
    report.Start(kPace, [work, progress] { progress(work->done, work->names.size()); });
}

void SecurityColumns::StopReadingAll() {
    if (sweep != nullptr) sweep->isStopped = true;
    sweep.reset();
    all.Forget();
    report.Stop();
}

}  // namespace permora
