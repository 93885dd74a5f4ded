// Requests whose body the page writes itself. The response is handed back as it is, whatever its status says.

#include "bridge/channel_registry.hpp"
#include "lhxml/envelope.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

// Sends the page's body; `response` stays null when none came.
[[nodiscard]] HRESULT SendBody(BSTR body, OwnedBstr& response) {
    return CPaylodge::SendLHRequest(PassThroughEnvelope(AnsiFromBstr(body)), response.Receive());
}

// The page gets what the ANSI code page can hold, as from every other operation. The response goes before the result
// comes: it may be large.
[[nodiscard]] BSTR ResultFrom(OwnedBstr response) {
    const std::string text = AnsiFromBstr(response.Get());
    response.Reset();
    return BstrFromAnsi(text).Detach();
}

}  // namespace

// E_FAIL on a page that is refused. The processor's own HRESULT when it failed or returned no response; else S_OK with
// the response, of which the control on this object's channel is notified.
STDMETHODIMP CPaylodge::ProcessLHRequest(BSTR requestBody, BSTR* pResponse) {
    if (!IsSiteAllowed()) {
        return E_FAIL;
    }
    if (pResponse == nullptr) {
        return E_POINTER;
    }
    OwnedBstr response;
    if (const HRESULT result = SendBody(requestBody, response); FAILED(result) || !response) {
        return result;
    }
    *pResponse = ResultFrom(std::move(response));
    if (const ChannelControl* const subscriber = FindChannelControl(View(channel_name_))) {
        // Kept alive: its sinks may release it.
        const ComPtr<IPaylodgeCtrl10> control(subscriber->control);
        control->ProcessLHRequestData(requestBody, pResponse);
    }
    return S_OK;
}

// S_OK with the response, or E_FAIL when there is none.
STDMETHODIMP CPaylodge::SavePaymentTxn(BSTR requestBody, BSTR* pResponse) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    if (pResponse == nullptr) {
        return E_POINTER;
    }
    OwnedBstr response;
    if (FAILED(SendBody(requestBody, response)) || !response) {
        return E_FAIL;
    }
    *pResponse = ResultFrom(std::move(response));
    return S_OK;
}

}  // namespace paylodge
