// The site that the objects of a page are created with: it says at which address the page is, as a browser's does.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <string_view>

#include "com/com_ptr.hpp"

namespace paylodge::workbench {

// `address` is the page's URL in UTF-8. Throws E_OUTOFMEMORY.
[[nodiscard]] ComPtr<IUnknown> MakePageSite(std::string_view address);

}  // namespace paylodge::workbench
