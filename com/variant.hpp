// A VARIANT that frees what it holds.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cassert>

#include "com/bstr.hpp"

namespace paylodge {

class OwnedVariant {
  public:
    OwnedVariant() noexcept { ::VariantInit(&value_); }
    explicit OwnedVariant(OwnedBstr text) noexcept : OwnedVariant() {
        V_VT(&value_) = VT_BSTR;
        V_BSTR(&value_) = text.Detach();
    }
    ~OwnedVariant() { ::VariantClear(&value_); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;

    [[nodiscard]] VARTYPE Type() const noexcept { return V_VT(&value_); }
    // The string that is held; only for VT_BSTR.
    [[nodiscard]] BSTR Bstr() const noexcept {
        assert(Type() == VT_BSTR);
        return V_BSTR(&value_);
    }

    [[nodiscard]] const VARIANT& Get() const noexcept { return value_; }
    // The slot for a function that hands out a value. The variant has to be empty.
    [[nodiscard]] VARIANT* Receive() noexcept {
        assert(Type() == VT_EMPTY);
        return &value_;
    }

  private:
    VARIANT value_;
};

}  // namespace paylodge
