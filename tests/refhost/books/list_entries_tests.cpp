#include <gtest/gtest.h>

#include "refhost/books/company_text.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] std::string AccountMod(const std::string& id, const std::string& sequence, const std::string& fields) {
    return "<AccountModRq><AccountMod><ListID>" + id + "</ListID><EditSequence>" + sequence + "</EditSequence>" +
           fields + "</AccountMod></AccountModRq>";
}

TEST(AccountMod, ChangesTheAccountAndMovesItsEditSequenceOn) {
    const auto books = SampleBooks();
    const Element response = SendOne(*books, AccountMod("L-1", "1", "<IsActive>false</IsActive>"));
    EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    EXPECT_EQ(Texts(response, "IsActive"), std::vector<std::string>{"false"});
    EXPECT_EQ(Texts(response, "EditSequence"), std::vector<std::string>{"2"});
    EXPECT_EQ(Texts(response, "Balance"), std::vector<std::string>{"100.00"});
}

TEST(AccountMod, RefusesAStaleEditSequence) {
    const auto books = SampleBooks();
    EXPECT_EQ(StatusCode(SendOne(*books, AccountMod("L-1", "1", "<IsActive>false</IsActive>"))), "0");
    const Element again = SendOne(*books, AccountMod("L-1", "1", "<IsActive>true</IsActive>"));
    EXPECT_EQ(StatusCode(again), "3200");
    EXPECT_NE(StatusMessage(again).find("EditSequence"), std::string::npos);
    EXPECT_EQ(ChildText(*books->FindById(kAccounts, "L-1"), "IsActive"), "false");
}

TEST(AccountMod, RefusesAnUnknownAccount) {
    const auto books = SampleBooks();
    const Element response = SendOne(*books, AccountMod("L-99", "1", "<IsActive>false</IsActive>"));
    EXPECT_EQ(StatusCode(response), "2040");
    EXPECT_EQ(ExportText(*books), ExportText(*SampleBooks()));
}

TEST(CustomerAdd, AddsACustomerOnce) {
    const std::string add = "<CustomerAddRq><CustomerAdd><Name>Walk-in</Name></CustomerAdd></CustomerAddRq>";
    const auto books = SampleBooks();
    EXPECT_EQ(StatusCode(SendOne(*books, add)), "0");
    EXPECT_EQ(StatusCode(SendOne(*books, add)), "3100");
    EXPECT_EQ(Texts(SendOne(*books, "<CustomerQueryRq><FullName>Walk-in</FullName></CustomerQueryRq>"), "Balance"),
              std::vector<std::string>{"0.00"});
}

TEST(ItemPaymentAdd, HasAStatusOfItsOwnForANameThatExists) {
    const std::string add =
        "<ItemPaymentAddRq><ItemPaymentAdd><Name>Net</Name><PaymentMethodRef><FullName>Cash"
        "</FullName></PaymentMethodRef></ItemPaymentAdd></ItemPaymentAddRq>";
    const auto books = SampleBooks();
    EXPECT_EQ(StatusCode(SendOne(*books, add)), "0");
    EXPECT_EQ(StatusCode(SendOne(*books, add)), "3180");
}

TEST(ItemPaymentAdd, RefusesAnUnknownPaymentMethod) {
    const auto books = SampleBooks();
    const Element response =
        SendOne(*books,
                "<ItemPaymentAddRq><ItemPaymentAdd><Name>Net</Name><PaymentMethodRef><FullName>Shells"
                "</FullName></PaymentMethodRef></ItemPaymentAdd></ItemPaymentAddRq>");
    EXPECT_EQ(StatusCode(response), "2040");
    EXPECT_EQ(ExportText(*books), ExportText(*SampleBooks()));
}

}  // namespace
}  // namespace paylodge::refhost
