// A received customer payment, taken by card. The processor's response is handed back whatever its status says.

#include <array>

#include "lhxml/envelope.hpp"
#include "lhxml/number_text.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

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
    const std::array input_info = {Field{"CreditCardNumber", bstrCCNumber}, Field{"ExpirationMonth", bstrExpMonth},
                                   Field{"ExpirationYear", bstrExpYear}, Field{"NameOnCard", bstrNameOnCard}};
    const std::array result_info = {Field{"ResultCode", bstrCCResultCode},
                                    Field{"ResultMessage", bstrCCMessage},
                                    Field{"CreditCardTransID", bstrCCTransID},
                                    Field{"MerchantAccountNumber", bstrMasAccountNumber},
                                    Field{"AuthorizationCode", bstrAuthCode},
                                    Field{"ReconBatchID", bstrReconBatchID},
                                    Field{"PaymentGroupingCode", bstrPaymentGroupingCode},
                                    Field{"PaymentStatus", bstrCCPaymentStatus},
                                    Field{"TxnAuthorizationTime", bstrTxnAutTime},
                                    Field{"TxnAuthorizationStamp", bstrTxnAutTimeStamp},
                                    Field{"ClientTransID", bstrClientTxnID}};
    std::string document = ComposeRequest("ReceivePaymentAddRq", [&](XMLBuilder& request) {
        const std::string amount = AnsiFromBstr(bstrAmount);
        request.OpenElement("ReceivePaymentAdd");
        AddGroup(request, "CustomerRef", std::array{Field{"FullName", bstrFullName}});
        AddField(request, {"TxnDate", bstrTxnDate});
        AddField(request, {"RefNumber", bstrRefNum});
        // A text too long for an amount is sent as it stands.
        request.AddElement("TotalAmount", AmountWithTwoDecimals(amount).value_or(amount));
        AddGroup(request, "PaymentMethodRef", std::array{Field{"FullName", bstrPaymentName}});
        request.OpenElement("CreditCardTxnInfo");
        AddGroup(request, "CreditCardTxnInputInfo", input_info);
        AddGroup(request, "CreditCardTxnResultInfo", result_info);
        request.CloseElement("CreditCardTxnInfo");
        AddField(request, {"IsAutoApply", bstrAutoApply});
        request.CloseElement("ReceivePaymentAdd");
    });
    std::string response;
    if (FAILED(Send(std::move(document), response)) || response.empty()) {
        return E_FAIL;
    }
    *pRetValue = BstrFromAnsi(response).Detach();
    return S_OK;
}

}  // namespace paylodge
