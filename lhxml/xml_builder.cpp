#include "lhxml/xml_builder.hpp"

#include <emmintrin.h>

#include <bit>
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

// One bit for each of the 16 characters that has an entity. Both architectures have these instructions.
[[nodiscard]] unsigned EscapesIn(const char* characters) noexcept {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(characters));
    __m128i found = _mm_setzero_si128();
    for (const char special : {'"', '&', '\'', '<', '>'}) {
        found = _mm_or_si128(found, _mm_cmpeq_epi8(block, _mm_set1_epi8(special)));
    }
    return static_cast<unsigned>(_mm_movemask_epi8(found));
}

// The position of the next character that has an entity, from `start` on; the value's size when there is none.
[[nodiscard]] size_t FindEscape(std::string_view value, size_t start) noexcept {
    constexpr size_t kBlock = sizeof(__m128i);
    size_t position = start;
    for (; value.size() - position >= kBlock; position += kBlock) {
        if (const unsigned escapes = EscapesIn(value.data() + position); escapes != 0) {
            return position + static_cast<size_t>(std::countr_zero(escapes));
        }
    }
    while (position < value.size() && EntityFor(value[position]).empty()) {
        ++position;
    }
    return position;
}

}  // namespace

void AppendEscaped(std::string& text, std::string_view value) {
    size_t run_start = 0;
    for (size_t found = FindEscape(value, 0); found < value.size(); found = FindEscape(value, run_start)) {
        text.append(value, run_start, found - run_start).append(EntityFor(value[found]));
        run_start = found + 1;
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
