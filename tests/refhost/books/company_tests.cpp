#include "refhost/books/company.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "refhost/books/audit.hpp"
#include "refhost/books/company_text.hpp"
#include "refhost/books/problems.hpp"
#include "refhost/books/watched_vfs.hpp"
#include "tests/refhost/books/sample_books.hpp"
#include "tests/refhost/books/temporary_company.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct Refusal {
    Problem problem;
    std::string message;
};

[[nodiscard]] std::optional<Refusal> RefusalToOpen(const std::string& path) {
    try {
        static_cast<void>(Company::Open(path));
    } catch (const HostError& error) {
        return Refusal{error.GetProblem(), error.what()};
    }
    return std::nullopt;
}

void ExpectRefused(const std::string& path, Problem problem, const std::string& words) {
    const auto refusal = RefusalToOpen(path);
    ASSERT_TRUE(refusal) << path << " was opened";
    EXPECT_EQ(refusal->problem, problem) << refusal->message;
    EXPECT_THAT(refusal->message, HasSubstr(words));
}

TEST(CompanyFile, KeepsWhatWasAdded) {
    const TemporaryCompany file;
    static_cast<void>(SendOne(*file.Open(),
                              "<AccountAddRq><AccountAdd><Name>R\xC3\xA9serve &amp; &lt;more&gt;</Name>"
                              "<AccountType>Bank</AccountType></AccountAdd></AccountAddRq>"));
    EXPECT_TRUE(file.Open()->FindByName(kAccounts, "R\xC3\x89SERVE & <more>"));
    EXPECT_FALSE(std::filesystem::exists(file.Path() + "-journal"));
}

TEST(CompanyFile, ThatIsMissingIsNamed) {
    ExpectRefused("no-such-folder/nothing.lhcompany", Problem::kMissing,
                  "\"no-such-folder/nothing.lhcompany\" does not exist");
    EXPECT_FALSE(std::filesystem::exists("nothing.lhcompany"));
}

TEST(CompanyFile, ThatIsAFolderIsRefused) {
    ExpectRefused(std::filesystem::temp_directory_path().string(), Problem::kUnreadable, "is a folder");
}

TEST(CompanyFile, OfAnotherKindIsRefusedAndLeftUntouched) {
    const TemporaryCompany file;
    const std::string database = file.Bytes();
    std::string other_application = database;
    other_application[68] = 'X';
    for (const std::string& bytes : {std::string(), std::string("<CompanyFile/>"), std::string(5000, 'x'),
                                     std::string("SQLite format 3"), other_application}) {
        file.Write(bytes);
        ExpectRefused(file.Path(), Problem::kForeign, "is not a company file");
        EXPECT_TRUE(file.Bytes() == bytes);
        EXPECT_FALSE(std::filesystem::exists(file.Path() + "-journal"));
    }
}

TEST(CompanyFile, OfANewerVersionIsRefusedAndLeftUntouched) {
    const TemporaryCompany file;
    std::string bytes = file.Bytes();
    bytes[63] = 2;
    file.Write(bytes);
    ExpectRefused(file.Path(), Problem::kNewer, "it has the format 2, and this one reads formats up to 1");
    EXPECT_TRUE(file.Bytes() == bytes);
}

TEST(CompanyFile, ThatIsDamagedIsRefusedAndLeftUntouched) {
    const TemporaryCompany file;
    std::string bytes = file.Bytes();
    bytes.replace(4096 * 5, 3000, 3000, '\xA5');
    file.Write(bytes);
    ExpectRefused(file.Path(), Problem::kDamaged, "is damaged");
    EXPECT_TRUE(file.Bytes() == bytes);
}

TEST(CompanyFile, ThatWasCutOffIsRefused) {
    const TemporaryCompany file;
    file.Write(file.Bytes().substr(0, 4096 * 3));
    ExpectRefused(file.Path(), Problem::kDamaged, "is damaged");
}

TEST(CompanyFile, ThatIsDamagedIsRefusedInOneLine) {
    const TemporaryCompany file;
    std::string bytes = file.Bytes();
    bytes.replace(4096 * 5, 3000, 3000, '\xA5');
    file.Write(bytes);
    ExpectRefused(file.Path(), Problem::kDamaged, "go back to a copy of it: Tree ");
}

TEST(CompanyFile, WithATextThatIsNoneIsRefused) {
    const TemporaryCompany file;
    std::string bytes = file.Bytes();
    const size_t place = bytes.find("Undeposited Funds");
    ASSERT_NE(place, std::string::npos);
    for (const char byte : {'\x80', '\x01', '\xFF'}) {
        bytes[place] = byte;
        file.Write(bytes);
        ExpectRefused(file.Path(), Problem::kDamaged,
                      "is damaged; go back to a copy of it: the table accounts holds a text with bytes that are no "
                      "characters.");
        EXPECT_TRUE(file.Bytes() == bytes);
    }
}

TEST(CompanyFile, WithAFormatThatNoneHasIsRefusedAndLeftUntouched) {
    const TemporaryCompany file;
    for (const std::string_view format : {"\2\2", "\2\1", "\1\2", "\3\1", "\xFF\xFF"}) {
        std::string bytes = file.Bytes();
        bytes.replace(18, 2, format);
        file.Write(bytes);
        ExpectRefused(file.Path(), Problem::kDamaged, "its first bytes name a format that company files do not have");
        EXPECT_TRUE(file.Bytes() == bytes);
        EXPECT_FALSE(std::filesystem::exists(file.Path() + "-wal"));
    }
}

// Such a number is corrected by the next change.
TEST(CompanyFile, WithAWrongNumberOfPagesIsLeftUntouchedUntilItIsChanged) {
    const TemporaryCompany file;
    std::string bytes = file.Bytes();
    bytes[30] = 1;
    bytes[95] = static_cast<char>(bytes[95] + 1);
    file.Write(bytes);
    EXPECT_FALSE(RefusalToOpen(file.Path()));
    EXPECT_TRUE(file.Bytes() == bytes);
    bytes.replace(4096 * 5, 3000, 3000, '\xA5');
    file.Write(bytes);
    ExpectRefused(file.Path(), Problem::kDamaged, "is damaged");
    EXPECT_TRUE(file.Bytes() == bytes);
    EXPECT_FALSE(std::filesystem::exists(file.Path() + "-journal"));
}

TEST(CompanyFile, WhoseTablesAreUnreadableIsRefusedInOneLine) {
    const TemporaryCompany file;
    std::string bytes = file.Bytes();
    // Where it was before it was moved to another page it stands, too.
    for (size_t place = 0; (place = bytes.find("PRIMARY KEY CHECK (one = 1),\n")) != std::string::npos;) {
        bytes.replace(place, 2, "'\xFF");
    }
    file.Write(bytes);
    ExpectRefused(file.Path(), Problem::kDamaged, "(company) - unrecognized token: \"'?IMARY KEY CHECK (one = 1),?");
}

TEST(CompanyFile, WithoutItsTablesIsRefused) {
    const TemporaryCompany file;
    {
        Database database(file.Path(), Database::Access::kReadAndWrite);
        database.Run("DELETE FROM company");
    }
    ExpectRefused(file.Path(), Problem::kDamaged, "it does not say which company it is of");
    {
        Database database(file.Path(), Database::Access::kReadAndWrite);
        database.Run("DROP TABLE company");
    }
    ExpectRefused(file.Path(), Problem::kDamaged, "is damaged; go back to a copy of it: no such table: company.");
}

TEST(CompanyFile, IsOpenOnce) {
    const TemporaryCompany file;
    auto first = file.Open();
    ExpectRefused(file.Path(), Problem::kLocked, "is in use by another program; close it there first");
    first.reset();
    EXPECT_FALSE(RefusalToOpen(file.Path()));
}

TEST(CompanyFile, IsMadeOnlyWhereNoneIs) {
    const TemporaryCompany file;
    const std::string before = file.Bytes();
    EXPECT_THROW(static_cast<void>(Company::Create(file.Path(), "Another")), HostError);
    EXPECT_TRUE(file.Bytes() == before);
}

TEST(CompanyFile, ThatIsReachedThroughALinkStaysOne) {
    const TemporaryCompany file;
    const std::string link = TemporaryPath(".lhcompany");
    std::error_code error;
    std::filesystem::create_symlink(file.Path(), link, error);
    if (error) {
        GTEST_SKIP() << "no links can be made here: " << error.message();
    }
    static_cast<void>(
        SendOne(*Company::Open(link), "<CustomerAddRq><CustomerAdd><Name>Linked</Name></CustomerAdd></CustomerAddRq>"));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_TRUE(file.Open()->FindByName(kCustomers, "linked"));
    std::filesystem::remove(link);
}

TEST(CompanyFile, ThatCannotBeOpenedReturnsThePlannedResult) {
    const TemporaryCompany file;
    WatchSteps([](FileStep) { return std::optional(static_cast<std::int32_t>(0x80070005)); });
    try {
        static_cast<void>(file.Open());
        ADD_FAILURE() << "was opened";
    } catch (const HostError& error) {
        EXPECT_EQ(error.PlannedResult(), static_cast<std::int32_t>(0x80070005));
        EXPECT_THAT(error.what(), HasSubstr("CompanyFile.Open was planned to fail with 0x80070005"));
    }
    WatchSteps({});
    EXPECT_FALSE(RefusalToOpen(file.Path()));
}

TEST(Ids, AreNeverReused) {
    const auto books = SampleBooks();
    books->Data().Run("DELETE FROM payment_methods WHERE number = 10");
    books->Data().Run("DELETE FROM records WHERE number >= 18");
    EXPECT_EQ(books->NewNumber(kNow), 20);
    books->Data().Run("DELETE FROM records WHERE number = 20");
    EXPECT_EQ(books->NewNumber(kNow), 21);
}

TEST(Ids, OfTheOtherKindOrFormAreUnknown) {
    EXPECT_EQ(NumberFromId(kAccounts, "L-12"), 12);
    EXPECT_EQ(NumberFromId(kInvoices, "T-12"), 12);
    for (const char* id : {"T-12", "L-", "L-012", "L-1x", "L--1", "12", "", "L-99999999999999999999"}) {
        EXPECT_EQ(NumberFromId(kAccounts, id), std::nullopt) << id;
    }
}

// What the schema refuses, whoever writes it.
TEST(Schema, RefusesATransactionOutOfBalance) {
    const auto books = SampleBooks();
    Transaction transaction(books->Data());
    const auto number = books->NewNumber(kNow);
    books->Data().Run(
        "INSERT INTO transactions (number, kind, txn_date, total) VALUES (?, 'JournalEntry', '2025-01-01', 0)", number);
    books->Data().Run("INSERT INTO postings VALUES (?, 1, 1, NULL, 500)", number);
    EXPECT_THROW(transaction.Commit(), BrokenRule);
    books->Data().Run("INSERT INTO postings VALUES (?, 2, 15, NULL, -500)", number);
    EXPECT_NO_THROW(transaction.Commit());
    EXPECT_THAT(Audit(*books), IsEmpty());
}

TEST(Schema, RefusesWhatBooksMustNeverHold) {
    const auto books = SampleBooks();
    for (const char* sql : {
             "UPDATE postings SET amount = amount + 1",
             "DELETE FROM postings",
             "UPDATE applied_payments SET amount = 1",
             "DELETE FROM applied_payments",
             "INSERT INTO postings VALUES (16, 99, 5, NULL, 1)",
             "INSERT INTO postings VALUES (16, 99, 1, 6, 1)",
             "INSERT INTO postings VALUES (16, 99, 1, NULL, 0)",
             "INSERT INTO postings VALUES (16, 99, 1, NULL, 99999999999999)",
             "INSERT INTO postings VALUES (16, 99, 777, NULL, 1)",
             "INSERT INTO applied_payments VALUES (17, 11, 1)",
             "INSERT INTO applied_payments VALUES (11, 12, 1)",
             "UPDATE accounts SET type = 'Money' WHERE number = 1",
             "UPDATE accounts SET folded_name = 'checking' WHERE number = 3",
             "UPDATE customers SET name = '' WHERE number = 6",
             "UPDATE transactions SET txn_date = '1.2.2025' WHERE number = 11",
             "UPDATE transactions SET remaining = -1 WHERE number = 11",
             "UPDATE records SET edit_sequence = 0",
             "DELETE FROM accounts WHERE number = 1",
         }) {
        Savepoint savepoint(books->Data());
        EXPECT_THROW(books->Data().Run(sql), BrokenRule) << sql;
    }
    EXPECT_THAT(Audit(*books), IsEmpty());
}

}  // namespace
}  // namespace paylodge::refhost
