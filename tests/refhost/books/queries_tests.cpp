#include <gtest/gtest.h>

#include "refhost/books/xml_writer.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {
namespace {

struct QueryCase {
    const char* name;
    // The request's name without "QueryRq", and what it holds.
    const char* list;
    const char* filters;
    const char* field;
    std::vector<std::string> expected;
};

void PrintTo(const QueryCase& query, std::ostream* output) { *output << query.name; }

class QueryFilter : public ::testing::TestWithParam<QueryCase> {};

TEST_P(QueryFilter, SelectsItsRecords) {
    const auto books = SampleBooks();
    const std::string name = std::string(GetParam().list) + "QueryRq";
    const Element response = SendOne(*books, '<' + name + '>' + GetParam().filters + "</" + name + '>');
    EXPECT_EQ(StatusCode(response), "0") << StatusMessage(response);
    EXPECT_EQ(Texts(response, GetParam().field), GetParam().expected);
    for (const Element& record : response.children) {
        EXPECT_EQ(record.name, std::string(GetParam().list) + "Ret");
    }
}

INSTANTIATE_TEST_SUITE_P(
    , QueryFilter,
    ::testing::Values(
        QueryCase{"NoneGivesTheActiveOnes", "Account", "", "ListID", {"L-1", "L-2", "L-4", "L-5", "L-14", "L-15"}},
        QueryCase{"ActiveOnly",
                  "Account",
                  "<ActiveStatus>ActiveOnly</ActiveStatus>",
                  "ListID",
                  {"L-1", "L-2", "L-4", "L-5", "L-14", "L-15"}},
        QueryCase{"InactiveOnly", "Account", "<ActiveStatus>InactiveOnly</ActiveStatus>", "ListID", {"L-3"}},
        QueryCase{"AllStates",
                  "Account",
                  "<ActiveStatus>All</ActiveStatus>",
                  "ListID",
                  {"L-1", "L-2", "L-3", "L-4", "L-5", "L-14", "L-15"}},
        QueryCase{"AccountType", "Account", "<AccountType>Bank</AccountType>", "ListID", {"L-1", "L-2"}},
        QueryCase{"AccountTypeInAnyCase", "Account", "<AccountType>BANK</AccountType>", "ListID", {"L-1", "L-2"}},
        QueryCase{"SeveralAccountTypes",
                  "Account",
                  "<AccountType>AccountsReceivable</AccountType><AccountType>Bank</AccountType>",
                  "ListID",
                  {"L-1", "L-2", "L-5"}},
        QueryCase{"AccountTypeWithoutAccounts", "Account", "<AccountType>Expense</AccountType>", "ListID", {}},
        QueryCase{"TypeAndStatusTogether",
                  "Account",
                  "<ActiveStatus>InactiveOnly</ActiveStatus><AccountType>Bank</AccountType>",
                  "ListID",
                  {"L-3"}},
        QueryCase{"FullName", "Account", "<FullName>checking:till</FullName>", "ListID", {"L-2"}},
        QueryCase{"FullNameFindsInactiveOnes", "Account", "<FullName>Old Bank</FullName>", "ListID", {"L-3"}},
        QueryCase{"SeveralFullNames",
                  "Account",
                  "<FullName>Old Bank</FullName><FullName>Checking</FullName>",
                  "ListID",
                  {"L-1", "L-3"}},
        QueryCase{"ListID", "Account", "<ListID>L-3</ListID>", "FullName", {"Old Bank"}},
        QueryCase{"MaxReturned", "Account", "<MaxReturned>2</MaxReturned>", "ListID", {"L-1", "L-2"}},
        QueryCase{"ModifiedFrom",
                  "Account",
                  "<FromModifiedDate>2025-01-08T08:00:00</FromModifiedDate>",
                  "ListID",
                  {"L-4", "L-5", "L-14", "L-15"}},
        QueryCase{
            "ModifiedUpToADay", "Account", "<ToModifiedDate>2025-01-06</ToModifiedDate>", "ListID", {"L-1", "L-2"}},
        QueryCase{"NameContains",
                  "Customer",
                  "<NameFilter><MatchCriterion>Contains</MatchCriterion><Name>MITHS</Name></NameFilter>",
                  "ListID",
                  {"L-8"}},
        QueryCase{"NameStartsWith",
                  "Customer",
                  "<NameFilter><MatchCriterion>StartsWith</MatchCriterion><Name>smith</Name></NameFilter>",
                  "ListID",
                  {"L-6", "L-8"}},
        QueryCase{"NameEndsWith",
                  "Customer",
                  "<NameFilter><MatchCriterion>EndsWith</MatchCriterion><Name>en</Name></NameFilter>",
                  "ListID",
                  {"L-7"}},
        QueryCase{"NameRange",
                  "PaymentMethod",
                  "<NameRangeFilter><FromName>A</FromName><ToName>Z</ToName></NameRangeFilter>",
                  "Name",
                  {"Cash"}},
        QueryCase{"NameRangeThatEndsAtAName",
                  "Customer",
                  "<NameRangeFilter><FromName>SMITH</FromName><ToName>smithson</ToName></NameRangeFilter>",
                  "ListID",
                  {"L-6", "L-8"}},
        QueryCase{"NameRangeThatBeginsBehindAName",
                  "Customer",
                  "<NameRangeFilter><FromName>Smitha</FromName></NameRangeFilter>",
                  "ListID",
                  {"L-8"}},
        QueryCase{"NameRangeThatEndsBeforeAName",
                  "Customer",
                  "<NameRangeFilter><ToName>Smithso</ToName></NameRangeFilter>",
                  "ListID",
                  {"L-6", "L-7"}},
        QueryCase{"NameRangeWithoutAnEnd",
                  "Customer",
                  "<NameRangeFilter><FromName>S</FromName><ToName></ToName></NameRangeFilter>",
                  "ListID",
                  {"L-6", "L-8"}},
        QueryCase{"NameContainsItAtItsBeginning",
                  "Customer",
                  "<NameFilter><MatchCriterion>Contains</MatchCriterion><Name>Smith</Name></NameFilter>",
                  "ListID",
                  {"L-6", "L-8"}},
        QueryCase{"NameEndsWithAllOfIt",
                  "Customer",
                  "<NameFilter><MatchCriterion>EndsWith</MatchCriterion><Name>Smith</Name></NameFilter>",
                  "ListID",
                  {"L-6"}},
        QueryCase{"NameStartsWithMoreThanIt",
                  "Customer",
                  "<NameFilter><MatchCriterion>StartsWith</MatchCriterion><Name>Kitchens</Name></NameFilter>",
                  "ListID",
                  {}},
        QueryCase{"ModifiedFromADay",
                  "Account",
                  "<FromModifiedDate>2025-01-09</FromModifiedDate>",
                  "ListID",
                  {"L-5", "L-14", "L-15"}},
        QueryCase{"ModifiedFromASecondLater",
                  "Account",
                  "<FromModifiedDate>2025-01-09T08:00:01</FromModifiedDate>",
                  "ListID",
                  {}},
        QueryCase{"ModifiedUpToASecond",
                  "Account",
                  "<ToModifiedDate>2025-01-05T08:00:00</ToModifiedDate>",
                  "ListID",
                  {"L-1"}},
        QueryCase{"ModifiedUpToASecondEarlier",
                  "Account",
                  "<ToModifiedDate>2025-01-05T07:59:59</ToModifiedDate>",
                  "ListID",
                  {}},
        QueryCase{"EveryPaidStatus", "Invoice", "<PaidStatus>all</PaidStatus>", "TxnID", {"T-11", "T-12", "T-13"}},
        QueryCase{"TxnDateToOnly",
                  "Invoice",
                  "<TxnDateRangeFilter><ToTxnDate>2025-02-01</ToTxnDate></TxnDateRangeFilter>",
                  "TxnID",
                  {"T-12", "T-13"}},
        QueryCase{"TxnDateRangeWithEmptyEnds", "Invoice", "<TxnDateRangeFilter/>", "TxnID", {"T-11", "T-12", "T-13"}},
        QueryCase{"AnyOfSeveralCustomers",
                  "Invoice",
                  "<EntityFilter><ListID>L-7</ListID><ListID>L-8</ListID><FullName>Smith</FullName></EntityFilter>",
                  "TxnID",
                  {"T-11", "T-12", "T-13"}},
        QueryCase{"CustomerAndDateTogether",
                  "Invoice",
                  "<TxnDateRangeFilter><ToTxnDate>2025-02-01</ToTxnDate></TxnDateRangeFilter>"
                  "<EntityFilter><FullName>Smith</FullName></EntityFilter>",
                  "TxnID",
                  {"T-12"}},
        QueryCase{"OneTxnID", "Invoice", "<TxnID>T-12</TxnID>", "RefNumber", {"1001"}},
        QueryCase{"RecordsWithoutFullName", "PaymentMethod", "<FullName>cash</FullName>", "ListID", {"L-9"}},
        QueryCase{"ListThatTheBooksLack", "SalesTaxCode", "", "ListID", {}},
        QueryCase{"NotPaidOnly", "Invoice", "<PaidStatus>NotPaidOnly</PaidStatus>", "RefNumber", {"1002", "1001"}},
        QueryCase{"PaidOnly", "Invoice", "<PaidStatus>PaidOnly</PaidStatus>", "RefNumber", {"1000"}},
        QueryCase{"CustomerById",
                  "Invoice",
                  "<EntityFilter><ListID>L-6</ListID></EntityFilter>",
                  "RefNumber",
                  {"1002", "1001"}},
        QueryCase{"CustomerWithChildren",
                  "Invoice",
                  "<EntityFilter><ListIDWithChildren>L-6</ListIDWithChildren></EntityFilter>",
                  "RefNumber",
                  {"1002", "1001", "1000"}},
        QueryCase{"OpenInvoicesOfACustomerWithChildren",
                  "Invoice",
                  "<EntityFilter><ListIDWithChildren>L-6</ListIDWithChildren></EntityFilter>"
                  "<PaidStatus>NotPaidOnly</PaidStatus>",
                  "RefNumber",
                  {"1002", "1001"}},
        QueryCase{"CustomerWithSuchANameOnly",
                  "Invoice",
                  "<EntityFilter><ListIDWithChildren>L-8</ListIDWithChildren></EntityFilter>",
                  "RefNumber",
                  {}},
        QueryCase{"TxnDateRange",
                  "Invoice",
                  "<TxnDateRangeFilter><FromTxnDate>2025-02-01</FromTxnDate><ToTxnDate>2025-02-01</ToTxnDate>"
                  "</TxnDateRangeFilter>",
                  "RefNumber",
                  {"1001"}},
        QueryCase{"TxnDateFromOnly",
                  "Invoice",
                  "<TxnDateRangeFilter><FromTxnDate>2025-02-02</FromTxnDate></TxnDateRangeFilter>",
                  "RefNumber",
                  {"1002"}},
        QueryCase{"CustomerByName",
                  "ReceivePayment",
                  "<EntityFilter><FullName>SMITH:kitchen</FullName></EntityFilter>",
                  "TotalAmount",
                  {"30.00"}},
        QueryCase{"CustomerByNameWithChildren",
                  "ReceivePayment",
                  "<EntityFilter><FullNameWithChildren>smith</FullNameWithChildren></EntityFilter>",
                  "TotalAmount",
                  {"30.00"}},
        QueryCase{"NobodyForAnEmptyEntityFilter", "Invoice", "<EntityFilter/>", "RefNumber", {}},
        QueryCase{"SeveralRefNumbersWithALimit",
                  "Invoice",
                  "<RefNumber>1001</RefNumber><RefNumber>1002</RefNumber><MaxReturned>1</MaxReturned>",
                  "TxnID",
                  {"T-11"}},
        QueryCase{"RefNumber", "Invoice", "<RefNumber>1001</RefNumber>", "TxnID", {"T-12"}}),
    [](const auto& test) { return test.param.name; });

// A family is a customer with its jobs, and nobody else whose name begins alike.
TEST(EntityFilter, WithChildrenTakesTheFamilyAndNobodyWithASimilarName) {
    const auto books = SampleBooks();
    for (const std::string name : {"Smith;", "Smith/", "Smith 2", "Smith;Kitchen", "Smit"}) {
        ASSERT_EQ(StatusCode(SendOne(
                      *books, "<CustomerAddRq><CustomerAdd><Name>" + name + "</Name></CustomerAdd></CustomerAddRq>")),
                  "0");
        ASSERT_EQ(StatusCode(SendOne(*books, "<ReceivePaymentAddRq><ReceivePaymentAdd><CustomerRef><FullName>" + name +
                                                 "</FullName></CustomerRef><TotalAmount>1</TotalAmount>"
                                                 "</ReceivePaymentAdd></ReceivePaymentAddRq>")),
                  "0");
    }
    for (const std::string filter :
         {"<FullNameWithChildren>smith</FullNameWithChildren>", "<ListIDWithChildren>L-6</ListIDWithChildren>"}) {
        const Element found = SendOne(
            *books, "<ReceivePaymentQueryRq><EntityFilter>" + filter + "</EntityFilter></ReceivePaymentQueryRq>");
        EXPECT_EQ(Texts(found, "TxnID"), std::vector<std::string>{"T-17"}) << filter;
    }
}

TEST(IncludeRetElement, LeavesOnlyTheNamedFieldsInTheirOrder) {
    const auto books = SampleBooks();
    const Element response =
        SendOne(*books,
                "<AccountQueryRq><ListID>L-1</ListID><IncludeRetElement>Balance</IncludeRetElement>"
                "<IncludeRetElement>FullName</IncludeRetElement><IncludeRetElement>Nothing</IncludeRetElement>"
                "</AccountQueryRq>");
    ASSERT_EQ(response.children.size(), 1U);
    EXPECT_EQ(CompactXml(response.children.front()),
              "<AccountRet><FullName>Checking</FullName><Balance>100.00</Balance></AccountRet>");
}

TEST(Query, ForARecordThatIsNotThereSaysSoAndGivesTheOthers) {
    const auto books = SampleBooks();
    const Element response =
        SendOne(*books, "<AccountQueryRq><FullName>Checking</FullName><FullName>Nowhere</FullName></AccountQueryRq>");
    EXPECT_EQ(StatusCode(response), "2050");
    EXPECT_EQ(*FindAttribute(response, "statusSeverity"), "Warn");
    EXPECT_EQ(StatusMessage(response), "There is no account with the FullName \"Nowhere\".");
    EXPECT_EQ(Texts(response, "ListID"), std::vector<std::string>{"L-1"});
}

TEST(Query, ForARecordThatAnotherFilterHidesFindsNothingAndIsNoMistake) {
    const auto books = SampleBooks();
    const Element response = SendOne(
        *books,
        "<AccountQueryRq><FullName>Old Bank</FullName><ActiveStatus>ActiveOnly</ActiveStatus></AccountQueryRq>");
    EXPECT_EQ(StatusCode(response), "0");
    EXPECT_TRUE(response.children.empty());
}

}  // namespace
}  // namespace paylodge::refhost
