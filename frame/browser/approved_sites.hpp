// The sites whose pages may use the accounting object.
#pragma once

#include <span>

#include "frame/browser/site_table.hpp"

namespace paylodge {

// A deployment edits the table behind this and nothing else.
[[nodiscard]] std::span<const SiteEntry> ApprovedSites() noexcept;

}  // namespace paylodge
