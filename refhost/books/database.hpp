// An SQLite database, its statements and its transactions, with owners and exceptions. Texts are UTF-8.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace paylodge::refhost {

struct CloseDatabase {
    void operator()(sqlite3* database) const noexcept;
};
struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const noexcept;
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

class Database;

// A statement at work, on loan from its database, which has to outlive it. All methods throw HostError for a failure of
// the file and BrokenRule for a forbidden change.
class Statement {
  public:
    Statement(Database& database, std::string sql, StatementHandle handle) noexcept;
    ~Statement();
    Statement(Statement&& other) noexcept = default;
    Statement& operator=(Statement&&) = delete;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // The next parameter.
    void Bind(std::int64_t value);
    void Bind(std::string_view value);
    void Bind(std::nullopt_t);
    template <class Value>
    void Bind(const std::optional<Value>& value) {
        if (value) {
            Bind(*value);
        } else {
            Bind(std::nullopt);
        }
    }

    // Whether there is another row.
    [[nodiscard]] bool Step();
    // For a statement that returns no rows, or whose rows do not matter.
    void Run();

    [[nodiscard]] int Columns() const noexcept;
    // Columns of the row count from 0. A null counts as 0 or an empty text, which lives until the next step.
    [[nodiscard]] bool IsNull(int column) const noexcept;
    [[nodiscard]] std::int64_t Integer(int column) const noexcept;
    [[nodiscard]] std::string_view Text(int column) const noexcept;
    [[nodiscard]] std::optional<std::int64_t> OptionalInteger(int column) const noexcept;

  private:
    Database* database_;
    std::string sql_;
    StatementHandle handle_;
    int parameters_ = 0;
};

class Database {
  public:
    enum class Access { kRead, kReadAndWrite, kCreate };

    // Opens a file, or an empty database in memory for ":memory:". A file that cannot be written opens for reading.
    // Statements can call the function folded(text), which is Folded of names.hpp. Throws HostError.
    Database(const std::string& path, Access access);

    // A statement with its first parameters bound; compiled once for each text.
    template <class... Values>
    [[nodiscard]] Statement Prepare(std::string sql, const Values&... values) {
        Statement statement = Borrow(std::move(sql));
        (statement.Bind(values), ...);
        return statement;
    }
    template <class... Values>
    void Run(std::string sql, const Values&... values) {
        Prepare(std::move(sql), values...).Run();
    }
    // The integer in the first column of the first row, or nothing without a row or for a null.
    template <class... Values>
    [[nodiscard]] std::optional<std::int64_t> FindInteger(std::string sql, const Values&... values) {
        Statement statement = Prepare(std::move(sql), values...);
        return statement.Step() ? statement.OptionalInteger(0) : std::nullopt;
    }

    // Several statements at once.
    void RunScript(const char* sql);

    [[nodiscard]] bool IsReadOnly() const noexcept;
    [[nodiscard]] bool IsInTransaction() const noexcept;
    // Statements that wrote something, since the database was opened.
    [[nodiscard]] std::int64_t ChangeCount() const noexcept;
    [[nodiscard]] std::int64_t LastInsertedRow() const noexcept;
    [[nodiscard]] const std::string& Path() const noexcept { return path_; }

    // Throws what the result of a call of SQLite stands for; does nothing for a success.
    void Check(int result) const;

  private:
    friend class Statement;
    [[nodiscard]] Statement Borrow(std::string sql);
    void Return(std::string sql, StatementHandle handle) noexcept;

    std::string path_;
    std::unique_ptr<sqlite3, CloseDatabase> handle_;
    // Idle statements by their text. Destroyed before the database is closed.
    std::map<std::string, std::vector<StatementHandle>> idle_;
};

// Everything from here to Commit is done as a whole or not at all.
class Transaction {
  public:
    explicit Transaction(Database& database, const char* begin = "BEGIN IMMEDIATE");
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void Commit();

  private:
    Database& database_;
    bool is_open_ = true;
};

// The same for a part of a transaction.
class Savepoint {
  public:
    explicit Savepoint(Database& database);
    ~Savepoint();
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;

    void Keep();

  private:
    Database& database_;
    bool is_open_ = true;
};

}  // namespace paylodge::refhost
