// Whether the books are true.
#pragma once

#include <string>
#include <vector>

#include "refhost/books/company.hpp"

namespace paylodge::refhost {

// A sentence for each thing that is wrong; empty when the database is whole, debits equal credits, every balance is the
// sum of its postings, and what remains of each invoice and payment is what was not applied.
[[nodiscard]] std::vector<std::string> Audit(Company& company);

}  // namespace paylodge::refhost
