#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "tests/support/hresult.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

class GetAccounts : public OperationTest {};
class GetAccountsForMultipleTypes : public OperationTest {};
class GetBalanceForAccountType : public OperationTest {};
class CreateAccount : public OperationTest {};

// A query for active accounts with these further elements, which are names and texts in XML.
[[nodiscard]] std::string ActiveAccountQuery(const std::vector<std::pair<std::string, std::string>>& elements) {
    std::string lines;
    for (const auto& [name, text] : elements) {
        lines += "            <" + name + ">" + text + "</" + name + ">\n";
    }
    return RequestDocument(R"(
        <AccountQueryRq requestID="requestID_N">
            <ActiveStatus>ActiveOnly</ActiveStatus>
)" + lines + R"(        </AccountQueryRq>
)");
}

// Records beside which other nodes stand, elements in another order, and a namesake one level deeper.
constexpr const wchar_t* kAccounts =
    LR"(
    <AccountQueryRs requestID="1" statusCode="0" statusSeverity="Info" statusMessage="Status OK">
        <AccountRet>
            <ListID>80000001-1</ListID>
            <FullName>Checking &amp; &lt;Savings&gt;</FullName>
            <AccountType>Bank</AccountType>
            <BankNumber>021</BankNumber>
            <Balance>12.50</Balance>
            <AccountNumber>1000</AccountNumber>
        </AccountRet>
        <AccountRet>
            <ParentRef><FullName>Parent</FullName><ListID>P</ListID></ParentRef>
            <Balance>-3.00</Balance>
            <FullName>B&#233;nk</FullName>
        </AccountRet>
    </AccountQueryRs>)";

TEST_F(GetAccounts, AsksForActiveAccountsOfTheType) {
    EXPECT_HRESULT(S_OK, Ask(object_, &CPaylodge::GetAccounts, L"Bank").code);
    EXPECT_EQ(ActiveAccountQuery({{"AccountType", "Bank"}}), OnlySent());
}

TEST_F(GetAccounts, AsksForAllTypesWithoutAType) {
    for (const wchar_t* type : {static_cast<const wchar_t*>(nullptr), L""}) {
        host_.requests.clear();
        EXPECT_HRESULT(S_OK, Ask(object_, &CPaylodge::GetAccounts, type).code);
        EXPECT_EQ(ActiveAccountQuery({}), OnlySent());
    }
}

TEST_F(GetAccounts, EscapesTheTypeAndChecksNothing) {
    EXPECT_HRESULT(S_OK, Ask(object_, &CPaylodge::GetAccounts, L" <\"B&'>, \u00e9\u4e2d ").code);
    EXPECT_EQ(ActiveAccountQuery({{"AccountType", " &lt;&quot;B&amp;&apos;&gt;, \xE9? "}}), OnlySent());
}

TEST_F(GetAccounts, ListsTheFullNamesOnALineEach) {
    Respond(kAccounts);
    EXPECT_EQ((Result{S_OK,
                      L"<AccountName>Checking &amp; &lt;Savings&gt;</AccountName>\r\n"
                      L"<AccountName>B\u00e9nk</AccountName>\r\n"}),
              Ask(object_, &CPaylodge::GetAccounts, L"Bank"));
}

TEST_F(GetAccounts, LeavesOutRecordsWithoutAFullName) {
    Respond(
        L"<AccountQueryRs><AccountRet><Name>n</Name></AccountRet><AccountRet><FullName/></AccountRet>"
        L"<AccountRet/><AccountRet><FullName>x</FullName></AccountRet></AccountQueryRs>");
    EXPECT_EQ((Result{S_OK, L"<AccountName>x</AccountName>\r\n"}), Ask(object_, &CPaylodge::GetAccounts, L""));
}

TEST_F(GetAccounts, PassesOverCommentsAndTextBetweenRecords) {
    Respond(
        L"<AccountQueryRs>stray<!-- <FullName>no</FullName> --><AccountRet><!-- c -->t<FullName>x<!-- c --></FullName>"
        L"</AccountRet><?pi FullName?><![CDATA[text]]></AccountQueryRs>");
    EXPECT_EQ((Result{S_OK, L"<AccountName>x</AccountName>\r\n"}), Ask(object_, &CPaylodge::GetAccounts, L""));
}

TEST_F(GetAccounts, TakesTheFirstFullNameOfARecordWhateverTheRecordIsCalled) {
    Respond(L"<AccountQueryRs><Other><FullName>a</FullName><FullName>b</FullName></Other></AccountQueryRs>");
    EXPECT_EQ((Result{S_OK, L"<AccountName>a</AccountName>\r\n"}), Ask(object_, &CPaylodge::GetAccounts, L""));
}

TEST_F(GetAccounts, LooksIntoTheFirstQueryResponseOnly) {
    Respond(
        L"<Deeper><AccountQueryRs><R><FullName>a</FullName></R></AccountQueryRs></Deeper>"
        L"<AccountQueryRs><R><FullName>b</FullName></R></AccountQueryRs>");
    EXPECT_EQ((Result{S_OK, L"<AccountName>a</AccountName>\r\n"}), Ask(object_, &CPaylodge::GetAccounts, L""));
}

TEST_F(GetAccounts, DoesNotLookAtTheStatus) {
    Respond(LR"(<AccountQueryRs statusCode="500"><R><FullName>a</FullName></R></AccountQueryRs>)");
    EXPECT_EQ((Result{S_OK, L"<AccountName>a</AccountName>\r\n"}), Ask(object_, &CPaylodge::GetAccounts, L""));
}

TEST_F(GetAccounts, ReplacesCharactersOutsideTheCodePage) {
    Respond(L"<AccountQueryRs><R><FullName>\u00e9\u20ac\u4e2d</FullName></R></AccountQueryRs>");
    EXPECT_EQ((Result{S_OK, L"<AccountName>\u00e9\u20ac?</AccountName>\r\n"}),
              Ask(object_, &CPaylodge::GetAccounts, L""));
}

TEST_F(GetAccountsForMultipleTypes, AsksForEachTypeAndForThreeElements) {
    EXPECT_HRESULT(S_OK, Ask(object_, &CPaylodge::GetAccountsForMultipleTypes, L"Bank, CreditCard").code);
    EXPECT_EQ(ActiveAccountQuery({{"AccountType", "Bank"},
                                  {"AccountType", "CreditCard"},
                                  {"IncludeRetElement", "FullName"},
                                  {"IncludeRetElement", "ListID"},
                                  {"IncludeRetElement", "AccountType"}}),
              OnlySent());
}

TEST_F(GetAccountsForMultipleTypes, AsksForAllTypesWithoutAType) {
    for (const wchar_t* types : {static_cast<const wchar_t*>(nullptr), L"", L",,,", L" , "}) {
        host_.requests.clear();
        EXPECT_HRESULT(S_OK, Ask(object_, &CPaylodge::GetAccountsForMultipleTypes, types).code);
        EXPECT_EQ(ActiveAccountQuery({{"IncludeRetElement", "FullName"},
                                      {"IncludeRetElement", "ListID"},
                                      {"IncludeRetElement", "AccountType"}}),
                  OnlySent());
    }
}

TEST_F(GetAccountsForMultipleTypes, ReturnsNameTypeAndListIDOfEachRecord) {
    Respond(kAccounts);
    EXPECT_EQ((Result{S_OK, Lines(std::wstring_view(LR"(
<AccountQueryRs>
    <AccountRet>
        <AccountName>Checking &amp; &lt;Savings&gt;</AccountName>
        <AccountType>Bank</AccountType>
        <ListID>80000001-1</ListID>
    </AccountRet>
    <AccountRet>
        <AccountName>B)"
                                                    L"\u00e9"
                                                    LR"(nk</AccountName>
    </AccountRet>
</AccountQueryRs>
)"))}),
              Ask(object_, &CPaylodge::GetAccountsForMultipleTypes, L"Bank"));
}

TEST_F(GetAccountsForMultipleTypes, ReturnsAnEmptyListForAnEmptyQueryResponse) {
    Respond(LR"(<AccountQueryRs statusCode="1"/>)");
    EXPECT_EQ((Result{S_OK, L"<AccountQueryRs>\r\n</AccountQueryRs>\r\n"}),
              Ask(object_, &CPaylodge::GetAccountsForMultipleTypes, L"Bank"));
}

TEST_F(GetAccountsForMultipleTypes, ReturnsAnEmptyRecordForARecordWithoutTheElements) {
    Respond(L"<AccountQueryRs><AccountRet/></AccountQueryRs>");
    EXPECT_EQ((Result{S_OK, L"<AccountQueryRs>\r\n    <AccountRet>\r\n    </AccountRet>\r\n</AccountQueryRs>\r\n"}),
              Ask(object_, &CPaylodge::GetAccountsForMultipleTypes, L"Bank"));
}

TEST_F(GetAccountsForMultipleTypes, CountsEveryNodeAsARecord) {
    Respond(L"<AccountQueryRs><!-- c -->text<A><FullName>x</FullName></A></AccountQueryRs>");
    EXPECT_EQ((Result{S_OK, Lines(std::wstring_view(LR"(
<AccountQueryRs>
    <AccountRet>
    </AccountRet>
    <AccountRet>
    </AccountRet>
    <AccountRet>
        <AccountName>x</AccountName>
    </AccountRet>
</AccountQueryRs>
)"))}),
              Ask(object_, &CPaylodge::GetAccountsForMultipleTypes, L"Bank"));
}

TEST_F(GetBalanceForAccountType, AsksForNameAndBalance) {
    EXPECT_HRESULT(S_OK, Ask(object_, &CPaylodge::GetBalanceForAccountType, L"CreditCard").code);
    EXPECT_EQ(ActiveAccountQuery(
                  {{"AccountType", "CreditCard"}, {"IncludeRetElement", "FullName"}, {"IncludeRetElement", "Balance"}}),
              OnlySent());
}

TEST_F(GetBalanceForAccountType, AsksForBothNumbersOfBankAccountsInAnyLetterCase) {
    for (const std::string type : {"bank", "BANK", "Bank"}) {
        host_.requests.clear();
        EXPECT_HRESULT(S_OK,
                       Ask(object_, &CPaylodge::GetBalanceForAccountType, std::wstring(type.begin(), type.end())).code);
        EXPECT_EQ(ActiveAccountQuery({{"AccountType", type},
                                      {"IncludeRetElement", "FullName"},
                                      {"IncludeRetElement", "Balance"},
                                      {"IncludeRetElement", "AccountNumber"},
                                      {"IncludeRetElement", "BankNumber"}}),
                  OnlySent());
    }
}

TEST_F(GetBalanceForAccountType, AsksForAllTypesWithoutAType) {
    EXPECT_HRESULT(S_OK, Ask(object_, &CPaylodge::GetBalanceForAccountType, nullptr).code);
    EXPECT_EQ(ActiveAccountQuery({{"IncludeRetElement", "FullName"}, {"IncludeRetElement", "Balance"}}), OnlySent());
}

TEST_F(GetBalanceForAccountType, ReturnsNameBalanceAndNumbersOfEachRecord) {
    Respond(kAccounts);
    EXPECT_EQ((Result{S_OK, Lines(std::wstring_view(LR"(
<AccountQueryRs>
    <AccountRet>
        <AccountName>Checking &amp; &lt;Savings&gt;</AccountName>
        <Balance>12.50</Balance>
        <BankNumber>021</BankNumber>
        <AccountNumber>1000</AccountNumber>
    </AccountRet>
    <AccountRet>
        <AccountName>B)"
                                                    L"\u00e9"
                                                    LR"(nk</AccountName>
        <Balance>-3.00</Balance>
    </AccountRet>
</AccountQueryRs>
)"))}),
              Ask(object_, &CPaylodge::GetBalanceForAccountType, L"CreditCard"));
}

TEST_F(CreateAccount, SendsNameTypeAndNumber) {
    EXPECT_EQ(Result{S_OK}, Do(object_, &CPaylodge::CreateAccount, L"Tips & <more>", L"Income", L"0012"));
    EXPECT_EQ(RequestDocument(R"(
        <AccountAddRq requestID="requestID_N">
            <AccountAdd>
                <Name>Tips &amp; &lt;more&gt;</Name>
                <AccountType>Income</AccountType>
                <BankNumber>0012</BankNumber>
            </AccountAdd>
        </AccountAddRq>
)"),
              OnlySent());
}

TEST_F(CreateAccount, LeavesOutAnEmptyNumber) {
    EXPECT_EQ(Result{S_OK}, Do(object_, &CPaylodge::CreateAccount, L"Tips", L"Income", L""));
    EXPECT_EQ(RequestDocument(R"(
        <AccountAddRq requestID="requestID_N">
            <AccountAdd>
                <Name>Tips</Name>
                <AccountType>Income</AccountType>
            </AccountAdd>
        </AccountAddRq>
)"),
              OnlySent());
}

TEST_F(CreateAccount, SendsAnEmptyAccountWithoutArguments) {
    EXPECT_EQ(Result{S_OK}, Do(object_, &CPaylodge::CreateAccount, nullptr, nullptr, nullptr));
    EXPECT_EQ(RequestDocument(R"(
        <AccountAddRq requestID="requestID_N">
            <AccountAdd>
            </AccountAdd>
        </AccountAddRq>
)"),
              OnlySent());
}

struct Judged {
    const wchar_t* response;
    HRESULT code;
};

TEST_F(CreateAccount, IsJudgedByTheStatusOfTheFirstResponse) {
    for (const auto& [response, code] :
         {Judged{LR"(<AccountAddRs statusCode="0"/>)", S_OK}, Judged{LR"(<AccountAddRs statusCode="3100"/>)", S_OK},
          Judged{LR"(<AccountAddRs statusCode="3180"/>)", E_FAIL},
          Judged{LR"(<AccountAddRs statusCode="00"/>)", E_FAIL}, Judged{LR"(<AccountAddRs statusCode=" 0"/>)", E_FAIL},
          Judged{LR"(<AccountAddRs statusCode=""/>)", E_FAIL}, Judged{L"<AccountAddRs/>", E_FAIL},
          Judged{LR"(<AccountAddRs statusCode="1"/><AccountAddRs statusCode="0"/>)", E_FAIL}}) {
        Respond(response);
        EXPECT_EQ(Result{code}, Do(object_, &CPaylodge::CreateAccount, L"n", L"t", L"")) << response;
    }
}

TEST_F(CreateAccount, SucceedsWithoutTheExpectedElement) {
    Respond(LR"(<AccountModRs statusCode="1"/>)");
    // The lookup's own HRESULT of success.
    EXPECT_TRUE(SUCCEEDED(Do(object_, &CPaylodge::CreateAccount, L"n", L"t", L"").code));
}

TEST_F(CreateAccount, FailsWhenTheResponseDoesNotLoad) {
    RespondExactly(L"no document");
    EXPECT_EQ(Result{E_FAIL}, Do(object_, &CPaylodge::CreateAccount, L"n", L"t", L""));
}

[[nodiscard]] std::wstring AccountThatIs(const std::wstring& active) {
    return L"<AccountQueryRs statusCode=\"0\"><AccountRet><EditSequence>17</EditSequence><IsActive>" + active +
           L"</IsActive><ListID>8-1</ListID></AccountRet></AccountQueryRs>";
}

[[nodiscard]] std::string ModificationTo(const std::string& active) {
    return RequestDocument(R"(
        <AccountModRq requestID="requestID_N">
            <AccountMod>
                <ListID>8-1</ListID>
                <EditSequence>17</EditSequence>
                <IsActive>)" +
                           active + R"(</IsActive>
            </AccountMod>
        </AccountModRq>
)");
}

const std::string kAccountByName = RequestDocument(R"(
        <AccountQueryRq requestID="requestID_N">
            <FullName>Tips &amp; more</FullName>
        </AccountQueryRq>
)");

constexpr const wchar_t* kModified = LR"(<AccountModRs statusCode="0"/>)";

class ActivateOrDeactivateAccount : public OperationTest {
  protected:
    [[nodiscard]] Result Switch(VARIANT_BOOL active) {
        return Do(object_, &CPaylodge::ActivateOrDeactivateAccount, L"Tips & more", active);
    }
};

TEST_F(ActivateOrDeactivateAccount, QueriesTheAccountAndModifiesIt) {
    Respond(AccountThatIs(L"false"));
    Respond(kModified);
    EXPECT_EQ(Result{S_OK}, Switch(VARIANT_TRUE));
    EXPECT_THAT(Sent(), ElementsAre(kAccountByName, ModificationTo("true")));
}

TEST_F(ActivateOrDeactivateAccount, EveryValueButMinusOneDeactivates) {
    for (const VARIANT_BOOL value : {VARIANT_BOOL{0}, VARIANT_BOOL{1}, VARIANT_BOOL{-2}, VARIANT_BOOL{0xFF}}) {
        host_.requests.clear();
        Respond(AccountThatIs(L"true"));
        Respond(kModified);
        EXPECT_EQ(Result{S_OK}, Switch(value)) << value;
        EXPECT_THAT(Sent(), ElementsAre(kAccountByName, ModificationTo("false"))) << value;
    }
}

TEST_F(ActivateOrDeactivateAccount, LeavesAnAccountInTheWantedStateAlone) {
    Respond(AccountThatIs(L"true"));
    EXPECT_EQ(Result{S_OK}, Switch(VARIANT_TRUE));
    Respond(AccountThatIs(L"false"));
    EXPECT_EQ(Result{S_OK}, Switch(VARIANT_FALSE));
    EXPECT_THAT(Sent(), ElementsAre(kAccountByName, kAccountByName));
}

TEST_F(ActivateOrDeactivateAccount, ComparesTheStateExactly) {
    for (const wchar_t* state : {L"True", L"1", L"", L"truetrue"}) {
        host_.requests.clear();
        Respond(AccountThatIs(state));
        Respond(kModified);
        EXPECT_EQ(Result{S_OK}, Switch(VARIANT_TRUE)) << state;
        EXPECT_THAT(Sent(), SizeIs(2)) << state;
    }
}

TEST_F(ActivateOrDeactivateAccount, ModifiesAnAccountThatHasNoState) {
    Respond(L"<AccountQueryRs><A><ListID>8-1</ListID><EditSequence>17</EditSequence></A></AccountQueryRs>");
    Respond(kModified);
    EXPECT_EQ(Result{S_OK}, Switch(VARIANT_FALSE));
    EXPECT_THAT(Sent(), ElementsAre(kAccountByName, ModificationTo("false")));
}

TEST_F(ActivateOrDeactivateAccount, FailsWithoutListIDOrEditSequence) {
    for (const wchar_t* response :
         {L"", L"<AccountQueryRs/>", L"<AccountQueryRs><A/></AccountQueryRs>",
          L"<AccountQueryRs><A><ListID>1</ListID><IsActive>true</IsActive></A></AccountQueryRs>",
          L"<AccountQueryRs><A><EditSequence>1</EditSequence><IsActive>true</IsActive></A></AccountQueryRs>",
          L"<AccountQueryRs><A><ListID/><EditSequence>1</EditSequence></A></AccountQueryRs>",
          L"<AccountQueryRs><A><ListID>1</ListID><EditSequence></EditSequence></A></AccountQueryRs>",
          // The first account counts, whatever comes after it.
          L"<AccountQueryRs><A/><A><ListID>1</ListID><EditSequence>1</EditSequence></A></AccountQueryRs>"}) {
        Respond(response);
        EXPECT_EQ(Result{E_FAIL}, Switch(VARIANT_TRUE)) << response;
    }
    EXPECT_THAT(Sent(), ::testing::Each(kAccountByName));
}

TEST_F(ActivateOrDeactivateAccount, FailsWhenTheQueryResponseDoesNotLoad) {
    RespondExactly(L"<LHXML>");
    EXPECT_EQ(Result{E_FAIL}, Switch(VARIANT_TRUE));
    EXPECT_THAT(Sent(), SizeIs(1));
}

TEST_F(ActivateOrDeactivateAccount, IsJudgedByTheModificationsStatusWithoutTolerance) {
    for (const auto& [response, code] : {Judged{LR"(<AccountModRs statusCode="3100"/>)", E_FAIL},
                                         Judged{LR"(<AccountModRs statusCode="3200"/>)", E_FAIL},
                                         Judged{L"<AccountModRs/>", E_FAIL}, Judged{kModified, S_OK}}) {
        Respond(AccountThatIs(L"false"));
        Respond(response);
        EXPECT_EQ(Result{code}, Switch(VARIANT_TRUE)) << response;
    }
    Respond(AccountThatIs(L"false"));
    RespondExactly(L"no document");
    EXPECT_EQ(Result{E_FAIL}, Switch(VARIANT_TRUE));
}

TEST_F(ActivateOrDeactivateAccount, SucceedsWithoutTheExpectedElement) {
    Respond(AccountThatIs(L"false"));
    Respond(LR"(<AccountAddRs statusCode="1"/>)");
    // The lookup's own HRESULT of success.
    EXPECT_TRUE(SUCCEEDED(Switch(VARIANT_TRUE).code));
    EXPECT_THAT(Sent(), ElementsAre(kAccountByName, ModificationTo("true")));
}

TEST_F(ActivateOrDeactivateAccount, ReturnsTheCodeOfAModificationThatCannotBeSent) {
    Respond(AccountThatIs(L"false"));
    host_.answers.push_back({.result = kHostFailure});
    EXPECT_EQ(Result{kHostFailure}, Switch(VARIANT_TRUE));
}

TEST_F(ActivateOrDeactivateAccount, SendsAnEmptyQueryWithoutAName) {
    EXPECT_EQ(Result{E_FAIL}, Do(object_, &CPaylodge::ActivateOrDeactivateAccount, nullptr, VARIANT_TRUE));
    EXPECT_EQ(RequestDocument(R"(
        <AccountQueryRq requestID="requestID_N">
        </AccountQueryRq>
)"),
              OnlySent());
}

}  // namespace
}  // namespace paylodge::test
