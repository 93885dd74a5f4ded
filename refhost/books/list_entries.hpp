// The requests that add entries to lists and change them.
#pragma once

#include "refhost/books/request.hpp"

namespace paylodge::refhost {

[[nodiscard]] std::span<const RequestKind> ListEntries() noexcept;

}  // namespace paylodge::refhost
