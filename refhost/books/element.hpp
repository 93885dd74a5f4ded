// A small tree of named values: requests, responses and the company file are all held in it. Texts are UTF-8.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace paylodge::refhost {

struct Attribute {
    std::string name;
    std::string value;

    bool operator==(const Attribute&) const = default;
};

// An element has a text or children; one that has both keeps the text, so that a check can refuse it.
struct Element {
    std::string name;
    std::vector<Attribute> attributes;
    std::string text;
    std::vector<Element> children;

    bool operator==(const Element&) const = default;
};

[[nodiscard]] Element MakeElement(std::string_view name, std::string_view text = {});

// The first child with this name, or null.
[[nodiscard]] const Element* FindChild(const Element& element, std::string_view name) noexcept;
[[nodiscard]] Element* FindChild(Element& element, std::string_view name) noexcept;
// The text of that child; empty without one.
[[nodiscard]] std::string_view ChildText(const Element& element, std::string_view name) noexcept;
// Replaces the text of that child, which is added at the end when there is none.
void SetChildText(Element& element, std::string_view name, std::string_view text);
// Adds a child with this text unless the text is empty.
void AddText(Element& element, std::string_view name, std::string_view text);

// The value of an attribute, or null.
[[nodiscard]] const std::string* FindAttribute(const Element& element, std::string_view name) noexcept;

}  // namespace paylodge::refhost
