// The requests that the host knows, one row each, and how a row's response is made.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/books/company.hpp"
#include "refhost/books/element.hpp"
#include "refhost/books/fields.hpp"

namespace paylodge::refhost {

// What a request is carried out on, and what its response is made of.
struct RequestContext {
    const Element& request;
    Company& company;
    // The time of the document, YYYY-MM-DDTHH:MM:SS.
    std::string_view now;
};

struct Answer {
    // Records named as the response shows them.
    std::vector<Element> records;
    // What a query names and the books lack; the records that they do have are in the response all the same.
    std::string not_found;
};

struct RequestKind {
    std::string_view name;
    std::span<const Field> fields;
    // The request was checked against the fields. Throws RefusedRequest; what was changed until then is taken back.
    Answer (*answer)(const RequestContext& context);
    bool changes_books = false;
};

// All of them.
[[nodiscard]] std::vector<const RequestKind*> RequestKinds();
// The row for a request element of this name, or null.
[[nodiscard]] const RequestKind* FindRequestKind(std::string_view name) noexcept;

// The record as a response shows it: named after its list, and only with those fields that the request's
// IncludeRetElement elements name, if it has any.
[[nodiscard]] Element MakeReturned(const Element& record, const Element& request);

// The response to a request that added or changed one record.
[[nodiscard]] Answer AnswerWith(const Element& record, const Element& request);

}  // namespace paylodge::refhost
