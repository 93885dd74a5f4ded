// What must always be true is a constraint of the schema, for whoever writes: each at its exact limit.
#include <gtest/gtest.h>

#include <map>

#include "refhost/books/problems.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

using Row = std::map<std::string, std::string>;

// A row of each table that the books take, beside what the sample books hold. Its own number is 30 or 31.
const std::map<std::string, Row> kRows = {
    {"company", {{"one", "1"}, {"name", "'C'"}}},
    {"records", {{"number", "40"}, {"time_created", "'t'"}, {"time_modified", "'t'"}, {"edit_sequence", "1"}}},
    {"accounts",
     {{"number", "30"},
      {"parent", "1"},
      {"name", "'n'"},
      {"full_name", "'n'"},
      {"folded_name", "'n'"},
      {"is_active", "1"},
      {"type", "'Bank'"},
      {"balance", "0"}}},
    {"customers",
     {{"number", "30"},
      {"parent", "6"},
      {"name", "'n'"},
      {"full_name", "'n'"},
      {"folded_name", "'n'"},
      {"is_active", "1"},
      {"balance", "0"}}},
    {"tax_codes", {{"number", "30"}, {"name", "'n'"}, {"folded_name", "'n'"}, {"is_active", "1"}, {"is_taxable", "1"}}},
    {"payment_methods", {{"number", "30"}, {"name", "'n'"}, {"folded_name", "'n'"}, {"is_active", "1"}}},
    {"items",
     {{"number", "30"},
      {"parent", "NULL"},
      {"name", "'n'"},
      {"full_name", "'n'"},
      {"folded_name", "'n'"},
      {"is_active", "1"},
      {"type", "'t'"},
      {"tax_code", "NULL"},
      {"price", "0"},
      {"account", "1"},
      {"payment_method", "9"}}},
    {"transactions",
     {{"number", "30"},
      {"kind", "'Invoice'"},
      {"customer", "6"},
      {"receivables", "5"},
      {"account", "1"},
      {"txn_date", "'2025-01-01'"},
      {"payment_method", "9"},
      {"total", "100"},
      {"remaining", "100"},
      {"difference", "0"}}},
    {"lines",
     {{"txn", "11"}, {"position", "1"}, {"item", "NULL"}, {"account", "1"}, {"customer", "6"}, {"amount", "1"}}},
    {"postings", {{"txn", "11"}, {"position", "9"}, {"account", "1"}, {"customer", "NULL"}, {"amount", "1"}}},
    {"applied_payments", {{"payment", "31"}, {"invoice", "11"}, {"amount", "1"}}},
    {"card_fields", {{"txn", "11"}, {"name", "'n'"}, {"value", "'v'"}}},
    {"data_file_records", {{"category", "'c'"}, {"number", "0"}, {"data_version", "0"}}},
    {"data_file_properties",
     {{"category", "'kept'"}, {"number", "1"}, {"name", "'n'"}, {"kind", "'k'"}, {"value", "'v'"}}},
};

class SchemaRules : public ::testing::Test {
  protected:
    SchemaRules() {
        Run("INSERT INTO records (number, time_created, time_modified) VALUES (30, 't', 't'), (31, 't', 't')");
        Run("INSERT INTO transactions (number, kind, customer, txn_date, total, remaining) VALUES"
            " (31, 'ReceivePayment', 6, '2025-01-01', 100, 100)");
        Run("INSERT INTO data_file_records VALUES ('kept', 1, 0)");
        Run("DELETE FROM company");
    }

    void Run(const std::string& sql) { books_->Data().Run(sql); }

    // Whether the books take it; they are as before afterwards.
    [[nodiscard]] bool Takes(const std::string& sql) {
        const Savepoint savepoint(books_->Data());
        try {
            Run(sql);
            return true;
        } catch (const BrokenRule&) {
            return false;
        }
    }

    [[nodiscard]] static std::string Insertion(const std::string& table, const Row& row) {
        std::string names;
        std::string values;
        for (const auto& [name, value] : row) {
            names += (names.empty() ? "" : ", ") + name;
            values += (values.empty() ? "" : ", ") + value;
        }
        return "INSERT INTO " + table + " (" + names + ") VALUES (" + values + ")";
    }
    // Whether they take a good row with another value in one column.
    [[nodiscard]] bool Takes(const std::string& table, const std::string& column, const std::string& value) {
        Row row = kRows.at(table);
        row.insert_or_assign(column, value);
        return Takes(Insertion(table, row));
    }

    std::unique_ptr<Company> books_ = SampleBooks();
};

TEST_F(SchemaRules, TakesAGoodRowOfEveryTable) {
    for (const auto& [table, row] : kRows) {
        EXPECT_TRUE(Takes(Insertion(table, row))) << table;
    }
}

struct Rule {
    const char* table;
    const char* column;
    std::vector<std::string> good;
    std::vector<std::string> bad;
};

TEST_F(SchemaRules, KeepsEachRuleAtItsLimit) {
    const std::string hundred = '\'' + std::string(100, 'x') + '\'';
    const std::string too_long = '\'' + std::string(101, 'x') + '\'';
    const std::vector<std::string> names = {"'x'", hundred};
    const std::vector<std::string> no_names = {"''", too_long, "NULL"};
    const std::vector<std::string> flags = {"0", "1"};
    const std::vector<std::string> no_flags = {"2", "-1", "NULL"};
    const std::vector<std::string> balances = {"999999999999999", "-999999999999999"};
    const std::vector<std::string> no_balances = {"1000000000000000", "-1000000000000000", "NULL"};
    const std::vector<std::string> amounts = {"9999999999999", "-9999999999999"};
    const std::vector<std::string> no_amounts = {"10000000000000", "-10000000000000"};
    const std::vector<std::string> number32 = {"2147483647", "-2147483648"};
    const std::vector<std::string> no_number32 = {"2147483648", "-2147483649", "NULL"};
    for (const Rule& rule : {
             Rule{"company", "one", {}, {"2", "0"}},
             Rule{"company", "name", {"''"}, {"NULL"}},
             Rule{"records", "time_created", {}, {"NULL"}},
             Rule{"records", "time_modified", {}, {"NULL"}},
             Rule{"records", "edit_sequence", {"1", "2"}, {"0", "-1", "NULL"}},
             Rule{"records", "number", {"41"}, {"1"}},
             Rule{"accounts", "number", {}, {"99", "1"}},
             Rule{"accounts", "parent", {"1", "NULL"}, {"99", "6"}},
             Rule{"accounts", "name", names, no_names},
             Rule{"accounts", "full_name", {"'any'"}, {"NULL"}},
             Rule{"accounts", "folded_name", {"'new'"}, {"'checking'", "NULL"}},
             Rule{"accounts", "is_active", flags, no_flags},
             Rule{"accounts", "type", {"'Equity'"}, {"'Bunk'", "NULL"}},
             Rule{"accounts", "balance", balances, no_balances},
             Rule{"customers", "number", {}, {"99", "6"}},
             Rule{"customers", "parent", {"6", "NULL"}, {"99", "1"}},
             Rule{"customers", "name", names, no_names},
             Rule{"customers", "full_name", {"'any'"}, {"NULL"}},
             Rule{"customers", "folded_name", {"'new'"}, {"'smith'", "NULL"}},
             Rule{"customers", "is_active", flags, no_flags},
             Rule{"customers", "balance", balances, no_balances},
             Rule{"tax_codes", "number", {}, {"99"}},
             Rule{"tax_codes", "name", names, no_names},
             Rule{"tax_codes", "folded_name", {}, {"NULL"}},
             Rule{"tax_codes", "is_active", flags, no_flags},
             Rule{"tax_codes", "is_taxable", flags, no_flags},
             Rule{"payment_methods", "number", {}, {"99", "9"}},
             Rule{"payment_methods", "name", names, no_names},
             Rule{"payment_methods", "folded_name", {"'new'"}, {"'cash'", "NULL"}},
             Rule{"payment_methods", "is_active", flags, no_flags},
             Rule{"items", "number", {}, {"99"}},
             Rule{"items", "parent", {"NULL"}, {"99", "1"}},
             Rule{"items", "name", names, no_names},
             Rule{"items", "full_name", {"'any'"}, {"NULL"}},
             Rule{"items", "folded_name", {}, {"NULL"}},
             Rule{"items", "is_active", flags, no_flags},
             Rule{"items", "type", {"'any'"}, {"NULL"}},
             Rule{"items", "tax_code", {"NULL"}, {"99", "1"}},
             Rule{"items", "price", amounts, no_amounts},
             Rule{"items", "account", {"1", "NULL"}, {"99", "6"}},
             Rule{"items", "payment_method", {"9", "NULL"}, {"99", "1"}},
             Rule{"transactions", "number", {}, {"99", "11"}},
             Rule{"transactions",
                  "kind",
                  {"'Invoice'", "'ReceivePayment'", "'SalesReceipt'", "'CreditMemo'", "'Deposit'", "'Check'",
                   "'JournalEntry'"},
                  {"'invoice'", "''", "NULL"}},
             Rule{"transactions", "customer", {"6", "NULL"}, {"99", "1"}},
             Rule{"transactions", "receivables", {"5", "NULL"}, {"99", "6"}},
             Rule{"transactions", "account", {"1", "NULL"}, {"99", "6"}},
             Rule{"transactions",
                  "txn_date",
                  {"'9999-99-99'"},
                  {"'2025-1-1'", "'x2025-01-01'", "'2025-01-01x'", "'20250101xx'", "NULL"}},
             Rule{"transactions", "payment_method", {"9", "NULL"}, {"99", "1"}},
             Rule{"transactions", "total", {"9999999999999"}, {"10000000000000", "-1", "NULL"}},
             Rule{"transactions", "remaining", {"0", "100", "NULL"}, {"-1", "101"}},
             Rule{"transactions", "difference", {}, {"NULL"}},
             Rule{"lines", "txn", {}, {"99", "NULL"}},
             Rule{"lines", "position", {}, {"NULL"}},
             Rule{"lines", "account", {"NULL"}, {"99"}},
             Rule{"lines", "item", {}, {"99"}},
             Rule{"lines", "customer", {"NULL"}, {"99"}},
             Rule{"lines",
                  "amount",
                  {"0", "9999999999999", "-9999999999999"},
                  {"10000000000000", "-10000000000000", "NULL"}},
             Rule{"postings", "txn", {}, {"99", "NULL"}},
             Rule{"postings", "position", {}, {"NULL", "1"}},
             Rule{"postings", "account", {"1"}, {"99", "NULL"}},
             Rule{"postings", "customer", {}, {"6"}},
             Rule{"postings", "amount", amounts, {"10000000000000", "-10000000000000", "0", "NULL"}},
             Rule{"applied_payments", "payment", {}, {"11", "99", "NULL"}},
             Rule{"applied_payments", "invoice", {"12"}, {"31", "99", "13", "NULL"}},
             Rule{"applied_payments", "amount", {"1", "100"}, {"0", "-1", "101", "NULL"}},
             Rule{"card_fields", "txn", {}, {"99", "NULL"}},
             Rule{"card_fields", "name", {}, {"NULL"}},
             Rule{"card_fields", "value", {}, {"NULL"}},
             Rule{"data_file_records", "category", {}, {"NULL"}},
             Rule{"data_file_records", "number", number32, no_number32},
             Rule{"data_file_records", "data_version", number32, no_number32},
             Rule{"data_file_properties", "category", {}, {"'other'", "NULL"}},
             Rule{"data_file_properties", "number", {}, {"2", "NULL"}},
             Rule{"data_file_properties", "name", {}, {"NULL"}},
             Rule{"data_file_properties", "kind", {}, {"NULL"}},
             Rule{"data_file_properties", "value", {}, {"NULL"}},
         }) {
        for (const std::string& value : rule.good) {
            EXPECT_TRUE(Takes(rule.table, rule.column, value)) << rule.table << '.' << rule.column << ' ' << value;
        }
        for (const std::string& value : rule.bad) {
            EXPECT_FALSE(Takes(rule.table, rule.column, value)) << rule.table << '.' << rule.column << ' ' << value;
        }
    }
}

TEST_F(SchemaRules, KeepsALineFromHavingBothAnItemAndAnAccount) {
    Run(Insertion("items", kRows.at("items")));
    EXPECT_TRUE(Takes("INSERT INTO lines (txn, position, item, amount) VALUES (11, 1, 30, 1)"));
    EXPECT_FALSE(Takes("lines", "item", "30"));
}

TEST_F(SchemaRules, KeepsReceivablesAndCustomersTogether) {
    EXPECT_TRUE(Takes("INSERT INTO postings VALUES (11, 9, 5, 6, 1)"));
    EXPECT_FALSE(Takes("INSERT INTO postings VALUES (11, 9, 5, NULL, 1)"));
    EXPECT_FALSE(Takes("INSERT INTO postings VALUES (11, 9, 1, 6, 1)"));
    EXPECT_FALSE(Takes("INSERT INTO postings VALUES (11, 9, 5, 99, 1)"));
}

TEST_F(SchemaRules, KeepsWhatWasPostedAndApplied) {
    for (const char* sql : {"UPDATE postings SET amount = amount", "DELETE FROM postings",
                            "UPDATE applied_payments SET amount = amount", "DELETE FROM applied_payments"}) {
        EXPECT_FALSE(Takes(sql)) << sql;
    }
}

TEST_F(SchemaRules, KeepsATransactionInBalanceWhenItIsCommitted) {
    {
        Transaction transaction(books_->Data());
        Run("INSERT INTO postings VALUES (11, 9, 1, NULL, 1)");
        EXPECT_THROW(transaction.Commit(), BrokenRule);
    }
    Transaction transaction(books_->Data());
    Run("INSERT INTO postings VALUES (11, 9, 1, NULL, 1)");
    Run("INSERT INTO postings VALUES (11, 10, 2, NULL, -1)");
    EXPECT_NO_THROW(transaction.Commit());
    EXPECT_EQ(BalanceOf(*books_, kAccounts, "Checking"), "100.01");
    EXPECT_EQ(BalanceOf(*books_, kAccounts, "Checking:Till"), "19.99");
}

TEST_F(SchemaRules, GivesNoNumberTwice) {
    Run("INSERT INTO records (time_created, time_modified) VALUES ('t', 't')");
    Run("DELETE FROM records WHERE number = 32");
    EXPECT_EQ(books_->NewNumber("t"), 33);
}

TEST_F(SchemaRules, TakesPropertiesAwayWithTheirRecord) {
    Run(Insertion("data_file_properties", kRows.at("data_file_properties")));
    Run("DELETE FROM data_file_records");
    EXPECT_EQ(books_->Data().FindInteger("SELECT count(*) FROM data_file_properties"), 0);
}

// Which side of the books each kind of account is on.
TEST_F(SchemaRules, KnowsTheSideOfEveryType) {
    const std::map<std::string, int> sides = {
        {"AccountsPayable", -1},
        {"AccountsReceivable", 1},
        {"Bank", 1},
        {"CostOfGoodsSold", 1},
        {"CreditCard", -1},
        {"Equity", -1},
        {"Expense", 1},
        {"FixedAsset", 1},
        {"Income", -1},
        {"LongTermLiability", -1},
        {"OtherAsset", 1},
        {"OtherCurrentAsset", 1},
        {"OtherCurrentLiability", -1},
        {"OtherExpense", 1},
        {"OtherIncome", -1},
    };
    for (const auto& [type, side] : sides) {
        EXPECT_EQ(books_->Data().FindInteger("SELECT normal_side FROM account_types WHERE type = ?", type), side)
            << type;
    }
    EXPECT_EQ(books_->Data().FindInteger("SELECT count(*) FROM account_types WHERE normal_side IS NULL"), 1);
    EXPECT_FALSE(Takes("INSERT INTO account_types VALUES ('Other', 2)"));
}

}  // namespace
}  // namespace paylodge::refhost
