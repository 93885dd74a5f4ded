// Requests that add to the books.
#pragma once

#include "refhost/request.hpp"

namespace paylodge::refhost {

[[nodiscard]] std::span<const RequestKind> Additions() noexcept;

}  // namespace paylodge::refhost
