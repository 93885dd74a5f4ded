#include "refhost/element.hpp"

#include <algorithm>
#include <utility>

namespace paylodge::refhost {

Element MakeElement(std::string_view name, std::string_view text) {
    Element element;
    element.name = name;
    element.text = text;
    return element;
}

const Element* FindChild(const Element& element, std::string_view name) noexcept {
    const auto found = std::ranges::find(element.children, name, &Element::name);
    return found == element.children.end() ? nullptr : &*found;
}

Element* FindChild(Element& element, std::string_view name) noexcept {
    return const_cast<Element*>(FindChild(std::as_const(element), name));
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
    const auto found = std::ranges::find(element.attributes, name, &Attribute::name);
    return found == element.attributes.end() ? nullptr : &found->value;
}

}  // namespace paylodge::refhost
