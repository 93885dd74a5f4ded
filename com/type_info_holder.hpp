// Type information of one dual interface, from the type library in the module's own resources.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <vector>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"

namespace paylodge {

// Loads the type information on first use and keeps it until the module is unloaded. The registry is never asked, so an
// unregistered module scripts just as well. When loading fails, every method returns the failure and the next call
// tries again. Used on one thread at a time.
class CCustomTypeInfoHolder {
  public:
    constexpr CCustomTypeInfoHolder(const IID* interface_id, const GUID* library_id, WORD major, WORD minor) noexcept
        : interface_id_(interface_id), library_id_(library_id), major_(major), minor_(minor) {}

    // The three below return what the methods of IDispatch do. `instance` has the slots of the interface.
    [[nodiscard]] HRESULT GetTypeInfo(UINT index, LCID locale, ITypeInfo** info);
    [[nodiscard]] HRESULT GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale, DISPID* ids);
    [[nodiscard]] HRESULT Invoke(void* instance, DISPID member, REFIID reserved, LCID locale, WORD flags,
                                 DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception, UINT* argument_error);

  private:
    struct NamedMember {
        OwnedBstr name;
        DISPID id;
    };
    struct DeclaredMember {
        DISPID id;
        ComPtr<ITypeInfo> type;
    };

    [[nodiscard]] HRESULT Load();
    [[nodiscard]] HRESULT CheckLibrary(ITypeLib& library) const;
    void CacheMembers(ITypeLib& library, ITypeInfo& info);
    [[nodiscard]] ITypeInfo& TypeThatDeclares(DISPID member) const noexcept;

    const IID* interface_id_;
    const GUID* library_id_;
    WORD major_;
    WORD minor_;
    ComPtr<ITypeInfo> info_;
    // Both sorted, by name and by id.
    std::vector<NamedMember> names_;
    // The interface that declares a member, each with the same kind of type information as the whole one's.
    std::vector<DeclaredMember> members_;
};

}  // namespace paylodge
