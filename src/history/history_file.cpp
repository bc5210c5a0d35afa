#include "history/history_file.h"

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "history/schema.h"
#include "platform/private_place.h"

namespace permora {
namespace {

// SQLite's own files beside the database.
constexpr std::array<const char*, 3> kCompanions = {"-wal", "-shm", "-journal"};

std::string_view FolderOf(std::string_view path) {
    const std::size_t end = path.find_last_of("/\\");
    return end == std::string_view::npos ? std::string_view() : path.substr(0, end);
}

// The folder that holds the database, and the way to it from there, when it and all beside it are nobody
// else's.
struct FoundFile {
    std::shared_ptr<const PrivateFolder> folder;
    std::string path;
};

DWORD FindFile(const std::string& path, Database::Access access, FoundFile& file) {
    const std::string folder(FolderOf(path));
    if (folder.empty()) return ERROR_PATH_NOT_FOUND;
    const bool isToRead = access == Database::Access::kReadOnly;
    FoundFile found;
    DWORD error =
        PrivateFolder::Hold(folder, isToRead ? MissingFolder::kLeave : MissingFolder::kMake, found.folder);
    if (error != ERROR_SUCCESS)
        return isToRead && error == ERROR_PATH_NOT_FOUND ? ERROR_FILE_NOT_FOUND : error;
    found.path = found.folder->PathOf(std::string_view(path).substr(folder.size() + 1));
    if (!isToRead) error = MakePrivateFile(found.path);
    if (error == ERROR_SUCCESS) error = CheckPrivateFile(found.path);
    if (error == ERROR_SUCCESS && !isToRead) error = CheckWritable(found.path);
    for (const char* companion : kCompanions) {
        if (error != ERROR_SUCCESS) return error;
        error = CheckPrivateFile(found.path + companion);
        if (error == ERROR_FILE_NOT_FOUND) error = ERROR_SUCCESS;
    }
    if (error == ERROR_SUCCESS) file = std::move(found);
    return error;
}

DWORD AskNumber(Database& database, const char* question, std::int64_t& number) {
    std::optional<std::int64_t> answer;
    const DWORD error = database.Ask(question, answer);
    number = answer.value_or(0);
    return error;
}

DWORD BringUpToDate(Database& database, std::int64_t version) {
    DWORD error = ERROR_SUCCESS;
    for (auto step = static_cast<std::size_t>(version); error == ERROR_SUCCESS && step < kSchemaSteps.size();
         ++step)
        error = database.Execute(kSchemaSteps[step]);
    const std::string marks = "PRAGMA application_id=" + std::to_string(kApplicationId) +
                              ";PRAGMA user_version=" + std::to_string(kSchemaVersion);
    return error == ERROR_SUCCESS ? database.Execute(marks.c_str()) : error;
}

// Version 0 is a file with nothing in it.
DWORD CheckSchema(Database& database, std::int64_t& version) {
    std::int64_t application = 0;
    std::int64_t found = 0;
    std::int64_t tables = 0;
    DWORD error = AskNumber(database, "PRAGMA application_id", application);
    if (error == ERROR_SUCCESS) error = AskNumber(database, "PRAGMA user_version", found);
    if (error == ERROR_SUCCESS) error = AskNumber(database, "SELECT count(*) FROM sqlite_schema", tables);
    if (error != ERROR_SUCCESS) return error;
    const bool isNew = application == 0 && found == 0 && tables == 0;
    if (!isNew && (application != kApplicationId || found < 1)) return ERROR_FILE_CORRUPT;
    if (found > kSchemaVersion) return ERROR_UNKNOWN_REVISION;
    version = found;
    return ERROR_SUCCESS;
}

// Two programs may find the file new, or old, at the same time.
DWORD Upgrade(Database& database) {
    // Freed pages go back to the disk, which must be said before there are any. The log keeps readers and the
    // writer apart, and costs one write to the disk for each transaction.
    DWORD error = database.Execute("PRAGMA auto_vacuum=INCREMENTAL; PRAGMA journal_mode=WAL");
    Transaction transaction(database);
    if (error == ERROR_SUCCESS) error = transaction.Begin();
    std::int64_t version = 0;
    if (error == ERROR_SUCCESS) error = CheckSchema(database, version);
    if (error == ERROR_SUCCESS) error = BringUpToDate(database, version);
    return error == ERROR_SUCCESS ? transaction.Commit() : error;
}

// Where another program is making the database, the switch to the log does not wait for it but fails at once.
DWORD UpgradeInTurn(Database& database) {
    constexpr int kAttempts = 100;
    constexpr std::chrono::milliseconds kPause(20);
    DWORD error = Upgrade(database);
    for (int attempt = 1; error == ERROR_LOCK_VIOLATION && attempt < kAttempts; ++attempt) {
        std::this_thread::sleep_for(kPause);
        error = Upgrade(database);
    }
    return error;
}

// All at one moment: another program may be making the database.
DWORD CheckSchemaAtOnce(Database& database, std::int64_t& version) {
    DWORD error = database.Execute("BEGIN");
    if (error == ERROR_SUCCESS) error = CheckSchema(database, version);
    const DWORD ended = database.Execute("ROLLBACK");
    return error == ERROR_SUCCESS ? ended : error;
}

}  // namespace

DWORD OpenHistoryFile(const std::string& path, Database::Access access, Database& database) {
    FoundFile file;
    Database opened;
    DWORD error = FindFile(path, access, file);
    opened.Keep(file.folder);
    if (error == ERROR_SUCCESS) error = opened.Open(file.path, access);
    std::int64_t version = 0;
    if (error == ERROR_SUCCESS) error = CheckSchemaAtOnce(opened, version);
    // Reading makes the log anew, which cannot be made there. Nor is it needed, as long as there is none.
    if (error != ERROR_SUCCESS && access == Database::Access::kReadOnly &&
        CheckWritable(file.path) == ERROR_WRITE_PROTECT &&
        CheckPrivateFile(file.path + "-wal") == ERROR_FILE_NOT_FOUND) {
        error = opened.Open(file.path, Database::Access::kUnchanging);
        if (error == ERROR_SUCCESS) error = CheckSchemaAtOnce(opened, version);
    }
    if (error == ERROR_SUCCESS && access == Database::Access::kReadOnly && version == 0)
        error = ERROR_FILE_NOT_FOUND;
    if (error == ERROR_SUCCESS && access != Database::Access::kReadOnly && version < kSchemaVersion)
        error = UpgradeInTurn(opened);
    if (error == ERROR_SUCCESS) database = std::move(opened);
    return error;
}

}  // namespace permora
