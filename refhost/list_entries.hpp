// The requests that add entries to lists and change them.
#pragma once

#include "refhost/request.hpp"

namespace paylodge::refhost {

[[nodiscard]] std::span<const RequestKind> ListEntries() noexcept;

}  // namespace paylodge::refhost
