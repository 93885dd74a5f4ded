#include "operations/paylodge.hpp"

#include "lhxml/request_session.hpp"

namespace paylodge {

HRESULT CPaylodge::SendLHRequest(std::string request, BSTR* response) {
    lhXMLRPWrapper session({}, std::move(request));
    const HRESULT result = session.SendRequest(response);
    return SUCCEEDED(result) && ::SysStringLen(*response) > 0 ? S_OK : result;
}

HRESULT CPaylodge::Send(std::string document, std::string& response) {
    if (document.empty()) {
        return E_FAIL;
    }
    OwnedBstr response_text;
    const HRESULT result = SendLHRequest(std::move(document), response_text.Receive());
    if (SUCCEEDED(result)) {
        response = AnsiFromBstr(response_text.Get());
    }
    return result;
}

STDMETHODIMP CPaylodge::SetNotificationChannel(BSTR channel_name) {
    if (channel_name == nullptr || channel_name != channel_name_.Get()) {
        channel_name_ = CopyBstr(channel_name);
    }
    return S_OK;
}

}  // namespace paylodge
