#include "refhost/books/xml_writer.hpp"

#include <array>
#include <string_view>

namespace paylodge::refhost {
namespace {

struct Replacement {
    char character;
    std::string_view text;
};

// A reader turns these into others when they stand as they are.
constexpr std::array kTextReplacements{Replacement{'&', "&amp;"}, Replacement{'<', "&lt;"}, Replacement{'>', "&gt;"},
                                       Replacement{'\r', "&#13;"}};
constexpr std::array kAttributeReplacements{
    Replacement{'&', "&amp;"},  Replacement{'<', "&lt;"},   Replacement{'>', "&gt;"}, Replacement{'"', "&quot;"},
    Replacement{'\r', "&#13;"}, Replacement{'\n', "&#10;"}, Replacement{'\t', "&#9;"}};

void AppendEscaped(std::string& output, std::string_view text, const auto& replacements) {
    for (const char character : text) {
        std::string_view written(&character, 1);
        for (const Replacement& replacement : replacements) {
            if (replacement.character == character) {
                written = replacement.text;
            }
        }
        output += written;
    }
}

class Writer {
  public:
    explicit Writer(bool indents) noexcept : indents_(indents) {}

    void Write(const Element& element, int depth) {
        BeginLine(depth);
        OpenTag(element);
        if (element.text.empty() && element.children.empty()) {
            output_ += "/>";
        } else {
            output_ += '>';
            AppendEscaped(output_, element.text, kTextReplacements);
            WriteChildren(element, depth);
            output_ += "</" + element.name + '>';
        }
        EndLine();
    }

    [[nodiscard]] std::string Take() && { return std::move(output_); }

  private:
    void OpenTag(const Element& element) {
        output_ += '<' + element.name;
        for (const Attribute& attribute : element.attributes) {
            output_ += ' ' + attribute.name + "=\"";
            AppendEscaped(output_, attribute.value, kAttributeReplacements);
            output_ += '"';
        }
    }

    void WriteChildren(const Element& element, int depth) {
        if (element.children.empty()) {
            return;
        }
        EndLine();
        for (const Element& child : element.children) {
            Write(child, depth + 1);
        }
        BeginLine(depth);
    }

    void BeginLine(int depth) {
        if (indents_) {
            output_.append(static_cast<size_t>(depth) * 2, ' ');
        }
    }

    void EndLine() {
        if (indents_) {
            output_ += '\n';
        }
    }

    bool indents_;
    std::string output_;
};

[[nodiscard]] std::string Write(const Element& element, bool indents, int depth) {
    Writer writer(indents);
    writer.Write(element, depth);
    return std::move(writer).Take();
}

}  // namespace

std::string CompactXml(const Element& element) { return Write(element, false, 0); }

std::string IndentedXml(const Element& element, int depth) { return Write(element, true, depth); }

}  // namespace paylodge::refhost
