// SQLite's connection and statements as owned values. Errors are system error codes. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "platform/api/errors.h"

struct sqlite3;
struct sqlite3_stmt;

namespace permora {

class Statement;

class Database {
  public:
    // kUnchanging: as long as this is open nobody writes to it, on a volume that takes no writing.
    enum class Access { kReadOnly, kUnchanging, kReadWrite };

    // `path` is a file that exists, or that this may make (kReadWrite).
    DWORD Open(const std::string& path, Access access);
    // For a path that leads there as long as `place` lives: the connection keeps it.
    void Keep(std::shared_ptr<const void> kept) { place = std::move(kept); }
    explicit operator bool() const { return connection != nullptr; }

    // Statements without parameters and answers.
    DWORD Execute(const char* sql);
    // The first column of the first row; nothing without one.
    DWORD Ask(const char* sql, std::optional<std::int64_t>& answer);
    std::int64_t LastRow() const;
    // By the last statement that changes rows.
    std::int64_t ChangedRows() const;

  private:
    friend class Statement;
    struct Close {
        void operator()(sqlite3* connection) const;
    };
    std::shared_ptr<const void> place;  // outlives the connection, which opens files until its end
    std::unique_ptr<sqlite3, Close> connection;
};

// A transaction that is rolled back unless it was committed.
class Transaction {
  public:
    explicit Transaction(Database& target) : database(target) {}
    ~Transaction() {
        if (isOpen) database.Execute("ROLLBACK");
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // Waits for other writers.
    DWORD Begin();
    DWORD Commit();

  private:
    Database& database;
    bool isOpen = false;
};

// A statement that is compiled at its first use and may be run again and again. The database must outlive it.
//
//     statement.Bind(number, name);
//     while (statement.Next()) ... statement.Number(0) ...
//     if (statement.Error() != ERROR_SUCCESS) ...
class Statement {
  public:
    Statement(Database& target, std::string text) : database(target), sql(std::move(text)) {}

    // Begins anew with these values, in the order of the parameters. Texts and bytes must live until the next
    // call of Bind.
    template <typename... Values>
    void Bind(const Values&... values) {
        Begin();
        int index = 0;
        (BindOne(++index, values), ...);
    }
    // The next row. False at the end and after an error.
    bool Next();
    // Runs a statement that has no rows.
    DWORD Run() {
        while (Next()) {
        }
        return error;
    }
    DWORD Error() const { return error; }

    std::int64_t Number(int column) const;
    bool IsNull(int column) const;
    std::string Text(int column) const;
    std::span<const std::uint8_t> Bytes(int column) const;  // until the next call

  private:
    void Begin();
    void BindOne(int index, std::int64_t value);
    void BindOne(int index, std::string_view value);
    void BindOne(int index, std::span<const std::uint8_t> value);
    void BindOne(int index, const std::optional<std::int64_t>& value);
    void Take(int result);

    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };

    Database& database;
    const std::string sql;
    std::unique_ptr<sqlite3_stmt, Finalize> statement;
    DWORD error = ERROR_SUCCESS;
};

}  // namespace permora
