// IPersistStreamInit and IPersistStorage of a control that persists no property: what is saved can be loaded again.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include "control/control_base.hpp"

namespace paylodge {

template <class Class>
[[nodiscard]] HRESULT GetPersistentClassId(CLSID* id) noexcept {
    if (id == nullptr) {
        return E_POINTER;
    }
    *id = Class::GetObjectCLSID();
    return S_OK;
}

// E_INVALIDARG without a stream, else E_POINTER for a null out parameter.
template <class Class>
class IPersistStreamInitImpl : public IPersistStreamInit {
  public:
    STDMETHODIMP GetClassID(CLSID* id) override { return GetPersistentClassId<Class>(id); }
    // S_FALSE when there is nothing to save.
    STDMETHODIMP IsDirty() override { return Control().IsControlDirty() ? S_OK : S_FALSE; }
    STDMETHODIMP Load(IStream* stream) override {
        return stream == nullptr ? E_INVALIDARG : Control().LoadControl(*stream);
    }
    STDMETHODIMP Save(IStream* stream, BOOL clear_dirty) override {
        return stream == nullptr ? E_INVALIDARG : Control().SaveControl(*stream, clear_dirty != FALSE);
    }
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER* size) override {
        if (size == nullptr) {
            return E_POINTER;
        }
        size->QuadPart = ControlBase::SavedSize();
        return S_OK;
    }
    STDMETHODIMP InitNew() override { return S_OK; }

  private:
    [[nodiscard]] ControlBase& Control() noexcept { return static_cast<Class&>(*this); }
};

// Nothing of the storage is held between calls. E_INVALIDARG without a storage.
template <class Class>
class IPersistStorageImpl : public IPersistStorage {
  public:
    STDMETHODIMP GetClassID(CLSID* id) override { return GetPersistentClassId<Class>(id); }
    STDMETHODIMP IsDirty() override { return Control().IsControlDirty() ? S_OK : S_FALSE; }
    STDMETHODIMP InitNew(IStorage* storage) override { return storage == nullptr ? E_INVALIDARG : S_OK; }
    STDMETHODIMP Load(IStorage* storage) override {
        return storage == nullptr ? E_INVALIDARG : Control().LoadControl(*storage);
    }
    STDMETHODIMP Save(IStorage* storage, BOOL same_as_load) override {
        if (storage == nullptr) {
            return E_INVALIDARG;
        }
        is_saving_copy_ = same_as_load == FALSE;
        return Control().SaveControl(*storage);
    }
    // A storage comes along when the control goes on in another one.
    STDMETHODIMP SaveCompleted(IStorage* storage) override {
        if (!is_saving_copy_ || storage != nullptr) {
            Control().SetControlDirty(false);
        }
        Control().FireSaved();
        return S_OK;
    }
    STDMETHODIMP HandsOffStorage() override { return S_OK; }

  private:
    [[nodiscard]] ControlBase& Control() noexcept { return static_cast<Class&>(*this); }

    bool is_saving_copy_ = false;
};

}  // namespace paylodge
