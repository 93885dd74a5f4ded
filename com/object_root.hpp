// Object root: reference counting and the interface table, written once for all classes.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <atomic>
#include <new>
#include <utility>

#include "com/com_ptr.hpp"
#include "com/module.hpp"

namespace paylodge {

// One row of an interface table: the object answers for Interface with its base Via. Via differs from Interface where
// the class has the interface through another one that extends it.
template <class Interface, class Via = Interface>
struct Entry {
    template <class Class>
    [[nodiscard]] static void* Cast(Class* object) noexcept {
        return static_cast<Interface*>(static_cast<Via*>(object));
    }
    [[nodiscard]] static bool Answers(REFIID id) noexcept { return IsEqualIID(id, __uuidof(Interface)); }
};

// The interfaces of a class; the first row also answers for IUnknown.
template <class First, class... Others>
struct InterfaceTable {
    // The interface with this id without a reference of its own, or null.
    template <class Class>
    [[nodiscard]] static void* Find(Class* object, REFIID id) noexcept {
        if (IsEqualIID(id, IID_IUnknown) || First::Answers(id)) {
            return First::Cast(object);
        }
        void* found = nullptr;
        static_cast<void>(((Others::Answers(id) && (found = Others::Cast(object)) != nullptr) || ...));
        return found;
    }
};

// A reference-counted object of a class that names its interface table as `Interfaces`. It holds the module.
template <class Class>
class ComObject final : public Class {
  public:
    // A new object with one reference, or null without memory.
    template <class... Arguments>
    [[nodiscard]] static ComPtr<ComObject> Create(Arguments&&... arguments) {
        return ComPtr<ComObject>(new (std::nothrow) ComObject(std::forward<Arguments>(arguments)...));
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = Class::Interfaces::Find(static_cast<Class*>(this), id);
        if (*object == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

    STDMETHODIMP_(ULONG) AddRef() override { return references_.fetch_add(1, std::memory_order_relaxed) + 1; }

    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            // Destroying it may call others who take a reference for the length of a call.
            references_.store(1, std::memory_order_relaxed);
            delete this;
        }
        return left;
    }

  private:
    using Class::Class;
    ~ComObject() = default;

    std::atomic<ULONG> references_{0};
    ModuleReference module_;
};

}  // namespace paylodge
