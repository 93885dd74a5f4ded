// What an HRESULT is called.
#pragma once

#include <windows.h>

#include <string>

namespace paylodge::refhost {

// The system's words for it in the user's language; empty where it has none.
[[nodiscard]] std::string SystemText(HRESULT result);

// "0x80004005 E_FAIL", with the system's words for it where it has any.
[[nodiscard]] std::string DescribeResult(HRESULT result);

}  // namespace paylodge::refhost
