// Conversions between COM strings (UTF-16) and the library's narrow strings. The function's name says the code page:
// the system's (Ansi) or the calling thread's (ThreadAnsi). Lengths are kept, so embedded nulls survive; characters
// outside the code page become the closest one that it has, or its default character. All raise E_OUTOFMEMORY.
#pragma once

#include <string>
#include <string_view>

#include "com/bstr.hpp"

namespace paylodge {

[[nodiscard]] std::string AnsiFromWide(std::wstring_view text);
// A null string gives the empty string.
[[nodiscard]] std::string AnsiFromBstr(BSTR text);
[[nodiscard]] OwnedBstr BstrFromAnsi(std::string_view text);
[[nodiscard]] OwnedBstr BstrFromThreadAnsi(std::string_view text);

}  // namespace paylodge
