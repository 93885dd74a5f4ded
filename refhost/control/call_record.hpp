// What every method of the host's objects does first: note the call and see whether it was planned to fail.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "refhost/objects/host_boundary.hpp"

namespace paylodge::refhost {

// A string argument in a record; a null string differs from an empty one.
[[nodiscard]] std::wstring Argument(BSTR text);
[[nodiscard]] std::wstring Argument(LONG number);
// The text of a string value, the type of any other.
[[nodiscard]] std::wstring Argument(const VARIANT& value);

// Notes "call(argument, argument)". The HRESULT that the call has to fail with, if that was planned.
[[nodiscard]] std::optional<HRESULT> Record(std::wstring_view call, std::initializer_list<std::wstring> arguments);

// A whole method: notes the call, then fails as planned or does the work. No C++ exception leaves it.
template <class Work, class... Arguments>
[[nodiscard]] HRESULT Serve(std::wstring_view call, const Work& work, const Arguments&... arguments) noexcept {
    return Guarded([&]() -> HRESULT {
        const auto failure = Record(call, {Argument(arguments)...});
        return failure ? *failure : work();
    });
}

// The same for a method with a result: E_POINTER for a null out parameter, which is left alone unless the work
// puts something there.
template <class Result, class Work, class... Arguments>
[[nodiscard]] HRESULT ServeResult(std::wstring_view call, Result* result, const Work& work,
                                  const Arguments&... arguments) noexcept {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = Result();
    return Serve(call, work, arguments...);
}

}  // namespace paylodge::refhost
