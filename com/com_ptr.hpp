// An owned reference to a component object.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <cassert>
#include <utility>

namespace paylodge {

template <class Interface>
class ComPtr {
  public:
    ComPtr() noexcept = default;
    // Takes a reference of its own.
    explicit ComPtr(Interface* object) noexcept : object_(object) {
        if (object_ != nullptr) {
            object_->AddRef();
        }
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.object_) {}
    ComPtr(ComPtr&& other) noexcept : object_(other.Detach()) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ComPtr() { Reset(); }

    // Takes over a reference that the caller owns.
    [[nodiscard]] static ComPtr Attach(Interface* object) noexcept {
        ComPtr result;
        result.object_ = object;
        return result;
    }
    [[nodiscard]] Interface* Detach() noexcept { return std::exchange(object_, nullptr); }

    [[nodiscard]] Interface* Get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    Interface* operator->() const noexcept {
        assert(object_ != nullptr);
        return object_;
    }

    // The slot for a function that hands out a reference. The pointer has to be empty.
    [[nodiscard]] Interface** Receive() noexcept {
        assert(object_ == nullptr);
        return &object_;
    }
    // The same for functions that take an untyped slot beside an interface id.
    [[nodiscard]] void** ReceiveVoid() noexcept { return reinterpret_cast<void**>(Receive()); }

    void Reset() noexcept {
        if (Interface* const old = std::exchange(object_, nullptr)) {
            old->Release();
        }
    }

    // Asks the object for another interface; `other` has to be empty. E_POINTER without an object.
    template <class Other>
    [[nodiscard]] HRESULT As(ComPtr<Other>& other) const {
        return object_ == nullptr ? E_POINTER : object_->QueryInterface(__uuidof(Other), other.ReceiveVoid());
    }

    // Object identity is a matter of IUnknown, not of addresses.
    bool operator==(const ComPtr&) const = delete;

  private:
    Interface* object_ = nullptr;
};

}  // namespace paylodge
