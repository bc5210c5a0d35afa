#include "history/database.h"

#include <sqlite3.h>

#include "platform/private_place.h"

namespace permora {
namespace {

constexpr int kWaitMilliseconds = 5000;

// What the system has said of the failed call, or `otherwise`.
DWORD SystemError(sqlite3* connection, DWORD otherwise) {
    const int number = connection == nullptr ? 0 : sqlite3_system_errno(connection);
    return number == 0 ? otherwise : ErrorOfHost(number);
}

// `connection` may be null.
DWORD ErrorOf(int result, sqlite3* connection) {
    switch (result & 0xff) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return ERROR_SUCCESS;
        case SQLITE_NOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
        case SQLITE_MISMATCH:
        case SQLITE_CONSTRAINT:
        case SQLITE_ERROR:  // a table that is missing, above all
            return ERROR_FILE_CORRUPT;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_PROTOCOL:
            return ERROR_LOCK_VIOLATION;
        case SQLITE_READONLY:
            return ERROR_WRITE_PROTECT;
        case SQLITE_FULL:
            return ERROR_DISK_FULL;
        case SQLITE_CANTOPEN:
            return result == SQLITE_CANTOPEN_SYMLINK ? ERROR_CANT_RESOLVE_FILENAME
                                                     : SystemError(connection, ERROR_OPEN_FAILED);
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return ERROR_ACCESS_DENIED;
        case SQLITE_IOERR:
            return result == SQLITE_IOERR_SHORT_READ ? ERROR_FILE_CORRUPT
                                                     : SystemError(connection, ERROR_IO_DEVICE);
        default:
            return ERROR_IO_DEVICE;
    }
}

int FlagsOf(Database::Access access) {
    switch (access) {
        case Database::Access::kReadWrite:
            return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
        case Database::Access::kReadOnly:
            return SQLITE_OPEN_READONLY;
        case Database::Access::kUnchanging:
            return SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
    }
    return SQLITE_OPEN_READONLY;
}

// SQLite would look for links on the way to a file and go on with the path that it has found, which leads
// through names that others may change. Links at the end are refused all the same.
int KeepName(sqlite3_vfs* /*files*/, const char* name, int room, char* kept) {
    const std::string_view text(name);
    if (text.size() >= static_cast<std::size_t>(room)) return SQLITE_CANTOPEN;
    text.copy(kept, text.size());
    kept[text.size()] = '\0';
    return SQLITE_OK;
}

// The name by which SQLite knows the system's files with the paths as they are given.
const char* FilesByGivenPaths() {
    static sqlite3_vfs files = [] {
        sqlite3_vfs made = *sqlite3_vfs_find(nullptr);
        made.pNext = nullptr;
        made.zName = "permora";
        made.xFullPathname = KeepName;
        return made;
    }();
    static const int kRegistered = sqlite3_vfs_register(&files, 0);
    return kRegistered == SQLITE_OK ? files.zName : nullptr;
}

// The path in the form that takes options.
std::string AddressOf(const std::string& path) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    std::string address = "file:";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '%' || c == '?' || c == '#')
            address += {'%', kDigits[byte >> 4], kDigits[byte & 0xf]};
        else
            address += c;
    }
    return address;
}

}  // namespace

void Database::Close::operator()(sqlite3* closed) const {
    sqlite3_close_v2(closed);
}

DWORD Database::Open(const std::string& path, Access access) {
    const int flags = SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_FULLMUTEX | SQLITE_OPEN_EXRESCODE | FlagsOf(access);
    const std::string name = access == Access::kUnchanging ? AddressOf(path) + "?immutable=1" : path;
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(name.c_str(), &opened, flags, FilesByGivenPaths());
    connection.reset(opened);
    if (result != SQLITE_OK) {
        const DWORD error = ErrorOf(result, opened);
        connection.reset();
        return error;
    }
    sqlite3_busy_timeout(opened, kWaitMilliseconds);
    // What a file defines is not to be run.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    return Execute("PRAGMA synchronous=FULL; PRAGMA cell_size_check=ON; PRAGMA temp_store=MEMORY");
}

DWORD Database::Execute(const char* sql) {
    return ErrorOf(sqlite3_exec(connection.get(), sql, nullptr, nullptr, nullptr), connection.get());
}

DWORD Database::Ask(const char* sql, std::optional<std::int64_t>& answer) {
    Statement question(*this, sql);
    question.Bind();
    std::optional<std::int64_t> found;
    if (question.Next() && !question.IsNull(0)) found = question.Number(0);
    if (question.Error() == ERROR_SUCCESS) answer = found;
    return question.Error();
}

std::int64_t Database::LastRow() const {
    return sqlite3_last_insert_rowid(connection.get());
}

std::int64_t Database::ChangedRows() const {
    return sqlite3_changes64(connection.get());
}

DWORD Transaction::Begin() {
    const DWORD error = database.Execute("BEGIN IMMEDIATE");
    isOpen = error == ERROR_SUCCESS;
    return error;
}

DWORD Transaction::Commit() {
    const DWORD error = database.Execute("COMMIT");
    if (error == ERROR_SUCCESS) isOpen = false;
    return error;
}

void Statement::Finalize::operator()(sqlite3_stmt* finished) const {
    sqlite3_finalize(finished);
}

void Statement::Take(int result) {
    if (error == ERROR_SUCCESS) error = ErrorOf(result, database.connection.get());
}

void Statement::Begin() {
    error = ERROR_SUCCESS;
    if (statement) {
        sqlite3_reset(statement.get());
        return;
    }
    sqlite3_stmt* compiled = nullptr;
    Take(sqlite3_prepare_v3(database.connection.get(), sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &compiled,
                            nullptr));
    statement.reset(compiled);
}

void Statement::BindOne(int index, std::int64_t value) {
    if (error == ERROR_SUCCESS) Take(sqlite3_bind_int64(statement.get(), index, value));
}

void Statement::BindOne(int index, std::string_view value) {
    if (error != ERROR_SUCCESS) return;
    Take(sqlite3_bind_text64(statement.get(), index, value.data() == nullptr ? "" : value.data(),
                             value.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::BindOne(int index, std::span<const std::uint8_t> value) {
    if (error != ERROR_SUCCESS) return;
    // A null pointer would become a null value.
    static constexpr std::uint8_t kNothing = 0;
    const void* bytes = value.empty() ? &kNothing : value.data();
    Take(sqlite3_bind_blob64(statement.get(), index, bytes, value.size(), SQLITE_STATIC));
}

void Statement::BindOne(int index, const std::optional<std::int64_t>& value) {
    if (value) return BindOne(index, *value);
    if (error == ERROR_SUCCESS) Take(sqlite3_bind_null(statement.get(), index));
}

bool Statement::Next() {
    if (error != ERROR_SUCCESS) return false;
    const int result = sqlite3_step(statement.get());
    Take(result);
    if (result == SQLITE_ROW) return true;
    sqlite3_reset(statement.get());
    return false;
}

std::int64_t Statement::Number(int column) const {
    return sqlite3_column_int64(statement.get(), column);
}

bool Statement::IsNull(int column) const {
    return sqlite3_column_type(statement.get(), column) == SQLITE_NULL;
}

std::string Statement::Text(int column) const {
    const std::span<const std::uint8_t> bytes = Bytes(column);
    return {bytes.begin(), bytes.end()};
}

std::span<const std::uint8_t> Statement::Bytes(int column) const {
    const void* bytes = sqlite3_column_blob(statement.get(), column);
    const int size = sqlite3_column_bytes(statement.get(), column);
    if (bytes == nullptr || size <= 0) return {};
    return {static_cast<const std::uint8_t*>(bytes), static_cast<std::size_t>(size)};
}

}  // namespace permora
