// What tests have to know about the platform that they run on.
#pragma once

#include <windows.h>

namespace paylodge::test {

[[nodiscard]] inline bool IsWine() noexcept {
    return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

// Where Wine differs from Windows, a test expects exactly what Wine does, so that it fails on the day the gap closes.
template <class Value>
[[nodiscard]] Value WindowsOrWine(Value on_windows, Value under_wine) {
    return IsWine() ? under_wine : on_windows;
}

}  // namespace paylodge::test
