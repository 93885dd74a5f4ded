// ISpecifyPropertyPages of a control that has no pages.
#pragma once

#include <windows.h>

#include <ocidl.h>

namespace paylodge {

template <class Class>
class ISpecifyPropertyPagesImpl : public ISpecifyPropertyPages {
  public:
    // An empty list; nothing to free. E_POINTER.
    STDMETHODIMP GetPages(CAUUID* pages) override {
        if (pages == nullptr) {
            return E_POINTER;
        }
        *pages = {};
        return S_OK;
    }
};

}  // namespace paylodge
