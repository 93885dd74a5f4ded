// IOleInPlaceObjectWindowless and IOleInPlaceActiveObject of a control that always has a window when it is active.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include "control/control_base.hpp"

namespace paylodge {

// IOleWindow::GetWindow for both interfaces: E_POINTER; E_FAIL and null while there is no window.
[[nodiscard]] inline HRESULT GetControlWindow(ControlBase& control, HWND* window) noexcept {
    if (window == nullptr) {
        return E_POINTER;
    }
    *window = control.InPlace().Window();
    return *window == nullptr ? E_FAIL : S_OK;
}

template <class Class>
class IOleInPlaceObjectWindowlessImpl : public IOleInPlaceObjectWindowless {
  public:
    STDMETHODIMP GetWindow(HWND* window) override { return GetControlWindow(Control(), window); }
    STDMETHODIMP ContextSensitiveHelp(BOOL /*enter*/) override { return E_NOTIMPL; }

    // S_OK also when there is nothing to end.
    STDMETHODIMP InPlaceDeactivate() override {
        Control().InPlace().Deactivate();
        return S_OK;
    }
    STDMETHODIMP UIDeactivate() override {
        Control().InPlace().DeactivateUi();
        return S_OK;
    }

    // Without effect while there is no window: activation asks the site for the place.
    STDMETHODIMP SetObjectRects(LPCRECT position, LPCRECT clip) override {
        if (position == nullptr || clip == nullptr) {
            return E_INVALIDARG;
        }
        Control().InPlace().Place(*position, *clip);
        return S_OK;
    }

    STDMETHODIMP ReactivateAndUndo() override { return INPLACE_E_NOTUNDOABLE; }

    // The window gets its messages itself.
    STDMETHODIMP OnWindowMessage(UINT /*message*/, WPARAM /*wide*/, LPARAM /*large*/, LRESULT* result) override {
        if (result == nullptr) {
            return E_POINTER;
        }
        *result = 0;
        return S_FALSE;
    }

    STDMETHODIMP GetDropTarget(IDropTarget** target) override {
        if (target == nullptr) {
            return E_POINTER;
        }
        *target = nullptr;
        return E_NOTIMPL;
    }

  private:
    [[nodiscard]] ControlBase& Control() noexcept { return static_cast<Class&>(*this); }
};

template <class Class>
class IOleInPlaceActiveObjectImpl : public IOleInPlaceActiveObject {
  public:
    STDMETHODIMP GetWindow(HWND* window) override { return GetControlWindow(Control(), window); }
    STDMETHODIMP ContextSensitiveHelp(BOOL /*enter*/) override { return E_NOTIMPL; }

    // The control has no keys of its own: the container may use them.
    STDMETHODIMP TranslateAccelerator(LPMSG message) override {
        return message == nullptr ? E_POINTER : Control().OfferKeyToContainer(message);
    }

    STDMETHODIMP OnFrameWindowActivate(BOOL /*activate*/) override { return S_OK; }
    STDMETHODIMP OnDocWindowActivate(BOOL /*activate*/) override { return S_OK; }
    // There are no tools around the control that would need room.
    STDMETHODIMP ResizeBorder(LPCRECT /*border*/, IOleInPlaceUIWindow* /*window*/, BOOL /*frame*/) override {
        return S_OK;
    }
    STDMETHODIMP EnableModeless(BOOL /*enable*/) override { return S_OK; }

  private:
    [[nodiscard]] ControlBase& Control() noexcept { return static_cast<Class&>(*this); }
};

}  // namespace paylodge
