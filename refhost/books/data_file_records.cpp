#include "refhost/books/data_file_records.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <utility>

#include "refhost/books/problems.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

constexpr std::string_view kRecord = "DataFileRecord";
constexpr std::string_view kCategory = "Category";
constexpr std::string_view kNumber = "Number";
constexpr std::string_view kDataVersion = "DataVersion";
constexpr std::string_view kProperty = "Property";
constexpr std::string_view kName = "Name";
constexpr std::string_view kKind = "Type";
constexpr std::string_view kValue = "Value";

[[nodiscard]] DataFileRecord ReadContent(Company& company, const RecordKey& key) {
    DataFileRecord content;
    content.data_version = static_cast<std::int32_t>(
        company.Data()
            .FindInteger("SELECT data_version FROM data_file_records WHERE category = ? AND number = ?", key.category,
                         std::int64_t{key.number})
            .value_or(0));
    Statement row =
        company.Data().Prepare("SELECT name, kind, value FROM data_file_properties WHERE category = ? AND number = ?",
                               key.category, std::int64_t{key.number});
    while (row.Step()) {
        content.properties.insert_or_assign(std::string(row.Text(0)),
                                            PropertyText{std::string(row.Text(1)), std::string(row.Text(2))});
    }
    return content;
}

void Remove(Database& data, const RecordKey& key) {
    data.Run("DELETE FROM data_file_records WHERE category = ? AND number = ?", key.category, std::int64_t{key.number});
}

// Puts the content in the place of what was there.
void Put(Database& data, const RecordKey& key, const DataFileRecord& content) {
    Remove(data, key);
    data.Run("INSERT INTO data_file_records VALUES (?, ?, ?)", key.category, std::int64_t{key.number},
             std::int64_t{content.data_version});
    for (const auto& [name, value] : content.properties) {
        data.Run("INSERT INTO data_file_properties VALUES (?, ?, ?, ?, ?)", key.category, std::int64_t{key.number},
                 name, value.kind, value.text);
    }
}

[[nodiscard]] Element ElementOf(const RecordKey& key, const DataFileRecord& content) {
    Element record = MakeElement(kRecord);
    SetChildText(record, kCategory, key.category);
    SetChildText(record, kNumber, std::to_string(key.number));
    SetChildText(record, kDataVersion, std::to_string(content.data_version));
    for (const auto& [name, value] : content.properties) {
        Element& property = record.children.emplace_back(MakeElement(kProperty));
        SetChildText(property, kName, name);
        SetChildText(property, kKind, value.kind);
        SetChildText(property, kValue, value.text);
    }
    return record;
}

[[noreturn]] void Refuse(const std::string& what) { throw HostError(Problem::kBadText, what); }

// Refuses what would be lost: these elements are known, each once but for properties, and nothing beside them.
void CheckContent(const Element& element, std::span<const std::string_view> known, const std::string& title) {
    if (!element.attributes.empty()) {
        Refuse(title + " has the unknown attribute " + Quoted(element.attributes.front().name) + '.');
    }
    if (!known.empty() && !Trimmed(element.text).empty()) {
        Refuse(title + " holds text where elements belong.");
    }
    for (const Element& child : element.children) {
        const bool is_known = std::ranges::find(known, child.name) != known.end();
        if (!is_known || (child.name != kProperty && &child != FindChild(element, child.name))) {
            Refuse(title + '/' + child.name + " is unknown here, or stands here once too often.");
        }
        if (child.name != kProperty) {
            CheckContent(child, {}, title + '/' + child.name);
        }
    }
}

[[nodiscard]] std::int32_t ReadNumber(const Element& record, std::string_view name) {
    const std::string_view text = ChildText(record, name);
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        Refuse(std::string(name) + " of a " + record.name + " is " + Quoted(text) +
               ", which is no whole number of 32 bits.");
    }
    return number;
}

void ReadProperty(const Element& property, DataFileRecord& content, const std::string& title) {
    CheckContent(property, std::array{kName, kKind, kValue}, title + '/' + property.name);
    std::string name(ChildText(property, kName));
    if (FindChild(property, kName) == nullptr) {
        Refuse(title + ": a Property has no Name.");
    }
    if (content.Find(name)) {
        Refuse(title + " has the property " + Quoted(name) + " twice.");
    }
    content.Set(name, PropertyText{std::string(ChildText(property, kKind)), std::string(ChildText(property, kValue))});
}

}  // namespace

std::optional<PropertyText> DataFileRecord::Find(const std::string& name) const {
    const auto found = properties.find(name);
    return found == properties.end() ? std::nullopt : std::optional(found->second);
}

void DataFileRecord::Set(const std::string& name, const std::optional<PropertyText>& value) {
    if (value) {
        properties.insert_or_assign(name, *value);
    } else {
        properties.erase(name);
    }
}

bool DataFileRecordTable::Exists(const RecordKey& key) const {
    return added_.contains(key) ||
           company_.Data().FindInteger("SELECT 1 FROM data_file_records WHERE category = ? AND number = ?",
                                       key.category, std::int64_t{key.number});
}

void DataFileRecordTable::Add(const RecordKey& key) { added_.insert(key); }

DataFileRecord DataFileRecordTable::Content(const RecordKey& key) const { return ReadContent(company_, key); }

bool DataFileRecordTable::Lock(const RecordKey& key, RecordHolder holder) {
    return locks_.try_emplace(key, holder).first->second == holder;
}

bool DataFileRecordTable::Unlock(const RecordKey& key, RecordHolder holder) {
    return IsLockedBy(key, holder) && locks_.erase(key) > 0;
}

bool DataFileRecordTable::IsLockedBy(const RecordKey& key, RecordHolder holder) const {
    const auto found = locks_.find(key);
    return found != locks_.end() && found->second == holder;
}

void DataFileRecordTable::Save(const RecordKey& key, const DataFileRecord& content) {
    Transaction transaction(company_.Data());
    Put(company_.Data(), key, content);
    transaction.Commit();
}

void DataFileRecordTable::Delete(const RecordKey& key) {
    Transaction transaction(company_.Data());
    Remove(company_.Data(), key);
    transaction.Commit();
    added_.erase(key);
}

std::vector<Element> ReadDataFileRecords(Company& company) {
    std::vector<Element> records;
    Statement row = company.Data().Prepare("SELECT category, number FROM data_file_records ORDER BY category, number");
    while (row.Step()) {
        const RecordKey key{std::string(row.Text(0)), static_cast<std::int32_t>(row.Integer(1))};
        records.push_back(ElementOf(key, ReadContent(company, key)));
    }
    return records;
}

void WriteDataFileRecords(Company& company, const Element& section) {
    std::set<RecordKey> seen;
    for (const Element& record : section.children) {
        if (record.name != kRecord) {
            Refuse("In " + section.name + " stands " + record.name + "; expected are elements " + std::string(kRecord) +
                   '.');
        }
        const RecordKey key{std::string(ChildText(record, kCategory)), ReadNumber(record, kNumber)};
        const std::string title = record.name + ' ' + std::to_string(key.number) + " of " + Quoted(key.category);
        if (!seen.insert(key).second) {
            Refuse(title + " stands here twice.");
        }
        CheckContent(record, std::array{kCategory, kNumber, kDataVersion, kProperty}, title);
        DataFileRecord content{.data_version = ReadNumber(record, kDataVersion)};
        for (const Element& child : record.children) {
            if (child.name == kProperty) {
                ReadProperty(child, content, title);
            }
        }
        Put(company.Data(), key, content);
    }
}

}  // namespace paylodge::refhost
