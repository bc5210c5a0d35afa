#include "history/recorded_change.h"

#include <chrono>
#include <optional>
#include <utility>

#include "history/history_file.h"
#include "history/stored_rows.h"
#include "history/user_name.h"
#include "platform/private_place.h"

namespace permora {
namespace {

constexpr std::size_t kMostFolders = 10000;
constexpr std::size_t kMostKnownBytes = std::size_t{4} << 20;

std::int64_t Now() {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::optional<std::int64_t> OwnerOf(const StoredSecurity& stored) {
    if (!stored.hostOwner) return std::nullopt;
    return *stored.hostOwner;
}

// Names alone, with separators between them; or nothing.
bool LeadsDown(std::string_view path) {
    if (path.empty()) return true;
    for (std::size_t begin = 0; begin != std::string_view::npos;) {
        const std::size_t end = path.find('\\', begin);
        const std::string_view name = path.substr(begin, end == std::string_view::npos ? end : end - begin);
        if (name.empty() || !IsBareName(name)) return false;
        begin = end == std::string_view::npos ? end : end + 1;
    }
    return path.size() <= kMostPathBytes;
}

}  // namespace

struct RecordRequest {
    std::uint64_t top;
    ChangedTop facts;
    std::span<const DescriptorChange> batch;
    DWORD error = ERROR_SUCCESS;
    bool isDone = false;
};

// The connection and what is known to stand in the database. What is kept here only saves questions: a folder
// may get a second row.
class ChangeWriter {
  public:
    ChangeWriter(ChangeKind changeKind, std::int64_t undoneChange) : kind(changeKind), undoes(undoneChange) {}

    DWORD Open(const std::string& path) {
        // Asked for here, as a domain may be slow, and a transaction keeps others from writing.
        user = OwnUserName();
        return OpenHistoryFile(path, Database::Access::kReadWrite, database);
    }
    // Writes all requests in one transaction.
    DWORD Write(const std::vector<RecordRequest*>& requests);
    DWORD End();
    // Interrupted, although this process is still there.
    DWORD Abandon();
    std::int64_t Number() const { return number; }

  private:
    struct TopState {
        bool isWritten = false;
        std::string lastFolder;  // of the object before
        std::int64_t lastNumber = 0;
    };

    DWORD BeginChange();
    DWORD NoteTime();
    DWORD WriteTop(std::uint64_t top, const ChangedTop& facts);
    DWORD WriteObject(std::uint64_t top, const DescriptorChange& change);
    DWORD FindFolder(std::uint64_t top, std::string_view path, std::int64_t& folder);
    DWORD FindEntry(std::uint64_t top, std::int64_t above, std::string_view name, std::int64_t& folder);
    DWORD AddFolder(std::uint64_t top, std::int64_t above, std::string_view name, std::int64_t& folder);
    struct Descriptor {
        StoredSecurity stored;
        std::int64_t number = 0;  // 0: none
    };

    DWORD FindDescriptor(const StoredSecurity& stored, Descriptor& last, std::int64_t& found);
    DWORD LookUpDescriptor(const StoredSecurity& stored, std::int64_t& found);
    DWORD AskDescriptor(const StoredSecurity& stored, std::int64_t hash, std::int64_t& found);

    const ChangeKind kind;
    const std::int64_t undoes;
    Database database;

    std::string user;
    std::int64_t number = 0;
    std::int64_t objects = 0;
    std::int64_t time = 0;      // of the records that are being written
    std::int64_t recorded = 0;  // of those, what is durable
    std::int64_t folders = 0;
    std::optional<std::int64_t> others;  // counts the changes that others make to the database
    std::vector<TopState> topStates;
    std::unordered_map<std::string, std::int64_t> knownFolders;
    std::unordered_map<std::string, std::int64_t> knownDescriptors;
    std::size_t descriptorBytes = 0;
    Descriptor lastBefore;  // of the object before, which mostly has the same
    Descriptor lastAfter;

    Statement addChange{
        database,
        "INSERT INTO changes(began, user, kind, undoes, process, process_start) VALUES(?,?,?,?,?,?)"};
    Statement endChange{database, "UPDATE changes SET ended=?, objects=? WHERE number=?"};
    Statement addTime{database, "INSERT INTO times VALUES(?,?,?,?)"};
    Statement addTop{database, "INSERT INTO tops VALUES(?,?,?,?,?,?)"};
    Statement addFolder{database, "INSERT INTO folders VALUES(?,?,?,?,?,?)"};
    Statement addObject{database, "INSERT INTO objects VALUES(?,?,?,?,?,?,?,?,?)"};
    Statement addUse{database, "INSERT OR IGNORE INTO uses VALUES(?,?)"};
    Statement addDescriptor{database, "INSERT INTO descriptors(hash, form, owner, bytes) VALUES(?,?,?,?)"};
    Statement findDescriptor{
        database, "SELECT number FROM descriptors WHERE hash=? AND form=? AND owner IS ? AND bytes=?"};
};

DWORD ChangeWriter::BeginChange() {
    const ProcessMark process = ThisProcess();
    time = Now();
    addChange.Bind(time, std::string_view(user), static_cast<std::int64_t>(kind), undoes, process.number,
                   process.start);
    const DWORD error = addChange.Run();
    if (error == ERROR_SUCCESS) number = database.LastRow();
    return error;
}

// An object that was made during a long change is told by this from one that came after it.
DWORD ChangeWriter::NoteTime() {
    const std::int64_t now = Now();
    if (now <= time) return ERROR_SUCCESS;
    time = now;
    const std::int64_t first = objects + 1;
    addTime.Bind(number, first, time, Seal::Of(number, first, time));
    return addTime.Run();
}

DWORD ChangeWriter::WriteTop(std::uint64_t top, const ChangedTop& facts) {
    const auto topNumber = static_cast<std::int64_t>(top);
    const std::string_view topPath = facts.path;
    const std::int64_t isFolder = facts.isFolder ? 1 : 0;
    const std::span<const std::uint8_t> mark = facts.mark;
    addTop.Bind(number, topNumber, topPath, isFolder, mark,
                Seal::Of(number, topNumber, topPath, isFolder, mark));
    return addTop.Run();
}

DWORD ChangeWriter::AddFolder(std::uint64_t top, std::int64_t above, std::string_view name,
                              std::int64_t& folder) {
    const auto topNumber = static_cast<std::int64_t>(top);
    folder = ++folders;
    addFolder.Bind(number, folder, topNumber, above, name, Seal::Of(number, folder, topNumber, above, name));
    return addFolder.Run();
}

DWORD ChangeWriter::FindEntry(std::uint64_t top, std::int64_t above, std::string_view name,
                              std::int64_t& folder) {
    const std::string key = std::to_string(top) + '\\' + std::to_string(above) + '\\' + std::string(name);
    const auto known = knownFolders.find(key);
    if (known != knownFolders.end()) {
        folder = known->second;
        return ERROR_SUCCESS;
    }
    const DWORD error = AddFolder(top, above, name, folder);
    if (knownFolders.size() >= kMostFolders) knownFolders.clear();
    if (error == ERROR_SUCCESS) knownFolders.emplace(key, folder);
    return error;
}

// Mostly the folder of the object before, or one in it.
DWORD ChangeWriter::FindFolder(std::uint64_t top, std::string_view path, std::int64_t& folder) {
    TopState& state = topStates[top];
    std::string_view rest = path;
    folder = 0;
    if (state.lastNumber != 0 && path == state.lastFolder) {
        folder = state.lastNumber;
        return ERROR_SUCCESS;
    }
    const std::string_view last = state.lastFolder;
    const bool isBelow =
        state.lastNumber != 0 && path.starts_with(last) && (last.empty() || path[last.size()] == '\\');
    DWORD error = ERROR_SUCCESS;
    if (isBelow) {
        folder = state.lastNumber;
        rest.remove_prefix(last.empty() ? 0 : last.size() + 1);
    } else {
        error = FindEntry(top, 0, "", folder);
    }
    while (error == ERROR_SUCCESS && !rest.empty()) {
        const std::size_t end = rest.find('\\');
        error = FindEntry(top, folder, rest.substr(0, end), folder);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    if (error != ERROR_SUCCESS) return error;
    state.lastFolder = path;
    state.lastNumber = folder;
    return error;
}

DWORD ChangeWriter::AskDescriptor(const StoredSecurity& stored, std::int64_t hash, std::int64_t& found) {
    const std::int64_t form = static_cast<std::int64_t>(stored.form);
    const std::span<const std::uint8_t> bytes = stored.bytes;
    findDescriptor.Bind(hash, form, OwnerOf(stored), bytes);
    std::optional<std::int64_t> known;
    // To the end: a question that is still open keeps its view of the database, and a writer must have the
    // newest.
    while (findDescriptor.Next())
        known = findDescriptor.Number(0);
    if (known) found = *known;
    if (known || findDescriptor.Error() != ERROR_SUCCESS) return findDescriptor.Error();
    addDescriptor.Bind(hash, form, OwnerOf(stored), bytes);
    const DWORD error = addDescriptor.Run();
    if (error == ERROR_SUCCESS) found = database.LastRow();
    return error;
}

DWORD ChangeWriter::LookUpDescriptor(const StoredSecurity& stored, std::int64_t& found) {
    if (stored.bytes.size() > kMostDescriptorBytes) return ERROR_INVALID_SECURITY_DESCR;
    std::string key = KeyOf(stored);
    const auto known = knownDescriptors.find(key);
    if (known != knownDescriptors.end()) {
        found = known->second;
        return ERROR_SUCCESS;
    }
    DWORD error = AskDescriptor(stored, HashOfKey(key), found);
    if (error == ERROR_SUCCESS) {
        addUse.Bind(found, number);
        error = addUse.Run();
    }
    if (error != ERROR_SUCCESS) return error;
    if (knownDescriptors.empty() || descriptorBytes > kMostKnownBytes) {
        knownDescriptors.clear();
        descriptorBytes = 0;
    }
    descriptorBytes += key.size();
    knownDescriptors.emplace(std::move(key), found);
    return error;
}

DWORD ChangeWriter::FindDescriptor(const StoredSecurity& stored, Descriptor& last, std::int64_t& found) {
    if (last.number == 0 || last.stored != stored) {
        last.number = 0;
        if (const DWORD error = LookUpDescriptor(stored, last.number); error != ERROR_SUCCESS) return error;
        last.stored = stored;
    }
    found = last.number;
    return ERROR_SUCCESS;
}

DWORD ChangeWriter::WriteObject(std::uint64_t top, const DescriptorChange& change) {
    const std::string_view path = change.path;
    if (!LeadsDown(path)) return ERROR_INVALID_NAME;
    const std::size_t separator = path.rfind('\\');
    const bool isBelow = separator != std::string_view::npos;
    std::int64_t folder = 0;
    std::int64_t before = 0;
    std::int64_t after = 0;
    DWORD error = FindFolder(top, path.substr(0, isBelow ? separator : 0), folder);
    if (error == ERROR_SUCCESS) error = FindDescriptor(change.before, lastBefore, before);
    if (error == ERROR_SUCCESS) error = FindDescriptor(change.after, lastAfter, after);
    if (error != ERROR_SUCCESS) return error;
    const std::string_view name = isBelow ? path.substr(separator + 1) : path;
    const std::int64_t isFolder = change.isFolder ? 1 : 0;
    const auto file = static_cast<std::int64_t>(change.fileNumber);
    ++objects;
    addObject.Bind(number, objects, folder, name, isFolder, file, before, after,
                   Seal::Of(number, objects, folder, name, isFolder, file, before, after));
    return addObject.Run();
}

// After a failure nothing more is written.
DWORD ChangeWriter::Write(const std::vector<RecordRequest*>& requests) {
    Transaction transaction(database);
    DWORD error = transaction.Begin();
    // Others may have removed descriptors that nothing refers to.
    std::optional<std::int64_t> version;
    if (error == ERROR_SUCCESS) error = database.Ask("PRAGMA data_version", version);
    if (version != others) {
        knownDescriptors.clear();
        lastBefore = lastAfter = {};
    }
    others = version;
    if (error == ERROR_SUCCESS) error = number == 0 ? BeginChange() : NoteTime();
    for (const RecordRequest* request : requests) {
        if (request->top >= topStates.size()) topStates.resize(request->top + 1);
        TopState& state = topStates[request->top];
        if (error == ERROR_SUCCESS && !std::exchange(state.isWritten, true))
            error = WriteTop(request->top, request->facts);
        for (const DescriptorChange& change : request->batch)
            if (error == ERROR_SUCCESS) error = WriteObject(request->top, change);
    }
    if (error == ERROR_SUCCESS) error = transaction.Commit();
    if (error == ERROR_SUCCESS) recorded = objects;
    return error;
}

DWORD ChangeWriter::End() {
    endChange.Bind(Now(), recorded, number);
    return endChange.Run();
}

DWORD ChangeWriter::Abandon() {
    Statement abandon(database, "UPDATE changes SET process=0 WHERE number=? AND ended IS NULL");
    abandon.Bind(number);
    return abandon.Run();
}

RecordedChange::RecordedChange(std::string databasePath, ChangeKind changeKind, std::int64_t undoneChange)
    : path(std::move(databasePath)), kind(changeKind), undoes(undoneChange) {}

RecordedChange::~RecordedChange() {
    if (number != 0) writer->Abandon();
}

DWORD RecordedChange::BeginTop(const ChangedTop& top, std::uint64_t& topNumber) {
    const std::lock_guard lock(guard);
    // Nobody could find it again.
    if (top.path.empty() && error == ERROR_SUCCESS) error = ERROR_PATH_NOT_FOUND;
    if (error != ERROR_SUCCESS) return error;
    const auto [known, isNew] =
        topNumbers.try_emplace(top.path + '\0' + std::string(top.mark.begin(), top.mark.end()), tops.size());
    if (isNew) tops.push_back(top);
    topNumber = known->second;
    return ERROR_SUCCESS;
}

// By one thread at a time.
DWORD RecordedChange::WriteAll(const std::vector<RecordRequest*>& requests) {
    DWORD result = ERROR_SUCCESS;
    if (!writer) {
        auto opened = std::make_unique<ChangeWriter>(kind, undoes);
        result = opened->Open(path);
        if (result == ERROR_SUCCESS) writer = std::move(opened);
    }
    return result == ERROR_SUCCESS ? writer->Write(requests) : result;
}

DWORD RecordedChange::Record(std::uint64_t top, std::span<const DescriptorChange> batch) {
    std::unique_lock lock(guard);
    if (top >= tops.size()) return ERROR_INVALID_PARAMETER;
    RecordRequest request{top, tops[top], batch};
    waiting.push_back(&request);
    while (!request.isDone && isWriting)
        written.wait(lock);
    if (request.isDone) return request.error;
    // The requests of the threads that came meanwhile are written with this one's.
    isWriting = true;
    const std::vector<RecordRequest*> requests = std::exchange(waiting, {});
    const DWORD before = error;
    lock.unlock();
    const DWORD result = before != ERROR_SUCCESS ? before : WriteAll(requests);
    lock.lock();
    isWriting = false;
    if (error == ERROR_SUCCESS) error = result;
    if (result == ERROR_SUCCESS) number = writer->Number();
    for (RecordRequest* done : requests) {
        done->error = result;
        done->isDone = true;
    }
    written.notify_all();
    return result;
}

DWORD RecordedChange::Error() const {
    const std::lock_guard lock(guard);
    return error;
}

std::int64_t RecordedChange::Number() const {
    const std::lock_guard lock(guard);
    return number;
}

void RecordedChange::End() {
    const std::lock_guard lock(guard);
    if (number == 0) return;
    const DWORD result = writer->End();
    if (error == ERROR_SUCCESS) error = result;
}

}  // namespace permora
