// The newest entries of the log, as they are shown and saved: card numbers are masked before an entry is kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "workbench/server/messages.hpp"

namespace paylodge::workbench {

class LogBook {
  public:
    // Numbers an entry, masks card numbers in all of its texts, cuts long ones and keeps it; older ones go when there
    // are too many. Returns its text, which is valid until the next one is added.
    const std::string& Add(Json entry);

    [[nodiscard]] const std::deque<std::string>& Entries() const noexcept { return entries_; }
    void Clear() noexcept;

  private:
    std::deque<std::string> entries_;
    std::size_t bytes_ = 0;
    std::int64_t last_number_ = 0;
};

// The same value with card numbers masked in texts and numbers, and long texts cut.
[[nodiscard]] Json Masked(const Json& value);

}  // namespace paylodge::workbench
