#include "refhost/books/database.hpp"

#include <sqlite3.h>

#include <cstdio>
#include <new>
#include <utility>

#include "refhost/books/names.hpp"
#include "refhost/books/problems.hpp"
#include "refhost/books/texts.hpp"
#include "refhost/books/watched_vfs.hpp"

namespace paylodge::refhost {
namespace {

// What a failure of SQLite means for the file, and how a sentence about the file goes on.
struct Failure {
    Problem problem;
    const char* words;
};

constexpr Failure kInUse{Problem::kLocked, "is in use by another program; close it there first"};

// How Windows says that another program has the file and does not share it. Elsewhere nothing fails to open with this.
constexpr int kSharingViolation = 32;

[[nodiscard]] Failure FailureOf(int extended, int system_error) {
    switch (extended) {
        case SQLITE_IOERR_READ:
        case SQLITE_IOERR_SHORT_READ:
        case SQLITE_IOERR_FSTAT:
        case SQLITE_IOERR_ACCESS:
            return {Problem::kUnreadable, "cannot be read"};
        default:
            break;
    }
    switch (extended & 0xFF) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return kInUse;
        case SQLITE_NOTADB:
            return {Problem::kForeign, "is not a company file"};
        case SQLITE_CORRUPT:
        // The statements are fixed: one that is wrong does not find the tables that it expects.
        case SQLITE_ERROR:
            return {Problem::kDamaged, "is damaged; go back to a copy of it"};
        case SQLITE_READONLY:
            return {Problem::kReadOnly, "is write-protected, so that nothing can be changed"};
        case SQLITE_FULL:
            return {Problem::kDiskFull, "cannot be saved: the disk is full"};
        case SQLITE_CANTOPEN:
            return system_error == kSharingViolation
                       ? kInUse
                       : Failure{Problem::kUnreadable, "cannot be opened; look at the rights on the file"};
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return {Problem::kUnreadable, "cannot be opened"};
        default:
            return {Problem::kCannotWrite, "cannot be saved"};
    }
}

[[nodiscard]] std::string Describe(const PlannedFailure& planned) {
    char number[16] = {};
    std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(planned.result));
    return std::string(NameOf(planned.step)) + " was planned to fail with " + number;
}

[[nodiscard]] bool IsFailureOfAFile(int result) {
    const int primary = result & 0xFF;
    return primary == SQLITE_IOERR || primary == SQLITE_CANTOPEN || primary == SQLITE_FULL;
}

[[noreturn]] void Throw(int result, int system_error, const std::string& message, const std::string& path) {
    if ((result & 0xFF) == SQLITE_CONSTRAINT) {
        throw BrokenRule(message);
    }
    if ((result & 0xFF) == SQLITE_NOMEM) {
        throw std::bad_alloc();
    }
    const Failure failure = FailureOf(result, system_error);
    const auto planned = IsFailureOfAFile(result) ? TakePlannedFailure() : std::nullopt;
    // What SQLite says may quote what it found in the file.
    const std::string reason = planned ? Describe(*planned) : OneLine(message);
    throw HostError(failure.problem, "The company file \"" + path + "\" " + failure.words + ": " + reason + '.',
                    planned ? std::optional(planned->result) : std::nullopt);
}

// folded(text): the text as names count.
void FoldText(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) noexcept {
    try {
        const auto* const text = reinterpret_cast<const char*>(::sqlite3_value_text(arguments[0]));
        const std::string folded = Folded(text == nullptr ? "" : text);
        ::sqlite3_result_text64(context, folded.data(), folded.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    } catch (const std::bad_alloc&) {
        ::sqlite3_result_error_nomem(context);
    }
}

}  // namespace

void CloseDatabase::operator()(sqlite3* database) const noexcept { ::sqlite3_close_v2(database); }

void FinalizeStatement::operator()(sqlite3_stmt* statement) const noexcept { ::sqlite3_finalize(statement); }

Statement::Statement(Database& database, std::string sql, StatementHandle handle) noexcept
    : database_(&database), sql_(std::move(sql)), handle_(std::move(handle)) {}

Statement::~Statement() {
    if (handle_) {
        database_->Return(std::move(sql_), std::move(handle_));
    }
}

void Statement::Bind(std::int64_t value) {
    database_->Check(::sqlite3_bind_int64(handle_.get(), ++parameters_, value));
}

void Statement::Bind(std::string_view value) {
    // SQLite takes a null pointer for a null value, which an empty text is not.
    const char* const text = value.data() == nullptr ? "" : value.data();
    database_->Check(
        ::sqlite3_bind_text64(handle_.get(), ++parameters_, text, value.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void Statement::Bind(std::nullopt_t) { database_->Check(::sqlite3_bind_null(handle_.get(), ++parameters_)); }

bool Statement::Step() {
    const int result = ::sqlite3_step(handle_.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        database_->Check(result);
    }
    return result == SQLITE_ROW;
}

void Statement::Run() {
    while (Step()) {
    }
}

int Statement::Columns() const noexcept { return ::sqlite3_column_count(handle_.get()); }

bool Statement::IsNull(int column) const noexcept {
    return ::sqlite3_column_type(handle_.get(), column) == SQLITE_NULL;
}

std::int64_t Statement::Integer(int column) const noexcept { return ::sqlite3_column_int64(handle_.get(), column); }

std::string_view Statement::Text(int column) const noexcept {
    const auto* const text = reinterpret_cast<const char*>(::sqlite3_column_text(handle_.get(), column));
    return text == nullptr ? std::string_view()
                           : std::string_view(text, static_cast<size_t>(::sqlite3_column_bytes(handle_.get(), column)));
}

std::optional<std::int64_t> Statement::OptionalInteger(int column) const noexcept {
    return IsNull(column) ? std::nullopt : std::optional(Integer(column));
}

Database::Database(const std::string& path, Access access) : path_(path) {
    const int flags = access == Access::kRead           ? SQLITE_OPEN_READONLY
                      : access == Access::kReadAndWrite ? SQLITE_OPEN_READWRITE
                                                        : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    sqlite3* database = nullptr;
    const int result = ::sqlite3_open_v2(path.c_str(), &database, flags | SQLITE_OPEN_EXRESCODE, WatchedVfs());
    handle_.reset(database);
    Check(result);
    Check(::sqlite3_create_function_v2(handle_.get(), "folded", 1,
                                       SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY, nullptr, FoldText,
                                       nullptr, nullptr, nullptr));
}

void Database::RunScript(const char* sql) { Check(::sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr)); }

bool Database::IsReadOnly() const noexcept { return ::sqlite3_db_readonly(handle_.get(), "main") == 1; }

bool Database::IsInTransaction() const noexcept { return ::sqlite3_get_autocommit(handle_.get()) == 0; }

std::int64_t Database::ChangeCount() const noexcept { return ::sqlite3_total_changes64(handle_.get()); }

std::int64_t Database::LastInsertedRow() const noexcept { return ::sqlite3_last_insert_rowid(handle_.get()); }

void Database::Check(int result) const {
    if (result == SQLITE_OK) {
        return;
    }
    const bool is_latest = handle_ && ::sqlite3_errcode(handle_.get()) == result;
    Throw(result, is_latest ? ::sqlite3_system_errno(handle_.get()) : 0,
          is_latest ? ::sqlite3_errmsg(handle_.get()) : ::sqlite3_errstr(result), path_);
}

Statement Database::Borrow(std::string sql) {
    std::vector<StatementHandle>& idle = idle_[sql];
    if (!idle.empty()) {
        StatementHandle handle = std::move(idle.back());
        idle.pop_back();
        return {*this, std::move(sql), std::move(handle)};
    }
    sqlite3_stmt* statement = nullptr;
    Check(::sqlite3_prepare_v3(handle_.get(), sql.c_str(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                               &statement, nullptr));
    return {*this, std::move(sql), StatementHandle(statement)};
}

void Database::Return(std::string sql, StatementHandle handle) noexcept {
    ::sqlite3_reset(handle.get());
    ::sqlite3_clear_bindings(handle.get());
    try {
        idle_[std::move(sql)].push_back(std::move(handle));
    } catch (const std::bad_alloc&) {
        // It is compiled again the next time.
    }
}

Transaction::Transaction(Database& database, const char* begin) : database_(database) {
    static_cast<void>(TakePlannedFailure());
    database_.Run(begin);
}

Transaction::~Transaction() {
    if (is_open_) {
        try {
            // SQLite ends the transaction by itself after some failures.
            if (database_.IsInTransaction()) {
                database_.Run("ROLLBACK");
            }
            // Where writing had begun, the file itself is put back when it is read next.
            database_.Run("SELECT count(*) FROM company");
        } catch (const std::exception&) {
            // The journal takes the change back when the file is used next.
        }
    }
}

void Transaction::Commit() {
    database_.Run("COMMIT");
    is_open_ = false;
}

Savepoint::Savepoint(Database& database) : database_(database) { database_.Run("SAVEPOINT part"); }

Savepoint::~Savepoint() {
    if (is_open_ && database_.IsInTransaction()) {
        try {
            database_.Run("ROLLBACK TO part");
            database_.Run("RELEASE part");
        } catch (const std::exception&) {
            // The transaction around it fails, too.
        }
    }
}

void Savepoint::Keep() {
    database_.Run("RELEASE part");
    is_open_ = false;
}

}  // namespace paylodge::refhost
