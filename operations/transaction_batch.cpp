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
    return std::move(builder).GetText();
}

// The texts that a summary copies from a transaction's record, in order; empty ones are left out.
[[nodiscard]] HRESULT SummarizeRecord(XMLBuilder& summary, IXMLDOMNode* record, bool is_deposit) {
    const auto total = is_deposit ? L"DepositTotal"sv : L"TotalAmount"sv;
    std::array<std::string, 4> values;
    const HRESULT result = ReadChildTexts(record, std::array{L"TxnID"sv, L"RefNumber"sv, total, L"Memo"sv}, values);
    summary.AddElement("TxnID", values[0]);
    if (!is_deposit) {
        summary.AddElement("RefNumber", values[1]);
    }
    summary.AddElement(is_deposit ? "DepositTotal" : "TotalAmount", values[2]);
    summary.AddElement("Memo", values[3]);
    return result;
}

[[nodiscard]] HRESULT SummarizeResponse(XMLBuilder& summary, IXMLDOMNode* response) {
    std::string name;
    HRESULT result = GetNodeName(response, name);
    if (FAILED(result)) {
        return result;
    }
    std::string status_code;
    // Without attributes, as a comment is, it has no status.
    static_cast<void>(CopyStatusAttributes(summary, response, name, &status_code));
    if (IsStatusOK(status_code)) {
        ComPtr<IXMLDOMNode> record;
        result = response->get_firstChild(record.Receive());
        if (SUCCEEDED(result)) {
            result = SummarizeRecord(summary, record.Get(), name == "DepositAddRs");
        }
    }
    summary.CloseElement(name);
    return FAILED(result) ? result : S_OK;
}

}  // namespace

// VARIANT_TRUE for bFullResponse, and no other value, asks for the whole response. E_FAIL when a request is of another
// kind than a batch may hold; the HRESULT of a failed send.
STDMETHODIMP CPaylodge::CreateTxns(BSTR txnRequests, VARIANT_BOOL bFullResponse, BSTR* pCreateTxnResults) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    if (pCreateTxnResults == nullptr) {
        return E_POINTER;
    }
    std::string document = ComposeBatch(AnsiFromBstr(txnRequests));
    if (document.empty() || !PrepareTxnRequests(document)) {
        return E_FAIL;
    }
    std::string response;
    if (const HRESULT result = Send(std::move(document), response); FAILED(result)) {
        return result;
    }
    if (bFullResponse != VARIANT_TRUE) {
        response = SummarizeTxnResponses(std::move(response));
    }
    *pCreateTxnResults = BstrFromAnsi(response).Detach();
    return S_OK;
}

// Whether all requests are of permitted kinds, as far as they can be read: a batch that cannot be read to its end is
// refused. A document that does not load is left to the processor's judgement. What an earlier request needed
// stays created when a later one is refused, and a failed preparation refuses nothing.
bool CPaylodge::PrepareTxnRequests(std::string_view document) {
    ComPtr<IXMLDOMNode> message_set;
    if (FAILED(FindResponseElement(document, L"LHXMLMsgsRq", message_set))) {
        return false;
    }
    return SUCCEEDED(VisitChildren(message_set.Get(), [](IXMLDOMNode* request) {
        std::string name;
        const HRESULT result = GetNodeName(request, name);
        if (FAILED(result) || kPermittedKinds.find(name) == std::string_view::npos) {
            return FAILED(result) ? result : E_INVALIDARG;
        }
        if (name == "CreditMemoAddRq") {
            static_cast<void>(PrepareCreditMemo(request));
        } else if (name == "DepositAddRq") {
            static_cast<void>(PrepareDeposit(request));
        }
        return S_OK;
    }));
}

HRESULT CPaylodge::PrepareCreditMemo(IXMLDOMNode* request) {
    if (const HRESULT result = EnsureNetRefundCustomer(); FAILED(result)) {
        return result;
    }
    ComPtr<IXMLDOMNode> memo;
    std::string memo_text;
    HRESULT result = FindPath(request, std::array{L"CreditMemoAdd"sv, L"Memo"sv}, memo);
    if (SUCCEEDED(result)) {
        result = GetNodeText(memo.Get(), memo_text);
    }
    if (FAILED(result) || !memo) {
        return result;
    }
    const std::string_view card_type = CardTypeFromMemo(memo_text);
    result = EnsureNetRefundItem(card_type);
    return card_type.empty() ? result : EnsureNetRefundItem({});
}

HRESULT CPaylodge::PrepareDeposit(IXMLDOMNode* request) {
    ComPtr<IXMLDOMNode> account;
    std::string full_name;
    HRESULT result = FindPath(request, std::array{L"DepositAdd"sv, L"DepositToAccountRef"sv, L"FullName"sv}, account);
    if (SUCCEEDED(result)) {
        result = GetNodeText(account.Get(), full_name);
    }
    return full_name == kHoldingAccount ? EnsureHoldingAccount() : result;
}

HRESULT CPaylodge::EnsureNetRefundCustomer() {
    std::string document = ComposeRequest("CustomerAddRq", [](XMLBuilder& request) {
        request.OpenElement("CustomerAdd");
        request.AddElement("Name", kNetRefundCustomer);
        request.CloseElement("CustomerAdd");
    });
    return AddListEntry(std::move(document), L"CustomerAddRs", kNameExists);
}

HRESULT CPaylodge::EnsureNetRefundItem(std::string_view card_type) {
    std::string document = ComposeRequest("ItemPaymentAddRq", [card_type](XMLBuilder& request) {
        request.OpenElement("ItemPaymentAdd");
        request.AddElement("Name", NetRefundItemName(card_type));
        if (!card_type.empty()) {
            request.OpenElement("PaymentMethodRef");
            request.AddElement("FullName", card_type);
            request.CloseElement("PaymentMethodRef");
        }
        request.CloseElement("ItemPaymentAdd");
    });
    return AddListEntry(std::move(document), L"ItemPaymentAddRs", kPaymentItemExists);
}

HRESULT CPaylodge::EnsureHoldingAccount() {
    std::string document = ComposeRequest("AccountAddRq", [](XMLBuilder& request) {
        request.OpenElement("AccountAdd");
        request.AddElement("Name", kHoldingAccount);
        request.AddElement("AccountType", kHoldingAccountType);
        request.CloseElement("AccountAdd");
    });
    return AddListEntry(std::move(document), L"AccountAddRs", kNameExists);
}

HRESULT CPaylodge::AddListEntry(std::string document, std::wstring_view response_element, std::string_view extra_code) {
    std::string response;
    const HRESULT result = Send(std::move(document), response);
    return FAILED(result) ? result : CheckAddResponse(response, response_element, extra_code);
}

// Each response of the batch with its status and, where it succeeded, the main texts of its record. Empty for a
// response that does not load, holds no message set, or cannot be read to its end: the batch has been recorded all the
// same, so that is no failure of the operation, and half a summary would be taken for a smaller batch.
std::string CPaylodge::SummarizeTxnResponses(std::string response_text) {
    ComPtr<IXMLDOMNode> message_set;
    if (FAILED(FindResponseElement(response_text, L"LHXMLMsgsRs", message_set)) || !message_set) {
        return {};
    }
    // The document has all of it now, and the summary needs its room.
    std::string().swap(response_text);
    XMLBuilder summary;
    summary.OpenElement("LHXMLMsgsRs");
    const HRESULT result = VisitChildren(
        message_set.Get(), [&summary](IXMLDOMNode* response) { return SummarizeResponse(summary, response); });
    summary.CloseElement("LHXMLMsgsRs");
    return SUCCEEDED(result) ? std::move(summary).GetText() : std::string();
}

}  // namespace paylodge
