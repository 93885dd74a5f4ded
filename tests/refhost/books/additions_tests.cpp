#include <gtest/gtest.h>

#include "refhost/books/company_text.hpp"
#include "refhost/books/xml_writer.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] std::string AccountAdd(const std::string& fields) {
    return "<AccountAddRq requestID=\"1\"><AccountAdd>" + fields + "</AccountAdd></AccountAddRq>";
}

[[nodiscard]] std::string PaymentAdd(const std::string& fields) {
    return "<ReceivePaymentAddRq><ReceivePaymentAdd>" + fields + "</ReceivePaymentAdd></ReceivePaymentAddRq>";
}

TEST(AccountAdd, AnswersWithTheWholeNewRecord) {
    const auto books = SampleBooks();
    const Element response =
        SendOne(*books, AccountAdd("<Name> Savings </Name><AccountType>bank</AccountType><BankNumber>77</BankNumber>"));
    EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    ASSERT_EQ(response.children.size(), 1U);
    EXPECT_EQ(CompactXml(response.children.front()),
              "<AccountRet><ListID>L-20</ListID><TimeCreated>2025-03-11T10:20:30</TimeCreated>"
              "<TimeModified>2025-03-11T10:20:30</TimeModified><EditSequence>1</EditSequence><Name>Savings</Name>"
              "<FullName>Savings</FullName><IsActive>true</IsActive><Sublevel>0</Sublevel>"
              "<AccountType>Bank</AccountType><BankNumber>77</BankNumber><Balance>0.00</Balance></AccountRet>");
}

TEST(AccountAdd, IsSeenByTheNextQuery) {
    const auto books = SampleBooks();
    const auto responses = Send(*books, AccountAdd("<Name>Savings</Name><AccountType>Bank</AccountType>") +
                                            "<AccountQueryRq><FullName>Savings</FullName></AccountQueryRq>");
    ASSERT_EQ(responses.size(), 2U);
    EXPECT_EQ(Texts(responses[1], "ListID"), std::vector<std::string>{"L-20"});
}

TEST(AccountAdd, GivesEachRecordAnIdOfItsOwn) {
    const auto books = SampleBooks();
    const auto first = SendOne(*books, AccountAdd("<Name>A</Name><AccountType>Bank</AccountType>"));
    const auto second = SendOne(*books, AccountAdd("<Name>B</Name><AccountType>Bank</AccountType>"));
    EXPECT_NE(Texts(first, "ListID"), Texts(second, "ListID"));
    EXPECT_NE(ExportText(*books).find("nextNumber=\"22\""), std::string::npos);
}

TEST(AccountAdd, RefusesANameThatExistsInAnyLetterCaseOrState) {
    for (const char* name : {"Checking", "CHECKING", "Old Bank"}) {
        const auto books = SampleBooks();
        const Element response =
            SendOne(*books, AccountAdd("<Name>" + std::string(name) + "</Name><AccountType>Equity</AccountType>"));
        EXPECT_EQ(StatusCode(response), "3100") << name;
        EXPECT_NE(StatusMessage(response).find("Name"), std::string::npos);
        EXPECT_EQ(ExportText(*books), ExportText(*SampleBooks()));
    }
}

TEST(AccountAdd, PutsAnAccountBelowAnother) {
    const auto books = SampleBooks();
    const Element response = SendOne(*books, AccountAdd("<Name>Safe</Name><ParentRef><FullName>Checking</FullName>"
                                                        "</ParentRef><AccountType>Bank</AccountType>"));
    EXPECT_EQ(Texts(response, "FullName"), std::vector<std::string>{"Checking:Safe"});
    EXPECT_EQ(Texts(response, "Sublevel"), std::vector<std::string>{"1"});
    // The same name elsewhere is another account.
    EXPECT_EQ(StatusCode(SendOne(*books, AccountAdd("<Name>Safe</Name><AccountType>Bank</AccountType>"))), "0");
}

TEST(AccountAdd, RefusesAParentThatDoesNotFit) {
    const auto books = SampleBooks();
    const Element unknown = SendOne(*books, AccountAdd("<Name>Safe</Name><ParentRef><FullName>Nowhere</FullName>"
                                                       "</ParentRef><AccountType>Bank</AccountType>"));
    EXPECT_EQ(StatusCode(unknown), "2040");
    EXPECT_EQ(StatusMessage(unknown), "ParentRef names the account \"Nowhere\", which does not exist.");
    const Element other_type = SendOne(*books, AccountAdd("<Name>Safe</Name><ParentRef><FullName>Checking</FullName>"
                                                          "</ParentRef><AccountType>Equity</AccountType>"));
    EXPECT_EQ(StatusCode(other_type), "2045");
    EXPECT_EQ(ExportText(*books), ExportText(*SampleBooks()));
}

TEST(AccountAdd, RefusesNamesThatAreTooLongOrHaveAColon) {
    const auto books = SampleBooks();
    const auto code_of = [&books](const std::string& name) {
        return StatusCode(SendOne(*books, AccountAdd("<Name>" + name + "</Name><AccountType>Bank</AccountType>")));
    };
    EXPECT_EQ(code_of(std::string(101, 'x')), "2030");
    EXPECT_EQ(code_of("A:B"), "2030");
    std::string hundred_characters;
    for (int count = 0; count < 100; ++count) {
        hundred_characters += "\xC3\xA9";
    }
    EXPECT_EQ(code_of(hundred_characters), "0");
}

TEST(ReceivePaymentAdd, RecordsThePaymentAndMovesTheBalances) {
    const auto books = SampleBooks();
    const Element response =
        SendOne(*books, PaymentAdd("<CustomerRef><FullName>Smith</FullName></CustomerRef><TxnDate>2025-03-10</TxnDate>"
                                   "<RefNumber>P-1</RefNumber><TotalAmount>25.5</TotalAmount>"
                                   "<PaymentMethodRef><FullName>Cash</FullName></PaymentMethodRef>"));
    EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    EXPECT_EQ(Texts(response, "TxnID"), std::vector<std::string>{"T-20"});
    EXPECT_EQ(Texts(response, "TotalAmount"), std::vector<std::string>{"25.50"});
    EXPECT_EQ(Texts(response, "UnusedPayment"), std::vector<std::string>{"25.50"});
    EXPECT_EQ(BalanceOf(*books, kCustomers, "Smith"), "104.50");
    EXPECT_EQ(BalanceOf(*books, kAccounts, "Receivables"), "104.50");
    EXPECT_EQ(BalanceOf(*books, kAccounts, "Undeposited Funds"), "30.50");
    EXPECT_EQ(ChildText(*books->FindByName(kCustomers, "Smith"), "EditSequence"), "2");
    EXPECT_EQ(ChildText(*books->FindById(kInvoices, "T-11"), "BalanceRemaining"), "60.00");
}

// What an entry touches counts as changed, at the time of the entry, and nothing else does.
TEST(ReceivePaymentAdd, MovesOnlyWhatItTouches) {
    const auto books = SampleBooks();
    static_cast<void>(SendOne(*books, PaymentAdd("<CustomerRef><FullName>Smith</FullName></CustomerRef>"
                                                 "<TotalAmount>40</TotalAmount><IsAutoApply>true</IsAutoApply>")));
    const auto moved = [&books](const ListKind& kind) {
        std::vector<std::string> ids;
        for (const Element& record : books->Records(kind)) {
            const bool is_changed = ChildText(record, "EditSequence") == "2";
            EXPECT_EQ(is_changed, ChildText(record, "TimeModified") == kNow);
            EXPECT_TRUE(is_changed || ChildText(record, "EditSequence") == "1");
            if (is_changed) {
                ids.emplace_back(ChildText(record, kind.id));
            }
        }
        return ids;
    };
    EXPECT_EQ(moved(kAccounts), (std::vector<std::string>{"L-4", "L-5"}));
    EXPECT_EQ(moved(kCustomers), std::vector<std::string>{"L-6"});
    EXPECT_EQ(moved(kInvoices), std::vector<std::string>{"T-12"});
}

TEST(ReceivePaymentAdd, IsFoundByItsQuery) {
    const auto books = SampleBooks();
    static_cast<void>(SendOne(*books, PaymentAdd("<CustomerRef><ListID>L-6</ListID></CustomerRef>"
                                                 "<RefNumber>P-7</RefNumber><TotalAmount>1</TotalAmount>")));
    const Element found = SendOne(*books, "<ReceivePaymentQueryRq><RefNumber>P-7</RefNumber></ReceivePaymentQueryRq>");
    EXPECT_EQ(Texts(found, "TxnID"), std::vector<std::string>{"T-20"});
    EXPECT_EQ(Texts(found, "TxnDate"), std::vector<std::string>{"2025-03-11"});
}

TEST(ReceivePaymentAdd, PaysTheOldestOpenInvoicesFirstWhenAsked) {
    const auto books = SampleBooks();
    const Element response =
        SendOne(*books, PaymentAdd("<CustomerRef><FullName>Smith</FullName></CustomerRef>"
                                   "<TotalAmount>50.00</TotalAmount><IsAutoApply>true</IsAutoApply>"));
    EXPECT_EQ(Texts(response, "UnusedPayment"), std::vector<std::string>{"0.00"});
    const Element oldest = *books->FindById(kInvoices, "T-12");
    EXPECT_EQ(ChildText(oldest, "BalanceRemaining"), "0.00");
    EXPECT_EQ(ChildText(oldest, "IsPaid"), "true");
    const Element next = *books->FindById(kInvoices, "T-11");
    EXPECT_EQ(ChildText(next, "BalanceRemaining"), "50.00");
    EXPECT_EQ(ChildText(next, "AppliedAmount"), "-10.00");
    EXPECT_EQ(ChildText(next, "IsPaid"), "false");
}

TEST(ReceivePaymentAdd, KeepsWhatNoInvoiceTakes) {
    const auto books = SampleBooks();
    const Element response =
        SendOne(*books, PaymentAdd("<CustomerRef><FullName>Smith</FullName></CustomerRef>"
                                   "<TotalAmount>130</TotalAmount><IsAutoApply>true</IsAutoApply>"));
    EXPECT_EQ(Texts(response, "UnusedPayment"), std::vector<std::string>{"30.00"});
    EXPECT_EQ(BalanceOf(*books, kCustomers, "Smith"), "0.00");
}

TEST(ReceivePaymentAdd, KeepsOnlyTheEndOfACardNumber) {
    const auto books = SampleBooks();
    const Element response = SendOne(
        *books, PaymentAdd("<CustomerRef><FullName>Smith</FullName></CustomerRef><TotalAmount>1</TotalAmount>"
                           "<PaymentMethodRef></PaymentMethodRef>"
                           "<CreditCardTxnInfo><CreditCardTxnInputInfo><CreditCardNumber>4000123412341234"
                           "</CreditCardNumber></CreditCardTxnInputInfo><CreditCardTxnResultInfo>"
                           "<AuthorizationCode>A1</AuthorizationCode></CreditCardTxnResultInfo></CreditCardTxnInfo>"));
    EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    const std::string file = ExportText(*books);
    EXPECT_NE(file.find("<CreditCardNumber>xxxxxxxxxxxx1234</CreditCardNumber>"), std::string::npos);
    EXPECT_EQ(file.find("4000123412341234"), std::string::npos);
    EXPECT_NE(file.find("<AuthorizationCode>A1</AuthorizationCode>"), std::string::npos);
}

TEST(ReceivePaymentAdd, RefusesWhatItCannotRecordAndChangesNothing) {
    struct Case {
        const char* fields;
        const char* code;
        const char* message_part;
    };
    constexpr const char* kSmith = "<CustomerRef><FullName>Smith</FullName></CustomerRef>";
    for (const Case& test : {
             Case{"<TotalAmount>1</TotalAmount>", "2000", "CustomerRef"},
             Case{"<CustomerRef></CustomerRef><TotalAmount>1</TotalAmount>", "2000", "CustomerRef"},
             Case{"<CustomerRef><FullName>Jones</FullName></CustomerRef><TotalAmount>1</TotalAmount>", "2040", "Jones"},
             Case{"%", "2000", "TotalAmount"},
             Case{"%<TotalAmount>abc</TotalAmount>", "2030", "TotalAmount"},
             Case{"%<TotalAmount>0.00</TotalAmount>", "2030", "TotalAmount"},
             Case{"%<TotalAmount>-5</TotalAmount>", "2030", "TotalAmount"},
             Case{"%<TotalAmount>1</TotalAmount><TxnDate>10.03.2025</TxnDate>", "2030", "TxnDate"},
             Case{"%<TotalAmount>1</TotalAmount><PaymentMethodRef><FullName>Shells</FullName></PaymentMethodRef>",
                  "2040", "Shells"},
             Case{"%<TotalAmount>1</TotalAmount><DepositToAccountRef><ListID>L-99</ListID></DepositToAccountRef>",
                  "2040", "L-99"},
             Case{"%<TotalAmount>1</TotalAmount><IsAutoApply>maybe</IsAutoApply>", "2030", "IsAutoApply"},
         }) {
        const auto books = SampleBooks();
        std::string fields(test.fields);
        if (fields.starts_with('%')) {
            fields.replace(0, 1, kSmith);
        }
        const Element response = SendOne(*books, PaymentAdd(fields));
        EXPECT_EQ(StatusCode(response), test.code) << test.fields;
        EXPECT_NE(StatusMessage(response).find(test.message_part), std::string::npos) << StatusMessage(response);
        EXPECT_EQ(ExportText(*books), ExportText(*SampleBooks()));
    }
}

}  // namespace
}  // namespace paylodge::refhost
