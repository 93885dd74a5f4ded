#include <gtest/gtest.h>

#include "tests/support/fake_site.hpp"
#include "tests/support/hresult.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

class GetCustomerIDForName : public OperationTest {
  protected:
    template <class Name>
    [[nodiscard]] Result Find(const Name& name) {
        return Ask(object_, &CPaylodge::GetCustomerIDForName, name);
    }
};

class GetCustomerNameForID : public OperationTest {
  protected:
    [[nodiscard]] Result Find(const wchar_t* id) { return Ask(object_, &CPaylodge::GetCustomerNameForID, id); }
};

class GetInvoiceInfoForCustomerID : public OperationTest {
  protected:
    [[nodiscard]] Result Find(const wchar_t* amount) {
        return Ask(object_, &CPaylodge::GetInvoiceInfoForCustomerID, L"8-1", amount);
    }
};

struct Found {
    const wchar_t* name;
    const wchar_t* id;
};

constexpr const wchar_t* kSmiths =
    LR"(
    <CustomerQueryRs statusCode="0">
        <CustomerRet><ListID>1</ListID><Name>Smith Co</Name></CustomerRet>
        <CustomerRet><ListID>2</ListID><FullName>Smith</FullName></CustomerRet>
        <CustomerRet><Name>SMITH</Name><FullName>x</FullName><ListID>3</ListID></CustomerRet>
        <CustomerRet><ListID>4</ListID><Name>Smith</Name></CustomerRet>
    </CustomerQueryRs>)";

TEST_F(GetCustomerIDForName, AsksForActiveCustomersThatContainTheTrimmedName) {
    EXPECT_HRESULT(S_OK, Find(L"  Smith & Co  ").code);
    EXPECT_EQ(RequestDocument(R"(
        <CustomerQueryRq requestID="requestID_N">
            <ActiveStatus>ActiveOnly</ActiveStatus>
            <NameFilter>
                <MatchCriterion>Contains</MatchCriterion>
                <Name>Smith &amp; Co</Name>
            </NameFilter>
        </CustomerQueryRq>
)"),
              OnlySent());
}

TEST_F(GetCustomerIDForName, SendsAnEmptyNameToo) {
    for (const wchar_t* name : {L"   ", L"", static_cast<const wchar_t*>(nullptr)}) {
        host_.requests.clear();
        EXPECT_EQ((Result{S_OK, L""}), Find(name));
        EXPECT_EQ(RequestDocument(R"(
        <CustomerQueryRq requestID="requestID_N">
            <ActiveStatus>ActiveOnly</ActiveStatus>
            <NameFilter>
                <MatchCriterion>Contains</MatchCriterion>
            </NameFilter>
        </CustomerQueryRq>
)"),
                  OnlySent());
    }
}

TEST_F(GetCustomerIDForName, TrimsSpacesOnly) {
    Respond(L"<CustomerQueryRs/>");
    EXPECT_EQ((Result{S_OK, L""}), Find(L" \tSmith\u00a0 "));
    EXPECT_THAT(OnlySent(), ::testing::HasSubstr("<Name>\tSmith\xA0</Name>"));
}

TEST_F(GetCustomerIDForName, ReturnsTheFirstCustomerOfThisNameInAnyLetterCase) {
    for (const wchar_t* name : {L"Smith", L"smith", L"  SMITH  "}) {
        Respond(kSmiths);
        EXPECT_EQ((Result{S_OK, L"3"}), Find(name));
    }
}

TEST_F(GetCustomerIDForName, IsEmptyWhenNoNameIsEqual) {
    for (const wchar_t* name : {L"Smit", L"Smith C", L"Smith  Co", L"x"}) {
        Respond(kSmiths);
        EXPECT_EQ((Result{S_OK, L""}), Find(name));
    }
}

// The C library folds the letters of its locale, and that of the start has no others than A to Z.
TEST_F(GetCustomerIDForName, FoldsNoLettersAboveAscii) {
    for (const auto& [name, id] : {Found{L"M\u00dcLLER", L"7"}, Found{L"m\u00dcller", L"7"}, Found{L"m\u00fcller", L""},
                                   Found{L"Muller", L""}}) {
        Respond(L"<CustomerQueryRs><C><Name>M\u00dcLLER</Name><ListID>7</ListID></C></CustomerQueryRs>");
        EXPECT_EQ((Result{S_OK, id}), Find(name)) << name;
    }
}

TEST_F(GetCustomerIDForName, PassesOverWhatIsNoRecord) {
    Respond(
        L"<CustomerQueryRs>Smith<!-- Smith --><C/><C>Smith</C><C><Name>Smith</Name><!-- x --><ListID>5</ListID></C>"
        L"</CustomerQueryRs>");
    EXPECT_EQ((Result{S_OK, L"5"}), Find(L"Smith"));
}

TEST_F(GetCustomerIDForName, LooksOnAfterAnEqualNameWithoutListID) {
    Respond(L"<CustomerQueryRs><C><Name>Smith</Name></C><C><Name>smith</Name><ListID>6</ListID></C></CustomerQueryRs>");
    EXPECT_EQ((Result{S_OK, L"6"}), Find(L"Smith"));
}

TEST_F(GetCustomerIDForName, IsEmptyForAnEmptyListID) {
    Respond(
        L"<CustomerQueryRs><C><Name>Smith</Name><ListID/></C><C><Name>Smith</Name><ListID>6</ListID></C>"
        L"</CustomerQueryRs>");
    EXPECT_EQ((Result{S_OK, L""}), Find(L"Smith"));
}

TEST_F(GetCustomerIDForName, TakesChildElementsOnly) {
    Respond(L"<CustomerQueryRs><C><Deeper><Name>Smith</Name><ListID>1</ListID></Deeper></C></CustomerQueryRs>");
    EXPECT_EQ((Result{S_OK, L""}), Find(L"Smith"));
}

TEST_F(GetCustomerIDForName, MatchesAnEmptyNameWithAnEmptyElement) {
    Respond(L"<CustomerQueryRs><C><ListID>1</ListID></C><C><Name/><ListID>2</ListID></C></CustomerQueryRs>");
    EXPECT_EQ((Result{S_OK, L"2"}), Find(L" "));
}

// The customer asked for comes in the second list alone.
TEST_F(GetCustomerIDForName, LooksIntoTheFirstListOnly) {
    for (const wchar_t* first : {L"<CustomerQueryRs/>", L"<CustomerQueryRs><C><Name>x</Name></C></CustomerQueryRs>"}) {
        Respond(first + std::wstring(kSmiths));
        EXPECT_EQ((Result{S_OK, L""}), Find(L"Smith")) << first;
    }
}

TEST_F(GetCustomerIDForName, DoesNotLookAtTheStatus) {
    Respond(
        L"<CustomerQueryRs statusCode=\"500\" statusSeverity=\"Error\"><C><Name>Smith</Name><ListID>5</ListID></C>"
        L"</CustomerQueryRs>");
    EXPECT_EQ((Result{S_OK, L"5"}), Find(L"Smith"));
}

TEST_F(GetCustomerNameForID, AsksForTheIDAsGiven) {
    EXPECT_EQ((Result{S_OK, L""}), Find(L" 8<1 "));
    EXPECT_EQ(RequestDocument(R"(
        <CustomerQueryRq requestID="requestID_N">
            <ListID> 8&lt;1 </ListID>
        </CustomerQueryRq>
)"),
              OnlySent());
}

TEST_F(GetCustomerNameForID, SendsAnEmptyIDToo) {
    EXPECT_EQ((Result{S_OK, L""}), Find(nullptr));
    EXPECT_EQ(RequestDocument(R"(
        <CustomerQueryRq requestID="requestID_N">
        </CustomerQueryRq>
)"),
              OnlySent());
}

TEST_F(GetCustomerNameForID, ReturnsTheNameOfTheFirstRecord) {
    Respond(
        L"<CustomerQueryRs statusCode=\"500\" statusSeverity=\"Error\">"
        L"<C><FullName>A:B</FullName><Name>B\u00e9 &amp; \u4e2d</Name></C>"
        L"<C><Name>D</Name></C></CustomerQueryRs>");
    EXPECT_EQ((Result{S_OK, L"B\u00e9 & ?"}), Find(L"1"));
}

TEST_F(GetCustomerNameForID, LooksIntoTheFirstNodeOnlyWhateverItIs) {
    Respond(L"<CustomerQueryRs><!-- c --><C><Name>n</Name></C></CustomerQueryRs>");
    EXPECT_EQ((Result{S_OK, L""}), Find(L"1"));
}

TEST_F(GetCustomerNameForID, IsEmptyWhenTheFirstRecordHasNoName) {
    for (const wchar_t* response :
         {L"", L"<CustomerQueryRs/>", L"<CustomerQueryRs><C/><C><Name>n</Name></C></CustomerQueryRs>",
          L"<CustomerQueryRs><C><Name/></C></CustomerQueryRs>", L"<C><Name>n</Name></C>",
          L"<CustomerQueryRs/><CustomerQueryRs><C><Name>n</Name></C></CustomerQueryRs>"}) {
        Respond(response);
        EXPECT_EQ((Result{S_OK, L""}), Find(L"1"));
    }
}

constexpr const wchar_t* kFortyAndSixty =
    LR"(
    <InvoiceQueryRs statusCode="0">
        <InvoiceRet><BalanceRemaining>40.00</BalanceRemaining><RefNumber>1001</RefNumber></InvoiceRet>
        <InvoiceRet><RefNumber>1002</RefNumber><BalanceRemaining>60.00</BalanceRemaining></InvoiceRet>
    </InvoiceQueryRs>)";

TEST_F(GetInvoiceInfoForCustomerID, AsksForUnpaidInvoicesOfTheCustomerAndItsJobs) {
    EXPECT_EQ((Result{S_OK, L""}), Find(L"1"));
    EXPECT_EQ(RequestDocument(R"(
        <InvoiceQueryRq requestID="requestID_N">
            <EntityFilter>
                <ListIDWithChildren>8-1</ListIDWithChildren>
            </EntityFilter>
            <PaidStatus>NotPaidOnly</PaidStatus>
        </InvoiceQueryRq>
)"),
              OnlySent());
}

TEST_F(GetInvoiceInfoForCustomerID, RefusesEmptyArgumentsWithoutARequest) {
    for (const wchar_t* empty : {L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(Result{E_INVALIDARG}, Ask(object_, &CPaylodge::GetInvoiceInfoForCustomerID, empty, L"1"));
        EXPECT_EQ(Result{E_INVALIDARG}, Ask(object_, &CPaylodge::GetInvoiceInfoForCustomerID, L"8-1", empty));
        EXPECT_EQ(Result{E_INVALIDARG}, Ask(object_, &CPaylodge::GetInvoiceInfoForCustomerID, empty, empty));
    }
    EXPECT_THAT(host_.calls, ::testing::IsEmpty());
}

TEST_F(GetInvoiceInfoForCustomerID, LooksAtThePageBeforeItsArguments) {
    FakeSite site(PageAt(kRefusedPage));
    const OnSite on_site(static_cast<IObjectWithSite*>(&object_), site);
    EXPECT_EQ(Result{S_OK}, Ask(object_, &CPaylodge::GetInvoiceInfoForCustomerID, L"", L""));
}

TEST_F(GetInvoiceInfoForCustomerID, AsksAlsoForAnAmountThatMatchesNothing) {
    for (const wchar_t* amount : {L"0", L"0.004", L"abc", L" ", L"-40"}) {
        Respond(
            LR"(<InvoiceQueryRs><I><RefNumber>1</RefNumber><BalanceRemaining>0</BalanceRemaining></I></InvoiceQueryRs>)");
        EXPECT_EQ((Result{S_OK, L""}), Find(amount)) << amount;
    }
    EXPECT_THAT(Sent(), ::testing::SizeIs(5));
}

struct Matched {
    const wchar_t* amount;
    const wchar_t* result;
};

TEST_F(GetInvoiceInfoForCustomerID, ReturnsOneInvoiceOrAllOrNone) {
    for (const auto& [amount, result] :
         {Matched{L"100.00", L"1001, 1002"}, Matched{L"60.00", L"1002"}, Matched{L"40", L"1001"},
          Matched{L"99.99", L""}, Matched{L"40.004", L"1001"}}) {
        Respond(kFortyAndSixty);
        EXPECT_EQ((Result{S_OK, result}), Find(amount)) << amount;
    }
}

TEST_F(GetInvoiceInfoForCustomerID, LooksIntoTheFirstListOnly) {
    Respond(std::wstring(L"<InvoiceQueryRs/>") + kFortyAndSixty);
    EXPECT_EQ((Result{S_OK, L""}), Find(L"60"));
    // Were the lists taken together, no invoice alone and not all of them would come to this amount.
    Respond(
        std::wstring(kFortyAndSixty) +
        L"<InvoiceQueryRs><I><BalanceRemaining>5</BalanceRemaining><RefNumber>1003</RefNumber></I></InvoiceQueryRs>");
    EXPECT_EQ((Result{S_OK, L"1001, 1002"}), Find(L"100"));
}

TEST_F(GetInvoiceInfoForCustomerID, DoesNotLookAtTheStatus) {
    Respond(
        L"<InvoiceQueryRs statusCode=\"500\" statusSeverity=\"Error\">"
        L"<I><BalanceRemaining>5</BalanceRemaining><RefNumber>1</RefNumber></I></InvoiceQueryRs>");
    EXPECT_EQ((Result{S_OK, L"1"}), Find(L"5"));
}

TEST_F(GetInvoiceInfoForCustomerID, SkipsWhatHasNoBalance) {
    Respond(
        L"<InvoiceQueryRs>text<!-- c --><I><RefNumber>1</RefNumber></I>"
        L"<I><BalanceRemaining>40</BalanceRemaining></I>"
        L"<I><D><BalanceRemaining>5</BalanceRemaining></D><RefNumber>2</RefNumber></I>"
        L"<I><BalanceRemaining>60</BalanceRemaining><RefNumber>3</RefNumber></I></InvoiceQueryRs>");
    EXPECT_EQ((Result{S_OK, L"3"}), Find(L"100"));
}

TEST_F(GetInvoiceInfoForCustomerID, CountsAnUnreadableBalanceAsNothingButListsItsNumber) {
    Respond(
        L"<InvoiceQueryRs><I><BalanceRemaining/><RefNumber>1</RefNumber></I>"
        L"<I><BalanceRemaining>x</BalanceRemaining><RefNumber>2</RefNumber></I>"
        L"<I><BalanceRemaining>4</BalanceRemaining><RefNumber>3</RefNumber></I>"
        L"<I><BalanceRemaining>6</BalanceRemaining><RefNumber/></I></InvoiceQueryRs>");
    EXPECT_EQ((Result{S_OK, L"1, 2, 3"}), Find(L"10"));
}

TEST_F(GetInvoiceInfoForCustomerID, IsEmptyWhenTheExactInvoiceHasNoNumber) {
    Respond(
        L"<InvoiceQueryRs><I><BalanceRemaining>4</BalanceRemaining><RefNumber>3</RefNumber></I>"
        L"<I><BalanceRemaining>6</BalanceRemaining></I></InvoiceQueryRs>");
    EXPECT_EQ((Result{S_OK, L""}), Find(L"6"));
}

}  // namespace
}  // namespace paylodge::test
