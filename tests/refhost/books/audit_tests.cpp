#include "refhost/books/audit.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct Falsehood {
    const char* name;
    // Undoes what the schema keeps, as somebody would with another program.
    const char* sql;
    const char* finding;
};

void PrintTo(const Falsehood& falsehood, std::ostream* output) { *output << falsehood.name; }

class FalseBooks : public ::testing::TestWithParam<Falsehood> {};

TEST_P(FalseBooks, AreFound) {
    const auto books = SampleBooks();
    EXPECT_THAT(Audit(*books), IsEmpty());
    books->Data().RunScript("PRAGMA foreign_keys = OFF; PRAGMA ignore_check_constraints = ON");
    books->Data().RunScript(GetParam().sql);
    books->Data().RunScript("PRAGMA ignore_check_constraints = OFF");
    EXPECT_THAT(Audit(*books), Contains(HasSubstr(GetParam().finding)));
}

INSTANTIATE_TEST_SUITE_P(
    , FalseBooks,
    ::testing::Values(
        Falsehood{"AccountBalance", "UPDATE accounts SET balance = balance + 5 WHERE number = 1",
                  "The account \"Checking\" has the balance 100.05 instead of 100.00."},
        Falsehood{"CustomerBalance", "UPDATE customers SET balance = 0 WHERE number = 6",
                  "The customer \"Smith\" has the balance 0.00 instead of 130.00."},
        Falsehood{"UnbalancedTransaction",
                  "DROP TRIGGER postings_stay; UPDATE postings SET amount = 7000 WHERE txn = 11 AND position = 1",
                  "The transaction T-11 has debits and credits that differ by 10.00 instead of 0.00."},
        Falsehood{"InvoiceBalance", "UPDATE transactions SET remaining = 1 WHERE number = 11",
                  "The invoice T-11 has this left to be paid: 0.01 instead of 60.00."},
        Falsehood{"PaymentBalance", "UPDATE transactions SET remaining = 1 WHERE number = 17",
                  "The received payment T-17 has this left over: 0.01 instead of 0.00."},
        Falsehood{"MissingRecord", "DELETE FROM customers WHERE number = 7",
                  "refers to a row of customers that does not exist."},
        Falsehood{"BrokenConstraint", "UPDATE accounts SET is_active = 7 WHERE number = 1",
                  "The database is damaged: CHECK constraint failed in accounts."}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace paylodge::refhost
