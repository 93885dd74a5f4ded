// A company as readable text: XML in which every record stands as responses show it, and each transaction with its
// postings.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "refhost/books/company.hpp"

namespace paylodge::refhost {

// Importing the text gives a company whose text is the same again.
[[nodiscard]] std::string ExportText(Company& company);

// Fills a company without records with those of the text; all of them or none. What follows from other parts of the
// books, such as a balance, may be left out; where it is given it has to be right. Throws HostError.
void ImportText(Company& company, std::string_view text);

// The name of the company in the text. Throws HostError for text that is no company's.
[[nodiscard]] std::string CompanyNameIn(std::string_view text);

}  // namespace paylodge::refhost
