#include "control/control_base.hpp"

#include <ole2.h>

#include "com/variant.hpp"
#include "control/gdi.hpp"

namespace paylodge {
namespace {

// Bits of IOleControlSite::TranslateAccelerator, which the platform's headers leave out.
constexpr DWORD kShiftBit = 1;
constexpr DWORD kControlBit = 2;
constexpr DWORD kAltBit = 4;

// The bits of the modifier keys that are down.
[[nodiscard]] DWORD PressedModifiers() noexcept {
    constexpr struct {
        int key;
        DWORD bit;
    } kModifiers[] = {{VK_SHIFT, kShiftBit}, {VK_CONTROL, kControlBit}, {VK_MENU, kAltBit}};
    DWORD pressed = 0;
    for (const auto& [key, bit] : kModifiers) {
        // A negative state: the key is down.
        pressed |= ::GetKeyState(key) < 0 ? bit : 0;
    }
    return pressed;
}

}  // namespace

SIZEL ControlBase::NaturalExtent() noexcept {
    // Two inches.
    constexpr LONG kSide = 5080;
    return {kSide, kSide};
}

bool ControlBase::AmbientFlag(DISPID property, bool otherwise) const {
    ComPtr<IDispatch> ambient;
    if (FAILED(client_site_.As(ambient))) {
        return otherwise;
    }
    DISPPARAMS no_arguments{};
    OwnedVariant value;
    const HRESULT result = ambient->Invoke(property, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &no_arguments,
                                           value.Receive(), nullptr, nullptr);
    return SUCCEEDED(result) && value.Type() == VT_BOOL ? V_BOOL(&value.Get()) != VARIANT_FALSE : otherwise;
}

HRESULT ControlBase::SetControlExtent(DWORD aspect, const SIZEL& size) {
    if (aspect != DVASPECT_CONTENT) {
        return DV_E_DVASPECT;
    }
    if (size.cx < 0 || size.cy < 0) {
        return E_INVALIDARG;
    }
    const ComPtr<IUnknown> keep_alive = KeepAlive();
    const bool is_new = size.cx != extent_.cx || size.cy != extent_.cy;
    extent_ = size;
    if (is_new) {
        FireDataChange();
        FireViewChange();
    }
    return S_OK;
}

HRESULT ControlBase::GetControlExtent(DWORD aspect, SIZEL& size) const {
    if (aspect != DVASPECT_CONTENT) {
        return DV_E_DVASPECT;
    }
    size = extent_;
    return S_OK;
}

HRESULT ControlBase::ExecuteVerb(LONG verb, IOleClientSite* active_site, const RECT* position) {
    switch (verb) {
        case OLEIVERB_PRIMARY:
        case OLEIVERB_SHOW:
        case OLEIVERB_OPEN:
        case OLEIVERB_INPLACEACTIVATE:
            return ShowInPlace(active_site, position, false);
        case OLEIVERB_UIACTIVATE:
            return ShowInPlace(active_site, position, true);
        case OLEIVERB_HIDE:
            in_place_.Hide();
            return S_OK;
        case OLEIVERB_DISCARDUNDOSTATE:
            return S_OK;
        default:
            break;
    }
    if (verb < 0) {
        return E_NOTIMPL;
    }
    const HRESULT result = ShowInPlace(active_site, position, false);
    return result == S_OK ? OLEOBJ_S_INVALIDVERB : result;
}

HRESULT ControlBase::ShowInPlace(IOleClientSite* active_site, const RECT* position, bool with_ui) {
    const ComPtr<IOleClientSite> site = client_site_ ? client_site_ : ComPtr<IOleClientSite>(active_site);
    if (!site) {
        return OLEOBJ_S_CANNOT_DOVERB_NOW;
    }
    const ComPtr<IUnknown> keep_alive = KeepAlive();
    const HRESULT result = in_place_.Activate(*site.Get(), position);
    return SUCCEEDED(result) && with_ui ? in_place_.ActivateUi() : result;
}

HRESULT ControlBase::CloseControl(DWORD save_option) {
    if (save_option > OLECLOSE_PROMPTSAVE) {
        return E_INVALIDARG;
    }
    const ComPtr<IUnknown> keep_alive = KeepAlive();
    const ComPtr<IOleClientSite> site = client_site_;
    // The control never asks the user: whether to save is the container's to decide.
    if (save_option != OLECLOSE_NOSAVE && is_dirty_ && site) {
        if (const HRESULT result = site->SaveObject(); FAILED(result)) {
            return result;
        }
        FireSaved();
    }
    in_place_.Deactivate();
    if (ole_advise_) {
        ComPtr<IOleAdviseHolder>(ole_advise_)->SendOnClose();
    }
    view_advise_ = {};
    return S_OK;
}

HRESULT ControlBase::OfferKeyToContainer(MSG* message) const {
    ComPtr<IOleControlSite> site;
    if (FAILED(client_site_.As(site))) {
        return S_FALSE;
    }
    return site->TranslateAccelerator(message, PressedModifiers()) == S_OK ? S_OK : S_FALSE;
}

HRESULT ControlBase::OleAdvise(ComPtr<IOleAdviseHolder>& holder) {
    const HRESULT result = ole_advise_ ? S_OK : ::CreateOleAdviseHolder(ole_advise_.Receive());
    holder = ole_advise_;
    return result;
}

HRESULT ControlBase::DataAdvise(ComPtr<IDataAdviseHolder>& holder) {
    const HRESULT result = data_advise_ ? S_OK : ::CreateDataAdviseHolder(data_advise_.Receive());
    holder = data_advise_;
    return result;
}

HRESULT ControlBase::SetViewAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
    if (sink != nullptr && (aspects & DVASPECT_CONTENT) == 0) {
        return OLE_E_ADVISENOTSUPPORTED;
    }
    const ComPtr<IUnknown> keep_alive = KeepAlive();
    view_advise_ = sink == nullptr ? ViewAdvise{} : ViewAdvise{aspects, flags, ComPtr<IAdviseSink>(sink)};
    if ((view_advise_.flags & ADVF_PRIMEFIRST) != 0) {
        TellViewSink();
    }
    return S_OK;
}

void ControlBase::GetViewAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) const noexcept {
    if (aspects != nullptr) {
        *aspects = view_advise_.aspects;
    }
    if (flags != nullptr) {
        *flags = view_advise_.flags;
    }
    if (sink != nullptr) {
        *sink = ComPtr<IAdviseSink>(view_advise_.sink).Detach();
    }
}

void ControlBase::FireViewChange() {
    in_place_.Redraw();
    TellViewSink();
}

void ControlBase::TellViewSink() {
    const ComPtr<IAdviseSink> sink = view_advise_.sink;
    if (!sink) {
        return;
    }
    if ((view_advise_.flags & ADVF_ONLYONCE) != 0) {
        view_advise_ = {};
    }
    sink->OnViewChange(DVASPECT_CONTENT, -1);
}

void ControlBase::FireDataChange() {
    ComPtr<IDataObject> data;
    const ComPtr<IDataAdviseHolder> holder = data_advise_;
    if (holder && SUCCEEDED(KeepAlive().As(data))) {
        holder->SendOnDataChange(data.Get(), 0, 0);
    }
}

void ControlBase::FireSaved() {
    if (const ComPtr<IOleAdviseHolder> holder = ole_advise_) {
        holder->SendOnSave();
    }
}

void ControlBase::ReleaseContainer() noexcept {
    in_place_.Abandon();
    view_advise_ = {};
    data_advise_.Reset();
    ole_advise_.Reset();
    client_site_.Reset();
}

HRESULT ControlBase::DrawOn(HDC dc, const RECTL& bounds) {
    const SavedDc saved(dc);
    if (IsMetafile(dc)) {
        return OnDraw({dc, bounds});
    }
    POINT corners[] = {{bounds.left, bounds.top}, {bounds.right, bounds.bottom}};
    ::LPtoDP(dc, corners, 2);
    ::ModifyWorldTransform(dc, nullptr, MWT_IDENTITY);
    ::SetMapMode(dc, MM_TEXT);
    ::SetWindowOrgEx(dc, 0, 0, nullptr);
    ::SetViewportOrgEx(dc, 0, 0, nullptr);
    return OnDraw({dc, {corners[0].x, corners[0].y, corners[1].x, corners[1].y}});
}

void ControlBase::OnWindowPaint(HDC dc, const RECT& client) {
    static_cast<void>(OnDraw({dc, {client.left, client.top, client.right, client.bottom}}));
}

void ControlBase::OnWindowFocus(bool has_focus) {
    ComPtr<IOleControlSite> site;
    if (SUCCEEDED(client_site_.As(site))) {
        site->OnFocus(has_focus ? TRUE : FALSE);
    }
}

void ControlBase::OnWindowMouseActivate() {
    // While a form is being designed, clicks are for its designer.
    if (AmbientFlag(DISPID_AMBIENT_USERMODE, true)) {
        static_cast<void>(in_place_.ActivateUi());
    }
}

}  // namespace paylodge
