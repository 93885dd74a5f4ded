// A batch of card-terminal transactions, whose requests the page writes itself: the kinds are checked, the list entries
// that they rely on are created, the batch is sent, and the response is handed back whole or summarised.

#include <array>

#include "lhxml/dom.hpp"
#include "lhxml/envelope.hpp"
#include "lhxml/response_status.hpp"
#include "operations/card_types.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

using namespace std::string_view_literals;

// A request passes when its name occurs anywhere in this text.
constexpr auto kPermittedKinds = "SalesReceiptAddRq CreditMemoAddRq DepositAddRq CheckAddRq"sv;

constexpr auto kNetRefundCustomer = "Paylodge Net Refund"sv;
constexpr auto kHoldingAccount = "Credit Card Holding Account"sv;
constexpr auto kHoldingAccountType = "OtherCurrentAsset"sv;

[[nodiscard]] std::string ComposeBatch(std::string_view requests) {
    XMLBuilder builder;
    BeginEnvelope(builder);
    builder.AddVerbatim(requests);
    EndEnvelope(builder);
    return builder.GetText();
}

// The texts that a summary copies from a transaction's record, in order; empty ones are left out.
void SummarizeRecord(XMLBuilder& summary, IXMLDOMNode* record, bool is_deposit) {
    const auto total = is_deposit ? L"DepositTotal"sv : L"TotalAmount"sv;
    const auto values = ReadChildTexts(record, std::array{L"TxnID"sv, L"RefNumber"sv, total, L"Memo"sv});
    summary.AddElement("TxnID", values[0]);
    if (!is_deposit) {
        summary.AddElement("RefNumber", values[1]);
    }
    summary.AddElement(is_deposit ? "DepositTotal" : "TotalAmount", values[2]);
    summary.AddElement("Memo", values[3]);
}

void SummarizeResponse(XMLBuilder& summary, IXMLDOMNode* response) {
    std::string name;
    GetNodeName(response, name);
    std::string status_code;
    CopyStatusAttributes(summary, response, name, &status_code);
    if (status_code == kStatusOK) {
        SummarizeRecord(summary, FirstChild(response).Get(), name == "DepositAddRs");
    }
    summary.CloseElement(name);
}

}  // namespace

// VARIANT_TRUE for bFullResponse, and no other value, asks for the whole response. E_FAIL when a request is of another
// kind than a batch may hold; the code of a failed send.
STDMETHODIMP CPaylodge::CreateTxns(BSTR txnRequests, VARIANT_BOOL bFullResponse, BSTR* pCreateTxnResults) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    if (pCreateTxnResults == nullptr) {
        return E_POINTER;
    }
    const std::string document = ComposeBatch(AnsiFromBstr(txnRequests));
    if (document.empty() || !PrepareTxnRequests(document)) {
        return E_FAIL;
    }
    std::string response;
    if (const HRESULT result = Exchange(document, response); FAILED(result)) {
        return result;
    }
    const bool is_whole_response_wanted = bFullResponse == VARIANT_TRUE;
    *pCreateTxnResults = BstrFromAnsi(is_whole_response_wanted ? response : SummarizeTxnResponses(response)).Detach();
    return S_OK;
}

// Whether all requests are of permitted kinds. A document that does not load is left to the processor's judgement. What
// an earlier request needed stays created when a later one is refused, and a failed preparation refuses nothing.
bool CPaylodge::PrepareTxnRequests(std::string_view document) {
    const auto message_set = FindResponseElement(document, L"LHXMLMsgsRq");
    for (auto request = FirstChild(message_set.Get()); request; request = NextSibling(request.Get())) {
        std::string name;
        GetNodeName(request.Get(), name);
        if (kPermittedKinds.find(name) == std::string_view::npos) {
            return false;
        }
        if (name == "CreditMemoAddRq") {
            static_cast<void>(PrepareCreditMemo(request.Get()));
        } else if (name == "DepositAddRq") {
            static_cast<void>(PrepareDeposit(request.Get()));
        }
    }
    return true;
}

HRESULT CPaylodge::PrepareCreditMemo(IXMLDOMNode* request) {
    if (const HRESULT result = EnsureNetRefundCustomer(); FAILED(result)) {
        return result;
    }
    const auto memo = FindChild(FindChild(request, L"CreditMemoAdd").Get(), L"Memo");
    if (!memo) {
        return S_OK;
    }
    std::string memo_text;
    GetNodeText(memo.Get(), memo_text);
    const std::string_view card_type = CardTypeFromMemo(memo_text);
    const HRESULT result = EnsureNetRefundItem(card_type);
    return card_type.empty() ? result : EnsureNetRefundItem({});
}

HRESULT CPaylodge::PrepareDeposit(IXMLDOMNode* request) {
    std::string full_name;
    GetNodeText(FindPath(request, std::array{L"DepositAdd"sv, L"DepositToAccountRef"sv, L"FullName"sv}).Get(),
                full_name);
    return full_name == kHoldingAccount ? EnsureHoldingAccount() : S_OK;
}

HRESULT CPaylodge::EnsureNetRefundCustomer() {
    const std::string document = ComposeRequest("CustomerAddRq", [](XMLBuilder& request) {
        request.OpenElement("CustomerAdd");
        request.AddElement("Name", kNetRefundCustomer);
        request.CloseElement("CustomerAdd");
    });
    return AddListEntry(document, L"CustomerAddRs", kNameExists);
}

HRESULT CPaylodge::EnsureNetRefundItem(std::string_view card_type) {
    const std::string document = ComposeRequest("ItemPaymentAddRq", [card_type](XMLBuilder& request) {
        request.OpenElement("ItemPaymentAdd");
        request.AddElement("Name", NetRefundItemName(card_type));
        if (!card_type.empty()) {
            request.OpenElement("PaymentMethodRef");
            request.AddElement("FullName", card_type);
            request.CloseElement("PaymentMethodRef");
        }
        request.CloseElement("ItemPaymentAdd");
    });
    return AddListEntry(document, L"ItemPaymentAddRs", kPaymentItemExists);
}

HRESULT CPaylodge::EnsureHoldingAccount() {
    const std::string document = ComposeRequest("AccountAddRq", [](XMLBuilder& request) {
        request.OpenElement("AccountAdd");
        request.AddElement("Name", kHoldingAccount);
        request.AddElement("AccountType", kHoldingAccountType);
        request.CloseElement("AccountAdd");
    });
    return AddListEntry(document, L"AccountAddRs", kNameExists);
}

HRESULT CPaylodge::AddListEntry(std::string_view document, std::wstring_view response_element,
                                std::string_view extra_code) {
    std::string response;
    const HRESULT result = Exchange(document, response);
    return FAILED(result) ? result : CheckAddResponse(response, response_element, extra_code);
}

// Each response of the batch with its status and, where it succeeded, the main texts of its record. Empty for a
// response that does not load or holds no message set.
std::string CPaylodge::SummarizeTxnResponses(std::string_view response_text) {
    const auto message_set = FindResponseElement(response_text, L"LHXMLMsgsRs");
    if (!message_set) {
        return {};
    }
    XMLBuilder summary;
    summary.OpenElement("LHXMLMsgsRs");
    for (auto response = FirstChild(message_set.Get()); response; response = NextSibling(response.Get())) {
        SummarizeResponse(summary, response.Get());
    }
    summary.CloseElement("LHXMLMsgsRs");
    return summary.GetText();
}

}  // namespace paylodge
