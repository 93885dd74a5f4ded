// What the platform calls an HRESULT.
#pragma once

#include <windows.h>

#include <string_view>

namespace paylodge {

// "E_FAIL" for 0x80004005; empty for an HRESULT that has no name of the platform's here. Valid for as long as the
// process runs. Callable from any thread.
[[nodiscard]] std::string_view HResultName(HRESULT result) noexcept;

}  // namespace paylodge
