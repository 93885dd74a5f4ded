#include "refhost/books/fields.hpp"

#include <algorithm>
#include <string>

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

// UTF-8: every byte but the continuation bytes begins a character.
[[nodiscard]] size_t CountCharacters(std::string_view text) {
    return static_cast<size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

[[nodiscard]] std::string Listed(std::span<const std::string_view> choices) {
    std::string text = "one of ";
    for (const std::string_view choice : choices) {
        text += std::string(choice) + (choice == choices.back() ? "" : ", ");
    }
    return text;
}

void CheckValue(const std::string& value, const Field& field, const std::string& path) {
    switch (field.form) {
        case Form::kText:
            if (CountCharacters(value) > field.longest) {
                RefuseValue(path, value, "at most " + std::to_string(field.longest) + " characters long");
            }
            return;
        case Form::kBoolean:
            if (value != "true" && value != "false") {
                RefuseValue(path, value, "true or false");
            }
            return;
        case Form::kAmount:
            if (!ParseCents(value)) {
                RefuseValue(path, value, "an amount such as 12.50");
            }
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
                RefuseValue(path, value, Listed(field.choices));
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

void CheckAggregate(const Element& element, std::span<const Field> fields, const std::string& path) {
    if (!Trimmed(element.text).empty()) {
        throw RefusedRequest(Code::kUnknownField,
                             (path.empty() ? element.name : path) + " holds text where elements belong.");
    }
    for (const Element& child : element.children) {
        const auto field = std::ranges::find(fields, child.name, &Field::name);
        if (field == fields.end()) {
            throw RefusedRequest(Code::kUnknownField, PathTo(path, child.name) + " is unknown here.");
        }
        CheckField(child, *field, PathTo(path, child.name));
    }
    for (const Field& field : fields) {
        CheckOccurrences(element, field, PathTo(path, field.name));
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
