#include "refhost/books/company_text.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

#include "refhost/books/audit.hpp"
#include "refhost/books/data_file_records.hpp"
#include "refhost/books/fields.hpp"
#include "refhost/books/problems.hpp"
#include "tests/refhost/books/sample_books.hpp"
#include "tests/support/source_file.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

[[nodiscard]] std::string SampleText() {
    std::ifstream file(test::SourceFile("examples/riverside.xml"), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

[[nodiscard]] std::unique_ptr<Company> Imported(std::string_view text) {
    auto company = Company::CreateInMemory(CompanyNameIn(text));
    ImportText(*company, text);
    return company;
}

[[nodiscard]] std::string RefusalOf(std::string_view text) {
    try {
        static_cast<void>(Imported(text));
    } catch (const HostError& error) {
        EXPECT_EQ(error.GetProblem(), Problem::kBadText);
        return error.what();
    }
    return "(imported)";
}

[[nodiscard]] std::string Replaced(std::string text, std::string_view from, std::string_view to) {
    const size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return place == std::string::npos ? text : text.replace(place, from.size(), to);
}

TEST(CompanyText, ThatIsImportedIsExportedByteForByte) {
    const std::string text = SampleText();
    EXPECT_EQ(ExportText(*Imported(text)), text);
}

TEST(CompanyText, HoldsEverythingThatTheBooksDo) {
    const auto books = Imported(SampleText());
    DataFileRecord record{.data_version = 7};
    record.Set("Time", PropertyText{"string", " <now>\r\n"});
    DataFileRecordTable(*books).Save({"Notes & more", -2}, record);
    for (const char* request :
         {"<ReceivePaymentAddRq><ReceivePaymentAdd><CustomerRef><FullName>Eastgate Library</FullName></CustomerRef>"
          "<RefNumber>P1</RefNumber><TotalAmount>200</TotalAmount><Memo>at the till</Memo><CreditCardTxnInfo>"
          "<CreditCardTxnInputInfo><CreditCardNumber>4000123412341234</CreditCardNumber></CreditCardTxnInputInfo>"
          "<CreditCardTxnResultInfo><ResultCode>0</ResultCode></CreditCardTxnResultInfo></CreditCardTxnInfo>"
          "<IsAutoApply>true</IsAutoApply></ReceivePaymentAdd></ReceivePaymentAddRq>",
          "<ItemPaymentAddRq><ItemPaymentAdd><Name>Card</Name><PaymentMethodRef><FullName>Visa</FullName>"
          "</PaymentMethodRef></ItemPaymentAdd></ItemPaymentAddRq>",
          "<SalesReceiptAddRq><SalesReceiptAdd><SalesReceiptLineAdd><ItemRef><FullName>Lawn care</FullName></ItemRef>"
          "<Desc>Front</Desc><Amount>12</Amount></SalesReceiptLineAdd></SalesReceiptAdd></SalesReceiptAddRq>",
          "<DepositAddRq><DepositAdd><DepositToAccountRef><FullName>Petty Cash</FullName></DepositToAccountRef>"
          "<DepositLineAdd><AccountRef><FullName>Accounts Receivable</FullName></AccountRef><EntityRef><FullName>Smith"
          "</FullName></EntityRef><Memo>cash</Memo><Amount>3.5</Amount></DepositLineAdd></DepositAdd></"
          "DepositAddRq>"}) {
        EXPECT_EQ(StatusCode(SendOne(*books, request)), "0") << StatusMessage(SendOne(*books, request));
    }
    const std::string text = ExportText(*books);
    EXPECT_THAT(text, HasSubstr("<CreditCardNumber>xxxxxxxxxxxx1234</CreditCardNumber>"));
    EXPECT_EQ(ExportText(*Imported(text)), text);
    EXPECT_EQ(ReadDataFileRecords(*Imported(text)), ReadDataFileRecords(*books));
}

TEST(CompanyText, MayLeaveOutWhatFollowsFromTheRest) {
    const auto books = SampleBooks();
    EXPECT_EQ(ChildText(*books->FindById(kCustomers, "L-7"), "FullName"), "Smith:Kitchen");
    EXPECT_EQ(BalanceOf(*books, kAccounts, "Checking"), "100.00");
    EXPECT_EQ(ChildText(*books->FindById(kInvoices, "T-13"), "IsPaid"), "true");
}

struct BadText {
    const char* name;
    const char* from;
    const char* to;
    const char* refusal;
};

void PrintTo(const BadText& text, std::ostream* output) { *output << text.name; }

class RefusedText : public ::testing::TestWithParam<BadText> {};

TEST_P(RefusedText, IsNamedWithTheRecordAndTheMistake) {
    EXPECT_THAT(RefusalOf(Replaced(SampleText(), GetParam().from, GetParam().to)), HasSubstr(GetParam().refusal));
}

INSTANTIATE_TEST_SUITE_P(
    , RefusedText,
    ::testing::Values(
        BadText{"OtherFormat", "format=\"2\"", "format=\"3\"",
                "The format of the text is \"3\"; this host reads format \"2\"."},
        BadText{"OtherRoot", "<CompanyFile format", "<Company format", "</Company> is expected"},
        BadText{"WrongBalance", "<Balance>28412.55</Balance>", "<Balance>28412.56</Balance>",
                "Account L-1/Balance is \"28412.56\" in the text, but the rest of the text makes it \"28412.55\"."},
        BadText{"UnknownElement", "<BankNumber>", "<Sort>x</Sort><BankNumber>", "Account L-1/Sort is unknown here"},
        BadText{"UnknownList", "<Accounts>", "<Vendors/><Accounts>", "The list Vendors is unknown."},
        BadText{"ListTwice", "<Customers>", "<Accounts/><Customers>", "The list Accounts stands here twice."},
        BadText{"TextInAList", "<Customers>", "<Customers>stray",
                "The list Customers holds text where records belong."},
        BadText{"TextBesideTheLists", "<Customers>", "stray<Customers>", "CompanyFile holds text where lists belong."},
        BadText{"AttributeOfAList", "<Customers>", "<Customers order=\"1\">",
                "Customers has the unknown attribute \"order\"."},
        BadText{"AttributeOfARecord", "<Account>", "<Account hidden=\"1\">",
                "Account L-1 has the unknown attribute \"hidden\"."},
        BadText{"AttributeOfTheCompany", "<CompanyFile ", "<CompanyFile year=\"1\" ",
                "CompanyFile has the unknown attribute \"year\"."},
        BadText{"WrongId", "<ListID>L-2</ListID>", "<ListID>2</ListID>",
                "expected are elements Account with ids such as L-12"},
        BadText{"IdTwice", "<ListID>L-2</ListID>", "<ListID>L-1</ListID>", "UNIQUE constraint failed: records.number"},
        BadText{"NameTwice", "<Name>Riverside Savings</Name>\n      <FullName>Riverside Savings</FullName>",
                "<Name>riverside CHECKING</Name>\n      <FullName>riverside CHECKING</FullName>",
                "Account L-2: the books forbid it: UNIQUE constraint failed: accounts.folded_name."},
        BadText{"MissingName", "<Name>Petty Cash</Name>", "", "Account L-4: Name is missing."},
        BadText{"UnknownType", "<AccountType>Bank</AccountType>", "<AccountType>Bunk</AccountType>",
                "A record of the list accounts, L-1, refers to something in account_types that does not exist."},
        BadText{"MalformedAmount", "<Amount>89.30</Amount>", "<Amount>x</Amount>", "which is no amount such as 12.50"},
        BadText{"MalformedDate", "<TxnDate>2025-01-13</TxnDate>", "<TxnDate>2025-02-30</TxnDate>",
                "Invoice T-101: TxnDate is \"2025-02-30\", which is no date"},
        BadText{"NextNumberTooLow", "nextNumber=\"128\"", "nextNumber=\"127\"",
                "has to be a number above that of every id"},
        BadText{"MalformedText", "</Accounts>", "", "line "}),
    [](const auto& test) { return test.param.name; });

TEST(CompanyText, WithATransactionOutOfBalanceIsRefused) {
    std::string text = ExportText(*SampleBooks());
    text = Replaced(text, "<Amount>-125.00</Amount>", "<Amount>-124.00</Amount>");
    EXPECT_EQ(RefusalOf(text), "The postings of T-16 do not sum to zero.");
}

// The data file records of a company, one of which has this content.
[[nodiscard]] std::string WithDataFileRecord(const std::string& content) {
    return "<CompanyFile format=\"2\" name=\"C\" "
           "nextNumber=\"1\"><DataFileRecords><DataFileRecord><Category>A</Category>"
           "<Number>1</Number><DataVersion>2</DataVersion></DataFileRecord>" +
           content + "</DataFileRecords></CompanyFile>";
}

TEST(CompanyText, WithADataFileRecordThatWouldLoseSomethingIsRefused) {
    const std::string begin = "<DataFileRecord><Category>B</Category><Number>7</Number><DataVersion>1</DataVersion>";
    const std::string property = "<Property><Name>n</Name><Type>string</Type><Value>v</Value></Property>";
    const std::string other = "<Property><Name>m</Name><Type>string</Type><Value></Value></Property>";
    EXPECT_EQ(RefusalOf(WithDataFileRecord(begin + property + other + "</DataFileRecord>")), "(imported)");
    struct Case {
        std::string content;
        const char* refusal;
    };
    for (const auto& [content, refusal] :
         {Case{begin + "<Sort>1</Sort></DataFileRecord>", "DataFileRecord 7 of \"B\"/Sort is unknown here"},
          Case{begin + "<Number>7</Number></DataFileRecord>", "DataFileRecord 7 of \"B\"/Number is unknown here"},
          Case{begin + property + property + "</DataFileRecord>", "has the property \"n\" twice"},
          Case{begin + "<Property><Name>n</Name><Kind>string</Kind></Property></DataFileRecord>",
               "DataFileRecord 7 of \"B\"/Property/Kind is unknown here"},
          Case{begin + "</DataFileRecord>" + begin + "</DataFileRecord>",
               "DataFileRecord 7 of \"B\" stands here twice"},
          Case{"<DataFileRecord><Category>A</Category><Number>1</Number><DataVersion>2</DataVersion></DataFileRecord>",
               "DataFileRecord 1 of \"A\" stands here twice"},
          Case{"<Record/>", "In DataFileRecords stands Record"},
          Case{"<DataFileRecord/>", "Number of a DataFileRecord is \"\""},
          Case{begin + "<Property/></DataFileRecord>", "a Property has no Name"}}) {
        EXPECT_THAT(RefusalOf(WithDataFileRecord(content)), HasSubstr(refusal));
    }
}

TEST(CompanyText, WithoutARequiredElementIsRefused) {
    const std::string text = ExportText(*Imported(SampleText()));
    struct Required {
        const char* record;
        const char* element;
    };
    for (const auto& [record, element] :
         {Required{"Account", "Name"}, Required{"Account", "AccountType"}, Required{"Customer", "Name"},
          Required{"SalesTaxCode", "Name"}, Required{"SalesTaxCode", "IsTaxable"}, Required{"PaymentMethod", "Name"},
          Required{"Item", "Name"}, Required{"Item", "ItemType"}, Required{"Invoice", "TxnDate"},
          Required{"Invoice", "Subtotal"}}) {
        const size_t place = text.find(std::string("<") + record + '>');
        ASSERT_NE(place, std::string::npos) << record;
        const size_t begin = text.find(std::string("<") + element + '>', place);
        const size_t end = text.find('\n', begin);
        std::string without = text;
        without.erase(begin, end - begin);
        EXPECT_THAT(RefusalOf(without), HasSubstr(std::string(": ") + element + " is missing.")) << record;
    }
}

TEST(SampleCompany, HasEnoughOfEverything) {
    const auto books = Imported(SampleText());
    EXPECT_THAT(Audit(*books), IsEmpty());
    EXPECT_GE(books->Records(kAccounts).size(), 30U);
    EXPECT_GE(books->Records(kCustomers).size(), 20U);
    EXPECT_GE(books->Records(kItems).size(), 20U);
    EXPECT_GE(books->Records(kPaymentMethods).size(), 5U);
    EXPECT_GE(books->Records(kSalesTaxCodes).size(), 2U);
    std::set<std::string> types;
    for (const Element& account : books->Records(kAccounts)) {
        types.emplace(ChildText(account, "AccountType"));
    }
    EXPECT_EQ(types.size(), kAccountTypes.size());
}

}  // namespace
}  // namespace paylodge::refhost
