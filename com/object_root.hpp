// Object root: reference counting and the interface table, written once for all classes.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <array>
#include <atomic>
#include <new>
#include <utility>

#include "com/com_ptr.hpp"
#include "com/module.hpp"

namespace paylodge {

// One row of a class's interface table: an interface, and the way to it from the object. A class names its rows as
// kInterfaces; the first one also serves IUnknown.
template <class Class>
struct InterfaceRow {
    const IID* id;
    void* (*cast)(Class* object) noexcept;

    // The row of Interface. Via differs from it where the class has it through another interface that extends it.
    template <class Interface, class Via = Interface>
    [[nodiscard]] static constexpr InterfaceRow Of() noexcept {
        return {&__uuidof(Interface), &Cast<Interface, Via>};
    }

  private:
    template <class Interface, class Via>
    [[nodiscard]] static void* Cast(Class* object) noexcept {
        return static_cast<Interface*>(static_cast<Via*>(object));
    }
};

// The object's interface with this id without a reference of its own, or null.
template <class Class>
[[nodiscard]] void* FindInterface(Class* object, REFIID id) noexcept {
    if (IsEqualIID(id, IID_IUnknown)) {
        return Class::kInterfaces.front().cast(object);
    }
    for (const auto& row : Class::kInterfaces) {
        if (IsEqualIID(id, *row.id)) {
            return row.cast(object);
        }
    }
    return nullptr;
}

// QueryInterface over the class's table; the reference is counted by whichever IUnknown the interface delegates to.
template <class Class>
[[nodiscard]] HRESULT QueryInterfaceOf(Class* object, REFIID id, void** found) {
    if (found == nullptr) {
        return E_POINTER;
    }
    *found = FindInterface(object, id);
    if (*found == nullptr) {
        return E_NOINTERFACE;
    }
    static_cast<IUnknown*>(*found)->AddRef();
    return S_OK;
}

// The references to one object. It is destroyed with the last one.
class ReferenceCount {
  public:
    [[nodiscard]] ULONG Add() noexcept { return count_.fetch_add(1, std::memory_order_relaxed) + 1; }

    // `object` is what holds this count and `part` what callers outside have interfaces of. References to others that
    // part holds are released while it is still whole (its FinalRelease, where it has one), since that calls out: those
    // who are called may call it back, with references that come and go. The module stays loaded until all is done.
    template <class Object, class Part>
    [[nodiscard]] ULONG Remove(Object* object, Part& part) {
        const ULONG left = count_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            const ModuleReference module;
            count_.store(1, std::memory_order_relaxed);
            if constexpr (requires { part.FinalRelease(); }) {
                part.FinalRelease();
            }
            delete object;
        }
        return left;
    }

  private:
    std::atomic<ULONG> count_{0};
};

// A reference-counted object of a class. It holds the module.
template <class Class>
class ComObject final : public Class {
  public:
    // A new object with one reference, or null without memory.
    template <class... Arguments>
    [[nodiscard]] static ComPtr<ComObject> Create(Arguments&&... arguments) {
        return ComPtr<ComObject>(new (std::nothrow) ComObject(std::forward<Arguments>(arguments)...));
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        return QueryInterfaceOf(static_cast<Class*>(this), id, object);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return references_.Add(); }
    STDMETHODIMP_(ULONG) Release() override { return references_.Remove(this, *this); }

  private:
    friend ReferenceCount;
    using Class::Class;
    ~ComObject() = default;

    ReferenceCount references_;
    ModuleReference module_;
};

// An object of a class that is part of another one, the outer object: that one has all its interfaces and
// counts the references to them. Only the IUnknown that is handed out here, the inner one, counts references to the
// part.
template <class Class>
class AggregatedObject final : public IUnknown {
  public:
    // The inner IUnknown with one reference, or null without memory. `outer` is not counted: it holds the part.
    [[nodiscard]] static ComPtr<IUnknown> Create(IUnknown& outer) {
        return ComPtr<IUnknown>(new (std::nothrow) AggregatedObject(outer));
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (object != nullptr && IsEqualIID(id, IID_IUnknown)) {
            *object = ComPtr<IUnknown>(this).Detach();
            return S_OK;
        }
        return QueryInterfaceOf(static_cast<Class*>(&part_), id, object);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return references_.Add(); }
    STDMETHODIMP_(ULONG) Release() override { return references_.Remove(this, part_); }

  private:
    class Part final : public Class {
      public:
        explicit Part(IUnknown& outer) noexcept : outer_(outer) {}
        STDMETHODIMP QueryInterface(REFIID id, void** object) override { return outer_.QueryInterface(id, object); }
        STDMETHODIMP_(ULONG) AddRef() override { return outer_.AddRef(); }
        STDMETHODIMP_(ULONG) Release() override { return outer_.Release(); }

      private:
        IUnknown& outer_;
    };

    friend ReferenceCount;
    explicit AggregatedObject(IUnknown& outer) : part_(outer) {}
    ~AggregatedObject() = default;

    ReferenceCount references_;
    Part part_;
    ModuleReference module_;
};

}  // namespace paylodge
