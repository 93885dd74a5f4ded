// Class objects: how callers outside create the module's classes.
#pragma once

#include <windows.h>

#include <comdef.h>
#include <unknwn.h>

#include <span>

#include "com/boundary.hpp"
#include "com/object_root.hpp"

namespace paylodge {

// Base of a class that is created through a class object; knows its class id.
template <class Class, const CLSID* id>
class CComCoClass {
  public:
    [[nodiscard]] static const CLSID& GetObjectCLSID() noexcept { return *id; }
};

// The stock class object of one class.
template <class Class>
class ClassFactory : public IClassFactory {
  public:
    using Row = InterfaceRow<ClassFactory>;
    static constexpr std::array kInterfaces = {Row::template Of<IClassFactory>()};

    // With an outer object the new one becomes a part of it, and the caller gets the part's inner IUnknown:
    // CLASS_E_NOAGGREGATION for any other interface. E_OUTOFMEMORY, or what QueryInterface of the new object returns.
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (outer != nullptr && !IsEqualIID(id, IID_IUnknown)) {
            return CLASS_E_NOAGGREGATION;
        }
        return AtBoundary([&] {
            return outer == nullptr ? Deliver(ComObject<Class>::Create(), id, object)
                                    : Deliver(AggregatedObject<Class>::Create(*outer), id, object);
        });
    }

    // Unlocking what is not locked changes nothing.
    STDMETHODIMP LockServer(BOOL lock) override {
        lock ? Module::Lock() : Module::Unlock();
        return S_OK;
    }

  protected:
    ~ClassFactory() = default;

  private:
    template <class Object>
    [[nodiscard]] static HRESULT Deliver(const ComPtr<Object>& created, REFIID id, void** object) {
        return created ? created->QueryInterface(id, object) : E_OUTOFMEMORY;
    }
};

// One row of the table of classes that a module serves.
struct ClassEntry {
    const CLSID* id;
    HRESULT (*get_class_object)(REFIID interface_id, void** class_object);
};

template <class Class>
[[nodiscard]] ClassEntry MakeClassEntry() noexcept {
    return {&Class::GetObjectCLSID(), [](REFIID id, void** object) -> HRESULT {
                const auto factory = ComObject<ClassFactory<Class>>::Create();
                return factory ? factory->QueryInterface(id, object) : E_OUTOFMEMORY;
            }};
}

// What DllGetClassObject returns for a module with these classes.
[[nodiscard]] inline HRESULT GetClassObject(std::span<const ClassEntry> classes, REFCLSID class_id, REFIID id,
                                            void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    for (const ClassEntry& entry : classes) {
        if (IsEqualCLSID(*entry.id, class_id)) {
            return entry.get_class_object(id, object);
        }
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace paylodge
