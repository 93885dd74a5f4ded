// What XMLBuilder writes is read by another parser as exactly what was written.
#include <expat.h>

#include <algorithm>
#include <array>
#include <memory>
#include <type_traits>

#include "lhxml/xml_builder.hpp"
#include "tests/fuzz/pieces.hpp"

namespace paylodge {
namespace {

using fuzz::ExpectSame;
using fuzz::ExpectTrue;

constexpr std::string_view kAggregate = "A";
constexpr std::string_view kElement = "E";

// Control characters cannot stand in XML, however they are written, and the builder leaves them as they are: that is
// its caller's affair.
[[nodiscard]] std::string WithoutControlCharacters(std::string text) {
    std::ranges::replace_if(
        text,
        [](char character) {
            return static_cast<unsigned char>(character) < 0x20 && character != '\t' && character != '\n' &&
                   character != '\r';
        },
        '?');
    return text;
}

// Bytes as the parser returns them: ISO 8859-1 as UTF-8, every line end as a line feed.
[[nodiscard]] std::string AsParsed(std::string_view text) {
    std::string parsed;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte >= 0x80) {
            parsed += static_cast<char>(0xC0U | byte >> 6U);
            parsed += static_cast<char>(0x80U | (byte & 0x3FU));
        } else if (byte != '\r') {
            parsed += text[i];
        } else if (i + 1 == text.size() || text[i + 1] != '\n') {
            parsed += '\n';
        }
    }
    return parsed;
}

[[nodiscard]] std::string AttributeAsParsed(std::string_view text) {
    std::string parsed = AsParsed(text);
    std::ranges::replace_if(parsed, [](char character) { return character == '\n' || character == '\t'; }, ' ');
    return parsed;
}

// A document as one line: "(" and the attribute of an aggregate, "[" text "]" for an element, ")".
class Reader {
  public:
    [[nodiscard]] static std::string Read(const std::string& document) {
        Reader reader;
        const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&::XML_ParserFree)> parser(
            ::XML_ParserCreate("ISO-8859-1"), &::XML_ParserFree);
        ::XML_SetUserData(parser.get(), &reader);
        ::XML_SetElementHandler(parser.get(), Open, Close);
        ::XML_SetCharacterDataHandler(parser.get(), AddText);
        const auto status = ::XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE);
        ExpectTrue(status == XML_STATUS_OK, "not well-formed");
        return reader.line_;
    }

  private:
    static void Open(void* self, const XML_Char* name, const XML_Char** attributes) {
        auto& reader = *static_cast<Reader*>(self);
        reader.TakeIndentation();
        if (name == kAggregate) {
            reader.line_.append("(").append(attributes[0] == nullptr ? "" : attributes[1]);
        }
    }
    static void Close(void* self, const XML_Char* name) {
        auto& reader = *static_cast<Reader*>(self);
        if (name == kElement) {
            reader.line_.append("[").append(reader.text_).append("]");
            reader.text_.clear();
        } else {
            reader.TakeIndentation();
            reader.line_ += ')';
        }
    }
    static void AddText(void* self, const XML_Char* text, int size) {
        static_cast<Reader*>(self)->text_.append(text, static_cast<std::size_t>(size));
    }
    // Between elements stand line ends and blanks alone.
    void TakeIndentation() {
        ExpectTrue(text_.find_first_not_of("\n ") == std::string::npos, "text between elements");
        text_.clear();
    }

    std::string line_;
    std::string text_;
};

// Each piece is a step: "(" opens an aggregate, with the rest as its attribute, ")" closes one, else it is a value.
void Try(std::string_view input) {
    XMLBuilder builder;
    builder.OpenElement(kAggregate);
    std::string expected = "(";
    int depth = 1;
    for (const std::string& piece : fuzz::Pieces(input)) {
        const std::string rest = WithoutControlCharacters(piece.substr(piece.empty() ? 0 : 1));
        if (piece.starts_with('(')) {
            builder.OpenElement(kAggregate, std::array{std::string_view("a")}, std::array{std::string_view(rest)});
            expected += '(' + AttributeAsParsed(rest);
            ++depth;
        } else if (piece.starts_with(')')) {
            if (depth > 1) {
                builder.CloseElement(kAggregate);
                expected += ')';
                --depth;
            }
        } else if (const std::string value = WithoutControlCharacters(piece); true) {
            builder.AddElement(kElement, value);
            expected += value.empty() ? std::string() : '[' + AsParsed(value) + ']';
        }
    }
    for (; depth > 0; --depth) {
        builder.CloseElement(kAggregate);
        expected += ')';
    }
    ExpectSame(expected, Reader::Read(builder.GetText()), "written and read");
}

}  // namespace
}  // namespace paylodge

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    paylodge::Try(paylodge::fuzz::AsText(data, size));
    return 0;
}
