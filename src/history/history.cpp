#include "history/history.h"

#include <string>
#include <utility>
#include <vector>

#include "history/database.h"
#include "history/history_file.h"
#include "history/object_reader.h"
#include "history/pruning.h"
#include "history/recorded_change.h"
#include "platform/private_place.h"

namespace permora {
namespace {

// As stored in `undone`.
constexpr std::int64_t kNotUndone = 0;
constexpr std::int64_t kUndoneWhole = 1;
constexpr std::int64_t kUndoneInPart = 2;

std::int64_t StoredState(ChangeState state) {
    switch (state) {
        case ChangeState::kUndone:
            return kUndoneWhole;
        case ChangeState::kPartlyUndone:
            return kUndoneInPart;
        default:
            return kNotUndone;
    }
}

class HistoryOfFile : public History {
  public:
    HistoryOfFile(std::string databasePath, Database opened)
        : path(std::move(databasePath)), database(std::move(opened)) {}

    DWORD List(std::vector<ChangeFacts>& changes) override;
    DWORD Find(std::int64_t number, ChangeFacts& facts) override;
    DWORD FindLast(ChangeFacts& facts) override;
    DWORD VisitObjects(std::int64_t number, RecordOrder order,
                       const std::function<bool(const RecordedObject&)>& visit) override {
        return Visit(number, order, 0, visit);
    }
    DWORD VisitObjectsFrom(std::int64_t number, std::uint64_t first,
                           const std::function<bool(const RecordedObject&)>& visit) override {
        return Visit(number, RecordOrder::kAsMade, static_cast<std::int64_t>(first), visit);
    }
    std::unique_ptr<Change> Begin(ChangeKind kind, std::int64_t undoes) override {
        return std::make_unique<RecordedChange>(path, kind, undoes);
    }
    DWORD MarkUndone(std::int64_t number, ChangeState state) override;
    DWORD FindOlder(std::int64_t time, std::vector<ChangeFacts>& changes) override;
    DWORD PruneOlder(std::int64_t time, std::size_t& removed) override;
    DWORD PruneLarger(std::uint64_t bytes, std::size_t& removed) override;

  private:
    // Without the first `skipped` ones as they were made.
    DWORD Visit(std::int64_t number, RecordOrder order, std::int64_t skipped,
                const std::function<bool(const RecordedObject&)>& visit);
    DWORD FactsOf(Statement& row, ChangeFacts& facts);
    DWORD Select(Statement& rows, std::vector<ChangeFacts>& changes);

    const std::string path;
    Database database;
};

constexpr const char* kFactColumns =
    "SELECT c.number, began, ended, user, kind, undone, undoes,"
    " CASE WHEN ended IS NULL THEN (SELECT ifnull(max(number), 0) FROM objects WHERE change=c.number) ELSE "
    "objects END,"
    " process, process_start, (SELECT count(*) FROM tops WHERE change=c.number),"
    " (SELECT path FROM tops WHERE change=c.number ORDER BY number LIMIT 1) FROM changes c ";

DWORD HistoryOfFile::FactsOf(Statement& row, ChangeFacts& facts) {
    ChangeFacts read;
    read.number = row.Number(0);
    read.began = row.Number(1);
    read.user = row.Text(3);
    const std::int64_t kind = row.Number(4);
    const std::int64_t undone = row.Number(5);
    if (kind < static_cast<std::int64_t>(ChangeKind::kPermissions) ||
        kind > static_cast<std::int64_t>(ChangeKind::kPolicy) || row.Number(7) < 0)
        return ERROR_FILE_CORRUPT;
    read.kind = static_cast<ChangeKind>(kind);
    read.undoes = row.Number(6);
    read.objects = static_cast<std::uint64_t>(row.Number(7));
    read.tops = static_cast<std::size_t>(row.Number(10));
    read.firstTop = row.Text(11);
    if (undone == kUndoneWhole)
        read.state = ChangeState::kUndone;
    else if (undone == kUndoneInPart)
        read.state = ChangeState::kPartlyUndone;
    else if (!row.IsNull(2))
        read.state = ChangeState::kDone;
    else
        read.state =
            IsRunning({row.Number(8), row.Number(9)}) ? ChangeState::kRunning : ChangeState::kInterrupted;
    facts = std::move(read);
    return ERROR_SUCCESS;
}

DWORD HistoryOfFile::Select(Statement& rows, std::vector<ChangeFacts>& changes) {
    std::vector<ChangeFacts> found;
    while (rows.Next()) {
        ChangeFacts facts;
        const DWORD error = FactsOf(rows, facts);
        if (error != ERROR_SUCCESS) return error;
        found.push_back(std::move(facts));
    }
    if (rows.Error() == ERROR_SUCCESS) changes = std::move(found);
    return rows.Error();
}

DWORD HistoryOfFile::List(std::vector<ChangeFacts>& changes) {
    Statement rows(database, std::string(kFactColumns) + "ORDER BY c.number DESC");
    rows.Bind();
    return Select(rows, changes);
}

DWORD HistoryOfFile::Find(std::int64_t number, ChangeFacts& facts) {
    Statement rows(database, std::string(kFactColumns) + "WHERE c.number=?");
    rows.Bind(number);
    std::vector<ChangeFacts> found;
    const DWORD error = Select(rows, found);
    if (error != ERROR_SUCCESS) return error;
    if (found.empty()) return ERROR_NOT_FOUND;
    facts = std::move(found.front());
    return ERROR_SUCCESS;
}

DWORD HistoryOfFile::FindLast(ChangeFacts& facts) {
    std::vector<ChangeFacts> changes;
    const DWORD error = List(changes);
    if (error != ERROR_SUCCESS) return error;
    for (ChangeFacts& change : changes) {
        const bool isOver = change.kind == ChangeKind::kUndo || change.state == ChangeState::kUndone;
        if (isOver && change.state != ChangeState::kRunning) continue;
        facts = std::move(change);
        return ERROR_SUCCESS;
    }
    return ERROR_NOT_FOUND;
}

DWORD HistoryOfFile::Visit(std::int64_t number, RecordOrder order, std::int64_t skipped,
                           const std::function<bool(const RecordedObject&)>& visit) {
    ChangeFacts facts;
    DWORD error = Find(number, facts);
    if (error != ERROR_SUCCESS) return error;
    const bool isForwards = order == RecordOrder::kAsMade;
    const auto count = static_cast<std::int64_t>(facts.objects);
    Statement rows(database, std::string("SELECT ") + ObjectReader::kColumns +
                                 " FROM objects WHERE change=? AND number BETWEEN ? AND ? ORDER BY number" +
                                 (isForwards ? "" : " DESC"));
    ObjectReader reader(database, facts);
    RecordedObject object;
    std::int64_t seen = 0;
    rows.Bind(number, skipped + 1, count);
    while (rows.Next()) {
        // None may be missing.
        ++seen;
        if (rows.Number(0) != (isForwards ? skipped + seen : count + 1 - seen)) return ERROR_FILE_CORRUPT;
        error = reader.Read(rows, object);
        if (error != ERROR_SUCCESS) return error;
        if (!visit(object)) return ERROR_CANCELLED;
    }
    if (rows.Error() != ERROR_SUCCESS) return rows.Error();
    return skipped + seen == count ? ERROR_SUCCESS : ERROR_FILE_CORRUPT;
}

DWORD HistoryOfFile::MarkUndone(std::int64_t number, ChangeState state) {
    Statement mark(database, "UPDATE changes SET undone=? WHERE number=?");
    mark.Bind(StoredState(state), number);
    const DWORD error = mark.Run();
    return error == ERROR_SUCCESS && database.ChangedRows() == 0 ? ERROR_NOT_FOUND : error;
}

DWORD HistoryOfFile::FindOlder(std::int64_t time, std::vector<ChangeFacts>& changes) {
    // Of an interrupted one, only the beginning is known.
    Statement rows(database, std::string(kFactColumns) + "WHERE ifnull(ended, began)<? ORDER BY c.number");
    rows.Bind(time);
    std::vector<ChangeFacts> old;
    if (const DWORD error = Select(rows, old); error != ERROR_SUCCESS) return error;
    std::erase_if(old, [](const ChangeFacts& change) { return change.state == ChangeState::kRunning; });
    changes = std::move(old);
    return ERROR_SUCCESS;
}

DWORD HistoryOfFile::PruneOlder(std::int64_t time, std::size_t& removed) {
    std::vector<ChangeFacts> old;
    DWORD error = FindOlder(time, old);
    for (const ChangeFacts& change : old)
        if (error == ERROR_SUCCESS) error = RemoveChange(database, change.number);
    if (error == ERROR_SUCCESS && !old.empty()) error = GiveBackRoom(database);
    if (error == ERROR_SUCCESS) removed = old.size();
    return error;
}

DWORD HistoryOfFile::PruneLarger(std::uint64_t bytes, std::size_t& removed) {
    std::vector<ChangeFacts> changes;
    DWORD error = List(changes);
    std::uint64_t used = 0;
    std::size_t count = 0;
    // The newest stays.
    for (auto oldest = changes.rbegin(); error == ERROR_SUCCESS && oldest + 1 < changes.rend(); ++oldest) {
        error = AskUsedBytes(database, used);
        if (error != ERROR_SUCCESS || used < bytes) break;
        if (oldest->state == ChangeState::kRunning) continue;
        error = RemoveChange(database, oldest->number);
        ++count;
    }
    if (error == ERROR_SUCCESS && count > 0) error = GiveBackRoom(database);
    if (error == ERROR_SUCCESS) removed = count;
    return error;
}

DWORD OpenAs(const std::string& path, Database::Access access, std::unique_ptr<History>& history) {
    Database database;
    const DWORD error = OpenHistoryFile(path, access, database);
    if (error == ERROR_SUCCESS) history = std::make_unique<HistoryOfFile>(path, std::move(database));
    return error;
}

}  // namespace

std::string History::UsualPath() {
    const std::string folder = StateFolder();
    return folder.empty() ? folder : folder + "/history.db";
}

DWORD History::Open(const std::string& path, std::unique_ptr<History>& history) {
    return OpenAs(path, Database::Access::kReadWrite, history);
}

DWORD History::OpenToRead(const std::string& path, std::unique_ptr<History>& history) {
    return OpenAs(path, Database::Access::kReadOnly, history);
}

}  // namespace permora
