#include "tests/unit/operations/operation_fixture.hpp"

#include <cstdio>
#include <ostream>

#include "com/ansi_text.hpp"

namespace paylodge::test {
namespace {

template <class Character>
[[nodiscard]] std::basic_string<Character> LinesOf(std::basic_string_view<Character> literal) {
    std::basic_string<Character> lines;
    for (const Character character : literal.substr(1)) {
        if (character == '\n') {
            lines += '\r';
        }
        lines += character;
    }
    return lines;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Result& result) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08lx", static_cast<unsigned long>(result.code));
    return stream << code << " " << ::testing::PrintToString(result.text);
}

StringSink::~StringSink() {
    if (text_ != Mark()) {
        ::SysFreeString(text_);
    }
}

std::wstring StringSink::Show() const {
    if (text_ == Mark()) {
        return kUntouched;
    }
    return text_ == nullptr ? std::wstring(kNull) : std::wstring(View(text_));
}

// An empty COM string with its length before it, so that it can be passed on.
BSTR StringSink::Mark() noexcept {
    static struct {
        DWORD size;
        wchar_t text;
    } mark;
    return &mark.text;
}

std::wstring BoolSink::Show() const {
    switch (value_) {
        case kMark:
            return kUntouched;
        case VARIANT_TRUE:
            return kTrue;
        case VARIANT_FALSE:
            return kFalse;
        default:
            return std::to_wstring(value_);
    }
}

std::string Lines(std::string_view literal) { return LinesOf(literal); }
std::wstring Lines(std::wstring_view literal) { return LinesOf(literal); }

std::string RequestDocument(std::string_view literal) {
    return Lines(R"(
<?xml version="1.0" ?>
<?lhxml version="7.0" ?>
<LHXML>
    <LHXMLMsgsRq onError="continueOnError">
)") + Lines(literal) +
           Lines(R"(
    </LHXMLMsgsRq>
</LHXML>
)");
}

std::wstring ResponseDocument(std::wstring_view elements) {
    return LR"(<?xml version="1.0" ?><LHXML><LHXMLMsgsRs>)" + std::wstring(elements) + L"</LHXMLMsgsRs></LHXML>";
}

OperationTest::OperationTest() = default;

OperationTest::~OperationTest() {
    owner_.Reset();
    EXPECT_EQ(references_before_, Module::References());
}

void OperationTest::RespondExactly(std::wstring_view response) {
    host_.answers.push_back({.response = std::wstring(response)});
}

std::vector<std::string> OperationTest::Sent() const {
    std::vector<std::string> sent;
    for (const std::wstring& request : host_.requests) {
        sent.push_back(WithoutRequestIDs(AnsiFromWide(request)));
    }
    return sent;
}

}  // namespace paylodge::test
