// IQuickActivate of a control: everything that a container sets up, in one call.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include "control/control_base.hpp"

namespace paylodge {

// Class names its OLEMISC_ bits as for IOleObjectImpl.
template <class Class>
class IQuickActivateImpl : public IQuickActivate {
  public:
    // E_POINTER; E_INVALIDARG for a structure that is too small; or why a sink could not be connected.
    STDMETHODIMP QuickActivate(QACONTAINER* container, QACONTROL* control) override {
        if (container == nullptr || control == nullptr) {
            return E_POINTER;
        }
        if (container->cbSize < sizeof *container || control->cbSize < sizeof *control) {
            return E_INVALIDARG;
        }
        return Control().ConnectQuickly(*container, *control, Class::MiscStatus());
    }

    STDMETHODIMP SetContentExtent(LPSIZEL size) override {
        return size == nullptr ? E_POINTER : Control().SetControlExtent(DVASPECT_CONTENT, *size);
    }
    STDMETHODIMP GetContentExtent(LPSIZEL size) override {
        return size == nullptr ? E_POINTER : Control().GetControlExtent(DVASPECT_CONTENT, *size);
    }

  private:
    [[nodiscard]] ControlBase& Control() noexcept { return static_cast<Class&>(*this); }
};

}  // namespace paylodge
