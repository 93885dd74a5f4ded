// Rows of a table for parameterised tests.
#pragma once

#include <algorithm>
#include <iterator>
#include <ranges>
#include <vector>

namespace paylodge::test {

// The rows that a test applies to, in the table's order: a test is made for these only, rather than for each row and
// passing without a check where it does not apply.
template <std::ranges::input_range Rows, class Predicate>
[[nodiscard]] std::vector<std::ranges::range_value_t<Rows>> RowsThat(const Rows& rows, Predicate applies) {
    std::vector<std::ranges::range_value_t<Rows>> chosen;
    std::ranges::copy_if(rows, std::back_inserter(chosen), applies);
    return chosen;
}

}  // namespace paylodge::test
