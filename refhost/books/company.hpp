// The books of one company, in their file or in memory.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/books/database.hpp"
#include "refhost/books/element.hpp"
#include "refhost/books/list_kinds.hpp"

namespace paylodge::refhost {

inline constexpr std::uint32_t kApplicationId = 0x4C484346;  // "LHCF"
inline constexpr std::uint32_t kSchemaVersion = 1;

class Company {
  public:
    // Opens a company file for this process alone; a write-protected one opens for reading. Throws HostError for a file
    // that is missing, in use, damaged, foreign or of a newer version, and leaves it untouched then.
    [[nodiscard]] static std::unique_ptr<Company> Open(const std::string& path);
    // Makes a company file without any records. Throws HostError, also when the file exists.
    [[nodiscard]] static std::unique_ptr<Company> Create(const std::string& path, std::string_view name);
    [[nodiscard]] static std::unique_ptr<Company> CreateInMemory(std::string_view name);

    ~Company();
    Company(const Company&) = delete;
    Company& operator=(const Company&) = delete;

    [[nodiscard]] Database& Data() noexcept { return database_; }
    // As it was given.
    [[nodiscard]] const std::string& Path() const noexcept { return database_.Path(); }
    [[nodiscard]] bool IsReadOnly() const noexcept { return database_.IsReadOnly(); }
    [[nodiscard]] std::string Name();

    // The records of a list as responses show them, in the order of their ids.
    [[nodiscard]] std::vector<Element> Records(const ListKind& kind);
    // The record with this id, or with this full name, which counts without regard to letter case.
    [[nodiscard]] std::optional<Element> FindById(const ListKind& kind, std::string_view id);
    [[nodiscard]] std::optional<Element> FindByName(const ListKind& kind, std::string_view full_name);

    // The number of that record.
    [[nodiscard]] std::optional<std::int64_t> NumberOfId(const ListKind& kind, std::string_view id);
    [[nodiscard]] std::optional<std::int64_t> NumberOfName(const ListKind& kind, std::string_view full_name);
    // The record with a number that exists.
    [[nodiscard]] Element Record(const ListKind& kind, std::int64_t number);

    // Enters a record into the table of those that have an id. `now` is YYYY-MM-DDTHH:MM:SS.
    [[nodiscard]] std::int64_t NewNumber(std::string_view now);
    // Moves the edit sequence and the time of a record on.
    void Touch(std::int64_t number, std::string_view now);

  private:
    explicit Company(const std::string& path, Database::Access access) : database_(path, access) {}

    Database database_;
};

// "L-12" or "T-12". Ids of the two kinds never coincide, so that a mistaken one is noticed.
[[nodiscard]] std::string MakeId(const ListKind& kind, std::int64_t number);
[[nodiscard]] std::optional<std::int64_t> NumberFromId(const ListKind& kind, std::string_view id) noexcept;

}  // namespace paylodge::refhost
