// Money moved between two accounts, as a deposit into the one with a line that draws on the other.

#include "lhxml/envelope.hpp"
#include "lhxml/number_text.hpp"
#include "lhxml/response_status.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

struct Transfer {
    std::string from_account;
    std::string to_account;
    std::string amount;
    std::string memo;
};

// The element is there also when the name is empty.
void AddAccountRef(XMLBuilder& request, std::string_view element, std::string_view full_name) {
    request.OpenElement(element);
    request.AddElement("FullName", full_name);
    request.CloseElement(element);
}

void BuildTransferDepositRq(XMLBuilder& request, const Transfer& transfer) {
    request.OpenElement("DepositAdd");
    AddAccountRef(request, "DepositToAccountRef", transfer.to_account);
    request.AddElement("Memo", transfer.memo);
    request.OpenElement("DepositLineAdd");
    AddAccountRef(request, "AccountRef", transfer.from_account);
    request.AddElement("Amount", transfer.amount);
    request.CloseElement("DepositLineAdd");
    request.CloseElement("DepositAdd");
}

}  // namespace

// The response is handed back also when it refuses the transfer, with E_FAIL. Returns the HRESULT of a failed send.
STDMETHODIMP CPaylodge::TransferFunds(BSTR bstrDepositFromName, BSTR bstrDepositToName, BSTR bstrDepositAmount,
                                      BSTR bstrDepositMemo, BSTR* pTransferFundResults) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    if (pTransferFundResults == nullptr) {
        return E_POINTER;
    }
    const Transfer transfer = {.from_account = AnsiFromBstr(bstrDepositFromName),
                               .to_account = AnsiFromBstr(bstrDepositToName),
                               // A text too long for an amount leaves the line without one.
                               .amount = AmountWithTwoDecimals(AnsiFromBstr(bstrDepositAmount)).value_or(""),
                               .memo = AnsiFromBstr(bstrDepositMemo)};
    std::string document =
        ComposeRequest("DepositAddRq", [&transfer](XMLBuilder& request) { BuildTransferDepositRq(request, transfer); });
    std::string response;
    if (const HRESULT result = Send(std::move(document), response); FAILED(result)) {
        return result;
    }
    const HRESULT result = CheckAddResponse(response, L"DepositAddRs");
    *pTransferFundResults = BstrFromAnsi(response).Detach();
    return result;
}

}  // namespace paylodge
