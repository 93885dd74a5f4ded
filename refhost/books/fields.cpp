#include "refhost/books/fields.hpp"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>

#include "refhost/books/names.hpp"
#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

// A path such as "AccountAdd/Name" tells apart fields of the same name.
[[nodiscard]] std::string PathTo(const std::string& path, std::string_view name) {
    return path.empty() ? std::string(name) : path + '/' + std::string(name);
}

[[noreturn]] void RefuseValue(const std::string& path, std::string_view value, const std::string& expected) {
    constexpr size_t kMostShown = 60;
    const std::string shown = value.size() > kMostShown ? "of this length" : Quoted(value);
    throw RefusedRequest(Code::kInvalidValue, "The value " + shown + " of " + path + " is not " + expected + '.');
}

// "A, B, C", with the text that `name_of` takes from each.
template <class Entries>
[[nodiscard]] std::string Listed(const Entries& entries, const auto& name_of) {
    std::string text;
    for (const auto& entry : entries) {
        text.append(text.empty() ? "" : ", ").append(name_of(entry));
    }
    return text;
}

[[nodiscard]] std::string NamesOf(std::span<const Field> fields) {
    return Listed(fields, [](const Field& field) { return field.name; });
}

void CheckText(const std::string& value, const Field& field, const std::string& path) {
    if (CountCharacters(value) > field.longest) {
        RefuseValue(path, value, "at most " + std::to_string(field.longest) + " characters long");
    }
    if (field.form == Form::kName && HasControlCharacter(value)) {
        throw RefusedRequest(Code::kInvalidValue,
                             path + " holds a control character, a line end or a tab, which no name may have.");
    }
}

void CheckAmount(const std::string& value, const std::string& path) {
    const auto cents = ParseCents(value);
    if (!cents) {
        RefuseValue(path, value, "an amount such as 12.50");
    }
    if (std::abs(*cents) > kLargestAmount) {
        throw RefusedRequest(Code::kBeyondLimit,
                             "The amount of " + path + " is beyond the limit of " + FormatCents(kLargestAmount) + '.');
    }
}

void CheckValue(const std::string& value, const Field& field, const std::string& path) {
    switch (field.form) {
        case Form::kText:
        case Form::kName:
            CheckText(value, field, path);
            return;
        case Form::kBoolean:
            if (value != "true" && value != "false") {
                RefuseValue(path, value, "true or false");
            }
            return;
        case Form::kAmount:
            CheckAmount(value, path);
            return;
        case Form::kDate:
            if (!IsDate(value)) {
                RefuseValue(path, value, "a date of the form YYYY-MM-DD");
            }
            return;
        case Form::kDateTime:
            if (!IsDateTime(value)) {
                RefuseValue(path, value, "a time of the form YYYY-MM-DDTHH:MM:SS");
            }
            return;
        case Form::kCount:
            if (!ParseCount(value)) {
                RefuseValue(path, value, "a whole number above 0");
            }
            return;
        case Form::kChoice:
            if (CanonicalChoice(field.choices, value).empty()) {
                RefuseValue(path, value, "one of " + Listed(field.choices, std::identity()));
            }
            return;
        case Form::kAggregate:
            return;
    }
}

void CheckAggregate(const Element& element, std::span<const Field> fields, const std::string& path);

void CheckField(const Element& element, const Field& field, const std::string& path) {
    if (!element.attributes.empty()) {
        throw RefusedRequest(Code::kUnknownField,
                             path + " has the unknown attribute " + Quoted(element.attributes.front().name) + '.');
    }
    if (field.form == Form::kAggregate) {
        CheckAggregate(element, field.fields, path);
        return;
    }
    if (!element.children.empty()) {
        throw RefusedRequest(Code::kUnknownField,
                             path + " holds the unknown element " + Quoted(element.children.front().name) + '.');
    }
    CheckValue(element.text, field, path);
}

void CheckOccurrences(const Element& element, const Field& field, const std::string& path) {
    const auto count = std::ranges::count(element.children, field.name, &Element::name);
    if (count > 1 && field.occurs != Occurs::kRepeated) {
        throw RefusedRequest(Code::kRepeatedField, path + " is given more than once.");
    }
    const Element* const given = FindChild(element, field.name);
    const bool is_blank =
        given == nullptr || (field.form != Form::kAggregate && Trimmed(given->text).empty() && given->children.empty());
    if (field.occurs == Occurs::kOnce && is_blank) {
        throw RefusedRequest(Code::kMissingField, path + " is missing.");
    }
}

// Where a child stands in the table. Throws RefusedRequest for one that is not in it.
[[nodiscard]] size_t PositionOf(const Element& child, std::span<const Field> fields, const std::string& path) {
    const auto field = std::ranges::find(fields, child.name, &Field::name);
    if (field == fields.end()) {
        throw RefusedRequest(Code::kUnknownField, PathTo(path, child.name) + " is unknown here; expected: " +
                                                      (fields.empty() ? "nothing" : NamesOf(fields)) + '.');
    }
    return static_cast<size_t>(field - fields.begin());
}

void CheckAggregate(const Element& element, std::span<const Field> fields, const std::string& path) {
    if (!Trimmed(element.text).empty()) {
        throw RefusedRequest(Code::kUnknownField,
                             (path.empty() ? element.name : path) + " holds text where elements belong.");
    }
    for (const Element& child : element.children) {
        CheckField(child, fields[PositionOf(child, fields, path)], PathTo(path, child.name));
    }
    for (const Field& field : fields) {
        CheckOccurrences(element, field, PathTo(path, field.name));
    }
    size_t last = 0;
    for (const Element& child : element.children) {
        const size_t position = PositionOf(child, fields, path);
        if (position < last) {
            throw RefusedRequest(Code::kMisplacedField, PathTo(path, child.name) + " stands behind " +
                                                            std::string(fields[last].name) +
                                                            "; the order is: " + NamesOf(fields) + '.');
        }
        last = position;
    }
}

}  // namespace

void CheckFields(const Element& element, std::span<const Field> fields) { CheckAggregate(element, fields, {}); }

std::string_view CanonicalChoice(std::span<const std::string_view> choices, std::string_view value) {
    const auto found =
        std::ranges::find_if(choices, [&](std::string_view choice) { return IsSameName(choice, value); });
    return found == choices.end() ? std::string_view() : *found;
}

}  // namespace paylodge::refhost
