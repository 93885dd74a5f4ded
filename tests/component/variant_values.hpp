// Values as script engines pass them.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include "com/bstr.hpp"

namespace paylodge::test {

// Strings stay their owner's.
[[nodiscard]] inline VARIANT Text(const OwnedBstr& text) {
    VARIANT value{};
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = text.Get();
    return value;
}

[[nodiscard]] inline VARIANT Number(LONG number) {
    VARIANT value{};
    V_VT(&value) = VT_I4;
    V_I4(&value) = number;
    return value;
}

[[nodiscard]] inline VARIANT OfType(VARTYPE type) {
    VARIANT value{};
    V_VT(&value) = type;
    return value;
}

[[nodiscard]] inline VARIANT Reference(VARIANT& target) {
    VARIANT value{};
    V_VT(&value) = VT_BYREF | VT_VARIANT;
    V_VARIANTREF(&value) = &target;
    return value;
}

}  // namespace paylodge::test
