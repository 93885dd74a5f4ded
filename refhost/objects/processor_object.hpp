// The host's request processor: connection, sessions and tickets around the processing of request documents.
#pragma once

#include <set>
#include <string>

#include "com/class_object.hpp"
#include "hostapi/request_processor.hpp"
#include "refhost/objects/undispatched.hpp"

namespace paylodge::refhost {

// What the processor returns for calls out of order.
inline constexpr HRESULT kNotConnected = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0401);
inline constexpr HRESULT kAlreadyConnected = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0402);
inline constexpr HRESULT kUnknownTicket = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0403);

class CRequestProcessor : public Undispatched<IRequestProcessor>,
                          public CComCoClass<CRequestProcessor, &kRequestProcessorClass> {
  public:
    using Row = InterfaceRow<CRequestProcessor>;
    static constexpr std::array kInterfaces = {Row::Of<IRequestProcessor>(), Row::Of<IDispatch, IRequestProcessor>()};

    // Errors in the request or the books are responses, not failures. kUnknownTicket without a session of this ticket.
    STDMETHODIMP ProcessRequest(BSTR ticket, BSTR request, BSTR* response) override;
    STDMETHODIMP OpenConnection(BSTR application_id, BSTR application_name) override;
    // Ends the sessions of the connection, too.
    STDMETHODIMP CloseConnection() override;
    // A file name that is not empty has to be the open company file's, or is opened when there is none. E_FAIL with a
    // description when that cannot be; E_INVALIDARG for an unknown file mode.
    STDMETHODIMP BeginSession(BSTR company_file_name, LONG file_mode, BSTR* ticket) override;
    STDMETHODIMP EndSession(BSTR ticket) override;

  protected:
    ~CRequestProcessor() = default;

  private:
    bool is_connected_ = false;
    std::set<std::wstring, std::less<>> tickets_;
};

}  // namespace paylodge::refhost
