#include "history/undone_top.h"

#include "platform/api/errors.h"
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
    if (error == ERROR_SUCCESS) object.ExpectManyBelow();
    return error;
}

DWORD UndoneTop::TakeTurn() {
    return isShare ? shareTurn.Take(top.path) : object.TakeTurn();
}

DWORD UndoneTop::HoldBelow(const std::string& path, HeldObject& below) {
    const std::size_t end = path.rfind('\\');
    if (end == path.npos) return object.HoldBelow(path, below);
    std::string above = path.substr(0, end);
    if (folderPath != above) {
        HeldObject found;
        if (const DWORD error = object.HoldBelow(above, found); error != ERROR_SUCCESS) return error;
        folder = std::move(found);
        folderPath = std::move(above);
    }
    return folder.HoldBelow(path.substr(end + 1), below);
}

DWORD UndoneTop::Find(const RecordedObject& record, std::optional<HeldObject>& found) {
    const DescriptorChange& change = record.change;
    found.reset();
    if (isShare) return ERROR_SUCCESS;
    HeldObject below;
    const bool isTop = change.path.empty();
    DWORD error = isTop ? ERROR_SUCCESS : HoldBelow(change.path, below);
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

DWORD UndoneTop::Read(const std::optional<HeldObject>& found, StoredSecurity& now,
                      DamagedBytes damaged) const {
    if (isShare) return ReadStoredShare(top.path, now);
    return (found ? *found : object).ReadStored(now, damaged);
}

DWORD UndoneTop::Write(const std::optional<HeldObject>& found, const DescriptorChange& change,
                       DamagedBytes damaged) const {
    if (isShare) return WriteStoredShare(top.path, change.before, change.after);
    return (found ? *found : object).WriteStored(change.before, change.after, damaged);
}

}  // namespace permora
