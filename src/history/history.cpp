#include "history/history.h"

#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "history/database.h"
#include "history/history_file.h"
#include "history/recorded_change.h"
#include "platform/private_place.h"

namespace permora {
namespace {

constexpr std::size_t kMostDescriptorBytes = std::size_t{1} << 20;
constexpr std::size_t kMostKept = 4096;  // folders and descriptors in memory

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

bool IsBareName(std::string_view name) {
    return name != "." && name != ".." &&
           name.find_first_of(std::string_view("\\/\0", 3)) == std::string_view::npos;
}

class HistoryOfFile : public History {
  public:
    HistoryOfFile(std::string databasePath, Database opened)
        : path(std::move(databasePath)), database(std::move(opened)) {}

    DWORD List(std::vector<ChangeFacts>& changes) override;
    DWORD Find(std::int64_t number, ChangeFacts& facts) override;
    DWORD FindLast(ChangeFacts& facts) override;
    DWORD VisitObjects(std::int64_t number, RecordOrder order,
                       const std::function<bool(const RecordedObject&)>& visit) override;
    std::unique_ptr<Change> Begin(ChangeKind kind, std::int64_t undoes) override {
        return std::make_unique<RecordedChange>(path, kind, undoes);
    }
    DWORD MarkUndone(std::int64_t number, ChangeState state) override;
    DWORD PruneOlder(std::int64_t time, std::size_t& removed) override;
    DWORD PruneLarger(std::uint64_t bytes, std::size_t& removed) override;

  private:
    DWORD FactsOf(Statement& row, ChangeFacts& facts);
    DWORD Select(Statement& rows, std::vector<ChangeFacts>& changes);
    DWORD Remove(std::int64_t number);
    DWORD RemoveUnused();

    const std::string path;
    Database database;
};

// Reads what the objects of one change refer to, and keeps some of it.
class ObjectReader {
  public:
    ObjectReader(Database& source, std::int64_t number) : database(source), change(number) {}

    DWORD Read(const Statement& row, RecordedObject& object);

  private:
    struct Folder {
        std::int64_t top = 0;
        std::string path;
    };

    DWORD FindFolder(std::int64_t number, Folder& folder);
    DWORD FindTop(std::int64_t number, ChangedTop& top);
    DWORD FindDescriptor(std::int64_t number, StoredSecurity& stored);

    Database& database;
    const std::int64_t change;
    std::unordered_map<std::int64_t, Folder> folders;
    std::unordered_map<std::int64_t, StoredSecurity> descriptors;
    std::optional<std::int64_t> topNumber;
    ChangedTop lastTop;

    Statement askFolder{database, "SELECT top, above, name FROM folders WHERE change=? AND number=?"};
    Statement askTop{database, "SELECT path, is_folder, mark FROM tops WHERE change=? AND number=?"};
    Statement askDescriptor{database, "SELECT form, owner, bytes FROM descriptors WHERE number=?"};
};

DWORD AnswerOf(const Statement& statement) {
    return statement.Error() == ERROR_SUCCESS ? ERROR_FILE_CORRUPT : statement.Error();
}

// From the folder up to one that is known, or the top. A folder stands above those with greater numbers, so a
// damaged file leads to no endless way.
DWORD ObjectReader::FindFolder(std::int64_t number, Folder& folder) {
    if (const auto known = folders.find(number); known != folders.end()) {
        folder = known->second;
        return ERROR_SUCCESS;
    }
    std::vector<std::string> names;
    Folder found;
    std::int64_t next = number;
    for (;;) {
        askFolder.Bind(change, next);
        if (!askFolder.Next()) return AnswerOf(askFolder);
        const std::int64_t above = askFolder.Number(1);
        std::string name = askFolder.Text(2);
        found.top = askFolder.Number(0);
        if (above < 0 || above >= next || !IsBareName(name) || name.empty() != (above == 0))
            return ERROR_FILE_CORRUPT;
        if (above == 0) break;
        names.push_back(std::move(name));
        next = above;
        if (const auto known = folders.find(next); known != folders.end()) {
            found = known->second;
            break;
        }
    }
    for (auto name = names.rbegin(); name != names.rend(); ++name)
        found.path += (found.path.empty() ? "" : "\\") + *name;
    if (folders.size() >= kMostKept) folders.clear();
    folders.emplace(number, found);
    folder = std::move(found);
    return ERROR_SUCCESS;
}

DWORD ObjectReader::FindTop(std::int64_t number, ChangedTop& top) {
    if (topNumber != number) {
        askTop.Bind(change, number);
        if (!askTop.Next()) return AnswerOf(askTop);
        const std::span<const std::uint8_t> mark = askTop.Bytes(2);
        lastTop = {askTop.Text(0), askTop.Number(1) != 0, {mark.begin(), mark.end()}};
        topNumber = number;
    }
    top = lastTop;
    return ERROR_SUCCESS;
}

DWORD ObjectReader::FindDescriptor(std::int64_t number, StoredSecurity& stored) {
    if (const auto known = descriptors.find(number); known != descriptors.end()) {
        stored = known->second;
        return ERROR_SUCCESS;
    }
    askDescriptor.Bind(number);
    if (!askDescriptor.Next()) return AnswerOf(askDescriptor);
    const std::int64_t form = askDescriptor.Number(0);
    const std::int64_t owner = askDescriptor.Number(1);
    const std::span<const std::uint8_t> bytes = askDescriptor.Bytes(2);
    if (form < 0 || form > static_cast<std::int64_t>(SecurityForm::kShare) ||
        bytes.size() > kMostDescriptorBytes || owner < 0 || owner > UINT32_MAX)
        return ERROR_FILE_CORRUPT;
    StoredSecurity found{static_cast<SecurityForm>(form), {bytes.begin(), bytes.end()}, std::nullopt};
    if (!askDescriptor.IsNull(1)) found.hostOwner = static_cast<std::uint32_t>(owner);
    if (descriptors.size() >= kMostKept) descriptors.clear();
    descriptors.emplace(number, found);
    stored = std::move(found);
    return ERROR_SUCCESS;
}

DWORD ObjectReader::Read(const Statement& row, RecordedObject& object) {
    const std::string name = row.Text(1);
    Folder folder;
    DWORD error = IsBareName(name) ? FindFolder(row.Number(0), folder) : ERROR_FILE_CORRUPT;
    if (error == ERROR_SUCCESS) error = FindTop(folder.top, object.top);
    if (error == ERROR_SUCCESS) error = FindDescriptor(row.Number(4), object.change.before);
    if (error == ERROR_SUCCESS) error = FindDescriptor(row.Number(5), object.change.after);
    if (error != ERROR_SUCCESS) return error;
    if (name.empty() && !folder.path.empty()) return ERROR_FILE_CORRUPT;
    object.change.path = folder.path + (folder.path.empty() || name.empty() ? "" : "\\") + name;
    object.change.isFolder = row.Number(2) != 0;
    object.change.fileNumber = static_cast<std::uint64_t>(row.Number(3));
    return ERROR_SUCCESS;
}

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
        kind > static_cast<std::int64_t>(ChangeKind::kRestore))
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
        if (change.kind == ChangeKind::kUndo || change.state == ChangeState::kRunning ||
            change.state == ChangeState::kUndone)
            continue;
        facts = std::move(change);
        return ERROR_SUCCESS;
    }
    return ERROR_NOT_FOUND;
}

DWORD HistoryOfFile::VisitObjects(std::int64_t number, RecordOrder order,
                                  const std::function<bool(const RecordedObject&)>& visit) {
    ChangeFacts facts;
    DWORD error = Find(number, facts);
    if (error != ERROR_SUCCESS) return error;
    Statement rows(database,
                   order == RecordOrder::kAsMade
                       ? "SELECT folder, name, is_folder, file, before, after FROM objects WHERE change=?"
                         " ORDER BY number"
                       : "SELECT folder, name, is_folder, file, before, after FROM objects WHERE change=?"
                         " ORDER BY number DESC");
    ObjectReader reader(database, number);
    RecordedObject object;
    rows.Bind(number);
    while (rows.Next()) {
        error = reader.Read(rows, object);
        if (error != ERROR_SUCCESS) return error;
        if (!visit(object)) return ERROR_CANCELLED;
    }
    return rows.Error();
}

DWORD HistoryOfFile::MarkUndone(std::int64_t number, ChangeState state) {
    Statement mark(database, "UPDATE changes SET undone=? WHERE number=?");
    mark.Bind(StoredState(state), number);
    const DWORD error = mark.Run();
    return error == ERROR_SUCCESS && database.ChangedRows() == 0 ? ERROR_NOT_FOUND : error;
}

DWORD HistoryOfFile::Remove(std::int64_t number) {
    Transaction transaction(database);
    DWORD error = transaction.Begin();
    for (const char* sql : {"DELETE FROM objects WHERE change=?", "DELETE FROM folders WHERE change=?",
                            "DELETE FROM tops WHERE change=?", "DELETE FROM changes WHERE number=?"}) {
        if (error != ERROR_SUCCESS) return error;
        Statement remove(database, sql);
        remove.Bind(number);
        error = remove.Run();
    }
    return error == ERROR_SUCCESS ? transaction.Commit() : error;
}

// And gives the room back to the disk.
DWORD HistoryOfFile::RemoveUnused() {
    Transaction transaction(database);
    DWORD error = transaction.Begin();
    if (error == ERROR_SUCCESS) {
        error = database.Execute(
            "DELETE FROM descriptors WHERE number NOT IN"
            " (SELECT before FROM objects UNION SELECT after FROM objects)");
    }
    if (error == ERROR_SUCCESS) error = transaction.Commit();
    return error == ERROR_SUCCESS
               ? database.Execute("PRAGMA incremental_vacuum; PRAGMA wal_checkpoint(TRUNCATE)")
               : error;
}

DWORD HistoryOfFile::PruneOlder(std::int64_t time, std::size_t& removed) {
    std::vector<ChangeFacts> changes;
    DWORD error = List(changes);
    std::size_t count = 0;
    for (const ChangeFacts& change : changes) {
        if (error != ERROR_SUCCESS) return error;
        if (change.began >= time || change.state == ChangeState::kRunning) continue;
        error = Remove(change.number);
        ++count;
    }
    if (error == ERROR_SUCCESS && count > 0) error = RemoveUnused();
    if (error == ERROR_SUCCESS) removed = count;
    return error;
}

DWORD HistoryOfFile::PruneLarger(std::uint64_t bytes, std::size_t& removed) {
    std::vector<ChangeFacts> changes;
    DWORD error = List(changes);
    std::size_t count = 0;
    while (error == ERROR_SUCCESS && !changes.empty()) {
        std::optional<std::int64_t> size;
        error =
            database.Ask("SELECT page_count * page_size FROM pragma_page_count(), pragma_page_size()", size);
        if (error != ERROR_SUCCESS || static_cast<std::uint64_t>(size.value_or(0)) <= bytes) break;
        const ChangeFacts oldest = std::move(changes.back());
        changes.pop_back();
        if (oldest.state == ChangeState::kRunning) continue;
        error = Remove(oldest.number);
        if (error == ERROR_SUCCESS) error = RemoveUnused();
        ++count;
    }
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
