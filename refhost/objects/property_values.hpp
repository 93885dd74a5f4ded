// The values of a property bag as the company file has them.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <optional>
#include <string>
#include <string_view>

#include "refhost/books/data_file_records.hpp"

namespace paylodge::refhost {

// Text in which the characters that XML cannot carry, halves of surrogate pairs and the backslash are written as a
// backslash, u and four hexadecimal digits, so that every string comes back as it was.
[[nodiscard]] std::string EscapedText(std::wstring_view text);
[[nodiscard]] std::wstring UnescapedText(std::string_view text);

// Nothing for a kind of value that the company file does not hold: it holds strings, 16 and 32 bit integers, truth
// values and currency amounts. Throws COM errors.
[[nodiscard]] std::optional<PropertyText> TextFromValue(const VARIANT& value);
// Fills an empty variant that the caller clears. DISP_E_TYPEMISMATCH or the like for a value in the company file that
// is none; throws E_OUTOFMEMORY.
[[nodiscard]] HRESULT ValueFromText(const PropertyText& text, VARIANT* value);

}  // namespace paylodge::refhost
