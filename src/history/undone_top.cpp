#include "history/undone_top.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <utility>

#include "platform/api/errors.h"
#include "platform/stored_security.h"
#include "platform/volume_loss.h"
#include "shares/share_security.h"

namespace permora {
namespace {

// Each may stand for a million objects; where there are more, some are found missing again.
constexpr std::size_t kMostLost = 1024;

// Calls `use` with each folder on the way to `path` until it answers false.
template <typename Use>
void VisitFoldersAbove(const std::string& path, Use use) {
    for (std::size_t end = path.find('\\'); end != path.npos; end = path.find('\\', end + 1))
        if (!use(path.substr(0, end))) return;
}

}  // namespace

bool IsShare(const DescriptorChange& change) {
    return change.before.form == SecurityForm::kShare || change.after.form == SecurityForm::kShare;
}

UndoneTop::UndoneTop(const RecordedObject& record) : top(record.top), isShare(IsShare(record.change)) {}

bool UndoneTop::Holds(const RecordedObject& record) const {
    return record.top.path == top.path && record.top.mark == top.mark &&
           record.top.isFolder == top.isFolder && IsShare(record.change) == isShare;
}

DWORD UndoneTop::Hold() {
    if (isShare) return ERROR_SUCCESS;
    const DWORD error = HeldObject::HoldTop(top, object);
    if (error != ERROR_SUCCESS) return error;
    object.ExpectManyBelow();
    return ways.emplace_back().Begin(object);
}

DWORD UndoneTop::TakeTurn() {
    return isShare ? shareTurn.Take(top.path) : object.TakeTurn();
}

DWORD UndoneTop::Way::HoldBelow(const std::string& path, HeldObject& below) {
    const std::size_t end = path.rfind('\\');
    if (end == path.npos) return start.HoldBelow(path, below);
    std::string above = path.substr(0, end);
    if (folderPath != above) {
        HeldObject found;
        if (const DWORD error = start.HoldBelow(above, found); error != ERROR_SUCCESS) return error;
        folder = std::move(found);
        folderPath = std::move(above);
    }
    return folder.HoldBelow(path.substr(end + 1), below);
}

DWORD UndoneTop::HoldRecorded(const RecordedObject& record, Way& way,
                              std::optional<HeldObject>& found) const {
    const DescriptorChange& change = record.change;
    found.reset();
    if (isShare) return ERROR_SUCCESS;
    HeldObject below;
    const bool isTop = change.path.empty();
    DWORD error = isTop ? ERROR_SUCCESS : way.HoldBelow(change.path, below);
    if (error != ERROR_SUCCESS) return error;
    const HeldObject& checked = isTop ? object : below;
    // A number that became free is given to a later object.
    bool isYounger = false;
    error = checked.WasBornAfter(record.time, isYounger);
    if (error != ERROR_SUCCESS) return error;
    if (isYounger || checked.FileNumber() != change.fileNumber || checked.IsFolder() != change.isFolder)
        return ERROR_FILE_INVALID;
    if (!isTop) found = std::move(below);
    return ERROR_SUCCESS;
}

void UndoneTop::Find(FoundRecord& record, DamagedBytes damaged, Way& way) const {
    record.error = HoldRecorded(record.record, way, record.object);
    record.isFound = record.error == ERROR_SUCCESS;
    if (!record.isFound) return;
    record.error = isShare ? ReadStoredShare(top.path, record.now)
                           : (record.object ? *record.object : object)
                                 .ReadStored(record.now, damaged, SystemListIn(record.record.change.after));
}

void UndoneTop::Find(FoundRecord& record, DamagedBytes damaged) {
    if (ways.empty()) ways.emplace_back();  // a share needs none
    Find(record, damaged, ways.front());
}

void UndoneTop::FindAll(std::span<FoundRecord> records, DamagedBytes damaged, std::size_t threads) {
    if (isShare) return;  // found when its turn comes
    // Neighbours are mostly in one folder.
    constexpr std::size_t kNeighbours = 8;
    threads = std::min(threads, (records.size() + kNeighbours - 1) / kNeighbours);
    while (ways.size() < threads) {
        Way way;
        if (way.Begin(object) != ERROR_SUCCESS) break;
        ways.push_back(std::move(way));
    }
    threads = std::min(threads, ways.size());
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> isVolumeLost = false;
    const auto findNext = [&](Way& way) {
        for (;;) {
            const std::size_t begin = next.fetch_add(kNeighbours);
            if (begin >= records.size()) return;
            for (FoundRecord& record :
                 records.subspan(begin, std::min(kNeighbours, records.size() - begin))) {
                if (isVolumeLost) return;
                if (record.error || IsLost(record.record.change.path)) continue;
                Find(record, damaged, way);
                if (IsVolumeLost(*record.error)) isVolumeLost = true;
            }
        }
    };
    std::vector<std::future<void>> helpers;
    for (std::size_t i = 1; i < threads; ++i)
        helpers.push_back(std::async([&findNext, &way = ways[i]] { findNext(way); }));
    if (threads > 0) findNext(ways.front());
    for (std::future<void>& helper : helpers)
        helper.get();
}

std::string UndoneTop::FindEnd(const std::string& path, DWORD& error) {
    std::string end = path;
    VisitFoldersAbove(path, [&](const std::string& above) {
        HeldObject entered;
        DWORD found = object.HoldBelow(above, entered);
        if (found == ERROR_SUCCESS && !entered.IsFolder()) found = ERROR_FILE_INVALID;
        if (found == ERROR_SUCCESS) return true;
        error = found;
        end = above;
        return false;
    });
    if (end == path) return end;
    if (lost.size() == kMostLost) lost.clear();
    lost.insert(end);
    return end;
}

bool UndoneTop::IsLost(const std::string& path) const {
    bool isLost = lost.contains(path);
    if (!lost.empty() && !isLost) {
        VisitFoldersAbove(path, [&](const std::string& above) {
            isLost = lost.contains(above);
            return !isLost;
        });
    }
    return isLost;
}

DWORD UndoneTop::Write(const std::optional<HeldObject>& found, const DescriptorChange& change,
                       DamagedBytes damaged) const {
    if (isShare) return WriteStoredShare(top.path, change.before, change.after);
    return (found ? *found : object).WriteStored(change.before, change.after, damaged);
}

}  // namespace permora
