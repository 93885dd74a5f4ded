#include <gtest/gtest.h>

#include "refhost/books/company_text.hpp"
#include "refhost/books/xml_writer.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

// The sample books with an item to sell.
[[nodiscard]] std::unique_ptr<Company> BooksWithItem() {
    auto books = SampleBooks();
    EXPECT_EQ(StatusCode(SendOne(*books,
                                 "<ItemPaymentAddRq><ItemPaymentAdd><Name>Refund</Name></ItemPaymentAdd>"
                                 "</ItemPaymentAddRq>")),
              "0");
    return books;
}

[[nodiscard]] std::string ItemLine(const std::string& name, const std::string& amount) {
    return "<" + name + "><ItemRef><FullName>Refund</FullName></ItemRef><Amount>" + amount + "</Amount></" + name + ">";
}

[[nodiscard]] std::string AccountLine(const std::string& name, const std::string& account, const std::string& amount) {
    return "<" + name + "><AccountRef><FullName>" + account + "</FullName></AccountRef><Amount>" + amount +
           "</Amount></" + name + ">";
}

[[nodiscard]] std::string Deposit(const std::string& to, const std::string& lines) {
    return "<DepositAddRq><DepositAdd><DepositToAccountRef><FullName>" + to + "</FullName></DepositToAccountRef>" +
           lines + "</DepositAdd></DepositAddRq>";
}

TEST(SalesReceipt, RaisesTheUndepositedFunds) {
    const auto books = BooksWithItem();
    const Element response =
        SendOne(*books, "<SalesReceiptAddRq><SalesReceiptAdd><RefNumber>7</RefNumber>" +
                            ItemLine("SalesReceiptLineAdd", "12.50") + ItemLine("SalesReceiptLineAdd", "1.25") +
                            "</SalesReceiptAdd></SalesReceiptAddRq>");
    EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    EXPECT_EQ(Texts(response, "TotalAmount"), std::vector<std::string>{"13.75"});
    EXPECT_EQ(Texts(response, "RefNumber"), std::vector<std::string>{"7"});
    EXPECT_EQ(Texts(response, "TxnDate"), std::vector<std::string>{"2025-03-11"});
    EXPECT_EQ(BalanceOf(*books, kAccounts, "Undeposited Funds"), "18.75");
}

TEST(SalesReceipt, NeedsALine) {
    const auto books = BooksWithItem();
    const Element response = SendOne(*books, "<SalesReceiptAddRq><SalesReceiptAdd/></SalesReceiptAddRq>");
    EXPECT_EQ(StatusCode(response), "2000");
    EXPECT_EQ(StatusMessage(response), "SalesReceiptAdd/SalesReceiptLineAdd is missing.");
}

TEST(CreditMemo, LowersWhatTheCustomerOwes) {
    const auto books = BooksWithItem();
    const Element response =
        SendOne(*books, "<CreditMemoAddRq><CreditMemoAdd><CustomerRef><FullName>Smith</FullName></CustomerRef>" +
                            ItemLine("CreditMemoLineAdd", "30.00") + "</CreditMemoAdd></CreditMemoAddRq>");
    EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    EXPECT_EQ(BalanceOf(*books, kCustomers, "Smith"), "100.00");
    EXPECT_EQ(BalanceOf(*books, kAccounts, "Receivables"), "100.00");
}

TEST(Deposit, MovesTheAmountBetweenBothAccounts) {
    const auto books = SampleBooks();
    const Element response =
        SendOne(*books, Deposit("Checking", AccountLine("DepositLineAdd", "Undeposited Funds", "4.00")));
    EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    EXPECT_EQ(Texts(response, "DepositTotal"), std::vector<std::string>{"4.00"});
    EXPECT_EQ(BalanceOf(*books, kAccounts, "Checking"), "104.00");
    EXPECT_EQ(BalanceOf(*books, kAccounts, "Undeposited Funds"), "1.00");
}

TEST(Deposit, NamesTheFieldThatIsWrongAndChangesNothing) {
    struct Case {
        std::string request;
        std::string code;
        std::string message;
    };
    const Case cases[] = {
        {Deposit("Nowhere", AccountLine("DepositLineAdd", "Till", "1")), "2040",
         "DepositToAccountRef names the account \"Nowhere\", which does not exist."},
        {Deposit("Checking", AccountLine("DepositLineAdd", "Nowhere", "1")), "2040",
         "AccountRef names the account \"Nowhere\", which does not exist."},
        {Deposit("", AccountLine("DepositLineAdd", "Till", "1")), "2000",
         "DepositAdd/DepositToAccountRef/FullName is missing."},
        {Deposit("Checking", AccountLine("DepositLineAdd", "Undeposited Funds", "1.005")), "2030",
         "The value \"1.005\" of DepositAdd/DepositLineAdd/Amount is not an amount such as 12.50."},
    };
    for (const Case& wrong : cases) {
        const auto books = SampleBooks();
        const Element response = SendOne(*books, wrong.request);
        EXPECT_EQ(StatusCode(response), wrong.code);
        EXPECT_EQ(StatusMessage(response), wrong.message);
        EXPECT_EQ(ExportText(*books), ExportText(*SampleBooks()));
    }
}

TEST(Check, TakesTheAmountOutOfItsAccount) {
    const auto books = SampleBooks();
    const Element response =
        SendOne(*books, "<CheckAddRq><CheckAdd><AccountRef><FullName>Checking</FullName></AccountRef>" +
                            AccountLine("ExpenseLineAdd", "Checking:Till", "15.00") + "</CheckAdd></CheckAddRq>");
    EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    EXPECT_EQ(BalanceOf(*books, kAccounts, "Checking"), "85.00");
    EXPECT_EQ(BalanceOf(*books, kAccounts, "Checking:Till"), "35.00");
}

TEST(Check, IsFoundByItsPayee) {
    const auto books = SampleBooks();
    const std::string check = "<CheckAddRq><CheckAdd><AccountRef><FullName>Checking</FullName></AccountRef>";
    const std::string line = AccountLine("ExpenseLineAdd", "Checking:Till", "1.00") + "</CheckAdd></CheckAddRq>";
    for (const char* const payee : {"Smith", "Smithson"}) {
        const Element added =
            SendOne(*books, check + "<PayeeEntityRef><FullName>" + payee + "</FullName></PayeeEntityRef>" + line);
        ASSERT_EQ(StatusCode(added), "0") << StatusMessage(added);
    }
    const Element found =
        SendOne(*books, "<CheckQueryRq><EntityFilter><FullName>smithson</FullName></EntityFilter></CheckQueryRq>");
    ASSERT_EQ(found.children.size(), 1U);
    EXPECT_NE(CompactXml(found).find("<FullName>Smithson</FullName></PayeeEntityRef>"), std::string::npos)
        << CompactXml(found);
}

TEST(Forms, ShowATransactionThatExists) {
    const auto books = SampleBooks();
    const auto show = [&books](const std::string& type, const std::string& id) {
        return SendOne(*books, "<TxnDisplayModRq><TxnDisplayModType>" + type + "</TxnDisplayModType><TxnID>" + id +
                                   "</TxnID></TxnDisplayModRq>");
    };
    EXPECT_EQ(StatusCode(show("Invoice", "T-11")), "0");
    EXPECT_EQ(StatusMessage(show("Invoice", "T-99")), "TxnID names the invoice \"T-99\", which does not exist.");
    EXPECT_EQ(StatusMessage(show("Check", "T-11")), "TxnID names the check \"T-11\", which does not exist.");
    EXPECT_EQ(StatusCode(show("Horoscope", "T-11")), "2030");
    EXPECT_EQ(ExportText(*books), ExportText(*SampleBooks()));
}

TEST(CardNumber, IsKeptAsFarAsItsLastFourDigits) {
    const auto books = SampleBooks();
    for (const auto& [number, kept] : {std::pair{"1", "1"},
                                       {"123", "123"},
                                       {"1234", "1234"},
                                       {"12345", "x2345"},
                                       {"4000123412341234", "xxxxxxxxxxxx1234"}}) {
        const Element response = SendOne(
            *books, std::string("<ReceivePaymentAddRq><ReceivePaymentAdd><CustomerRef><FullName>Smith</FullName>"
                                "</CustomerRef><TotalAmount>1</TotalAmount><CreditCardTxnInfo><CreditCardTxnInputInfo>"
                                "<CreditCardNumber>") +
                        number +
                        "</CreditCardNumber></CreditCardTxnInputInfo></CreditCardTxnInfo></ReceivePaymentAdd>"
                        "</ReceivePaymentAddRq>");
        ASSERT_EQ(response.children.size(), 1U);
        const Element* const info = FindChild(response.children.front(), "CreditCardTxnInfo");
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(ChildText(info->children.at(0), "CreditCardNumber"), kept);
    }
}

}  // namespace
}  // namespace paylodge::refhost
