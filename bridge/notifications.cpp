// Pushes from the host to the page: as a script call when the host has named a browser instance, otherwise as an event
// of the control that is subscribed under the current channel name.

#include "bridge/bridge_library.hpp"
#include "bridge/channel_registry.hpp"
#include "bridge/paylodge_ctrl.hpp"
#include "bridge/script_text.hpp"
#include "com/ansi_text.hpp"
#include "frame/browser/browser_binding.hpp"

namespace paylodge {
namespace {

// How a push with one argument is delivered: the page's function, how the argument is escaped for it, and the event.
struct Push {
    const wchar_t* script_function;
    ScriptEscaping escaping;
    ControlEvent event;
};

constexpr auto kNewline = ScriptEscaping::kNewline;
constexpr auto kQuote = ScriptEscaping::kQuote;

// The page defines functions of exactly these names.
constexpr Push kTransactionChanged = {L"app.lhProxy.txnChangeEventFromLH", kNewline, ControlEvent::kTransactionChanged};
constexpr Push kReconFeeData = {L"app.lhProxy.feeEventFromLH", kNewline, ControlEvent::kReconFeeData};
constexpr Push kReconBatchData = {L"app.lhProxy.batchEventFromLH", kNewline, ControlEvent::kReconBatchData};
constexpr Push kTransactionID = {L"app.lhProxy.invoiceIdFromLH", kNewline, ControlEvent::kTransactionID};
constexpr Push kEInvoicedTransactionData = {L"app.lhProxy.eInvoicesEvent", kNewline,
                                            ControlEvent::kEInvoicedTransactionData};
constexpr Push kCustomerListData = {L"app.lhProxy.customerDataFromLH", kNewline, ControlEvent::kCustomerListData};
constexpr Push kCustomerData = {L"$.fn.customerDataFromLH", kNewline, ControlEvent::kCustomerData};
constexpr Push kCustomerSearchResult = {L"$.fn.CustomerSearchResultFromLH", kQuote,
                                        ControlEvent::kCustomerSearchResult};
constexpr Push kLineItemsSearchResult = {L"$.fn.LineItemSearchResultFromLH", kQuote,
                                         ControlEvent::kLineItemsSearchResult};

// The control that is subscribed under the current channel name, kept alive while its sinks are called: a sink may let
// go of it, or change the channels. Empty without one.
struct Receiver {
    ComPtr<IPaylodgeCtrl10> control;
    ConnectionPoint* events = nullptr;

    explicit operator bool() const noexcept { return events != nullptr; }
};

[[nodiscard]] Receiver FindReceiver() noexcept {
    const ChannelControl* const subscriber = FindChannelControl(View(g_bstrChannelName));
    return subscriber == nullptr ? Receiver{}
                                 : Receiver{ComPtr<IPaylodgeCtrl10>(subscriber->control), subscriber->events};
}

[[nodiscard]] bool IsScriptDelivery() noexcept { return NamesBrowserInstance(View(g_bstrBrowserInstance)); }

// E_FAIL when no control is subscribed, also where a script would run.
[[nodiscard]] HRESULT Deliver(CPaylodgeCtrl& called_control, const Push& push, BSTR data) {
    const Receiver receiver = FindReceiver();
    if (!receiver) {
        return E_FAIL;
    }
    if (IsScriptDelivery()) {
        return called_control.ExecuteJavaScript(data, push.escaping == kQuote ? 1 : 0,
                                                MakeBstr(push.script_function).Get());
    }
    return Fire(*receiver.events, push.event, {data});
}

}  // namespace

// E_FAIL, and nothing stored, when no control is subscribed.
STDMETHODIMP CPaylodgeCtrl::NotifyTransactionChanged(BSTR bstrTransInfo) {
    if (!FindReceiver()) {
        return E_FAIL;
    }
    put_LHTransactionNotificationData(bstrTransInfo);
    return Deliver(*this, kTransactionChanged, bstrTransInfo);
}

STDMETHODIMP CPaylodgeCtrl::SetReconFeeData(BSTR bstrFeeData) { return Deliver(*this, kReconFeeData, bstrFeeData); }

STDMETHODIMP CPaylodgeCtrl::SetReconBatchData(BSTR bstrBatchData) {
    return Deliver(*this, kReconBatchData, bstrBatchData);
}

STDMETHODIMP CPaylodgeCtrl::SetTransactionID(BSTR bstrTransactionID) {
    return Deliver(*this, kTransactionID, bstrTransactionID);
}

STDMETHODIMP CPaylodgeCtrl::setEInvoicedTransactionData(BSTR bstrEInvoicedTransactionData) {
    return Deliver(*this, kEInvoicedTransactionData, bstrEInvoicedTransactionData);
}

STDMETHODIMP CPaylodgeCtrl::SetCustomerListData(BSTR bstrCustomerData) {
    return Deliver(*this, kCustomerListData, bstrCustomerData);
}

STDMETHODIMP CPaylodgeCtrl::SetCustomerData(BSTR bstrCustomerData) {
    return Deliver(*this, kCustomerData, bstrCustomerData);
}

STDMETHODIMP CPaylodgeCtrl::SetCustomerSearchResult(BSTR bstrCustomerSearchResult) {
    return Deliver(*this, kCustomerSearchResult, bstrCustomerSearchResult);
}

STDMETHODIMP CPaylodgeCtrl::SetLineItemsSearchResult(BSTR bstrLineItemsSearchResult) {
    return Deliver(*this, kLineItemsSearchResult, bstrLineItemsSearchResult);
}

// Three arguments, and so a script of its own.
STDMETHODIMP CPaylodgeCtrl::SetReconPaymentData(BSTR paymentData, BSTR undepFundsStartDate,
                                                VARIANT_BOOL isUndepFundsAccntDefault) {
    const Receiver receiver = FindReceiver();
    if (!receiver) {
        return E_FAIL;
    }
    if (!IsScriptDelivery()) {
        return Fire(*receiver.events, ControlEvent::kReconPaymentData,
                    {paymentData, undepFundsStartDate, isUndepFundsAccntDefault});
    }
    return RunScript([&] {
        return ReconPaymentScript(AnsiFromBstr(paymentData), AnsiFromBstr(undepFundsStartDate),
                                  isUndepFundsAccntDefault != VARIANT_FALSE);
    });
}

// Always an event. Nothing is written back: the caller keeps the response that it passed in.
STDMETHODIMP CPaylodgeCtrl::ProcessLHRequestData(BSTR bstrRequestStr, BSTR* bstrResponseStr) {
    const Receiver receiver = FindReceiver();
    if (!receiver) {
        return E_FAIL;
    }
    return bstrResponseStr == nullptr
               ? E_POINTER
               : Fire(*receiver.events, ControlEvent::kOnProcessLHRequest, {bstrRequestStr, *bstrResponseStr});
}

// Always an event.
STDMETHODIMP CPaylodgeCtrl::SetItemListData(BSTR bstrItemData) {
    const Receiver receiver = FindReceiver();
    return !receiver ? E_FAIL : Fire(*receiver.events, ControlEvent::kItemListData, {bstrItemData});
}

// Calls the page's function `script` with bstrInfo as its one argument; an isRebill other than 0 asks for quotes to be
// escaped in place of line feeds.
STDMETHODIMP CPaylodgeCtrl::ExecuteJavaScript(BSTR bstrInfo, LONG isRebill, BSTR script) {
    return RunScript(
        [&] { return ScriptCall(AnsiFromBstr(script), AnsiFromBstr(bstrInfo), isRebill == 0 ? kNewline : kQuote); });
}

}  // namespace paylodge
