// The requests that record transactions, and the one that shows them.
#pragma once

#include "refhost/books/request.hpp"

namespace paylodge::refhost {

[[nodiscard]] std::span<const RequestKind> Transactions() noexcept;

}  // namespace paylodge::refhost
