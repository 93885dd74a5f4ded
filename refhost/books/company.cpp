#include "refhost/books/company.hpp"

#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "refhost/books/names.hpp"
#include "refhost/books/problems.hpp"
#include "refhost/books/record_reader.hpp"
#include "refhost/books/schema.hpp"
#include "refhost/books/texts.hpp"

namespace paylodge::refhost {
namespace {

// The beginning of every SQLite database, and where in it the numbers stand that tell a company file.
constexpr size_t kHeaderSize = 100;
constexpr std::string_view kMagic{"SQLite format 3\0", 16};
constexpr size_t kFormatOffset = 18;
constexpr size_t kVersionOffset = 60;
constexpr size_t kApplicationOffset = 68;
// For writing and for reading. Another one would have SQLite keep a log beside the file, or only read it.
constexpr std::string_view kFormat = "\1\1";

[[nodiscard]] std::filesystem::path SystemPath(const std::string& path) {
    return {std::u8string(path.begin(), path.end())};
}

[[noreturn]] void Refuse(Problem problem, const std::string& path, const std::string& words) {
    throw HostError(problem, "The company file \"" + path + "\" " + words);
}

// Also for an administrator, whom the system would let write all the same.
[[nodiscard]] bool IsWriteProtected(const std::string& path) {
    using std::filesystem::perms;
    std::error_code error;
    const perms all = std::filesystem::status(SystemPath(path), error).permissions();
    return (all & (perms::owner_write | perms::group_write | perms::others_write)) == perms::none;
}

[[nodiscard]] std::uint32_t BigEndian(std::string_view bytes) noexcept {
    std::uint32_t number = 0;
    for (const char byte : bytes.substr(0, 4)) {
        number = number << 8U | static_cast<unsigned char>(byte);
    }
    return number;
}

[[noreturn]] void RefuseDamaged(const std::string& path, std::string_view reason) {
    Refuse(Problem::kDamaged, path, "is damaged; go back to a copy of it: " + OneLine(reason) + '.');
}

// Looks at the first bytes of the file and nothing else, so that a file of another kind is left alone.
void CheckHeader(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(SystemPath(path), error);
    if (status.type() == std::filesystem::file_type::not_found) {
        Refuse(Problem::kMissing, path, "does not exist.");
    }
    if (status.type() == std::filesystem::file_type::directory) {
        Refuse(Problem::kUnreadable, path, "is a folder.");
    }
    std::array<char, kHeaderSize> bytes{};
    std::ifstream file(SystemPath(path), std::ios::binary);
    if (!file) {
        // It knows when another program does not share the file.
        static_cast<void>(Database(path, Database::Access::kRead));
        Refuse(Problem::kUnreadable, path, "cannot be opened: look at the rights on the file.");
    }
    file.read(bytes.data(), bytes.size());
    const std::string_view header(bytes.data(), static_cast<size_t>(file.gcount()));
    if (header.size() < kHeaderSize || !header.starts_with(kMagic) ||
        BigEndian(header.substr(kApplicationOffset)) != kApplicationId) {
        Refuse(Problem::kForeign, path,
               "is not a company file. A company that is kept as text is brought into one with "
               "'./dev company import'.");
    }
    if (const std::uint32_t version = BigEndian(header.substr(kVersionOffset)); version > kSchemaVersion) {
        Refuse(Problem::kNewer, path,
               "was made by a newer version of the host: it has the format " + std::to_string(version) +
                   ", and this one reads formats up to " + std::to_string(kSchemaVersion) + '.');
    }
    if (header.substr(kFormatOffset, kFormat.size()) != kFormat) {
        RefuseDamaged(path, "its first bytes name a format that company files do not have");
    }
}

// A finding stands behind a line that names the database.
void CheckStructure(Database& database) {
    Statement check = database.Prepare("PRAGMA quick_check(1)");
    if (!check.Step() || check.Text(0) != "ok") {
        const std::string_view finding = check.Text(0);
        RefuseDamaged(database.Path(), finding.substr(finding.rfind('\n') + 1));
    }
}

// Responses are made of these texts: one that XML cannot hold would make a response that nobody can read.
void CheckTexts(Database& database, const std::string& table) {
    Statement row = database.Prepare("SELECT * FROM \"" + table + '"');
    while (row.Step()) {
        for (int column = 0; column < row.Columns(); ++column) {
            if (!IsXmlText(row.Text(column))) {
                RefuseDamaged(database.Path(),
                              "the table " + table + " holds a text with bytes that are no characters");
            }
        }
    }
}

void CheckWhole(Database& database) {
    CheckStructure(database);
    if (!database.Prepare("SELECT name FROM company").Step()) {
        RefuseDamaged(database.Path(), "it does not say which company it is of");
    }
    Statement table = database.Prepare("SELECT name FROM sqlite_schema WHERE type = 'table'");
    while (table.Step()) {
        CheckTexts(database, std::string(table.Text(0)));
    }
}

void Configure(Database& database) {
    database.Run("PRAGMA foreign_keys = ON");
    database.Run("PRAGMA busy_timeout = 500");
    // What a damaged schema says is not to be carried out.
    database.Run("PRAGMA trusted_schema = OFF");
    // Another program that opened the file meanwhile would not know of records that this one has locked.
    database.Run("PRAGMA locking_mode = EXCLUSIVE");
    if (!database.IsReadOnly()) {
        // The change is committed in the moment in which the journal is cut off.
        database.Run("PRAGMA journal_mode = TRUNCATE");
        database.Run("PRAGMA synchronous = FULL");
    }
}

// Takes the file for this process, which keeps it, and looks at all of it before anything can be written.
void TakeAndCheck(Database& database) {
    if (database.IsReadOnly()) {
        CheckWhole(database);
        return;
    }
    // Never committed: that would correct the number of pages in the file's header.
    const Transaction look(database, "BEGIN EXCLUSIVE");
    CheckWhole(database);
}

void Fill(Database& database, std::string_view name) {
    database.Run("PRAGMA application_id = " + std::to_string(kApplicationId));
    database.Run("PRAGMA user_version = " + std::to_string(kSchemaVersion));
    Transaction transaction(database);
    database.RunScript(kSchema);
    database.Run("INSERT INTO company VALUES (1, ?)", name);
    transaction.Commit();
}

}  // namespace

std::unique_ptr<Company> Company::Open(const std::string& path) {
    CheckHeader(path);
    std::unique_ptr<Company> company(
        new Company(path, IsWriteProtected(path) ? Database::Access::kRead : Database::Access::kReadAndWrite));
    Configure(company->database_);
    TakeAndCheck(company->database_);
    return company;
}

std::unique_ptr<Company> Company::Create(const std::string& path, std::string_view name) {
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(SystemPath(path), error))) {
        Refuse(Problem::kCannotWrite, path, "exists already.");
    }
    std::unique_ptr<Company> company(new Company(path, Database::Access::kCreate));
    Configure(company->database_);
    Fill(company->database_, name);
    return company;
}

std::unique_ptr<Company> Company::CreateInMemory(std::string_view name) {
    std::unique_ptr<Company> company(new Company(":memory:", Database::Access::kCreate));
    company->database_.Run("PRAGMA foreign_keys = ON");
    Fill(company->database_, name);
    return company;
}

Company::~Company() {
    if (database_.IsReadOnly()) {
        return;
    }
    try {
        // Takes the empty journal away.
        database_.Run("PRAGMA journal_mode = DELETE");
    } catch (const std::exception&) {
        // It is in nobody's way.
    }
}

std::string Company::Name() {
    Statement row = database_.Prepare("SELECT name FROM company");
    return row.Step() ? std::string(row.Text(0)) : std::string();
}

std::vector<Element> Company::Records(const ListKind& kind) { return ReadRecords(*this, kind, {}); }

std::optional<Element> Company::FindById(const ListKind& kind, std::string_view id) {
    const auto number = NumberOfId(kind, id);
    return number ? std::optional(Record(kind, *number)) : std::nullopt;
}

std::optional<Element> Company::FindByName(const ListKind& kind, std::string_view full_name) {
    const auto number = NumberOfName(kind, full_name);
    return number ? std::optional(Record(kind, *number)) : std::nullopt;
}

std::optional<std::int64_t> Company::NumberOfId(const ListKind& kind, std::string_view id) {
    const auto number = NumberFromId(kind, id);
    std::string sql = "SELECT number FROM " + std::string(kind.table) + " WHERE number = ?";
    if (kind.IsTransaction()) {
        sql += " AND kind = '" + std::string(kind.record) + '\'';
    }
    return number ? database_.FindInteger(std::move(sql), *number) : std::nullopt;
}

std::optional<std::int64_t> Company::NumberOfName(const ListKind& kind, std::string_view full_name) {
    return database_.FindInteger("SELECT number FROM " + std::string(kind.table) + " WHERE folded_name = ?",
                                 Folded(full_name));
}

Element Company::Record(const ListKind& kind, std::int64_t number) {
    return ReadRecords(*this, kind, {.conditions = {"t.number = ?"}, .values = {number}}).at(0);
}

std::int64_t Company::NewNumber(std::string_view now) {
    database_.Run("INSERT INTO records (time_created, time_modified) VALUES (?, ?)", now, now);
    return database_.LastInsertedRow();
}

void Company::Touch(std::int64_t number, std::string_view now) {
    database_.Run("UPDATE records SET edit_sequence = edit_sequence + 1, time_modified = ?2 WHERE number = ?1", number,
                  now);
}

std::string MakeId(const ListKind& kind, std::int64_t number) {
    return (kind.id == "TxnID" ? "T-" : "L-") + std::to_string(number);
}

std::optional<std::int64_t> NumberFromId(const ListKind& kind, std::string_view id) noexcept {
    if (!id.starts_with(kind.id == "TxnID" ? "T-" : "L-")) {
        return std::nullopt;
    }
    id.remove_prefix(2);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(id.data(), id.data() + id.size(), number);
    const bool is_number = error == std::errc() && end == id.data() + id.size() && id.front() != '0' && number > 0;
    return is_number ? std::optional(number) : std::nullopt;
}

}  // namespace paylodge::refhost
