// What the requests do, in words for those who write them: docs/requests.md.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "refhost/books/status.hpp"

namespace paylodge::refhost {

// What the tables of the processor do not say of a request.
struct RequestNotes {
    std::string_view request;
    std::string_view summary;
    // What it changes in the books; empty for requests that change nothing.
    std::string_view changes;
    std::string_view returns;
    // The statuses that are its own, besides those of every request.
    std::span<const Code> statuses;
    // A request that works with the sample company.
    std::string_view example;
};

[[nodiscard]] std::span<const RequestNotes> Notes() noexcept;

// The page: the notes, with the fields of each request as the processor checks them.
[[nodiscard]] std::string RequestGuide();

}  // namespace paylodge::refhost
