// What an operation holds at a time beside the document: at most two copies of the response text.
#include <gtest/gtest.h>

#include "tests/support/hresult.hpp"
#include "tests/support/peak_memory.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

constexpr int kRecords = 10'000;
constexpr size_t kMostCopies = 2;

[[nodiscard]] std::wstring Repeat(std::wstring_view text) {
    std::wstring result;
    result.reserve(text.size() * kRecords);
    for (int index = 0; index < kRecords; ++index) {
        result += text;
    }
    return result;
}

struct Operation {
    const char* name;
    std::wstring_view response_element;
    std::wstring_view record;
    HRESULT (*call)(CPaylodge& object, BSTR argument, BSTR* result);
    // One request of a batch; without one, the argument is short.
    std::wstring_view request = {};
};

constexpr std::wstring_view kAccount =
    L"<AccountRet><ListID>80000001</ListID><EditSequence>1</EditSequence><Name>Checking</Name>"
    L"<FullName>Bank:Checking</FullName><IsActive>true</IsActive><AccountType>Bank</AccountType>"
    L"<AccountNumber>1010</AccountNumber><BankNumber>5550001</BankNumber><Balance>1234.56</Balance></AccountRet>";
constexpr std::wstring_view kNamed =
    L"<ItemServiceRet><ListID>8000</ListID><EditSequence>1</EditSequence><Name>Deck Stain</Name>"
    L"<FullName>Paint:Deck Stain</FullName><IsActive>true</IsActive></ItemServiceRet>";
constexpr std::wstring_view kInvoice =
    L"<InvoiceRet><TxnID>1F2</TxnID><RefNumber>1001</RefNumber><BalanceRemaining>40.00</BalanceRemaining></InvoiceRet>";
constexpr std::wstring_view kSale =
    LR"(<SalesReceiptAddRs requestID="1" statusCode="0" statusSeverity="Info" statusMessage="Status OK">)"
    L"<SalesReceiptRet><TxnID>1F2</TxnID><TimeCreated>2026-11-21T10:00:00</TimeCreated><RefNumber>77</RefNumber>"
    L"<TotalAmount>12.50</TotalAmount><Memo>Visa</Memo></SalesReceiptRet></SalesReceiptAddRs>";
constexpr std::wstring_view kSaleRequest =
    LR"(<SalesReceiptAddRq requestID="1"><SalesReceiptAdd><Memo>Visa</Memo></SalesReceiptAdd></SalesReceiptAddRq>)";

const Operation kOperations[] = {
    {"GetAccounts", L"AccountQueryRs", kAccount,
     [](CPaylodge& object, BSTR argument, BSTR* result) { return object.GetAccounts(argument, result); }},
    {"GetAccountsForMultipleTypes", L"AccountQueryRs", kAccount,
     [](CPaylodge& object, BSTR argument, BSTR* result) {
         return object.GetAccountsForMultipleTypes(argument, result);
     }},
    {"GetBalanceForAccountType", L"AccountQueryRs", kAccount,
     [](CPaylodge& object, BSTR argument, BSTR* result) { return object.GetBalanceForAccountType(argument, result); }},
    {"GetItems", L"ItemQueryRs", kNamed, [](CPaylodge& object, BSTR, BSTR* result) { return object.GetItems(result); }},
    {"GetPaymentMethods", L"PaymentMethodQueryRs", kNamed,
     [](CPaylodge& object, BSTR, BSTR* result) { return object.GetPaymentMethods(result); }},
    {"GetCustomerIDForName", L"CustomerQueryRs", kNamed,
     [](CPaylodge& object, BSTR argument, BSTR* result) { return object.GetCustomerIDForName(argument, result); }},
    {"GetInvoiceInfoForCustomerID", L"InvoiceQueryRs", kInvoice,
     [](CPaylodge& object, BSTR argument, BSTR* result) {
         return object.GetInvoiceInfoForCustomerID(argument, Argument(L"99999.99"), result);
     }},
    {"ProcessLHRequest", L"AccountQueryRs", kAccount,
     [](CPaylodge& object, BSTR argument, BSTR* result) { return object.ProcessLHRequest(argument, result); }},
    {"SavePaymentTxn", L"AccountQueryRs", kAccount,
     [](CPaylodge& object, BSTR argument, BSTR* result) { return object.SavePaymentTxn(argument, result); }},
    {"CreateTxnsWithSummary",
     {},
     kSale,
     [](CPaylodge& object, BSTR argument, BSTR* result) { return object.CreateTxns(argument, VARIANT_FALSE, result); },
     kSaleRequest},
    {"CreateTxnsWithFullResponse",
     {},
     kSale,
     [](CPaylodge& object, BSTR argument, BSTR* result) { return object.CreateTxns(argument, VARIANT_TRUE, result); },
     kSaleRequest},
};

std::ostream& operator<<(std::ostream& stream, const Operation& operation) { return stream << operation.name; }

class MemoryOf : public OperationTest, public ::testing::WithParamInterface<Operation> {};

INSTANTIATE_TEST_SUITE_P(, MemoryOf, ::testing::ValuesIn(kOperations), [](const auto& row) { return row.param.name; });

[[nodiscard]] std::wstring MakeResponse(const Operation& operation) {
    const std::wstring element(operation.response_element);
    const std::wstring records = Repeat(operation.record);
    return ResponseDocument(
        element.empty() ? records : L"<" + element + LR"( statusCode="0">)" + records + L"</" + element + L">");
}

TEST_P(MemoryOf, IsAtMostTwoCopiesOfTheResponseText) {
    const std::wstring response = MakeResponse(GetParam());
    const Argument argument(GetParam().request.empty() ? std::wstring(L"Bank") : Repeat(GetParam().request));
    RespondExactly(response);
    StringSink result;
    const PeakMemory memory;
    EXPECT_HRESULT(S_OK, GetParam().call(object_, argument, result.Slot()));
    const size_t peak = memory.Bytes();
    EXPECT_NE(kUntouched, result.Show());
    const size_t copy = response.size() * sizeof(wchar_t);
    EXPECT_GT(peak, copy) << "the response has to have come through";
    // What the fake host has recorded is not the operation's.
    size_t recorded = 0;
    for (const std::wstring& request : host_.requests) {
        recorded += request.size() * sizeof(wchar_t);
    }
    EXPECT_LE(peak - recorded, kMostCopies * copy);
    RecordProperty("copies", std::to_string(static_cast<double>(peak - recorded) / static_cast<double>(copy)));
}

// Every heap allocation of an operation in turn.
TEST_P(MemoryOf, ThatCannotBeHadThrowsAndLeavesNothingBehind) {
    const Operation& operation = GetParam();
    const Argument argument(operation.request.empty() ? std::wstring_view(L"Bank") : operation.request);
    const std::wstring record(operation.record);
    const std::wstring element(operation.response_element);
    const std::wstring response = ResponseDocument(
        element.empty() ? record : L"<" + element + LR"( statusCode="0">)" + record + L"</" + element + L">");
    bool has_failed = true;
    int number = 1;
    for (; has_failed; ++number) {
        host_.answers.clear();
        // What the fake allocates while the system creates it must not fail: on x86, nothing is thrown past that.
        host_.outer_objects.clear();
        host_.outer_objects.reserve(1);
        RespondExactly(response);
        StringSink result;
        try {
            const FailingAllocation failing(number);
            static_cast<void>(operation.call(object_, argument, result.Slot()));
            has_failed = failing.HasFailed();
        } catch (const _com_error& error) {
            EXPECT_HRESULT(E_OUTOFMEMORY, error.Error());
        }
        EXPECT_EQ(0, host_.live_processors);
    }
    EXPECT_GT(number, 10) << "an operation has more allocations than these";
}

}  // namespace
}  // namespace paylodge::test
