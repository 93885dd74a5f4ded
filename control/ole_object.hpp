// IOleObject and IOleControl of a control.
#pragma once

#include <windows.h>

#include <ocidl.h>
#include <ole2.h>

#include "control/control_base.hpp"

namespace paylodge {

// Class has a control base, a class id (GetObjectCLSID) and its OLEMISC_ bits (static MiscStatus()). The registry is
// asked for nothing that is needed to work. Methods behave as the platform documents, E_POINTER for a null out
// parameter, E_NOTIMPL where nothing is said.
template <class Class>
class IOleObjectImpl : public IOleObject {
  public:
    STDMETHODIMP SetClientSite(IOleClientSite* site) override {
        Control().SetSiteOfControl(site);
        return S_OK;
    }

    // Null without a site.
    STDMETHODIMP GetClientSite(IOleClientSite** site) override {
        if (site == nullptr) {
            return E_POINTER;
        }
        *site = ComPtr<IOleClientSite>(Control().SiteOfControl()).Detach();
        return S_OK;
    }

    STDMETHODIMP SetHostNames(LPCOLESTR /*application*/, LPCOLESTR /*document*/) override { return S_OK; }

    STDMETHODIMP Close(DWORD save_option) override { return Control().CloseControl(save_option); }

    STDMETHODIMP SetMoniker(DWORD /*which*/, IMoniker* /*moniker*/) override { return E_NOTIMPL; }

    STDMETHODIMP GetMoniker(DWORD /*assign*/, DWORD /*which*/, IMoniker** moniker) override {
        return NotGiven(moniker);
    }

    STDMETHODIMP InitFromData(IDataObject* /*data*/, BOOL /*creation*/, DWORD /*reserved*/) override {
        return E_NOTIMPL;
    }

    STDMETHODIMP GetClipboardData(DWORD /*reserved*/, IDataObject** data) override { return NotGiven(data); }

    STDMETHODIMP DoVerb(LONG verb, LPMSG /*message*/, IOleClientSite* active_site, LONG /*index*/, HWND /*parent*/,
                        LPCRECT position) override {
        return Control().ExecuteVerb(verb, active_site, position);
    }

    // OLEOBJ_E_NOVERBS unless verbs are registered for the class.
    STDMETHODIMP EnumVerbs(IEnumOLEVERB** verbs) override {
        if (verbs == nullptr) {
            return E_POINTER;
        }
        *verbs = nullptr;
        return FAILED(::OleRegEnumVerbs(Class::GetObjectCLSID(), verbs)) ? OLEOBJ_E_NOVERBS : S_OK;
    }

    STDMETHODIMP Update() override { return S_OK; }

    STDMETHODIMP IsUpToDate() override { return S_OK; }

    STDMETHODIMP GetUserClassID(CLSID* id) override {
        if (id == nullptr) {
            return E_POINTER;
        }
        *id = Class::GetObjectCLSID();
        return S_OK;
    }

    // The name under which the class is registered; the caller frees it. Why the registry has none.
    STDMETHODIMP GetUserType(DWORD form, LPOLESTR* name) override {
        if (name == nullptr) {
            return E_POINTER;
        }
        *name = nullptr;
        return ::OleRegGetUserType(Class::GetObjectCLSID(), form, name);
    }

    STDMETHODIMP SetExtent(DWORD aspect, SIZEL* size) override {
        return size == nullptr ? E_POINTER : Control().SetControlExtent(aspect, *size);
    }

    STDMETHODIMP GetExtent(DWORD aspect, SIZEL* size) override {
        return size == nullptr ? E_POINTER : Control().GetControlExtent(aspect, *size);
    }

    STDMETHODIMP Advise(IAdviseSink* sink, DWORD* cookie) override {
        if (cookie == nullptr) {
            return E_POINTER;
        }
        *cookie = 0;
        ComPtr<IOleAdviseHolder> holder;
        const HRESULT result = sink == nullptr ? E_INVALIDARG : Control().OleAdvise(holder);
        return FAILED(result) ? result : holder->Advise(sink, cookie);
    }

    STDMETHODIMP Unadvise(DWORD cookie) override {
        ComPtr<IOleAdviseHolder> holder;
        const HRESULT result = Control().OleAdvise(holder);
        return FAILED(result) ? result : holder->Unadvise(cookie);
    }

    STDMETHODIMP EnumAdvise(IEnumSTATDATA** connections) override {
        if (connections == nullptr) {
            return E_POINTER;
        }
        *connections = nullptr;
        ComPtr<IOleAdviseHolder> holder;
        const HRESULT result = Control().OleAdvise(holder);
        return FAILED(result) ? result : holder->EnumAdvise(connections);
    }

    // The bits of the content; no other aspect has any.
    STDMETHODIMP GetMiscStatus(DWORD aspect, DWORD* status) override {
        if (status == nullptr) {
            return E_POINTER;
        }
        *status = aspect == DVASPECT_CONTENT ? Class::MiscStatus() : 0;
        return S_OK;
    }

    STDMETHODIMP SetColorScheme(LOGPALETTE* /*palette*/) override { return E_NOTIMPL; }

  private:
    [[nodiscard]] ControlBase& Control() noexcept { return static_cast<Class&>(*this); }

    template <class Interface>
    [[nodiscard]] static HRESULT NotGiven(Interface** object) noexcept {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        return E_NOTIMPL;
    }
};

// A control without mnemonics, that reads ambient properties when it needs them.
template <class Class>
class IOleControlImpl : public IOleControl {
  public:
    STDMETHODIMP GetControlInfo(CONTROLINFO* info) override { return info == nullptr ? E_POINTER : E_NOTIMPL; }
    STDMETHODIMP OnMnemonic(MSG* /*message*/) override { return S_OK; }
    STDMETHODIMP OnAmbientPropertyChange(DISPID /*property*/) override { return S_OK; }
    STDMETHODIMP FreezeEvents(BOOL /*freeze*/) override { return S_OK; }
};

}  // namespace paylodge
