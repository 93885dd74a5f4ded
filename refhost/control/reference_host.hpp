// The control object of the reference host. All of its objects speak for the one host of the process.
#pragma once

#include "com/class_object.hpp"
#include "com/dispatch_impl.hpp"
#include "refhost_methods.hpp"

namespace paylodge::refhost {

class CReferenceHost : public IDispatchImpl<IReferenceHost, &IID_IReferenceHost, &LIBID_ReferenceHostLib, 1, 0>,
                       public ISupportErrorInfo,
                       public CComCoClass<CReferenceHost, &CLSID_ReferenceHost> {
  public:
    using Row = InterfaceRow<CReferenceHost>;
    static constexpr std::array kInterfaces = {Row::Of<IReferenceHost>(), Row::Of<IDispatch, IReferenceHost>(),
                                               Row::Of<ISupportErrorInfo>()};

    // The methods are described in the IDL. E_FAIL comes with a description for the script.
    STDMETHODIMP OpenCompanyFile(BSTR path) override;
    STDMETHODIMP CloseCompanyFile() override;
    STDMETHODIMP get_CompanyFile(BSTR* path) override;
    // E_INVALIDARG for an unknown name or a number below 0. The HRESULT may be written signed or unsigned.
    STDMETHODIMP FailCall(BSTR name, DOUBLE result, LONG nth) override;
    STDMETHODIMP AnswerEmpty(LONG nth) override;
    STDMETHODIMP AnswerNull(LONG nth) override;
    STDMETHODIMP AnswerNext(BSTR text, LONG result) override;
    STDMETHODIMP ClearFaults() override;
    STDMETHODIMP get_CallCount(LONG* count) override;
    // DISP_E_BADINDEX when there is no such call.
    STDMETHODIMP Call(LONG index, BSTR* text) override;
    STDMETHODIMP get_RequestCount(LONG* count) override;
    STDMETHODIMP Request(LONG index, BSTR* text) override;
    STDMETHODIMP Response(LONG index, BSTR* text) override;
    STDMETHODIMP ClearCalls() override;
    // E_INVALIDARG for a number below 0.
    STDMETHODIMP EndProcessAt(LONG nth) override;
    // kNotLocked when the lock is somebody else's.
    STDMETHODIMP LockRecord(BSTR category, LONG number) override;
    STDMETHODIMP UnlockRecord(BSTR category, LONG number) override;
    // E_INVALIDARG for a number below 0. The XML is that of ReadJournal.
    STDMETHODIMP Journal(LONG count, BSTR* text) override;
    STDMETHODIMP get_PlannableCalls(BSTR* names) override;
    STDMETHODIMP get_PlannedFailures(BSTR* lines) override;

    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID id) override;

  protected:
    ~CReferenceHost() = default;
};

}  // namespace paylodge::refhost
