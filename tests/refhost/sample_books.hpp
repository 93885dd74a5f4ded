// A small company in memory, and requests sent to it.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/books/processor.hpp"

namespace paylodge::refhost {

inline constexpr std::string_view kNow = "2025-03-11T10:20:30";

// Five accounts, three customers, two payment methods, three invoices and nothing else.
[[nodiscard]] Company SampleBooks();

// A request document around these requests.
[[nodiscard]] std::string Envelope(std::string_view requests, std::string_view on_error = "continueOnError");

// The document that the platform's parser makes of UTF-8 text.
[[nodiscard]] Document Read(std::string_view text);

// The response elements to these requests.
[[nodiscard]] std::vector<Element> Send(
    Company& company, std::string_view requests, std::string_view on_error = "continueOnError",
    const std::function<void()>& save = [] {});
// The response element to one request.
[[nodiscard]] Element SendOne(Company& company, std::string_view request);

[[nodiscard]] std::string StatusCode(const Element& response);
[[nodiscard]] std::string StatusMessage(const Element& response);
// These texts of each record of a response.
[[nodiscard]] std::vector<std::string> Texts(const Element& response, std::string_view field);

}  // namespace paylodge::refhost
