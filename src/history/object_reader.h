// The objects of one change, read from the rows of the database and checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "history/database.h"
#include "history/history.h"

namespace permora {

// Made for rows in the order of their numbers, forwards or backwards: neighbours mostly share their folder.
// Memory grows with the depth of a path alone. ERROR_FILE_CORRUPT for what no change has written.
class ObjectReader {
  public:
    ObjectReader(Database& source, const ChangeFacts& facts)
        : database(source), change(facts.number), began(facts.began) {}

    // The columns of a row that Read understands.
    static constexpr const char* kColumns = "number, folder, name, is_folder, file, before, after, seal";
    DWORD Read(const Statement& row, RecordedObject& object);

  private:
    // A folder on the way to the present one.
    struct Step {
        std::int64_t number;
        std::size_t end;  // of its path in `path`
    };
    struct Name {
        std::int64_t folder;
        std::string text;
    };
    // The records from `first` to before `end` were made at `time`.
    struct Period {
        std::int64_t first = 0;
        std::int64_t end = 0;
        std::int64_t time = 0;
    };

    DWORD FindFolder(std::int64_t number);
    DWORD ReadFolder(std::int64_t number, std::int64_t& above, std::string& name);
    void LeaveAbove(std::int64_t number);
    DWORD Descend(const std::vector<Name>& names);
    DWORD FindTop(std::int64_t number, ChangedTop& top);
    DWORD FindDescriptor(std::int64_t number, StoredSecurity& stored);
    DWORD FindTime(std::int64_t number, std::int64_t& time);
    DWORD AskPeriod(std::int64_t number);

    Database& database;
    const std::int64_t change;
    const std::int64_t began;

    std::vector<Step> steps;  // from the top on; their numbers rise
    std::string path;         // of the last step, below the top
    std::int64_t folderTop = 0;

    std::optional<std::int64_t> topNumber;
    ChangedTop lastTop;
    std::unordered_map<std::int64_t, StoredSecurity> descriptors;
    std::size_t descriptorBytes = 0;  // in `descriptors`
    Period period;                    // of the last record

    Statement askFolder{database, "SELECT top, above, name, seal FROM folders WHERE change=? AND number=?"};
    Statement askTop{database, "SELECT path, is_folder, mark, seal FROM tops WHERE change=? AND number=?"};
    Statement askDescriptor{database, "SELECT form, owner, bytes, hash FROM descriptors WHERE number=?"};
    Statement askTime{
        database,
        "SELECT number, time, seal FROM times WHERE change=? AND number<=? ORDER BY number DESC LIMIT 1"};
    Statement askNextTime{database, "SELECT min(number) FROM times WHERE change=? AND number>?"};
};

}  // namespace permora
