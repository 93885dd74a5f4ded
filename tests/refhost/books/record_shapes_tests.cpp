// The whole record of each kind, byte for byte, as the response to the request that enters it.
#include <gtest/gtest.h>

#include "refhost/books/company_text.hpp"
#include "refhost/books/xml_reader.hpp"
#include "refhost/books/xml_writer.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

class RecordShape : public ::testing::Test {
  protected:
    RecordShape() {
        EXPECT_EQ(StatusCode(SendOne(*books_,
                                     "<ItemPaymentAddRq><ItemPaymentAdd><Name>Goods</Name></ItemPaymentAdd>"
                                     "</ItemPaymentAddRq>")),
                  "0");
        EXPECT_EQ(StatusCode(SendOne(*books_,
                                     "<AccountAddRq><AccountAdd><Name>Fees</Name><AccountType>Expense</AccountType>"
                                     "</AccountAdd></AccountAddRq>")),
                  "0");
    }

    // What the request returns, without what every record begins with.
    [[nodiscard]] std::string Record(const std::string& kind, const std::string& fields) {
        const std::string name = kind + "Add";
        const Element response =
            SendOne(*books_, '<' + name + "Rq><" + name + '>' + fields + "</" + name + "></" + name + "Rq>");
        EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
        if (response.children.size() != 1) {
            return "(no record)";
        }
        const std::string text = CompactXml(response.children.front());
        const std::string begin =
            "<TimeCreated>2025-03-11T10:20:30</TimeCreated><TimeModified>2025-03-11T10:20:30</TimeModified>"
            "<EditSequence>1</EditSequence>";
        const size_t place = text.find(begin);
        EXPECT_NE(place, std::string::npos) << text;
        return place == std::string::npos ? text : text.substr(0, place) + text.substr(place + begin.size());
    }

    std::unique_ptr<Company> books_ = SampleBooks();
};

constexpr const char* kCard =
    "<CreditCardTxnInfo><CreditCardTxnInputInfo><CreditCardNumber>12345</CreditCardNumber><ExpirationMonth>7"
    "</ExpirationMonth><ExpirationYear>2030</ExpirationYear><NameOnCard>A. Smith</NameOnCard></CreditCardTxnInputInfo>"
    "<CreditCardTxnResultInfo><ResultCode>0</ResultCode><ResultMessage>ok</ResultMessage><CreditCardTransID>t"
    "</CreditCardTransID><MerchantAccountNumber>m</MerchantAccountNumber><AuthorizationCode>a</AuthorizationCode>"
    "<ReconBatchID>r</ReconBatchID><PaymentGroupingCode>g</PaymentGroupingCode><PaymentStatus>p</PaymentStatus>"
    "<TxnAuthorizationTime>h</TxnAuthorizationTime><TxnAuthorizationStamp>s</TxnAuthorizationStamp><ClientTransID>c"
    "</ClientTransID></CreditCardTxnResultInfo></CreditCardTxnInfo>";

// The same with its number masked.
[[nodiscard]] std::string KeptCard() {
    std::string card = kCard;
    return card.replace(card.find("12345"), 5, "x2345");
}

TEST_F(RecordShape, OfAReceivedPayment) {
    EXPECT_EQ(Record("ReceivePayment",
                     std::string("<CustomerRef><FullName>Smith</FullName></CustomerRef><TxnDate>2025-03-01</TxnDate>"
                                 "<RefNumber>P-1</RefNumber><TotalAmount>50</TotalAmount><PaymentMethodRef><FullName>"
                                 "Cash</FullName></PaymentMethodRef><Memo>m</Memo><DepositToAccountRef><FullName>"
                                 "Checking:Till</FullName></DepositToAccountRef>") +
                         kCard + "<IsAutoApply>true</IsAutoApply>"),
              "<ReceivePaymentRet><TxnID>T-22</TxnID>"
              "<CustomerRef><ListID>L-6</ListID><FullName>Smith</FullName></CustomerRef>"
              "<ARAccountRef><ListID>L-5</ListID><FullName>Receivables</FullName></ARAccountRef>"
              "<TxnDate>2025-03-01</TxnDate><RefNumber>P-1</RefNumber><TotalAmount>50.00</TotalAmount>"
              "<PaymentMethodRef><ListID>L-9</ListID><FullName>Cash</FullName></PaymentMethodRef><Memo>m</Memo>"
              "<DepositToAccountRef><ListID>L-2</ListID><FullName>Checking:Till</FullName></DepositToAccountRef>"
              "<UnusedPayment>0.00</UnusedPayment>" +
                  KeptCard() +
                  "<AppliedToTxnRet><TxnID>T-12</TxnID><RefNumber>1001</RefNumber><BalanceRemaining>0.00"
                  "</BalanceRemaining><Amount>40.00</Amount></AppliedToTxnRet>"
                  "<AppliedToTxnRet><TxnID>T-11</TxnID><RefNumber>1002</RefNumber><BalanceRemaining>50.00"
                  "</BalanceRemaining><Amount>10.00</Amount></AppliedToTxnRet></ReceivePaymentRet>");
}

TEST_F(RecordShape, OfASalesReceipt) {
    EXPECT_EQ(Record("SalesReceipt",
                     std::string("<CustomerRef><ListID>L-7</ListID></CustomerRef><TxnDate>2025-03-02</TxnDate>"
                                 "<RefNumber>S-1</RefNumber><PaymentMethodRef><ListID>L-10</ListID></PaymentMethodRef>"
                                 "<Memo>m</Memo><DepositToAccountRef><ListID>L-1</ListID></DepositToAccountRef>") +
                         kCard +
                         "<SalesReceiptLineAdd><ItemRef><FullName>Goods</FullName></ItemRef><Desc>d</Desc><Amount>3"
                         "</Amount></SalesReceiptLineAdd><SalesReceiptLineAdd><ItemRef><FullName>Goods</FullName>"
                         "</ItemRef><Amount>-1.5</Amount></SalesReceiptLineAdd>"),
              "<SalesReceiptRet><TxnID>T-22</TxnID><TxnDate>2025-03-02</TxnDate><RefNumber>S-1</RefNumber>"
              "<Memo>m</Memo><CustomerRef><ListID>L-7</ListID><FullName>Smith:Kitchen</FullName></CustomerRef>"
              "<PaymentMethodRef><ListID>L-10</ListID><FullName>Zinc tokens</FullName></PaymentMethodRef>"
              "<DepositToAccountRef><ListID>L-1</ListID><FullName>Checking</FullName></DepositToAccountRef>"
              "<TotalAmount>1.50</TotalAmount>" +
                  KeptCard() +
                  "<SalesReceiptLineRet><ItemRef><ListID>L-20</ListID><FullName>Goods</FullName></ItemRef><Desc>d"
                  "</Desc><Amount>3.00</Amount></SalesReceiptLineRet><SalesReceiptLineRet><ItemRef><ListID>L-20"
                  "</ListID><FullName>Goods</FullName></ItemRef><Amount>-1.50</Amount></SalesReceiptLineRet>"
                  "</SalesReceiptRet>");
}

TEST_F(RecordShape, OfACreditMemo) {
    EXPECT_EQ(Record("CreditMemo",
                     "<CustomerRef><FullName>smith</FullName></CustomerRef><TxnDate>2025-03-03</TxnDate><RefNumber>C-1"
                     "</RefNumber><Memo>m</Memo><CreditMemoLineAdd><ItemRef><FullName>Goods</FullName></ItemRef>"
                     "<Amount>0.01</Amount></CreditMemoLineAdd>"),
              "<CreditMemoRet><TxnID>T-22</TxnID><TxnDate>2025-03-03</TxnDate><RefNumber>C-1</RefNumber><Memo>m</Memo>"
              "<CustomerRef><ListID>L-6</ListID><FullName>Smith</FullName></CustomerRef>"
              "<ARAccountRef><ListID>L-5</ListID><FullName>Receivables</FullName></ARAccountRef>"
              "<TotalAmount>0.01</TotalAmount><CreditMemoLineRet><ItemRef><ListID>L-20</ListID><FullName>Goods"
              "</FullName></ItemRef><Amount>0.01</Amount></CreditMemoLineRet></CreditMemoRet>");
}

TEST_F(RecordShape, OfADeposit) {
    EXPECT_EQ(Record("Deposit",
                     "<TxnDate>2025-03-04</TxnDate><DepositToAccountRef><FullName>Checking</FullName>"
                     "</DepositToAccountRef><Memo>m</Memo><DepositLineAdd><AccountRef><FullName>Receivables</FullName>"
                     "</AccountRef><EntityRef><FullName>Smithson</FullName></EntityRef><Memo>l</Memo><Amount>2"
                     "</Amount></DepositLineAdd>"),
              "<DepositRet><TxnID>T-22</TxnID><TxnDate>2025-03-04</TxnDate><Memo>m</Memo>"
              "<DepositToAccountRef><ListID>L-1</ListID><FullName>Checking</FullName></DepositToAccountRef>"
              "<DepositTotal>2.00</DepositTotal><DepositLineRet><AccountRef><ListID>L-5</ListID><FullName>Receivables"
              "</FullName></AccountRef><EntityRef><ListID>L-8</ListID><FullName>Smithson</FullName></EntityRef>"
              "<Memo>l</Memo><Amount>2.00</Amount></DepositLineRet></DepositRet>");
}

TEST_F(RecordShape, OfACheck) {
    EXPECT_EQ(Record("Check",
                     "<AccountRef><FullName>Checking</FullName></AccountRef><PayeeEntityRef><FullName>Smith</FullName>"
                     "</PayeeEntityRef><RefNumber>K-1</RefNumber><TxnDate>2025-03-05</TxnDate><Memo>m</Memo>"
                     "<ExpenseLineAdd><AccountRef><FullName>Fees</FullName></AccountRef><Memo>l</Memo><Amount>2.50"
                     "</Amount></ExpenseLineAdd>"),
              "<CheckRet><TxnID>T-22</TxnID><TxnDate>2025-03-05</TxnDate><RefNumber>K-1</RefNumber><Memo>m</Memo>"
              "<AccountRef><ListID>L-1</ListID><FullName>Checking</FullName></AccountRef>"
              "<PayeeEntityRef><ListID>L-6</ListID><FullName>Smith</FullName></PayeeEntityRef>"
              "<TotalAmount>2.50</TotalAmount><ExpenseLineRet><AccountRef><ListID>L-21</ListID><FullName>Fees"
              "</FullName></AccountRef><Memo>l</Memo><Amount>2.50</Amount></ExpenseLineRet></CheckRet>");
}

TEST_F(RecordShape, OfAnAccount) {
    EXPECT_EQ(Record("Account",
                     "<Name>Box</Name><IsActive>false</IsActive><ParentRef><FullName>Checking:Till</FullName>"
                     "</ParentRef><AccountType>Bank</AccountType><AccountNumber>1</AccountNumber><BankNumber>2"
                     "</BankNumber><Desc>d</Desc>"),
              "<AccountRet><ListID>L-22</ListID><Name>Box</Name><FullName>Checking:Till:Box</FullName>"
              "<IsActive>false</IsActive><ParentRef><ListID>L-2</ListID><FullName>Checking:Till</FullName></ParentRef>"
              "<Sublevel>2</Sublevel><AccountType>Bank</AccountType><AccountNumber>1</AccountNumber>"
              "<BankNumber>2</BankNumber><Desc>d</Desc><Balance>0.00</Balance></AccountRet>");
}

TEST_F(RecordShape, OfACustomer) {
    EXPECT_EQ(
        Record("Customer",
               "<Name>Barn</Name><IsActive>true</IsActive><ParentRef><ListID>L-7</ListID></ParentRef><CompanyName>"
               "C</CompanyName><Contact>N</Contact><Phone>1</Phone><Email>e</Email>"),
        "<CustomerRet><ListID>L-22</ListID><Name>Barn</Name><FullName>Smith:Kitchen:Barn</FullName>"
        "<IsActive>true</IsActive><ParentRef><ListID>L-7</ListID><FullName>Smith:Kitchen</FullName></ParentRef>"
        "<Sublevel>2</Sublevel><CompanyName>C</CompanyName><Contact>N</Contact><Phone>1</Phone><Email>e</Email>"
        "<Balance>0.00</Balance></CustomerRet>");
}

TEST_F(RecordShape, OfAPaymentItem) {
    EXPECT_EQ(Record("ItemPayment",
                     "<Name>Card</Name><IsActive>true</IsActive><ItemDesc>d</ItemDesc><PaymentMethodRef><ListID>L-9"
                     "</ListID></PaymentMethodRef>"),
              "<ItemRet><ListID>L-22</ListID><Name>Card</Name><FullName>Card</FullName><IsActive>true</IsActive>"
              "<Sublevel>0</Sublevel><ItemType>Payment</ItemType><ItemDesc>d</ItemDesc>"
              "<PaymentMethodRef><ListID>L-9</ListID><FullName>Cash</FullName></PaymentMethodRef></ItemRet>");
}

// What is not entered by a request, as the company's text has it.
TEST(RecordText, OfWhatOnlyATextCanEnterComesBackAsItWas) {
    const std::string lists =
        "<CompanyFile format=\"2\" name=\"C\" nextNumber=\"9\">"
        "<Accounts><Account><ListID>L-1</ListID><TimeCreated>2025-01-01T00:00:00</TimeCreated><TimeModified>2025-01-02"
        "T00:00:00</TimeModified><EditSequence>7</EditSequence><Name>Sales</Name><FullName>Sales</FullName><IsActive>"
        "true</IsActive><Sublevel>0</Sublevel><AccountType>Income</AccountType><Balance>0.00</Balance></Account>"
        "<Account><ListID>L-2</ListID><TimeCreated>2025-01-01T00:00:00</TimeCreated><TimeModified>2025-01-02T00:00:00"
        "</TimeModified><EditSequence>1</EditSequence><Name>Orders</Name><FullName>Orders</FullName><IsActive>true"
        "</IsActive><Sublevel>0</Sublevel><AccountType>NonPosting</AccountType></Account></Accounts>"
        "<SalesTaxCodes><SalesTaxCode><ListID>L-3</ListID><TimeCreated>2025-01-01T00:00:00</TimeCreated><TimeModified>"
        "2025-01-02T00:00:00</TimeModified><EditSequence>1</EditSequence><Name>Tax</Name><IsActive>false</IsActive>"
        "<IsTaxable>true</IsTaxable><Desc>d</Desc></SalesTaxCode></SalesTaxCodes>"
        "<PaymentMethods><PaymentMethod><ListID>L-4</ListID><TimeCreated>2025-01-01T00:00:00</TimeCreated>"
        "<TimeModified>2025-01-02T00:00:00</TimeModified><EditSequence>1</EditSequence><Name>Visa</Name><IsActive>true"
        "</IsActive><PaymentMethodType>CreditCard</PaymentMethodType></PaymentMethod></PaymentMethods>"
        "<Items><Item><ListID>L-5</ListID><TimeCreated>2025-01-01T00:00:00</TimeCreated><TimeModified>2025-01-02"
        "T00:00:00</TimeModified><EditSequence>1</EditSequence><Name>Lawn</Name><FullName>Lawn</FullName><IsActive>true"
        "</IsActive><Sublevel>0</Sublevel><ItemType>Service</ItemType><ItemDesc>d</ItemDesc><SalesTaxCodeRef><ListID>"
        "L-3</ListID><FullName>Tax</FullName></SalesTaxCodeRef><Price>-1.05</Price><AccountRef><ListID>L-1</ListID>"
        "<FullName>Sales</FullName></AccountRef><PaymentMethodRef><ListID>L-4</ListID><FullName>Visa</FullName>"
        "</PaymentMethodRef></Item><Item><ListID>L-6</ListID><TimeCreated>2025-01-01T00:00:00</TimeCreated>"
        "<TimeModified>2025-01-02T00:00:00</TimeModified><EditSequence>1</EditSequence><Name>Front</Name><FullName>"
        "Lawn:Front</FullName><IsActive>true</IsActive><ParentRef><ListID>L-5</ListID><FullName>Lawn</FullName>"
        "</ParentRef><Sublevel>1</Sublevel><ItemType>Service</ItemType></Item></Items>"
        "<DataFileRecords><DataFileRecord><Category>A</Category><Number>-2147483648</Number><DataVersion>2147483647"
        "</DataVersion><Property><Name>n</Name><Type>string</Type><Value>v</Value></Property></DataFileRecord>"
        "<DataFileRecord><Category>A</Category><Number>3</Number><DataVersion>0</DataVersion></DataFileRecord>"
        "<DataFileRecord><Category>B</Category><Number>-1</Number><DataVersion>0</DataVersion></DataFileRecord>"
        "</DataFileRecords></CompanyFile>";
    const auto books = Company::CreateInMemory("C");
    ImportText(*books, lists);
    EXPECT_EQ(CompactXml(ReadXml(ExportText(*books)).root), lists);
}

}  // namespace
}  // namespace paylodge::refhost
