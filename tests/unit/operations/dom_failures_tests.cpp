// Every step of reading a document fails in turn: what cannot be read is never taken for what is not there.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/dom_faults.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;

class DomFailures : public OperationTest {
  protected:
    // Runs the operation once with each of its steps through the DOM failing, and shows what it returned to `check`.
    // How many steps there were.
    int FailEachStep(std::wstring_view response, const std::function<Result()>& run,
                     const std::function<void(const Result&)>& check) {
        for (int number = 1;; ++number) {
            SCOPED_TRACE("step " + std::to_string(number));
            host_.answers.clear();
            host_.requests.clear();
            for (int request = 0; request < 8; ++request) {
                Respond(response);
            }
            Result result{S_OK};
            bool has_failed = false;
            {
                const DomFaults faults(number);
                result = run();
                has_failed = faults.HasFailed();
            }
            if (!has_failed) {
                return number - 1;
            }
            check(result);
        }
    }
};

struct Reading {
    const char* name;
    std::wstring_view response;
    Result (*run)(CPaylodge& object);
    std::wstring_view whole_result;
};

constexpr std::wstring_view kAccounts =
    L"<AccountQueryRs "
    L"statusCode='0'><AccountRet><ListID>1</ListID><FullName>A</FullName><AccountType>Bank</AccountType>"
    L"<Balance>1.00</Balance></AccountRet><AccountRet><ListID>2</ListID><FullName>B</FullName></AccountRet>"
    L"</AccountQueryRs>";
constexpr std::wstring_view kMethods =
    L"<PaymentMethodQueryRs><PaymentMethodRet><Name>Cash</Name></PaymentMethodRet><PaymentMethodRet><Name>Visa</Name>"
    L"</PaymentMethodRet></PaymentMethodQueryRs>";
constexpr std::wstring_view kCustomers =
    L"<CustomerQueryRs><CustomerRet><ListID>7</ListID><Name>Other</Name></CustomerRet><CustomerRet><ListID>8</ListID>"
    L"<Name>Smith</Name></CustomerRet></CustomerQueryRs>";

const Reading kReadings[] = {
    {"GetAccounts", kAccounts, [](CPaylodge& object) { return Ask(object, &CPaylodge::GetAccounts, L"Bank"); },
     L"<AccountName>A</AccountName>\r\n<AccountName>B</AccountName>\r\n"},
    {"GetAccountsForMultipleTypes", kAccounts,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::GetAccountsForMultipleTypes, L"Bank"); },
     L"<AccountQueryRs>\r\n    <AccountRet>\r\n        <AccountName>A</AccountName>\r\n        "
     L"<AccountType>Bank</AccountType>\r\n        <ListID>1</ListID>\r\n    </AccountRet>\r\n    <AccountRet>\r\n      "
     L"  "
     L"<AccountName>B</AccountName>\r\n        <ListID>2</ListID>\r\n    </AccountRet>\r\n</AccountQueryRs>\r\n"},
    {"GetBalanceForAccountType", kAccounts,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::GetBalanceForAccountType, L"Income"); },
     L"<AccountQueryRs>\r\n    <AccountRet>\r\n        <AccountName>A</AccountName>\r\n        "
     L"<Balance>1.00</Balance>\r\n    </AccountRet>\r\n    <AccountRet>\r\n        <AccountName>B</AccountName>\r\n    "
     L"</AccountRet>\r\n</AccountQueryRs>\r\n"},
    {"GetPaymentMethods", kMethods, [](CPaylodge& object) { return Ask(object, &CPaylodge::GetPaymentMethods); },
     L"<PaymentMethods>\r\n    <PayMethName>Cash</PayMethName>\r\n    <PayMethName>Visa</PayMethName>\r\n"
     L"</PaymentMethods>\r\n"},
    {"GetCustomerIDForName", kCustomers,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::GetCustomerIDForName, L"smith"); }, L"8"},
    {"GetCustomerNameForID", kCustomers,
     [](CPaylodge& object) { return Ask(object, &CPaylodge::GetCustomerNameForID, L"7"); }, L"Other"},
};

void PrintTo(const Reading& reading, std::ostream* out) { *out << reading.name; }

class FailedReading : public DomFailures, public ::testing::WithParamInterface<Reading> {};

TEST_P(FailedReading, IsReturnedAndNoPartOfTheResultIs) {
    const Reading& reading = GetParam();
    Respond(reading.response);
    ASSERT_EQ((Result{S_OK, std::wstring(reading.whole_result)}), reading.run(object_));
    const int steps = FailEachStep(
        reading.response, [&] { return reading.run(object_); },
        [](const Result& result) { EXPECT_EQ((Result{DomFaults::kFailure, kUntouched}), result); });
    EXPECT_GT(steps, 8);
}

INSTANTIATE_TEST_SUITE_P(Of, FailedReading, ::testing::ValuesIn(kReadings), ::testing::PrintToStringParamName());

// An item's selection that fails counts as a missing element; a walk over the items that fails does not.
TEST_F(DomFailures, LeaveAnItemOutOrEndTheList) {
    const Result whole = {S_OK, L"<ItemName>A</ItemName>\r\n<ItemName>B</ItemName>\r\n"};
    const int steps = FailEachStep(
        L"<ItemQueryRs><ItemServiceRet><FullName>A</FullName></ItemServiceRet><ItemServiceRet><Name>B</Name>"
        L"</ItemServiceRet></ItemQueryRs>",
        [this] { return Ask(object_, &CPaylodge::GetItems); },
        [&](const Result& result) {
            const Result without_a = {S_OK, L"<ItemName>B</ItemName>\r\n"};
            const Result without_b = {S_OK, L"<ItemName>A</ItemName>\r\n"};
            const Result failure = {DomFaults::kFailure, kUntouched};
            EXPECT_THAT(result, AnyOf(whole, without_a, without_b, failure));
        });
    EXPECT_GT(steps, 8);
}

// An invoice that cannot be read enters neither the list nor the sum: it is never taken for one without a number.
TEST_F(DomFailures, LeaveAnInvoiceOutOrEndTheMatching) {
    const int steps = FailEachStep(
        L"<InvoiceQueryRs><InvoiceRet><BalanceRemaining>40.00</BalanceRemaining><RefNumber>1001</RefNumber></"
        L"InvoiceRet>"
        L"<InvoiceRet><BalanceRemaining>60.00</BalanceRemaining><RefNumber>1002</RefNumber></InvoiceRet></"
        L"InvoiceQueryRs>",
        [this] { return Ask(object_, &CPaylodge::GetInvoiceInfoForCustomerID, L"7", L"100.00"); },
        [](const Result& result) {
            EXPECT_THAT(result, AnyOf(Result{S_OK, L""}, Result{DomFaults::kFailure, kUntouched}));
        });
    EXPECT_GT(steps, 8);
}

TEST_F(DomFailures, AreNotTakenForANontaxableItem) {
    const int steps = FailEachStep(
        L"<ItemQueryRs><ItemServiceRet><SalesTaxCodeRef><ListID>9</ListID></SalesTaxCodeRef></ItemServiceRet></"
        L"ItemQueryRs>"
        L"<SalesTaxCodeQueryRs><SalesTaxCodeRet><IsTaxable>true</IsTaxable></SalesTaxCodeRet></SalesTaxCodeQueryRs>",
        [this] { return AskWhether(object_, &CPaylodge::IsTaxableItem, L"A"); },
        [this](const Result& result) {
            // The second query's failures mean not taxable.
            const bool is_second = host_.requests.size() == 2;
            EXPECT_EQ(is_second ? (Result{S_OK, kFalse}) : (Result{DomFaults::kFailure, kUntouched}), result);
        });
    EXPECT_GT(steps, 8);
}

TEST_F(DomFailures, NeverTurnARefusalIntoASuccess) {
    constexpr std::wstring_view kRefused = L"<X/><DepositAddRs statusCode='3000' statusMessage='no'/>";
    const int steps = FailEachStep(
        kRefused, [this] { return Ask(object_, &CPaylodge::TransferFunds, L"A", L"B", L"1", L""); },
        [](const Result& result) {
            EXPECT_THAT(result.code, AnyOf(E_FAIL, DomFaults::kFailure));
            EXPECT_THAT(result.text, HasSubstr(L"3000")) << "the response is returned all the same";
        });
    EXPECT_GT(steps, 4);
}

TEST_F(DomFailures, NeverTurnARefusedAccountIntoASuccess) {
    const int steps = FailEachStep(
        L"<AccountAddRs statusCode='3000'/>",
        [this] { return Do(object_, &CPaylodge::CreateAccount, L"A", L"Bank", L""); },
        [](const Result& result) { EXPECT_THAT(result.code, AnyOf(E_FAIL, DomFaults::kFailure)); });
    EXPECT_GT(steps, 4);
}

TEST_F(DomFailures, EndAnActivation) {
    const int steps = FailEachStep(
        L"<AccountQueryRs><AccountRet><ListID>1</ListID><EditSequence>2</EditSequence><IsActive>false</IsActive>"
        L"</AccountRet></AccountQueryRs><AccountModRs statusCode='3200'/>",
        [this] { return Do(object_, &CPaylodge::ActivateOrDeactivateAccount, L"A", VARIANT_TRUE); },
        [](const Result& result) { EXPECT_THAT(result.code, AnyOf(E_FAIL, DomFaults::kFailure)); });
    EXPECT_GT(steps, 8);
}

// A batch that cannot be looked through is not sent; once it was, it is reported as recorded, with no summary rather
// than a part of one.
TEST_F(DomFailures, RefuseABatchBeforeItIsSentAndNotAfterwards) {
    const Result whole = [this] {
        Respond(L"<CheckAddRs statusCode='0'><CheckRet><TxnID>1</TxnID></CheckRet></CheckAddRs>");
        return Ask(object_, &CPaylodge::CreateTxns, L"<CheckAddRq/>", VARIANT_FALSE);
    }();
    ASSERT_THAT(whole.text, HasSubstr(L"<TxnID>1</TxnID>"));
    const int steps = FailEachStep(
        L"<CheckAddRs statusCode='0'><CheckRet><TxnID>1</TxnID></CheckRet></CheckAddRs>",
        [this] { return Ask(object_, &CPaylodge::CreateTxns, L"<CheckAddRq/>", VARIANT_FALSE); },
        [this](const Result& result) {
            const bool is_sent = !host_.requests.empty();
            EXPECT_EQ(is_sent ? (Result{S_OK, L""}) : (Result{E_FAIL, kUntouched}), result);
        });
    EXPECT_GT(steps, 8);
}

TEST_F(DomFailures, NeverLetAForbiddenRequestThrough) {
    const int steps = FailEachStep(
        L"", [this] { return Ask(object_, &CPaylodge::CreateTxns, L"<CheckAddRq/><InvoiceAddRq/>", VARIANT_FALSE); },
        [this](const Result& result) {
            EXPECT_EQ((Result{E_FAIL, kUntouched}), result);
            EXPECT_TRUE(host_.requests.empty());
        });
    EXPECT_GT(steps, 8);
}

}  // namespace
}  // namespace paylodge::test
