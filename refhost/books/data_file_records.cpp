#include "refhost/books/data_file_records.hpp"

#include <charconv>
#include <utility>

namespace paylodge::refhost {
namespace {

constexpr std::string_view kCategory = "Category";
constexpr std::string_view kNumber = "Number";
constexpr std::string_view kDataVersion = "DataVersion";
constexpr std::string_view kProperty = "Property";
constexpr std::string_view kName = "Name";
constexpr std::string_view kKind = "Type";
constexpr std::string_view kValue = "Value";

[[nodiscard]] RecordTest IsRecord(const RecordKey& key) {
    return [number = std::to_string(key.number), category = key.category](const Element& record) {
        return ChildText(record, kNumber) == number && ChildText(record, kCategory) == category;
    };
}

}  // namespace

DataFileRecord::DataFileRecord(const Element& record) {
    const std::string_view version = ChildText(record, kDataVersion);
    std::from_chars(version.data(), version.data() + version.size(), data_version);
    for (const Element& child : record.children) {
        if (child.name == kProperty) {
            properties_.insert_or_assign(
                std::string(ChildText(child, kName)),
                PropertyText{std::string(ChildText(child, kKind)), std::string(ChildText(child, kValue))});
        }
    }
}

Element DataFileRecord::ToElement(const RecordKey& key) const {
    Element record = MakeElement(kDataFileRecords.record);
    SetChildText(record, kCategory, key.category);
    SetChildText(record, kNumber, std::to_string(key.number));
    SetChildText(record, kDataVersion, std::to_string(data_version));
    for (const auto& [name, value] : properties_) {
        Element& property = record.children.emplace_back(MakeElement(kProperty));
        SetChildText(property, kName, name);
        SetChildText(property, kKind, value.kind);
        SetChildText(property, kValue, value.text);
    }
    return record;
}

std::optional<PropertyText> DataFileRecord::Find(const std::string& name) const {
    const auto found = properties_.find(name);
    return found == properties_.end() ? std::nullopt : std::optional(found->second);
}

void DataFileRecord::Set(const std::string& name, const std::optional<PropertyText>& value) {
    if (value) {
        properties_.insert_or_assign(name, *value);
    } else {
        properties_.erase(name);
    }
}

bool DataFileRecordTable::Exists(const RecordKey& key) const {
    return added_.contains(key) || books_.Find(kDataFileRecords, IsRecord(key)) != nullptr;
}

void DataFileRecordTable::Add(const RecordKey& key) { added_.insert(key); }

DataFileRecord DataFileRecordTable::Content(const RecordKey& key) const {
    const Element* const record = books_.Find(kDataFileRecords, IsRecord(key));
    return record == nullptr ? DataFileRecord() : DataFileRecord(*record);
}

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

void DataFileRecordTable::Put(const RecordKey& key, const DataFileRecord& content) {
    books_.Put(kDataFileRecords, IsRecord(key), content.ToElement(key));
}

void DataFileRecordTable::Remove(const RecordKey& key) {
    added_.erase(key);
    books_.Remove(kDataFileRecords, IsRecord(key));
}

}  // namespace paylodge::refhost
