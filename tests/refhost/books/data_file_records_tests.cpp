#include "refhost/books/data_file_records.hpp"

#include <gtest/gtest.h>

#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

const RecordKey kKey{"Notes", 1};

[[nodiscard]] DataFileRecord WithText(const std::string& text) {
    DataFileRecord record;
    record.Set("Text", PropertyText{"string", text});
    return record;
}

TEST(DataFileRecord, LosesAPropertyThatIsSetToNothing) {
    DataFileRecord record = WithText("a");
    record.Set("Text", std::nullopt);
    record.Set("Missing", std::nullopt);
    EXPECT_EQ(record.Find("Text"), std::nullopt);
}

TEST(DataFileRecordTable, ReturnsWhatWasSaved) {
    const auto books = SampleBooks();
    DataFileRecordTable records(*books);
    DataFileRecord record = WithText(" a ");
    record.Set("Other", PropertyText{"int32", "7"});
    record.data_version = -3;
    records.Save(kKey, record);
    EXPECT_EQ(records.Content(kKey), record);
    EXPECT_EQ(records.Content({"notes", 1}), DataFileRecord());
}

TEST(DataFileRecordTable, ReplacesTheRecordOfTheSameKeyOnly) {
    const auto books = SampleBooks();
    DataFileRecordTable records(*books);
    const RecordKey other{"Notes", 2};
    records.Save(kKey, WithText("first"));
    records.Save(other, WithText("second"));
    records.Save(kKey, WithText("again"));
    EXPECT_EQ(ReadDataFileRecords(*books).size(), 2U);
    EXPECT_EQ(records.Content(kKey), WithText("again"));
    EXPECT_EQ(records.Content(other), WithText("second"));
}

TEST(DataFileRecordTable, RemovesWhatWasSavedAndWhatWasOnlyAdded) {
    const auto books = SampleBooks();
    DataFileRecordTable records(*books);
    records.Add(kKey);
    EXPECT_TRUE(records.Exists(kKey));
    records.Delete(kKey);
    EXPECT_FALSE(records.Exists(kKey));
    records.Save(kKey, WithText("first"));
    EXPECT_TRUE(records.Exists(kKey));
    records.Delete(kKey);
    EXPECT_FALSE(records.Exists(kKey));
    EXPECT_EQ(records.Content(kKey), DataFileRecord());
}

TEST(DataFileRecordTable, LocksEachRecordForOneHolder) {
    const auto books = SampleBooks();
    DataFileRecordTable records(*books);
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
