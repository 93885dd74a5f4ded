// The site that a browser hands to an object it hosts.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include "com/com_ptr.hpp"

namespace paylodge {

template <class Class>
class IObjectWithSiteImpl : public IObjectWithSite {
  public:
    // Keeps a reference to the site; null releases the held one.
    STDMETHODIMP SetSite(IUnknown* site) override {
        site_ = ComPtr<IUnknown>(site);
        return S_OK;
    }

    // E_POINTER without a slot, E_FAIL without a site, else what the site's QueryInterface returns.
    STDMETHODIMP GetSite(REFIID id, void** site) override {
        if (site == nullptr) {
            return E_POINTER;
        }
        *site = nullptr;
        return site_ ? site_->QueryInterface(id, site) : E_FAIL;
    }

  private:
    ComPtr<IUnknown> site_;
};

}  // namespace paylodge
