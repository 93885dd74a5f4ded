#include "refhost/books/data_file_records.hpp"

#include <gtest/gtest.h>

#include "tests/refhost/sample_books.hpp"

namespace paylodge::refhost {
namespace {

const RecordKey kKey{"Notes", 1};

[[nodiscard]] DataFileRecord WithText(const std::string& text) {
    DataFileRecord record;
    record.Set("Text", PropertyText{"string", text});
    return record;
}

TEST(DataFileRecord, IsReadAsItWasWritten) {
    DataFileRecord record = WithText(" a ");
    record.Set("Other", PropertyText{"int32", "7"});
    record.data_version = -3;
    const DataFileRecord read(record.ToElement(kKey));
    EXPECT_EQ(read.data_version, -3);
    EXPECT_EQ(read.Find("Text"), (PropertyText{"string", " a "}));
    EXPECT_EQ(read.Find("Other"), (PropertyText{"int32", "7"}));
    EXPECT_EQ(read.Find("text"), std::nullopt);
}

TEST(DataFileRecord, ThatSomebodyEditedIsReadAsFarAsItMakesSense) {
    Element element = MakeElement("DataFileRecord");
    element.children.push_back(MakeElement("DataVersion", "one"));
    element.children.push_back(MakeElement("Property"));
    element.children.push_back(MakeElement("Unknown", "text"));
    const DataFileRecord record(element);
    EXPECT_EQ(record.data_version, 0);
    EXPECT_EQ(record.Find(""), (PropertyText{"", ""}));
}

TEST(DataFileRecord, LosesAPropertyThatIsSetToNothing) {
    DataFileRecord record = WithText("a");
    record.Set("Text", std::nullopt);
    record.Set("Missing", std::nullopt);
    EXPECT_EQ(record.Find("Text"), std::nullopt);
}

TEST(DataFileRecordTable, ReplacesTheRecordOfTheSameKeyOnly) {
    Company books = SampleBooks();
    DataFileRecordTable records(books);
    const RecordKey other{"Notes", 2};
    records.Put(kKey, WithText("first"));
    records.Put(other, WithText("second"));
    records.Put(kKey, WithText("again"));
    EXPECT_EQ(books.Records(kDataFileRecords).size(), 2U);
    EXPECT_EQ(records.Content(kKey).Find("Text")->text, "again");
    EXPECT_EQ(records.Content(other).Find("Text")->text, "second");
    EXPECT_TRUE(books.IsChanged());
}

TEST(DataFileRecordTable, RemovesWhatWasSavedAndWhatWasOnlyAdded) {
    Company books = SampleBooks();
    DataFileRecordTable records(books);
    records.Add(kKey);
    records.Remove(kKey);
    EXPECT_FALSE(records.Exists(kKey));
    EXPECT_FALSE(books.IsChanged());
    records.Put(kKey, WithText("first"));
    EXPECT_TRUE(records.Exists(kKey));
    records.Remove(kKey);
    EXPECT_FALSE(records.Exists(kKey));
    EXPECT_TRUE(books.IsChanged());
}

TEST(DataFileRecordTable, LocksEachRecordForOneHolder) {
    Company books = SampleBooks();
    DataFileRecordTable records(books);
    const int first = 0;
    const int second = 0;
    EXPECT_TRUE(records.Lock(kKey, &first));
    EXPECT_FALSE(records.Lock(kKey, &second));
    EXPECT_TRUE(records.Lock({"Notes", 2}, &second));
    EXPECT_FALSE(records.Unlock(kKey, &second));
    EXPECT_TRUE(records.IsLockedBy(kKey, &first));
    EXPECT_TRUE(records.Unlock(kKey, &first));
    EXPECT_FALSE(records.Unlock(kKey, &first));
}

}  // namespace
}  // namespace paylodge::refhost
