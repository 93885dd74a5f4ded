// Queries: which records of a list a request asks for.
#pragma once

#include "refhost/books/request.hpp"

namespace paylodge::refhost {

[[nodiscard]] std::span<const RequestKind> Queries() noexcept;

}  // namespace paylodge::refhost
