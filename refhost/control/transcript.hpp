// The passing requests and responses, readably on standard output, when LEDGERHALL_TRANSCRIPT is 1.
#pragma once

#include <string_view>

namespace paylodge::refhost {

void PrintRequest(std::wstring_view request);
void PrintResponse(std::wstring_view response);

}  // namespace paylodge::refhost
