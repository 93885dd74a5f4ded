// IServiceProvider of an object that passes on the services of whoever hosts it.
#pragma once

#include <windows.h>

#include <servprov.h>

#include "com/com_ptr.hpp"
#include "control/control_base.hpp"

namespace paylodge {

// Class has IObjectWithSite and a control base. The site that a browser gave is asked first, then the client site.
template <class Class>
class IServiceProviderImpl : public IServiceProvider {
  public:
    // E_POINTER, E_NOINTERFACE without a site that has services, else what the site returns.
    STDMETHODIMP QueryService(REFGUID service, REFIID id, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        auto& control = static_cast<Class&>(*this);
        ComPtr<IServiceProvider> host;
        if (FAILED(control.GetSite(IID_IServiceProvider, host.ReceiveVoid())) &&
            FAILED(control.SiteOfControl().As(host))) {
            return E_NOINTERFACE;
        }
        return host->QueryService(service, id, object);
    }
};

}  // namespace paylodge
