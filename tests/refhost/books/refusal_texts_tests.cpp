// What a refused request says, whole: the code, and a sentence that names the field and what is wrong with it.
#include <gtest/gtest.h>

#include "refhost/books/status.hpp"
#include "refhost/books/xml_reader.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

struct Refusal {
    std::string request;
    const char* code;
    std::string message;
};

[[nodiscard]] std::string Account(const std::string& fields) {
    return "<AccountAddRq><AccountAdd>" + fields + "</AccountAdd></AccountAddRq>";
}
[[nodiscard]] std::string Mod(const std::string& fields) {
    return "<AccountModRq><AccountMod>" + fields + "</AccountMod></AccountModRq>";
}
[[nodiscard]] std::string Payment(const std::string& fields) {
    return "<ReceivePaymentAddRq><ReceivePaymentAdd>" + fields + "</ReceivePaymentAdd></ReceivePaymentAddRq>";
}
[[nodiscard]] std::string Sale(const std::string& fields) {
    return "<SalesReceiptAddRq><SalesReceiptAdd>" + fields + "</SalesReceiptAdd></SalesReceiptAddRq>";
}

const std::string kSmith = "<CustomerRef><FullName>Smith</FullName></CustomerRef>";
const std::string kChecking = "<DepositToAccountRef><FullName>Checking</FullName></DepositToAccountRef>";

void ExpectRefused(const std::vector<Refusal>& refusals) {
    const auto books = SampleBooks();
    for (const auto& [request, code, message] : refusals) {
        const Element response = SendOne(*books, request);
        EXPECT_EQ(StatusCode(response), code) << request;
        EXPECT_EQ(StatusMessage(response), message);
        EXPECT_TRUE(response.children.empty()) << request;
    }
}

TEST(RefusalText, NamesTheFieldThatIsMissingUnknownMisplacedOrRepeated) {
    ExpectRefused({
        {"<Nothing/>", "1100", "The request \"Nothing\" is unknown."},
        {"<AccountQueryRq x=\"1\"/>", "2010", "AccountQueryRq has the unknown attribute \"x\"."},
        {"<AccountQueryRq>text</AccountQueryRq>", "2010", "AccountQueryRq holds text where elements belong."},
        {"<AccountAddRq/>", "2000", "AccountAdd is missing."},
        {Account("<AccountType>Bank</AccountType>"), "2000", "AccountAdd/Name is missing."},
        {Account("<Name> </Name><AccountType>Bank</AccountType>"), "2000", "AccountAdd/Name is missing."},
        {Account("<Name>A</Name>"), "2000", "AccountAdd/AccountType is missing."},
        {Account("<Name>A</Name>x"), "2010", "AccountAdd holds text where elements belong."},
        {Account("<Name y=\"1\">A</Name>"), "2010", "AccountAdd/Name has the unknown attribute \"y\"."},
        {Account("<Name>A<B/></Name>"), "2010", "AccountAdd/Name holds the unknown element \"B\"."},
        {Account("<Nom>A</Nom>"), "2010",
         "AccountAdd/Nom is unknown here; expected: Name, IsActive, ParentRef, AccountType, AccountNumber, BankNumber, "
         "Desc."},
        {Account("<AccountType>Bank</AccountType><Name>A</Name>"), "2015",
         "AccountAdd/Name stands behind AccountType; the order is: Name, IsActive, ParentRef, AccountType, "
         "AccountNumber, BankNumber, Desc."},
        {Account("<Name>A</Name><Name>B</Name><AccountType>Bank</AccountType>"), "2020",
         "AccountAdd/Name is given more than once."},
        {Payment(kSmith + "<TotalAmount>1</TotalAmount><PaymentMethodRef><Name>Cash</Name></PaymentMethodRef>"), "2010",
         "ReceivePaymentAdd/PaymentMethodRef/Name is unknown here; expected: ListID, FullName."},
    });
}

TEST(RefusalText, NamesTheValueAndWhatItShouldBe) {
    const std::string sixty(60, 'x');
    ExpectRefused({
        {Account("<Name>A</Name><IsActive>True</IsActive><AccountType>Bank</AccountType>"), "2030",
         "The value \"True\" of AccountAdd/IsActive is not true or false."},
        {Account("<Name>A</Name><IsActive>" + sixty + "</IsActive><AccountType>Bank</AccountType>"), "2030",
         "The value \"" + sixty + "\" of AccountAdd/IsActive is not true or false."},
        {Account("<Name>A</Name><IsActive>" + sixty + "x</IsActive><AccountType>Bank</AccountType>"), "2030",
         "The value of this length of AccountAdd/IsActive is not true or false."},
        {Account("<Name>A</Name><AccountType>Bunk</AccountType>"), "2030",
         "The value \"Bunk\" of AccountAdd/AccountType is not one of AccountsPayable, AccountsReceivable, Bank, "
         "CostOfGoodsSold, CreditCard, Equity, Expense, FixedAsset, Income, LongTermLiability, NonPosting, OtherAsset, "
         "OtherCurrentAsset, OtherCurrentLiability, OtherExpense, OtherIncome."},
        {Account("<Name>A&#9;B</Name><AccountType>Bank</AccountType>"), "2030",
         "AccountAdd/Name holds a control character, a line end or a tab, which no name may have."},
        {Account("<Name>A:B</Name><AccountType>Bank</AccountType>"), "2030",
         "Name has a colon, which stands between a parent and its part."},
        {Account("<Name>A</Name><AccountType>Bank</AccountType><BankNumber>" + std::string(31, '7') + "</BankNumber>"),
         "2030",
         "The value \"" + std::string(31, '7') + "\" of AccountAdd/BankNumber is not at most 30 characters long."},
        {Account("<Name>A</Name><AccountType>Bank</AccountType><Desc>" + std::string(4096, 'd') + "</Desc>"), "2030",
         "The value of this length of AccountAdd/Desc is not at most 4095 characters long."},
        {Payment(kSmith + "<TxnDate>2025-1-1</TxnDate><TotalAmount>1</TotalAmount>"), "2030",
         "The value \"2025-1-1\" of ReceivePaymentAdd/TxnDate is not a date of the form YYYY-MM-DD."},
        {Payment(kSmith + "<TotalAmount>1,5</TotalAmount>"), "2030",
         "The value \"1,5\" of ReceivePaymentAdd/TotalAmount is not an amount such as 12.50."},
        {Payment(kSmith + "<TotalAmount>100000000000.00</TotalAmount>"), "2035",
         "The amount of ReceivePaymentAdd/TotalAmount is beyond the limit of 99999999999.99."},
        {Payment(kSmith + "<TotalAmount>0</TotalAmount>"), "2030", "ReceivePaymentAdd/TotalAmount is not above 0."},
        {"<AccountQueryRq><FromModifiedDate>2025</FromModifiedDate></AccountQueryRq>", "2030",
         "The value \"2025\" of FromModifiedDate is not a time of the form YYYY-MM-DDTHH:MM:SS."},
        {"<AccountQueryRq><MaxReturned>0</MaxReturned></AccountQueryRq>", "2030",
         "The value \"0\" of MaxReturned is not a whole number above 0."},
    });
}

TEST(RefusalText, NamesTheRecordThatDoesNotFit) {
    ExpectRefused({
        {Account("<Name>checking</Name><AccountType>Bank</AccountType>"), "3100",
         "Name: the account \"checking\" exists already."},
        {Account("<Name>A</Name><ParentRef><FullName>Checking</FullName></ParentRef><AccountType>Equity"
                 "</AccountType>"),
         "2045", "AccountType differs from the one of the account in ParentRef, Bank."},
        {Account("<Name>A</Name><ParentRef><FullName>Old Bank</FullName></ParentRef><AccountType>Bank</AccountType>"),
         "3210", "ParentRef names the account \"Old Bank\", which is inactive."},
        {Mod("<ListID>L-99</ListID><EditSequence>1</EditSequence>"), "2040",
         "AccountMod/ListID names the account \"L-99\", which does not exist."},
        {Mod("<ListID>L-6</ListID><EditSequence>1</EditSequence>"), "2040",
         "AccountMod/ListID names the account \"L-6\", which does not exist."},
        {Mod("<ListID>L-1</ListID><EditSequence>2</EditSequence>"), "3200",
         "AccountMod/EditSequence is \"2\", but the account was changed since; query it again."},
        {Payment("<CustomerRef/><TotalAmount>1</TotalAmount>"), "2000",
         "ReceivePaymentAdd/CustomerRef/FullName is missing."},
        {Sale(kSmith), "2000", "SalesReceiptAdd/SalesReceiptLineAdd is missing."},
        {"<DepositAddRq><DepositAdd>" + kChecking +
             "<DepositLineAdd><AccountRef><FullName>Sales</FullName></AccountRef><Amount>-1</Amount></DepositLineAdd>"
             "</DepositAdd></DepositAddRq>",
         "2030", "The total of DepositAdd is -1.00; it has to be above 0."},
        {"<DepositAddRq><DepositAdd>" + kChecking +
             "<DepositLineAdd><AccountRef><FullName>Sales</FullName></AccountRef><Amount>0</Amount></DepositLineAdd>"
             "</DepositAdd></DepositAddRq>",
         "2030", "The total of DepositAdd is 0.00; it has to be above 0."},
        {"<DepositAddRq><DepositAdd>" + kChecking +
             "<DepositLineAdd><AccountRef><FullName>Receivables</FullName></AccountRef><Amount>1</Amount>"
             "</DepositLineAdd></DepositAdd></DepositAddRq>",
         "2045",
         "AccountRef names the account \"Receivables\" of the type AccountsReceivable, which needs a customer: "
         "EntityRef is missing."},
        {"<TxnDisplayModRq><TxnDisplayModType>check</TxnDisplayModType><TxnID>T-11</TxnID></TxnDisplayModRq>", "2040",
         "TxnID names the check \"T-11\", which does not exist."},
        {"<TxnDisplayModRq><TxnDisplayModType>Bill</TxnDisplayModType><TxnID>T-11</TxnID></TxnDisplayModRq>", "2030",
         "The value \"Bill\" of TxnDisplayModType is not one of Invoice, ReceivePayment, SalesReceipt, CreditMemo, "
         "Deposit, Check."},
    });
}

TEST(RefusalText, HasTheNameOfEachKindOfRecord) {
    const auto books = SampleBooks();
    struct Kind {
        const char* query;
        const char* field;
        const char* noun;
    };
    for (const auto& [query, field, noun] :
         {Kind{"Account", "ListID", "account"}, Kind{"Customer", "ListID", "customer"}, Kind{"Item", "ListID", "item"},
          Kind{"PaymentMethod", "ListID", "payment method"}, Kind{"SalesTaxCode", "ListID", "sales tax code"},
          Kind{"Invoice", "TxnID", "invoice"}, Kind{"ReceivePayment", "TxnID", "received payment"},
          Kind{"SalesReceipt", "TxnID", "sales receipt"}, Kind{"CreditMemo", "TxnID", "credit memo"},
          Kind{"Deposit", "TxnID", "deposit"}, Kind{"Check", "TxnID", "check"},
          Kind{"JournalEntry", "TxnID", "journal entry"}}) {
        const std::string name = std::string(query) + "QueryRq";
        const Element response = SendOne(*books, '<' + name + "><" + field + ">X-1</" + field + "></" + name + '>');
        EXPECT_EQ(StatusCode(response), "2050");
        EXPECT_EQ(StatusMessage(response), std::string("There is no ") + noun + " with the " + field + " \"X-1\".");
    }
}

// Both an id and a name: the id decides, whatever the name says.
TEST(Reference, TakesTheIdOverTheName) {
    const auto books = SampleBooks();
    const Element done = SendOne(*books, Payment("<CustomerRef><ListID>L-8</ListID><FullName>Smith</FullName>"
                                                 "</CustomerRef><TotalAmount>1</TotalAmount>"));
    EXPECT_EQ(StatusCode(done), "0");
    EXPECT_EQ(BalanceOf(*books, kCustomers, "Smithson"), "-1.00");
    const Element refused = SendOne(*books, Payment("<CustomerRef><ListID>L-99</ListID><FullName>Smith</FullName>"
                                                    "</CustomerRef><TotalAmount>1</TotalAmount>"));
    EXPECT_EQ(StatusMessage(refused), "CustomerRef names the customer \"L-99\", which does not exist.");
    const Element by_name = SendOne(*books, Payment("<CustomerRef><ListID></ListID><FullName>Smith</FullName>"
                                                    "</CustomerRef><TotalAmount>1</TotalAmount>"));
    EXPECT_EQ(StatusCode(by_name), "0");
    EXPECT_EQ(BalanceOf(*books, kCustomers, "Smith"), "129.00");
}

TEST(AccountMod, EmptiesAFieldThatIsGivenEmptyAndLeavesThoseThatAreNotGiven) {
    const auto books = SampleBooks();
    const std::string fields = "<AccountNumber>1</AccountNumber><BankNumber>2</BankNumber><Desc>d</Desc>";
    static_cast<void>(SendOne(*books, Mod("<ListID>L-1</ListID><EditSequence>1</EditSequence>" + fields)));
    const auto texts = [&books] {
        const Element record = *books->FindById(kAccounts, "L-1");
        return std::string(ChildText(record, "AccountNumber")) + '|' + std::string(ChildText(record, "BankNumber")) +
               '|' + std::string(ChildText(record, "Desc")) + '|' + std::string(ChildText(record, "IsActive"));
    };
    EXPECT_EQ(texts(), "1|2|d|true");
    static_cast<void>(
        SendOne(*books, Mod("<ListID>L-1</ListID><EditSequence>2</EditSequence><BankNumber></BankNumber>")));
    EXPECT_EQ(texts(), "1||d|true");
    static_cast<void>(SendOne(*books, Mod("<ListID>L-1</ListID><EditSequence>3</EditSequence><IsActive>false"
                                          "</IsActive><AccountNumber></AccountNumber><Desc></Desc>")));
    EXPECT_EQ(texts(), "|||false");
    EXPECT_EQ(BalanceOf(*books, kAccounts, "Checking"), "100.00");
}

}  // namespace
}  // namespace paylodge::refhost
