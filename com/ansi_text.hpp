// Conversions between COM strings (UTF-16) and the library's narrow strings. The function's name says the code page:
// the system's (Ansi) or the calling thread's (ThreadAnsi). Lengths are kept, so embedded nulls survive. A character
// outside the code page becomes its default character, never one that looks alike: a full-width "less than" must not
// turn into markup. All throw E_OUTOFMEMORY.
#pragma once

#include <string>
#include <string_view>

#include "com/bstr.hpp"

namespace paylodge {

// In the given code page, which the two below name.
[[nodiscard]] std::string NarrowFromWide(UINT code_page, std::wstring_view text);
[[nodiscard]] std::string AnsiFromWide(std::wstring_view text);
// A null string becomes the empty string.
[[nodiscard]] std::string AnsiFromBstr(BSTR text);
[[nodiscard]] OwnedBstr BstrFromAnsi(std::string_view text);
[[nodiscard]] OwnedBstr BstrFromThreadAnsi(std::string_view text);

}  // namespace paylodge
