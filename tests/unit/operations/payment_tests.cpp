#include <gtest/gtest.h>

#include <array>

#include "tests/support/hresult.hpp"
#include "tests/unit/operations/operation_fixture.hpp"

namespace paylodge::test {
namespace {

// The arguments of one payment; a null pointer is a null string.
struct Payment {
    const wchar_t* full_name = nullptr;
    const wchar_t* txn_date = nullptr;
    std::wstring amount = {};
    const wchar_t* ref_num = nullptr;
    const wchar_t* payment_name = nullptr;
    const wchar_t* memo = nullptr;
    const wchar_t* auto_apply = nullptr;
    std::array<const wchar_t*, 4> card_input{};
    std::array<const wchar_t*, 11> card_result{};
};

class CreatePaymentTxn : public OperationTest {
  protected:
    [[nodiscard]] Result Create(const Payment& p) {
        const auto& [number, month, year, name] = p.card_input;
        const auto& [code, message, id, merchant, authorization, batch, grouping, status, time, stamp, client] =
            p.card_result;
        return Ask(object_, &CPaylodge::CreatePaymentTxn, p.full_name, p.txn_date, p.amount, p.ref_num, p.payment_name,
                   p.memo, p.auto_apply, number, month, year, name, code, message, id, merchant, authorization, batch,
                   grouping, status, time, stamp, client);
    }
};

// The document of a payment with nothing but an amount.
[[nodiscard]] std::string BarePayment(const std::string& amount, const std::string& after_card = {}) {
    return RequestDocument(R"(
        <ReceivePaymentAddRq requestID="requestID_N">
            <ReceivePaymentAdd>
                <CustomerRef>
                </CustomerRef>
                <TotalAmount>)" +
                           amount + R"(</TotalAmount>
                <PaymentMethodRef>
                </PaymentMethodRef>
                <CreditCardTxnInfo>
                    <CreditCardTxnInputInfo>
                    </CreditCardTxnInputInfo>
                    <CreditCardTxnResultInfo>
                    </CreditCardTxnResultInfo>
                </CreditCardTxnInfo>
)" + after_card + R"(            </ReceivePaymentAdd>
        </ReceivePaymentAddRq>
)");
}

TEST_F(CreatePaymentTxn, PlacesEveryArgument) {
    EXPECT_HRESULT(S_OK, Create({.full_name = L"Smith & Co",
                                 .txn_date = L"2024-02-29",
                                 .amount = L"12.5",
                                 .ref_num = L"R1",
                                 .payment_name = L"Vis\u00e9",
                                 .memo = L"never sent",
                                 .auto_apply = L"true",
                                 .card_input = {L"xxxx1111", L"12", L"2030", L"J. \"S\" <Smith>"},
                                 .card_result = {L"0", L"Approved", L"T1", L"M1", L"A1", L"B1", L"5", L"Completed",
                                                 L"2024-02-29T01:02:03", L"1709168523", L"C1"}})
                             .code);
    EXPECT_EQ(
        RequestDocument("\n"
                        "        <ReceivePaymentAddRq requestID=\"requestID_N\">\n"
                        "            <ReceivePaymentAdd>\n"
                        "                <CustomerRef>\n"
                        "                    <FullName>Smith &amp; Co</FullName>\n"
                        "                </CustomerRef>\n"
                        "                <TxnDate>2024-02-29</TxnDate>\n"
                        "                <RefNumber>R1</RefNumber>\n"
                        "                <TotalAmount>12.50</TotalAmount>\n"
                        "                <PaymentMethodRef>\n"
                        "                    <FullName>Vis\xE9</FullName>\n"
                        "                </PaymentMethodRef>\n"
                        "                <CreditCardTxnInfo>\n"
                        "                    <CreditCardTxnInputInfo>\n"
                        "                        <CreditCardNumber>xxxx1111</CreditCardNumber>\n"
                        "                        <ExpirationMonth>12</ExpirationMonth>\n"
                        "                        <ExpirationYear>2030</ExpirationYear>\n"
                        "                        <NameOnCard>J. &quot;S&quot; &lt;Smith&gt;</NameOnCard>\n"
                        "                    </CreditCardTxnInputInfo>\n"
                        "                    <CreditCardTxnResultInfo>\n"
                        "                        <ResultCode>0</ResultCode>\n"
                        "                        <ResultMessage>Approved</ResultMessage>\n"
                        "                        <CreditCardTransID>T1</CreditCardTransID>\n"
                        "                        <MerchantAccountNumber>M1</MerchantAccountNumber>\n"
                        "                        <AuthorizationCode>A1</AuthorizationCode>\n"
                        "                        <ReconBatchID>B1</ReconBatchID>\n"
                        "                        <PaymentGroupingCode>5</PaymentGroupingCode>\n"
                        "                        <PaymentStatus>Completed</PaymentStatus>\n"
                        "                        <TxnAuthorizationTime>2024-02-29T01:02:03</TxnAuthorizationTime>\n"
                        "                        <TxnAuthorizationStamp>1709168523</TxnAuthorizationStamp>\n"
                        "                        <ClientTransID>C1</ClientTransID>\n"
                        "                    </CreditCardTxnResultInfo>\n"
                        "                </CreditCardTxnInfo>\n"
                        "                <IsAutoApply>true</IsAutoApply>\n"
                        "            </ReceivePaymentAdd>\n"
                        "        </ReceivePaymentAddRq>\n"),
        OnlySent());
}

TEST_F(CreatePaymentTxn, KeepsEmptyAggregatesAndLeavesOutEmptyElements) {
    EXPECT_HRESULT(S_OK, Create({.memo = L"not sent"}).code);
    EXPECT_EQ(BarePayment("0.00"), OnlySent());
}

TEST_F(CreatePaymentTxn, SendsTheAmountWithTwoDecimalsOrFromThirtyCharactersOnAsItIs) {
    struct Case {
        std::wstring given;
        std::string sent;
    };
    for (const auto& [given, sent] :
         {Case{L"12.5", "12.50"}, Case{L"abc", "0.00"}, Case{L"7x", "7.00"}, Case{L"-1", "-1.00"}, Case{L" 2 ", "2.00"},
          Case{std::wstring(25, L'0') + L"1.5 ", "1.50"},
          Case{std::wstring(29, L'x') + L"<", std::string(29, 'x') + "&lt;"},
          Case{std::wstring(30, L'0'), std::string(30, '0')}, Case{std::wstring(2000, L'7'), std::string(2000, '7')}}) {
        host_.requests.clear();
        EXPECT_HRESULT(S_OK, Create({.amount = given}).code);
        EXPECT_EQ(BarePayment(sent), OnlySent());
    }
}

TEST_F(CreatePaymentTxn, PassesAutoApplyThroughUnchecked) {
    EXPECT_HRESULT(S_OK, Create({.amount = L"1", .auto_apply = L"perhaps & so"}).code);
    EXPECT_EQ(BarePayment("1.00", "                <IsAutoApply>perhaps &amp; so</IsAutoApply>\n"), OnlySent());
}

TEST_F(CreatePaymentTxn, HandsTheResponseOverWhateverItsStatus) {
    for (const wchar_t* response :
         {LR"(<LHXML><ReceivePaymentAddRs statusCode="3140" statusMessage="no"/></LHXML>)", L"no document", L"<"}) {
        RespondExactly(response);
        EXPECT_EQ((Result{S_OK, response}), Create({}));
    }
}

TEST_F(CreatePaymentTxn, HandsTheResponseOverInTheCodePage) {
    RespondExactly(std::wstring(L"a\0\u00e9\u20ac\u4e2d", 5));
    EXPECT_EQ((Result{S_OK, std::wstring(L"a\0\u00e9\u20ac?", 5)}), Create({}));
}

TEST_F(CreatePaymentTxn, FailsWithoutAResponse) {
    host_.answers.push_back({.is_null = true});
    EXPECT_EQ(Result{E_FAIL}, Create({}));
}

TEST_F(CreatePaymentTxn, FailsInItsOwnNameWhenSendingFails) {
    host_.answers.push_back({.result = kHostFailure, .response = L"<LHXML/>"});
    EXPECT_EQ(Result{E_FAIL}, Create({}));
}

}  // namespace
}  // namespace paylodge::test
