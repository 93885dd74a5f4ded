// What every method of the host's objects does first: note the call and see whether it was planned to fail.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace paylodge::refhost {

// A string argument in a record; a null string differs from an empty one.
[[nodiscard]] std::wstring Argument(BSTR text);
[[nodiscard]] std::wstring Argument(LONG number);

// Notes "call(argument, argument)". The code that the call has to fail with, if that was planned.
[[nodiscard]] std::optional<HRESULT> Record(std::wstring_view call, std::initializer_list<std::wstring> arguments);

}  // namespace paylodge::refhost
