// A received customer payment, taken by card. The processor's response is handed back whatever its status says.

#include <array>

#include "lhxml/envelope.hpp"
#include "lhxml/number_text.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

using namespace std::string_view_literals;

// An element of the request and the argument that it carries.
struct Field {
    std::string_view element;
    BSTR value;
};

void AddField(XMLBuilder& request, const Field& field) { request.AddElement(field.element, AnsiFromBstr(field.value)); }

// The element is there also when every field is empty.
template <size_t count>
void AddGroup(XMLBuilder& request, std::string_view name, const std::array<Field, count>& fields) {
    request.OpenElement(name);
    for (const Field& field : fields) {
        AddField(request, field);
    }
    request.CloseElement(name);
}

}  // namespace

// S_OK with the response, or E_FAIL when none came. The payment carries no memo.
STDMETHODIMP CPaylodge::CreatePaymentTxn(BSTR bstrFullName, BSTR bstrTxnDate, BSTR bstrAmount, BSTR bstrRefNum,
                                         BSTR bstrPaymentName, BSTR /*bstrMemo*/, BSTR bstrAutoApply, BSTR bstrCCNumber,
                                         BSTR bstrExpMonth, BSTR bstrExpYear, BSTR bstrNameOnCard,
                                         BSTR bstrCCResultCode, BSTR bstrCCMessage, BSTR bstrCCTransID,
                                         BSTR bstrMasAccountNumber, BSTR bstrAuthCode, BSTR bstrReconBatchID,
                                         BSTR bstrPaymentGroupingCode, BSTR bstrCCPaymentStatus, BSTR bstrTxnAutTime,
                                         BSTR bstrTxnAutTimeStamp, BSTR bstrClientTxnID, BSTR* pRetValue) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    if (pRetValue == nullptr) {
        return E_POINTER;
    }
    const std::array input_info = {Field{"CreditCardNumber"sv, bstrCCNumber}, Field{"ExpirationMonth"sv, bstrExpMonth},
                                   Field{"ExpirationYear"sv, bstrExpYear}, Field{"NameOnCard"sv, bstrNameOnCard}};
    const std::array result_info = {Field{"ResultCode"sv, bstrCCResultCode},
                                    Field{"ResultMessage"sv, bstrCCMessage},
                                    Field{"CreditCardTransID"sv, bstrCCTransID},
                                    Field{"MerchantAccountNumber"sv, bstrMasAccountNumber},
                                    Field{"AuthorizationCode"sv, bstrAuthCode},
                                    Field{"ReconBatchID"sv, bstrReconBatchID},
                                    Field{"PaymentGroupingCode"sv, bstrPaymentGroupingCode},
                                    Field{"PaymentStatus"sv, bstrCCPaymentStatus},
                                    Field{"TxnAuthorizationTime"sv, bstrTxnAutTime},
                                    Field{"TxnAuthorizationStamp"sv, bstrTxnAutTimeStamp},
                                    Field{"ClientTransID"sv, bstrClientTxnID}};
    std::string document = ComposeRequest("ReceivePaymentAddRq", [&](XMLBuilder& request) {
        const std::string amount = AnsiFromBstr(bstrAmount);
        request.OpenElement("ReceivePaymentAdd"sv);
        AddGroup(request, "CustomerRef"sv, std::array{Field{"FullName"sv, bstrFullName}});
        AddField(request, {"TxnDate"sv, bstrTxnDate});
        AddField(request, {"RefNumber"sv, bstrRefNum});
        // A text too long for an amount is sent as it stands.
        request.AddElement("TotalAmount"sv, AmountWithTwoDecimals(amount).value_or(amount));
        AddGroup(request, "PaymentMethodRef"sv, std::array{Field{"FullName"sv, bstrPaymentName}});
        request.OpenElement("CreditCardTxnInfo"sv);
        AddGroup(request, "CreditCardTxnInputInfo"sv, input_info);
        AddGroup(request, "CreditCardTxnResultInfo"sv, result_info);
        request.CloseElement("CreditCardTxnInfo"sv);
        AddField(request, {"IsAutoApply"sv, bstrAutoApply});
        request.CloseElement("ReceivePaymentAdd"sv);
    });
    std::string response;
    if (FAILED(Send(std::move(document), response)) || response.empty()) {
        return E_FAIL;
    }
    *pRetValue = BstrFromAnsi(response).Detach();
    return S_OK;
}

}  // namespace paylodge
