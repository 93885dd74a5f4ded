#include "refhost/books/request.hpp"

#include <algorithm>

#include "refhost/books/list_entries.hpp"
#include "refhost/books/queries.hpp"
#include "refhost/books/transactions.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] bool IsWanted(const Element& field, const Element& request) {
    return std::ranges::any_of(request.children, [&](const Element& child) {
        return child.name == kIncludeRetElement.name && child.text == field.name;
    });
}

}  // namespace

std::vector<const RequestKind*> RequestKinds() {
    std::vector<const RequestKind*> all;
    for (const std::span<const RequestKind> kinds : {Queries(), ListEntries(), Transactions()}) {
        for (const RequestKind& kind : kinds) {
            all.push_back(&kind);
        }
    }
    return all;
}

const RequestKind* FindRequestKind(std::string_view name) noexcept {
    for (const std::span<const RequestKind> kinds : {Queries(), ListEntries(), Transactions()}) {
        const auto found = std::ranges::find(kinds, name, &RequestKind::name);
        if (found != kinds.end()) {
            return &*found;
        }
    }
    return nullptr;
}

Element MakeReturned(const Element& record, const Element& request) {
    Element returned = MakeElement(record.name + "Ret");
    const bool has_choice = FindChild(request, kIncludeRetElement.name) != nullptr;
    for (const Element& field : record.children) {
        if (!has_choice || IsWanted(field, request)) {
            returned.children.push_back(field);
        }
    }
    return returned;
}

Answer AnswerWith(const Element& record, const Element& request) {
    return {.records = {MakeReturned(record, request)}, .not_found = {}};
}

}  // namespace paylodge::refhost
