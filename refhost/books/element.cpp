#include "refhost/books/element.hpp"

#include <algorithm>

namespace paylodge::refhost {
namespace {

// The first entry with this name, or null.
[[nodiscard]] auto* Find(auto& entries, std::string_view name, const auto& name_of) noexcept {
    const auto found = std::ranges::find(entries, name, name_of);
    return found == entries.end() ? nullptr : &*found;
}

}  // namespace

Element MakeElement(std::string_view name, std::string_view text) {
    Element element;
    element.name = name;
    element.text = text;
    return element;
}

const Element* FindChild(const Element& element, std::string_view name) noexcept {
    return Find(element.children, name, &Element::name);
}

Element* FindChild(Element& element, std::string_view name) noexcept {
    return Find(element.children, name, &Element::name);
}

std::string_view ChildText(const Element& element, std::string_view name) noexcept {
    const Element* const child = FindChild(element, name);
    return child == nullptr ? std::string_view() : std::string_view(child->text);
}

void SetChildText(Element& element, std::string_view name, std::string_view text) {
    if (Element* const child = FindChild(element, name)) {
        child->text = text;
    } else {
        element.children.push_back(MakeElement(name, text));
    }
}

void AddText(Element& element, std::string_view name, std::string_view text) {
    if (!text.empty()) {
        element.children.push_back(MakeElement(name, text));
    }
}

const std::string* FindAttribute(const Element& element, std::string_view name) noexcept {
    const Attribute* const found = Find(element.attributes, name, &Attribute::name);
    return found == nullptr ? nullptr : &found->value;
}

}  // namespace paylodge::refhost
