// IProvideClassInfo2 over the module's own type library.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include "com/type_info_holder.hpp"

namespace paylodge {

// class_id, event_interface_id: the coclass and its default source interface; the others name the library.
template <const CLSID* class_id, const IID* event_interface_id, const GUID* library_id, WORD major, WORD minor>
class IProvideClassInfo2Impl : public IProvideClassInfo2 {
  public:
    // E_POINTER, or why the type library could not be loaded.
    STDMETHODIMP GetClassInfo(ITypeInfo** info) override { return class_info_.GetTypeInfo(0, 0, info); }

    // E_POINTER; E_INVALIDARG for every kind but GUIDKIND_DEFAULT_SOURCE_DISP_IID.
    STDMETHODIMP GetGUID(DWORD kind, GUID* id) override {
        if (id == nullptr) {
            return E_POINTER;
        }
        const bool known = kind == GUIDKIND_DEFAULT_SOURCE_DISP_IID;
        *id = known ? *event_interface_id : GUID_NULL;
        return known ? S_OK : E_INVALIDARG;
    }

  private:
    // One for all objects of the class.
    inline static CCustomTypeInfoHolder class_info_{class_id, library_id, major, minor};
};

}  // namespace paylodge
