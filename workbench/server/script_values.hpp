// Values between messages and automation.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "com/variant.hpp"
#include "workbench/server/messages.hpp"

namespace paylodge::workbench {

// As a script engine passes it: whole numbers in 32 bits as integers, other numbers as doubles, null as VT_NULL,
// undefined (discarded) as VT_EMPTY. Throws E_OUTOFMEMORY.
void SetVariant(VARIANT& variant, const Json& value);

// As script shows it: a null string is an empty one. Values by reference are read. What script could not use, such as
// an object, is null.
[[nodiscard]] Json ReadVariant(const VARIANT& variant);

}  // namespace paylodge::workbench
