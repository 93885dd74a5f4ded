// IDispatch of interfaces that are called through their slots only.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace paylodge::refhost {

template <class Interface>
class Undispatched : public Interface {
  public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*info*/) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*locale*/,
                               DISPID* /*ids*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID /*member*/, REFIID /*reserved*/, LCID /*locale*/, WORD /*flags*/,
                        DISPPARAMS* /*parameters*/, VARIANT* /*result*/, EXCEPINFO* /*exception*/,
                        UINT* /*argument_error*/) override {
        return E_NOTIMPL;
    }

  protected:
    ~Undispatched() = default;
};

}  // namespace paylodge::refhost
