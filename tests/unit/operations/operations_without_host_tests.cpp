// Operations on a machine without the host's utility library: requests are sent, and no response can be read.

#include <gtest/gtest.h>

#include "tests/support/hresult.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

using ::testing::HasSubstr;
using ::testing::SizeIs;

class WithoutUtilities : public OperationTest {
  protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(::SetEnvironmentVariableW(L"PATH", L""));
        ASSERT_EQ(nullptr, ::GetModuleHandleW(L"LHUtilities.dll"));
    }
};

TEST_F(WithoutUtilities, BatchIsSentUncheckedAndWithoutPreparations) {
    const std::wstring batch =
        L"<CreditMemoAddRq><CreditMemoAdd><Memo>Visa</Memo></CreditMemoAdd></CreditMemoAddRq><InvoiceAddRq/>";
    EXPECT_HRESULT(S_OK, Ask(object_, &CPaylodge::CreateTxns, batch, VARIANT_FALSE).code);
    EXPECT_THAT(OnlySent(), HasSubstr(std::string(batch.begin(), batch.end())));
}

TEST_F(WithoutUtilities, BatchHasAnEmptySummaryAndAFullResponse) {
    const std::wstring response = ResponseDocument(L"<CheckAddRs statusCode='0'/>");
    RespondExactly(response);
    EXPECT_EQ((Result{S_OK, L""}), Ask(object_, &CPaylodge::CreateTxns, L"<CheckAddRq/>", VARIANT_FALSE));
    RespondExactly(response);
    EXPECT_EQ((Result{S_OK, response}), Ask(object_, &CPaylodge::CreateTxns, L"<CheckAddRq/>", VARIANT_TRUE));
}

TEST_F(WithoutUtilities, AccountListsAreEmptyWithTheCodeOfTheSend) {
    for (const auto list :
         {&CPaylodge::GetAccounts, &CPaylodge::GetAccountsForMultipleTypes, &CPaylodge::GetBalanceForAccountType}) {
        Respond(L"<AccountQueryRs><AccountRet><FullName>Checking</FullName></AccountRet></AccountQueryRs>");
        EXPECT_EQ((Result{S_OK, L""}), Ask(object_, list, L"Bank"));
        host_.answers.push_back({.result = S_FALSE, .response = L""});
        EXPECT_EQ((Result{S_FALSE, L""}), Ask(object_, list, L"Bank"));
        host_.answers.push_back({.result = kHostFailure});
        EXPECT_EQ(Result{kHostFailure}, Ask(object_, list, L"Bank"));
    }
}

TEST_F(WithoutUtilities, AccountIsCreatedButNotConfirmed) {
    Respond(L"<AccountAddRs statusCode='0'/>");
    EXPECT_EQ(Result{E_FAIL}, Do(object_, &CPaylodge::CreateAccount, L"Tips", L"Income", L""));
    EXPECT_THAT(host_.requests, SizeIs(1));
}

TEST_F(WithoutUtilities, AccountCannotBeSwitched) {
    Respond(
        L"<AccountQueryRs><AccountRet><ListID>1</ListID><EditSequence>2</EditSequence></AccountRet></AccountQueryRs>");
    EXPECT_EQ(Result{E_FAIL}, Do(object_, &CPaylodge::ActivateOrDeactivateAccount, L"Tips", VARIANT_TRUE));
    EXPECT_THAT(host_.requests, SizeIs(1));
}

}  // namespace
}  // namespace paylodge::test
