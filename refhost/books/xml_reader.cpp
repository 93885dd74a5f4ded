#include "refhost/books/xml_reader.hpp"

#include <expat.h>

#include <algorithm>
#include <array>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

// Far deeper than any document of the host, and shallow enough for every recursion over one.
constexpr size_t kDeepest = 64;
// A company's text is large, but not as large as this; no request comes near it.
constexpr size_t kLongest = std::numeric_limits<int>::max() / 2;

struct FreeParser {
    void operator()(XML_Parser parser) const noexcept { ::XML_ParserFree(parser); }
};
using ParserHandle = std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeParser>;

// What the parser's errors mean to the person who wrote the text.
struct Explanation {
    XML_Error error;
    std::string_view words;
};
constexpr std::array kExplanations{
    Explanation{XML_ERROR_SYNTAX, "no text can stand here: an element such as <LHXML> is expected"},
    Explanation{XML_ERROR_NO_ELEMENTS, "the document element is missing: an element such as <LHXML> is expected"},
    Explanation{
        XML_ERROR_INVALID_TOKEN,
        "this character cannot stand here: a name, a text or the end of a tag is expected; an ampersand in a text "
        "is written &amp;, a less-than sign &lt;"},
    Explanation{XML_ERROR_UNCLOSED_TOKEN, "this tag does not end: > is expected"},
    Explanation{XML_ERROR_PARTIAL_CHAR, "the text ends within a character"},
    Explanation{XML_ERROR_DUPLICATE_ATTRIBUTE, "the attribute is given twice: once is expected"},
    Explanation{XML_ERROR_JUNK_AFTER_DOC_ELEMENT,
                "something stands behind the document element: the end of the document is expected"},
    Explanation{XML_ERROR_UNDEFINED_ENTITY,
                "the entity is unknown: &amp;, &lt;, &gt;, &quot;, &apos; or a number such as &#233; is expected"},
    Explanation{XML_ERROR_BAD_CHAR_REF, "no character has this number"},
    Explanation{XML_ERROR_MISPLACED_XML_PI, "the XML declaration is expected at the very beginning"},
    Explanation{XML_ERROR_XML_DECL, "the XML declaration is malformed: <?xml version=\"1.0\"?> is expected"},
    Explanation{XML_ERROR_UNCLOSED_CDATA_SECTION, "the CDATA section does not end: ]]> is expected"},
    Explanation{XML_ERROR_UNBOUND_PREFIX, "the prefix is not declared"},
};

class Reader {
  public:
    explicit Reader(std::string_view text) : text_(text), parser_(::XML_ParserCreate("UTF-8")) {
        if (!parser_) {
            throw std::bad_alloc();
        }
        ::XML_SetUserData(parser_.get(), this);
        ::XML_SetElementHandler(parser_.get(), Call<&Reader::Open>, Call<&Reader::Close>);
        ::XML_SetCharacterDataHandler(parser_.get(), Call<&Reader::AddText>);
        ::XML_SetProcessingInstructionHandler(parser_.get(), Call<&Reader::AddInstruction>);
        ::XML_SetXmlDeclHandler(parser_.get(), Call<&Reader::Declare>);
        ::XML_SetStartDoctypeDeclHandler(parser_.get(), Call<&Reader::RefuseDoctype>);
    }

    [[nodiscard]] Document Read() && {
        if (text_.size() > kLongest) {
            Refuse("it is too long.");
        }
        const XML_Status status = ::XML_Parse(parser_.get(), text_.data(), static_cast<int>(text_.size()), XML_TRUE);
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        if (status != XML_STATUS_OK) {
            RefuseAt(Explain(::XML_GetErrorCode(parser_.get())));
        }
        return std::move(document_);
    }

  private:
    // No exception may pass through the parser: it is kept until the parser has returned.
    template <auto method, class... Arguments>
    static void Call(void* reader, Arguments... arguments) noexcept {
        auto& self = *static_cast<Reader*>(reader);
        try {
            (self.*method)(arguments...);
        } catch (...) {
            self.failure_ = std::current_exception();
            ::XML_StopParser(self.parser_.get(), XML_FALSE);
        }
    }

    void Open(const XML_Char* name, const XML_Char** attributes) {
        if (open_.size() == kDeepest) {
            RefuseAt("the elements are nested more than " + std::to_string(kDeepest) + " levels deep");
        }
        Element& element = open_.empty() ? document_.root : open_.back()->children.emplace_back();
        element.name = name;
        for (; *attributes != nullptr; attributes += 2) {
            element.attributes.push_back({attributes[0], attributes[1]});
        }
        open_.push_back(&element);
    }

    void Close(const XML_Char* /*name*/) {
        Element& element = *open_.back();
        if (!element.children.empty() && Trimmed(element.text).empty()) {
            element.text.clear();
        }
        open_.pop_back();
    }

    void AddText(const XML_Char* text, int size) { open_.back()->text.append(text, static_cast<size_t>(size)); }

    void AddInstruction(const XML_Char* target, const XML_Char* data) {
        // Those within the document element say nothing about the document.
        if (document_.root.name.empty()) {
            document_.instructions.push_back({target, data});
        }
    }

    void Declare(const XML_Char* version, const XML_Char* /*encoding*/, int /*standalone*/) {
        document_.instructions.push_back({"xml", "version=\"" + std::string(version == nullptr ? "" : version) + '"'});
    }

    void RefuseDoctype(const XML_Char* /*name*/, const XML_Char* /*system*/, const XML_Char* /*public_id*/,
                       int /*has_subset*/) {
        RefuseAt("a document type declaration stands here: the document element is expected");
    }

    [[nodiscard]] std::string Explain(XML_Error error) const {
        if (!open_.empty() && error == XML_ERROR_TAG_MISMATCH) {
            return "this end tag closes nothing: </" + open_.back()->name + "> is expected";
        }
        if (!open_.empty() && (error == XML_ERROR_NO_ELEMENTS || error == XML_ERROR_UNCLOSED_TOKEN) && IsAtEnd()) {
            return "the document ends here: </" + open_.back()->name + "> is expected";
        }
        const auto found = std::ranges::find(kExplanations, error, &Explanation::error);
        return std::string(found == kExplanations.end() ? ::XML_ErrorString(error) : found->words);
    }

    [[nodiscard]] bool IsAtEnd() const {
        return ::XML_GetCurrentByteIndex(parser_.get()) >= static_cast<XML_Index>(text_.size());
    }

    [[noreturn]] static void Refuse(const std::string& reason) {
        throw RefusedRequest(Code::kMalformedDocument, "The document is not well-formed XML: " + reason);
    }

    [[noreturn]] void RefuseAt(const std::string& reason) const {
        Refuse("line " + std::to_string(::XML_GetCurrentLineNumber(parser_.get())) + ", column " +
               std::to_string(::XML_GetCurrentColumnNumber(parser_.get()) + 1) + ": " + reason + '.');
    }

    std::string_view text_;
    ParserHandle parser_;
    Document document_;
    // From the document element down to the one that is being read. None of them gets a sibling while it is open.
    std::vector<Element*> open_;
    std::exception_ptr failure_;
};

}  // namespace

Document ReadXml(std::string_view text) { return Reader(text).Read(); }

}  // namespace paylodge::refhost
