// IViewObjectEx of a control: drawing on request, extent, view notifications, hit tests.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include "control/control_base.hpp"

namespace paylodge {

// Everything is about DVASPECT_CONTENT; another aspect is refused with DV_E_DVASPECT, another index than -1 with
// DV_E_LINDEX.
template <class Class>
class IViewObjectExImpl : public IViewObjectEx {
  public:
    // E_INVALIDARG without a device context or bounds, else what OnDraw returns.
    STDMETHODIMP Draw(DWORD aspect, LONG index, void* /*aspect_info*/, DVTARGETDEVICE* /*target*/, HDC /*target_dc*/,
                      HDC dc, LPCRECTL bounds, LPCRECTL /*window_bounds*/, BOOL(CALLBACK* /*go_on*/)(ULONG_PTR),
                      ULONG_PTR /*go_on_argument*/) override {
        if (const HRESULT result = CheckView(aspect, index); FAILED(result)) {
            return result;
        }
        return dc == nullptr || bounds == nullptr ? E_INVALIDARG : Control().DrawOn(dc, *bounds);
    }

    // The control draws with whatever colours there are.
    STDMETHODIMP GetColorSet(DWORD /*aspect*/, LONG /*index*/, void* /*aspect_info*/, DVTARGETDEVICE* /*target*/,
                             HDC /*target_dc*/, LOGPALETTE** colors) override {
        if (colors == nullptr) {
            return E_POINTER;
        }
        *colors = nullptr;
        return S_FALSE;
    }

    STDMETHODIMP Freeze(DWORD /*aspect*/, LONG /*index*/, void* /*aspect_info*/, DWORD* /*key*/) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Unfreeze(DWORD /*key*/) override { return E_NOTIMPL; }

    STDMETHODIMP SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override {
        return Control().SetViewAdvise(aspects, flags, sink);
    }
    STDMETHODIMP GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override {
        Control().GetViewAdvise(aspects, flags, sink);
        return S_OK;
    }

    STDMETHODIMP GetExtent(DWORD aspect, LONG /*index*/, DVTARGETDEVICE* /*target*/, LPSIZEL size) override {
        return size == nullptr ? E_POINTER : Control().GetControlExtent(aspect, *size);
    }

    STDMETHODIMP GetRect(DWORD /*aspect*/, LPRECTL bounds) override {
        return bounds == nullptr ? E_POINTER : E_NOTIMPL;
    }

    STDMETHODIMP GetViewStatus(DWORD* status) override {
        if (status == nullptr) {
            return E_POINTER;
        }
        *status = Control().ViewStatus();
        return S_OK;
    }

    // The control fills its bounds.
    STDMETHODIMP QueryHitPoint(DWORD aspect, LPCRECT bounds, POINT point, LONG /*near*/, DWORD* result) override {
        if (bounds == nullptr || result == nullptr) {
            return E_POINTER;
        }
        *result = ::PtInRect(bounds, point) ? HITRESULT_HIT : HITRESULT_OUTSIDE;
        return CheckAspect(aspect);
    }
    STDMETHODIMP QueryHitRect(DWORD aspect, LPCRECT bounds, LPCRECT place, LONG /*near*/, DWORD* result) override {
        if (bounds == nullptr || place == nullptr || result == nullptr) {
            return E_POINTER;
        }
        RECT common;
        *result = ::IntersectRect(&common, bounds, place) ? HITRESULT_HIT : HITRESULT_OUTSIDE;
        return CheckAspect(aspect);
    }

    // The control has a natural size, but no preferred proportions: E_NOTIMPL for DVEXTENT_INTEGRAL.
    STDMETHODIMP GetNaturalExtent(DWORD aspect, LONG /*index*/, DVTARGETDEVICE* /*target*/, HDC /*target_dc*/,
                                  DVEXTENTINFO* request, LPSIZEL size) override {
        if (request == nullptr || size == nullptr) {
            return E_POINTER;
        }
        if (const HRESULT result = CheckAspect(aspect); FAILED(result)) {
            return result;
        }
        if (request->dwExtentMode != DVEXTENT_CONTENT) {
            return E_NOTIMPL;
        }
        *size = ControlBase::NaturalExtent();
        return S_OK;
    }

  private:
    [[nodiscard]] ControlBase& Control() noexcept { return static_cast<Class&>(*this); }

    [[nodiscard]] static HRESULT CheckAspect(DWORD aspect) noexcept {
        return aspect == DVASPECT_CONTENT ? S_OK : DV_E_DVASPECT;
    }
    [[nodiscard]] static HRESULT CheckView(DWORD aspect, LONG index) noexcept {
        const HRESULT result = CheckAspect(aspect);
        return SUCCEEDED(result) && index != -1 ? DV_E_LINDEX : result;
    }
};

}  // namespace paylodge
