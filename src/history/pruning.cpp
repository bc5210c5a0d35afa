#include "history/pruning.h"

#include <optional>

namespace permora {

DWORD RemoveChange(Database& database, std::int64_t number) {
    constexpr const char* kDescriptors =
        "DELETE FROM descriptors WHERE number IN (SELECT descriptor FROM uses WHERE change=?1)"
        " AND NOT EXISTS (SELECT 1 FROM uses WHERE descriptor=descriptors.number AND change<>?1)";
    constexpr const char* kSteps[] = {
        kDescriptors,
        "DELETE FROM uses WHERE change=?1",
        "DELETE FROM times WHERE change=?1",
        "DELETE FROM objects WHERE change=?1",
        "DELETE FROM folders WHERE change=?1",
        "DELETE FROM tops WHERE change=?1",
        "DELETE FROM changes WHERE number=?1",
    };
    Transaction transaction(database);
    DWORD error = transaction.Begin();
    for (const char* sql : kSteps) {
        if (error != ERROR_SUCCESS) return error;
        Statement step(database, sql);
        step.Bind(number);
        error = step.Run();
    }
    return error == ERROR_SUCCESS ? transaction.Commit() : error;
}

DWORD AskUsedBytes(Database& database, std::uint64_t& bytes) {
    std::optional<std::int64_t> answer;
    const DWORD error = database.Ask(
        "SELECT (page_count - freelist_count) * page_size"
        " FROM pragma_page_count(), pragma_freelist_count(), pragma_page_size()",
        answer);
    if (error == ERROR_SUCCESS) bytes = static_cast<std::uint64_t>(answer.value_or(0));
    return error;
}

DWORD GiveBackRoom(Database& database) {
    return database.Execute("PRAGMA incremental_vacuum; PRAGMA wal_checkpoint(TRUNCATE)");
}

}  // namespace permora
