// IDataObject of a control: its picture as a metafile, and data notifications.
#pragma once

#include <windows.h>

#include <ocidl.h>
#include <urlmon.h>

#include "control/control_base.hpp"

namespace paylodge {

// The one format that a control is rendered in.
[[nodiscard]] inline FORMATETC PictureFormat() noexcept {
    return {CF_METAFILEPICT, nullptr, DVASPECT_CONTENT, -1, TYMED_MFPICT};
}

// S_OK when the control can be rendered as asked, or the DV_E_ code that says what is wrong.
[[nodiscard]] inline HRESULT CheckPictureFormat(const FORMATETC& format) noexcept {
    const FORMATETC ours = PictureFormat();
    if (format.cfFormat != ours.cfFormat) {
        return DV_E_FORMATETC;
    }
    if (format.dwAspect != ours.dwAspect) {
        return DV_E_DVASPECT;
    }
    if (format.lindex != ours.lindex) {
        return DV_E_LINDEX;
    }
    return (format.tymed & ours.tymed) != 0 ? S_OK : DV_E_TYMED;
}

// E_POINTER without an argument that is needed.
template <class Class>
class IDataObjectImpl : public IDataObject {
  public:
    // The caller frees the medium (ReleaseStgMedium).
    STDMETHODIMP GetData(FORMATETC* format, STGMEDIUM* medium) override {
        if (format == nullptr || medium == nullptr) {
            return E_POINTER;
        }
        *medium = {};
        if (const HRESULT result = CheckPictureFormat(*format); FAILED(result)) {
            return result;
        }
        const HRESULT result = Control().RenderMetafile(medium->hMetaFilePict);
        medium->tymed = SUCCEEDED(result) ? TYMED_MFPICT : TYMED_NULL;
        return result;
    }

    STDMETHODIMP GetDataHere(FORMATETC* /*format*/, STGMEDIUM* /*medium*/) override { return E_NOTIMPL; }

    STDMETHODIMP QueryGetData(FORMATETC* format) override {
        return format == nullptr ? E_POINTER : CheckPictureFormat(*format);
    }

    STDMETHODIMP GetCanonicalFormatEtc(FORMATETC* format, FORMATETC* canonical) override {
        if (format == nullptr || canonical == nullptr) {
            return E_POINTER;
        }
        *canonical = *format;
        canonical->ptd = nullptr;
        return DATA_S_SAMEFORMATETC;
    }

    STDMETHODIMP SetData(FORMATETC* /*format*/, STGMEDIUM* /*medium*/, BOOL /*release*/) override { return E_NOTIMPL; }

    STDMETHODIMP EnumFormatEtc(DWORD direction, IEnumFORMATETC** formats) override {
        if (formats == nullptr) {
            return E_POINTER;
        }
        *formats = nullptr;
        FORMATETC ours = PictureFormat();
        return direction == DATADIR_GET ? ::CreateFormatEnumerator(1, &ours, formats) : E_NOTIMPL;
    }

    STDMETHODIMP DAdvise(FORMATETC* format, DWORD flags, IAdviseSink* sink, DWORD* cookie) override {
        if (format == nullptr || cookie == nullptr) {
            return E_POINTER;
        }
        *cookie = 0;
        ComPtr<IDataAdviseHolder> holder;
        const HRESULT result = sink == nullptr ? E_INVALIDARG : Control().DataAdvise(holder);
        return FAILED(result) ? result : holder->Advise(this, format, flags, sink, cookie);
    }

    STDMETHODIMP DUnadvise(DWORD cookie) override {
        ComPtr<IDataAdviseHolder> holder;
        const HRESULT result = Control().DataAdvise(holder);
        return FAILED(result) ? result : holder->Unadvise(cookie);
    }

    STDMETHODIMP EnumDAdvise(IEnumSTATDATA** connections) override {
        if (connections == nullptr) {
            return E_POINTER;
        }
        *connections = nullptr;
        ComPtr<IDataAdviseHolder> holder;
        const HRESULT result = Control().DataAdvise(holder);
        return FAILED(result) ? result : holder->EnumAdvise(connections);
    }

  private:
    [[nodiscard]] ControlBase& Control() noexcept { return static_cast<Class&>(*this); }
};

}  // namespace paylodge
