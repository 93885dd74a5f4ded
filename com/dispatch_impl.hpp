// IDispatch for a dual interface, over the module's own type library.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include "com/boundary.hpp"
#include "com/script_entry.hpp"
#include "com/type_info_holder.hpp"

namespace paylodge {

// Class implements the dual interface Interface, whose methods ScriptMembers lists; interface_id and the library's id
// and version say where its type information stands. The arguments and results of the four methods are those of
// IDispatch. They throw nothing: Invoke returns E_OUTOFMEMORY when memory runs out on its way or in the member, and an
// HRESULT that is thrown is that of the member.
template <class Interface, const IID* interface_id, const GUID* library_id, WORD major, WORD minor,
          class TypeInfoHolder = CCustomTypeInfoHolder>
class IDispatchImpl : public Interface {
  public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = 1;
        return S_OK;
    }

    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
        return AtBoundary([&] { return type_info_.GetTypeInfo(index, locale, info); });
    }

    STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override {
        return AtBoundary([&] { return type_info_.GetIDsOfNames(reserved, names, count, locale, ids); });
    }

    STDMETHODIMP Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* argument_error) override {
        ScriptEntry<Interface> entry(*this);
        const HRESULT invoked = AtBoundary([&] {
            return type_info_.Invoke(entry.Instance(), member, reserved, locale, flags, parameters, result, exception,
                                     argument_error);
        });
        if (!entry.IsOutOfMemory()) {
            return invoked;
        }
        if (result != nullptr) {
            ::VariantClear(result);
        }
        return E_OUTOFMEMORY;
    }

  private:
    // One for all objects of the class.
    inline static TypeInfoHolder type_info_{interface_id, library_id, major, minor};
};

}  // namespace paylodge
