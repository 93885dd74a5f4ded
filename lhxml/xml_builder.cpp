#include "lhxml/xml_builder.hpp"

#include <array>
#include <cassert>

namespace paylodge {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr size_t kIndentation = 4;

[[nodiscard]] constexpr std::string_view EntityFor(char character) noexcept {
    switch (character) {
        case '"':
            return "&quot;";
        case '&':
            return "&amp;";
        case '\'':
            return "&apos;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        default:
            return {};
    }
}

// Whether a byte has an entity, by its value: the search for the next one looks at every byte of every value.
constexpr auto kHasEntity = [] {
    std::array<bool, 256> table{};
    for (size_t byte = 0; byte < table.size(); ++byte) {
        table[byte] = !EntityFor(static_cast<char>(byte)).empty();
    }
    return table;
}();

}  // namespace

void AppendEscaped(std::string& text, std::string_view value) {
    size_t run_start = 0;
    for (size_t position = 0; position < value.size(); ++position) {
        if (kHasEntity[static_cast<unsigned char>(value[position])]) {
            text.append(value, run_start, position - run_start);
            text.append(EntityFor(value[position]));
            run_start = position + 1;
        }
    }
    text.append(value, run_start);
}

void XMLBuilder::AddProcessingInstruction(std::string_view text) {
    text_.append("<").append(text).append(">").append(kLineEnd);
}

void XMLBuilder::OpenElement(std::string_view name, std::span<const std::string_view> attribute_names,
                             std::span<const std::string_view> attribute_values) {
    assert(attribute_names.size() == attribute_values.size());
    AppendIndentation();
    text_.append("<").append(name);
    for (size_t index = 0; index < attribute_names.size(); ++index) {
        text_.append(" ").append(attribute_names[index]).append("=\"");
        AppendEscaped(text_, attribute_values[index]);
        text_.append("\"");
    }
    text_.append(">").append(kLineEnd);
    ++depth_;
}

void XMLBuilder::AddElement(std::string_view name, std::string_view value) {
    if (value.empty()) {
        return;
    }
    AppendIndentation();
    text_.append("<").append(name).append(">");
    AppendEscaped(text_, value);
    text_.append("</").append(name).append(">").append(kLineEnd);
}

void XMLBuilder::CloseElement(std::string_view name) {
    --depth_;
    AppendIndentation();
    text_.append("</").append(name).append(">").append(kLineEnd);
}

void XMLBuilder::AddVerbatim(std::string_view text) { text_.append(text); }

void XMLBuilder::AppendIndentation() {
    if (depth_ > 0) {
        text_.append(kIndentation * static_cast<size_t>(depth_), ' ');
    }
}

}  // namespace paylodge
