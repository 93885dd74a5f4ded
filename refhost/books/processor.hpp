// Answers one request document from the books of a company.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "refhost/books/company.hpp"
#include "refhost/books/document.hpp"
#include "refhost/books/problems.hpp"
#include "refhost/books/status.hpp"

namespace paylodge::refhost {

// Throws RefusedRequest when the document is not a request document of a version that the host knows. The functions
// below that take a document need one that was checked.
void CheckEnvelope(const Document& document);

// The response document's element. What the requests change is committed once, after the last request; when that cannot
// be, the books are as before and every response has the reason. `now` is YYYY-MM-DDTHH:MM:SS.
[[nodiscard]] Element ProcessDocument(const Document& document, Company& company, std::string_view now);

// The response with the same error for each request.
[[nodiscard]] Element RefuseRequests(const Document& document, const HostError& error);

// The response to a document that cannot be processed at all: one ErrorRs.
[[nodiscard]] Element ErrorResponse(const Status& status);

// The text of a response document.
[[nodiscard]] std::string ResponseText(const Element& response);

}  // namespace paylodge::refhost
