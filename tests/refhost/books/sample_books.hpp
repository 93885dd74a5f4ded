// A small company in memory, and requests sent to it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/books/processor.hpp"

namespace paylodge::refhost {

inline constexpr std::string_view kNow = "2025-03-11T10:20:30";

// Seven accounts, three customers, two payment methods, three invoices and what was paid for one of them.
[[nodiscard]] std::unique_ptr<Company> SampleBooks();

// A request document around these requests.
[[nodiscard]] std::string Envelope(std::string_view requests, std::string_view on_error = "continueOnError");

// The response elements to these requests. The test fails when the books are not true afterwards.
[[nodiscard]] std::vector<Element> Send(Company& company, std::string_view requests,
                                        std::string_view on_error = "continueOnError");
// The response element to one request.
[[nodiscard]] Element SendOne(Company& company, std::string_view request);

[[nodiscard]] std::string BalanceOf(Company& company, const ListKind& kind, std::string_view name);

[[nodiscard]] std::string StatusCode(const Element& response);
[[nodiscard]] std::string StatusMessage(const Element& response);
// These texts of each record of a response.
[[nodiscard]] std::vector<std::string> Texts(const Element& response, std::string_view field);

}  // namespace paylodge::refhost
