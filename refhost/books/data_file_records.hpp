// The data file records of the company file: named values that add-ins keep under a category and a number.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/books/company.hpp"

namespace paylodge::refhost {

// Texts are UTF-8; both parts count exactly as they are.
struct RecordKey {
    std::string category;
    std::int32_t number = 0;

    auto operator<=>(const RecordKey&) const = default;  // NOLINT(modernize-use-nullptr): there is no 0 to replace
};

// A value of a record: the name of its kind, and its text.
struct PropertyText {
    std::string kind;
    std::string text;

    bool operator==(const PropertyText&) const = default;
};

// The content of one record, as its holder sees it until it is saved.
struct DataFileRecord {
    // 0 unless the company file has a number.
    std::int32_t data_version = 0;
    std::map<std::string, PropertyText> properties = {};

    // The value of this name, or nothing.
    [[nodiscard]] std::optional<PropertyText> Find(const std::string& name) const;
    // Nothing takes the value away.
    void Set(const std::string& name, const std::optional<PropertyText>& value);

    bool operator==(const DataFileRecord&) const = default;
};

// Who holds a record: no two living holders are equal.
using RecordHolder = const void*;

// The records of an open company file with what is known of them only while it is open: which ones were added and not
// saved yet, and who has locked which. The company has to outlive it. Methods that read or write throw HostError.
class DataFileRecordTable {
  public:
    explicit DataFileRecordTable(Company& company) noexcept : company_(company) {}

    [[nodiscard]] bool Exists(const RecordKey& key) const;
    // The record exists from here on, empty; it stays in the company file once it was saved.
    void Add(const RecordKey& key);
    // The content as it was last saved; an empty one for a record that was only added.
    [[nodiscard]] DataFileRecord Content(const RecordKey& key) const;

    // False when somebody else holds the lock. Locking twice is the same as once.
    [[nodiscard]] bool Lock(const RecordKey& key, RecordHolder holder);
    // False when the lock is not the holder's.
    bool Unlock(const RecordKey& key, RecordHolder holder);
    [[nodiscard]] bool IsLockedBy(const RecordKey& key, RecordHolder holder) const;

    // Saves the content in the company file.
    void Save(const RecordKey& key, const DataFileRecord& content);
    void Delete(const RecordKey& key);

  private:
    Company& company_;
    std::set<RecordKey> added_;
    std::map<RecordKey, RecordHolder> locks_;
};

// All of them as they stand in the company's text, and the way back. The latter throws HostError for a malformed one.
[[nodiscard]] std::vector<Element> ReadDataFileRecords(Company& company);
void WriteDataFileRecords(Company& company, const Element& section);

}  // namespace paylodge::refhost
