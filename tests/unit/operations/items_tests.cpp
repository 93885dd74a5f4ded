#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/hresult.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

class GetItems : public OperationTest {};
class GetPaymentMethods : public OperationTest {};
class OpenTxnForm : public OperationTest {};

class IsTaxableItem : public OperationTest {
  protected:
    [[nodiscard]] Result IsTaxable(const wchar_t* name = L"Tea") {
        return AskWhether(object_, &CPaylodge::IsTaxableItem, name);
    }
};

TEST_F(GetItems, AsksForAllItems) {
    EXPECT_EQ((Result{S_OK, L""}), Ask(object_, &CPaylodge::GetItems));
    EXPECT_EQ(RequestDocument(R"(
        <ItemQueryRq requestID="requestID_N">
        </ItemQueryRq>
)"),
              OnlySent());
}

TEST_F(GetItems, ListsFullNamesAndForItemsWithoutOneTheirNames) {
    Respond(
        L"<ItemQueryRs statusCode=\"0\">"
        L"<ItemServiceRet><Name>B</Name><FullName>A:B &amp; \u00e9\u4e2d</FullName></ItemServiceRet>"
        L"<ItemPaymentRet><Name>Card</Name></ItemPaymentRet>"
        L"<ItemPaymentRet><Name/></ItemPaymentRet>"
        L"<ItemOtherRet/>"
        L"<ItemOtherRet><D><Name>deep</Name><FullName>deep</FullName></D></ItemOtherRet>"
        L"<ItemServiceRet><FullName>B</FullName></ItemServiceRet>"
        L"</ItemQueryRs>");
    EXPECT_EQ((Result{S_OK,
                      L"<ItemName>A:B &amp; \u00e9?</ItemName>\r\n<ItemName>Card</ItemName>\r\n"
                      L"<ItemName>B</ItemName>\r\n"}),
              Ask(object_, &CPaylodge::GetItems));
}

TEST_F(GetItems, LeavesOutAnItemWithAnEmptyFullNameEvenIfItHasAName) {
    Respond(L"<ItemQueryRs><I><Name>n</Name><FullName/></I></ItemQueryRs>");
    EXPECT_EQ((Result{S_OK, L""}), Ask(object_, &CPaylodge::GetItems));
}

TEST_F(GetItems, PassesOverCommentsAndText) {
    Respond(L"<ItemQueryRs>text<!-- <I><Name>n</Name></I> --><I><!-- c --><Name>x</Name></I></ItemQueryRs>");
    EXPECT_EQ((Result{S_OK, L"<ItemName>x</ItemName>\r\n"}), Ask(object_, &CPaylodge::GetItems));
}

TEST_F(GetItems, ListsTheFirstListOnlyWhateverItsStatus) {
    Respond(
        L"<ItemQueryRs statusCode=\"500\" statusSeverity=\"Error\"><I><Name>x</Name></I></ItemQueryRs>"
        L"<ItemQueryRs><I><Name>y</Name></I></ItemQueryRs>");
    EXPECT_EQ((Result{S_OK, L"<ItemName>x</ItemName>\r\n"}), Ask(object_, &CPaylodge::GetItems));
    Respond(L"<ItemQueryRs/><ItemQueryRs><I><Name>y</Name></I></ItemQueryRs>");
    EXPECT_EQ((Result{S_OK, L""}), Ask(object_, &CPaylodge::GetItems));
}

TEST_F(GetPaymentMethods, AsksWithFixedLimits) {
    EXPECT_EQ((Result{S_OK, L""}), Ask(object_, &CPaylodge::GetPaymentMethods));
    EXPECT_EQ(RequestDocument(R"(
        <PaymentMethodQueryRq requestID="requestID_N">
            <MaxReturned>10000</MaxReturned>
            <ActiveStatus>ActiveOnly</ActiveStatus>
            <FromModifiedDate>1970-01-01T00:00:00</FromModifiedDate>
            <ToModifiedDate>2030-01-19T03:14:07</ToModifiedDate>
            <NameRangeFilter>
                <FromName>A</FromName>
                <ToName>Z</ToName>
            </NameRangeFilter>
        </PaymentMethodQueryRq>
)"),
              OnlySent());
}

TEST_F(GetPaymentMethods, ListsEveryNameEachTimeItOccurs) {
    for (int i = 0; i < 2; ++i) {
        Respond(
            L"<PaymentMethodQueryRs><P><ListID>1</ListID><Name>Visa &amp; Co</Name></P><P><Name/></P><P/>text<!-- c -->"
            L"<P><Name>Cash\u00e9</Name></P><P><Name>Visa &amp; Co</Name></P></PaymentMethodQueryRs>");
        EXPECT_EQ(
            (Result{S_OK,
                    L"<PaymentMethods>\r\n    <PayMethName>Visa &amp; Co</PayMethName>\r\n"
                    L"    <PayMethName>Cash\u00e9</PayMethName>\r\n    <PayMethName>Visa &amp; Co</PayMethName>\r\n"
                    L"</PaymentMethods>\r\n"}),
            Ask(object_, &CPaylodge::GetPaymentMethods));
    }
}

TEST_F(GetPaymentMethods, ReturnsAnEmptyElementWithoutMethods) {
    for (const wchar_t* response :
         {L"<PaymentMethodQueryRs/>", L"<PaymentMethodQueryRs statusCode=\"1\"></PaymentMethodQueryRs>",
          L"<PaymentMethodQueryRs><!-- none --></PaymentMethodQueryRs>",
          L"<PaymentMethodQueryRs/><PaymentMethodQueryRs><P><Name>p</Name></P></PaymentMethodQueryRs>"}) {
        Respond(response);
        EXPECT_EQ((Result{S_OK, L"<PaymentMethods>\r\n</PaymentMethods>\r\n"}),
                  Ask(object_, &CPaylodge::GetPaymentMethods));
    }
}

TEST_F(GetPaymentMethods, ListsTheFirstListOnlyWhateverItsStatus) {
    Respond(
        L"<PaymentMethodQueryRs statusCode=\"500\" statusSeverity=\"Error\">"
        L"<P><Name>p</Name></P></PaymentMethodQueryRs>"
        L"<PaymentMethodQueryRs><P><Name>q</Name></P></PaymentMethodQueryRs>");
    EXPECT_EQ((Result{S_OK, L"<PaymentMethods>\r\n    <PayMethName>p</PayMethName>\r\n</PaymentMethods>\r\n"}),
              Ask(object_, &CPaylodge::GetPaymentMethods));
}

constexpr const wchar_t* kTeaWithTaxCode =
    LR"(
    <ItemQueryRs><I><Name>Tea</Name><ListID>item</ListID>
        <SalesTaxCodeRef><FullName>Tax</FullName><ListID>T&amp;1</ListID></SalesTaxCodeRef>
    </I></ItemQueryRs>)";

TEST_F(IsTaxableItem, AsksForTheItemThenForItsTaxCode) {
    Respond(kTeaWithTaxCode);
    Respond(L"<SalesTaxCodeQueryRs><S><IsActive>false</IsActive><IsTaxable>true</IsTaxable></S></SalesTaxCodeQueryRs>");
    EXPECT_EQ((Result{S_OK, kTrue}), IsTaxable(L" Tea<\u00e9> "));
    EXPECT_THAT(Sent(), ElementsAre(RequestDocument("\n"
                                                    "        <ItemQueryRq requestID=\"requestID_N\">\n"
                                                    "            <FullName> Tea&lt;\xE9&gt; </FullName>\n"
                                                    "        </ItemQueryRq>\n"),
                                    RequestDocument(R"(
        <SalesTaxCodeQueryRq requestID="requestID_N">
            <ListID>T&amp;1</ListID>
        </SalesTaxCodeQueryRq>
)")));
}

TEST_F(IsTaxableItem, NumbersEachOfItsRequests) {
    Respond(kTeaWithTaxCode);
    EXPECT_HRESULT(S_OK, IsTaxable().code);  // the first number of a process seeds the generator
    host_.requests.clear();
    std::srand(20);
    const std::wstring first = std::to_wstring(std::rand());
    const std::wstring second = std::to_wstring(std::rand());
    ASSERT_NE(first, second);

    std::srand(20);
    Respond(kTeaWithTaxCode);
    EXPECT_HRESULT(S_OK, IsTaxable().code);
    EXPECT_THAT(host_.requests,
                ElementsAre(HasSubstr(L"<ItemQueryRq requestID=\"requestID_" + first + L"\">"),
                            HasSubstr(L"<SalesTaxCodeQueryRq requestID=\"requestID_" + second + L"\">")));
}

TEST_F(IsTaxableItem, IsNotTaxableWithoutATaxCodeAndAsksNoFurther) {
    for (const wchar_t* response : {L"", L"<SalesTaxCodeRef/>", L"<SalesTaxCodeRef><ListID/></SalesTaxCodeRef>",
                                    L"<SalesTaxCodeRef><FullName>Tax</FullName></SalesTaxCodeRef>",
                                    L"<SalesTaxCodeRef><D><ListID>1</ListID></D></SalesTaxCodeRef>",
                                    L"<ListID>1</ListID><IsTaxable>true</IsTaxable>",
                                    L"<SalesTaxCodeRef/><SalesTaxCodeRef><ListID>1</ListID></SalesTaxCodeRef>"}) {
        host_.requests.clear();
        Respond(response);
        EXPECT_EQ((Result{S_OK, kFalse}), IsTaxable()) << response;
        EXPECT_THAT(Sent(), SizeIs(1)) << response;
    }
}

TEST_F(IsTaxableItem, IsTaxableForTheTextTrueAlone) {
    struct Case {
        const wchar_t* response;
        const wchar_t* result;
    };
    for (const auto& [response, result] :
         {Case{L"<IsTaxable>true</IsTaxable>", kTrue}, Case{L"<IsTaxable>tr<!-- c -->ue</IsTaxable>", kTrue},
          Case{L"<IsTaxable>True</IsTaxable>", kFalse}, Case{L"<IsTaxable>1</IsTaxable>", kFalse},
          Case{L"<IsTaxable>true1</IsTaxable>", kFalse}, Case{L"<IsTaxable>false</IsTaxable>", kFalse},
          Case{L"<IsTaxable/>", kFalse}, Case{L"", kFalse},
          Case{L"<IsTaxable>false</IsTaxable><IsTaxable>true</IsTaxable>", kFalse}}) {
        Respond(kTeaWithTaxCode);
        Respond(response);
        EXPECT_EQ((Result{S_OK, result}), IsTaxable()) << response;
    }
}

TEST_F(IsTaxableItem, IsNotTaxableWhenTheSecondRequestFails) {
    for (const Answer& answer :
         {Answer{.result = kHostFailure}, Answer{.is_null = true}, Answer{.response = L"no document"}}) {
        Respond(kTeaWithTaxCode);
        host_.answers.push_back(answer);
        EXPECT_EQ((Result{S_OK, kFalse}), IsTaxable());
    }
}

TEST_F(IsTaxableItem, SendsAnEmptyQueryWithoutAName) {
    EXPECT_EQ((Result{S_OK, kFalse}), IsTaxable(nullptr));
    EXPECT_EQ(RequestDocument(R"(
        <ItemQueryRq requestID="requestID_N">
        </ItemQueryRq>
)"),
              OnlySent());
}

TEST_F(OpenTxnForm, SendsTypeAndIDAsGiven) {
    EXPECT_EQ(Result{S_OK}, Do(object_, &CPaylodge::OpenTxnForm, L" Check ", L"1<2"));
    EXPECT_EQ(RequestDocument(R"(
        <TxnDisplayModRq requestID="requestID_N">
            <TxnDisplayModType> Check </TxnDisplayModType>
            <TxnID>1&lt;2</TxnID>
        </TxnDisplayModRq>
)"),
              OnlySent());
}

TEST_F(OpenTxnForm, SendsAnEmptyRequestWithoutArguments) {
    EXPECT_EQ(Result{S_OK}, Do(object_, &CPaylodge::OpenTxnForm, nullptr, L""));
    EXPECT_EQ(RequestDocument(R"(
        <TxnDisplayModRq requestID="requestID_N">
        </TxnDisplayModRq>
)"),
              OnlySent());
}

TEST_F(OpenTxnForm, DoesNotExamineTheResponse) {
    for (const Answer& answer : {Answer{.response = LR"(<LHXML><TxnDisplayModRs statusCode="500"/></LHXML>)"},
                                 Answer{.response = L"no document"}, Answer{.is_null = true}}) {
        host_.answers.push_back(answer);
        EXPECT_EQ(Result{S_OK}, Do(object_, &CPaylodge::OpenTxnForm, L"Check", L"unknown"));
    }
}

}  // namespace
}  // namespace paylodge::test
