#include "refhost/books/journal.hpp"

#include <gtest/gtest.h>

#include "refhost/books/xml_writer.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

class Journal : public ::testing::Test {
  protected:
    // A payment of Smith with this number.
    void Pay(const std::string& number) {
        ASSERT_EQ("0", StatusCode(SendOne(*books_,
                                          "<ReceivePaymentAddRq><ReceivePaymentAdd><CustomerRef>"
                                          "<FullName>Smith</FullName></CustomerRef><TxnDate>2026-01-15</TxnDate>"
                                          "<RefNumber>" +
                                              number +
                                              "</RefNumber><TotalAmount>12.50</TotalAmount>"
                                              "</ReceivePaymentAdd></ReceivePaymentAddRq>")));
    }

    std::unique_ptr<Company> books_ = SampleBooks();
};

TEST_F(Journal, HasEachTransactionWithItsPostingsNewestFirst) {
    Pay("P-1");
    Pay("P-2");
    const Element journal = ReadJournal(*books_, 2);
    ASSERT_EQ(2U, journal.children.size());
    EXPECT_EQ("P-1", ChildText(journal.children[1], "RefNumber"));
    Element newest = journal.children[0];
    EXPECT_TRUE(ChildText(newest, "TxnID").starts_with("T-"));
    SetChildText(newest, "TxnID", "T-1");
    EXPECT_EQ(
        "<Transaction><Type>ReceivePayment</Type><TxnID>T-1</TxnID><TxnDate>2026-01-15</TxnDate>"
        "<RefNumber>P-2</RefNumber><Name>Smith</Name><Total>12.50</Total>"
        "<Posting><Account>Undeposited Funds</Account><Amount>12.50</Amount></Posting>"
        "<Posting><Account>Receivables</Account><Name>Smith</Name><Amount>-12.50</Amount></Posting>"
        "</Transaction>",
        CompactXml(newest));
}

TEST_F(Journal, HasNoMoreThanWasAskedFor) {
    Pay("P-1");
    Pay("P-2");
    EXPECT_EQ(0U, ReadJournal(*books_, 0).children.size());
    EXPECT_EQ(1U, ReadJournal(*books_, 1).children.size());
    EXPECT_GE(ReadJournal(*books_, 1000).children.size(), 2U);
}

TEST(EmptyJournal, IsAnElementWithoutTransactions) {
    EXPECT_EQ("<Journal/>", CompactXml(ReadJournal(*Company::CreateInMemory("Empty"), 10)));
}

}  // namespace
}  // namespace paylodge::refhost
