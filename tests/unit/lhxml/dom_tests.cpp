#include "lhxml/dom.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "lhxml/envelope.hpp"
#include "tests/support/document_watch.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/thread_locale.hpp"
#include "tests/unit/lhxml/document_fixture.hpp"
#include "tests/unit/lhxml/fake_node.hpp"

namespace paylodge::test {
namespace {

using ::testing::ElementsAre;
using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr auto kSentinel = "sentinel"sv;
constexpr auto kCreationFailed = "Instantiate MSXML DOM OBJ failed"sv;
constexpr auto kLoadFailed = "Load failed because "sv;

[[nodiscard]] std::string TextOf(IXMLDOMNode* node) {
    std::string text(kSentinel);
    EXPECT_HRESULT(S_OK, GetNodeText(node, text));
    return text;
}

[[nodiscard]] std::string NameOf(IXMLDOMNode* node) {
    std::string name(kSentinel);
    EXPECT_HRESULT(S_OK, GetNodeName(node, name));
    return name;
}

[[nodiscard]] ComPtr<IXMLDOMNamedNodeMap> AttributesOf(std::string_view document) {
    ComPtr<IXMLDOMNamedNodeMap> attributes;
    EXPECT_HRESULT(S_OK, TopElement(document)->get_attributes(attributes.Receive()));
    return attributes;
}

// The HRESULT of a read and what it left in the out parameter, which held the sentinel before.
struct Reading {
    HRESULT result;
    std::string value;
    bool operator==(const Reading&) const = default;
};

void PrintTo(const Reading& reading, std::ostream* out) {
    *out << std::hex << reading.result << " \"" << reading.value << '"';
}

[[nodiscard]] Reading ReadAttribute(IXMLDOMNamedNodeMap* attributes, std::string_view name) {
    std::string value(kSentinel);
    const HRESULT result = GetAttributeValue(attributes, name, value);
    return {result, value};
}

[[nodiscard]] Reading ReadAttribute(std::string_view document, std::string_view name) {
    return ReadAttribute(AttributesOf(document).Get(), name);
}

// The text of the first element with this name below the document's element, or "none".
[[nodiscard]] std::string FirstText(std::string_view document, std::wstring_view name) {
    ComPtr<IXMLDOMNode> element;
    EXPECT_HRESULT(S_OK, FindFirstElement(TopElement(document).Get(), name, element));
    return element ? TextOf(element.Get()) : "none";
}

[[nodiscard]] std::string Nested(size_t depth) {
    std::string text = "x";
    for (size_t level = 0; level < depth; ++level) {
        text = "<A>" + text + "</A>";
    }
    return text;
}

class Dom : public DocumentTest {};

TEST_F(Dom, LoadedDocumentLeavesTheErrorAlone) {
    std::string error(kSentinel);
    EXPECT_TRUE(LoadXmlDocument("<A/>", error));
    EXPECT_EQ(kSentinel, error);
}

TEST_F(Dom, LoadedDocumentBelongsToTheCaller) {
    const DocumentWatch watch;
    std::string error;
    {
        const auto document = LoadXmlDocument("<A/>", error);
        EXPECT_THAT(watch.References(), ElementsAre(1U));
    }
    EXPECT_THAT(watch.References(), ElementsAre(0U));
}

TEST_F(Dom, LoadsBothFormsOfTheEnvelope) {
    std::string error;
    EXPECT_TRUE(LoadXmlDocument(PassThroughEnvelope("<AccountQueryRq/>"), error)) << error;
    EXPECT_TRUE(LoadXmlDocument(ComposeRequest("AccountQueryRq", [](XMLBuilder&) {}), error)) << error;
}

TEST_F(Dom, LoadsWhatTheBuilderEscaped) {
    XMLBuilder builder;
    builder.OpenElement("A", std::array{"b"sv}, std::array{"\"&'<>"sv});
    builder.AddElement("C", "<\"&'>");
    builder.CloseElement("A");
    EXPECT_EQ((Reading{S_OK, "\"&'<>"}), ReadAttribute(builder.GetText(), "b"));
    EXPECT_EQ("<\"&'>", FirstText(builder.GetText(), L"C"));
}

TEST_F(Dom, DoesNotLoadMalformedText) {
    const auto texts = {""s,         " "s,          "x"s,        "<A>"s,       "<A></B>"s, "<A/><B/>"s,
                        "<A b=c/>"s, "<A>&b;</A>"s, "<A>&</A>"s, "<A>\0</A>"s, "\0<A/>"s,  std::string(100'000, '<')};
    for (const std::string& text : texts) {
        std::string error(kSentinel);
        EXPECT_FALSE(LoadXmlDocument(text, error)) << text.substr(0, 20);
        EXPECT_EQ(kLoadFailed, error.substr(0, kLoadFailed.size())) << text.substr(0, 20);
    }
}

TEST_F(Dom, ReleasesTheDocumentThatDoesNotLoad) {
    const DocumentWatch watch;
    std::string error;
    EXPECT_FALSE(LoadXmlDocument("<A>", error));
    EXPECT_THAT(watch.References(), ElementsAre(0U));
}

TEST_F(Dom, SaysThatTheDocumentCannotBeCreated) {
    ASSERT_TRUE(::SetEnvironmentVariableA("LHUTILITIES_FAIL", "0x80070005"));
    std::string error(kSentinel);
    EXPECT_FALSE(LoadXmlDocument("<A/>", error));
    EXPECT_EQ(kCreationFailed, error);
    ASSERT_TRUE(::SetEnvironmentVariableA("LHUTILITIES_FAIL", nullptr));
    EXPECT_TRUE(LoadXmlDocument("<A/>", error));
}

TEST_F(Dom, LoadsTextOfTheAnsiCodePage) { EXPECT_EQ("caf\xE9 \x80", FirstText("<A><B>caf\xE9 \x80</B></A>", L"B")); }

TEST_F(Dom, LoadsTextOfTheThreadsCodePageNotTheSystems) {
    ComPtr<IXMLDOMNode> top;
    {
        const ThreadLocale locale(kGreek);
        top = TopElement("<A>\xE1</A>");
    }
    OwnedBstr text;
    EXPECT_HRESULT(S_OK, top->get_text(text.Receive()));
    EXPECT_EQ(L"\x3B1", View(text));
}

TEST_F(Dom, GivesCharactersOutsideTheCodePageAsItsDefault) {
    EXPECT_EQ("a?b", FirstText("<A><B>a&#x65E5;b</B></A>", L"B"));
}

TEST_F(Dom, LoadsALargeDocument) {
    std::string text = "<A>";
    for (int record = 0; record < 10'000; ++record) {
        text += "<B>" + std::to_string(record) + "</B>";
    }
    EXPECT_EQ("0", FirstText(text + "</A>", L"B"));
}

TEST_F(Dom, AttributeThatIsPresentReplacesTheValue) {
    EXPECT_EQ((Reading{S_OK, "x y"}), ReadAttribute("<A a='1' b='x y'/>", "b"));
}

TEST_F(Dom, AttributeThatIsPresentButEmptyReplacesTheValue) {
    EXPECT_EQ((Reading{S_OK, ""}), ReadAttribute("<A b=''/>", "b"));
}

TEST_F(Dom, AttributeThatIsAbsentLeavesTheValue) {
    EXPECT_EQ((Reading{S_FALSE, "sentinel"}), ReadAttribute("<A a='1'/>", "b"));
    EXPECT_EQ((Reading{S_FALSE, "sentinel"}), ReadAttribute("<A/>", "b"));
}

TEST_F(Dom, AttributeNamesAreCaseSensitive) {
    EXPECT_EQ((Reading{S_FALSE, "sentinel"}), ReadAttribute("<A statuscode='1'/>", "statusCode"));
}

TEST_F(Dom, AttributesAreReadInTheAnsiCodePage) {
    EXPECT_EQ((Reading{S_OK, "\xFC?"}), ReadAttribute("<A \xE9='\xFC&#x65E5;'/>", "\xE9"));
}

TEST_F(Dom, AttributeNamesAreOfTheThreadsCodePageNotTheSystems) {
    const auto attributes = AttributesOf("<A \xE1='1'/>");
    EXPECT_EQ((Reading{S_OK, "1"}), ReadAttribute(attributes.Get(), "\xE1"));
    const ThreadLocale locale(kGreek);
    EXPECT_EQ((Reading{S_FALSE, "sentinel"}), ReadAttribute(attributes.Get(), "\xE1"));
    EXPECT_EQ((Reading{S_OK, "1"}), ReadAttribute("<A \xE1='1'/>", "\xE1"));
}

TEST_F(Dom, AttributeLookupReturnsItsFailureAndLeavesTheValue) {
    const auto attributes = MakeFakeAttributes({.failures = {{L"b", E_ACCESSDENIED}}});
    EXPECT_EQ((Reading{E_ACCESSDENIED, "sentinel"}), ReadAttribute(attributes.Get(), "b"));
}

TEST_F(Dom, AttributeWithoutAMapIsAnError) { EXPECT_EQ((Reading{E_POINTER, "sentinel"}), ReadAttribute(nullptr, "b")); }

TEST_F(Dom, NodeTextIsThatOfAllDescendants) {
    EXPECT_EQ("abcde", TextOf(TopElement("<A>a<B>b<C>c</C></B>d<![CDATA[e]]><!-- f --></A>").Get()));
    EXPECT_EQ("", TextOf(TopElement("<A/>").Get()));
}

TEST_F(Dom, NodeNameIsTheElements) { EXPECT_EQ("AccountRet", NameOf(TopElement("<AccountRet/>").Get())); }

TEST_F(Dom, NodeNameKeepsItsPrefix) { EXPECT_EQ("x:A", NameOf(TopElement("<x:A xmlns:x='y'/>").Get())); }

TEST_F(Dom, NullNodeChangesNothing) {
    EXPECT_EQ(kSentinel, TextOf(nullptr));
    EXPECT_EQ(kSentinel, NameOf(nullptr));
}

TEST_F(Dom, NodeThatCannotBeReadReturnsItsHResultAndChangesNothing) {
    const auto node = MakeFakeNode({});
    std::string text(kSentinel);
    EXPECT_HRESULT(E_NOTIMPL, GetNodeText(node.Get(), text));
    EXPECT_HRESULT(E_NOTIMPL, GetNodeName(node.Get(), text));
    EXPECT_EQ(kSentinel, text);
}

TEST_F(Dom, FirstElementIsTheFirstInDocumentOrder) {
    EXPECT_EQ("1", FirstText("<A><X><B>1</B></X><B>2</B></A>", L"B"));
    EXPECT_EQ("2", FirstText("<A><X><Y/>x</X><Z><B>2</B></Z><B>3</B></A>", L"B"));
}

TEST_F(Dom, FirstElementStandsBelowTheNode) {
    EXPECT_EQ("none", FirstText("<B/>", L"B"));
    EXPECT_EQ("1", FirstText("<B><B>1</B></B>", L"B"));
}

TEST_F(Dom, FirstElementIsNotSoughtBehindTheNode) {
    const auto top = TopElement("<A><X><Y/></X><B/></A>");
    ComPtr<IXMLDOMNode> below;
    ASSERT_HRESULT(S_OK, FindFirstChildElement(top.Get(), below));
    ComPtr<IXMLDOMNode> element;
    EXPECT_HRESULT(S_OK, FindFirstElement(below.Get(), L"B", element));
    EXPECT_FALSE(element);
}

TEST_F(Dom, FirstElementIsFoundFromTheDocument) {
    std::string error;
    const auto document = LoadXmlDocument("<?lhxml version=\"7.0\" ?><B>1</B>", error);
    ComPtr<IXMLDOMNode> element;
    EXPECT_HRESULT(S_OK, FindFirstElement(document.Get(), L"B", element));
    EXPECT_EQ("1", TextOf(element.Get()));
}

TEST_F(Dom, FirstElementIsAnElementAndNothingElse) {
    EXPECT_EQ("1", FirstText("<A B='0'><?B x?><!--B--><![CDATA[B]]>B<B>1</B></A>", L"B"));
}

TEST_F(Dom, FirstElementHasExactlyThatName) {
    EXPECT_EQ("none", FirstText("<A><b/><BB/><x:B xmlns:x='y'/></A>", L"B"));
    EXPECT_EQ("none", FirstText("<A><B/></A>", L""));
    EXPECT_EQ("none", FirstText("<A><B/></A>", L"B\0"sv));
}

TEST_F(Dom, FirstElementIsFoundInTheDepth) {
    const auto top = TopElement(Nested(200));
    ComPtr<IXMLDOMNode> element;
    EXPECT_HRESULT(S_OK, FindFirstElement(top.Get(), L"B", element));
    EXPECT_FALSE(element);
}

TEST_F(Dom, FirstElementNeedsANode) {
    ComPtr<IXMLDOMNode> element;
    EXPECT_HRESULT(E_POINTER, FindFirstElement(nullptr, L"B", element));
    EXPECT_FALSE(element);
}

// The text of the element that FindResponseElement finds, or "none".
[[nodiscard]] std::string ResponseText(std::string_view response, std::wstring_view name) {
    ComPtr<IXMLDOMNode> element;
    EXPECT_HRESULT(S_OK, FindResponseElement(response, name, element));
    return element ? TextOf(element.Get()) : "none";
}

TEST_F(Dom, ResponseElementIsFoundAnywhere) {
    EXPECT_EQ("1", ResponseText("<A><B><C>1</C></B></A>", L"C"));
    EXPECT_EQ("1", ResponseText("<C>1</C>", L"C"));
}

TEST_F(Dom, ResponseElementIsEmptyWhenThereIsNone) {
    EXPECT_EQ("none", ResponseText("<A/>", L"C"));
    EXPECT_EQ("none", ResponseText("<A><C></A>", L"C"));
    EXPECT_EQ("none", ResponseText("", L"C"));
}

// The names of the children that a walk visits, until `visit` returns something else than S_OK for one.
using Names = std::vector<std::string>;
[[nodiscard]] Names VisitedNames(IXMLDOMNode* node, HRESULT expected, const std::function<HRESULT(size_t)>& visit) {
    Names names;
    EXPECT_HRESULT(expected, VisitChildren(node, [&](IXMLDOMNode* child) {
                       names.push_back(NameOf(child));
                       return visit(names.size());
                   }));
    return names;
}
constexpr auto kGoOn = [](size_t) { return S_OK; };

TEST_F(Dom, WalkVisitsEveryChildAndEnds) {
    const auto top = TopElement("<A><B/><!--c--><D/></A>");
    EXPECT_EQ((Names{"B", "#comment", "D"}), VisitedNames(top.Get(), S_OK, kGoOn));
}

TEST_F(Dom, WalkEndsWhenItsVisitorHasSeenEnoughOrFails) {
    const auto top = TopElement("<A><B/><C/><D/></A>");
    EXPECT_EQ((Names{"B", "C"}),
              VisitedNames(top.Get(), S_OK, [](size_t count) { return count == 2 ? S_FALSE : S_OK; }));
    EXPECT_EQ((Names{"B"}), VisitedNames(top.Get(), E_ABORT, [](size_t) { return E_ABORT; }));
}

TEST_F(Dom, WalkOverNothingVisitsNothing) {
    EXPECT_EQ(Names(), VisitedNames(nullptr, S_OK, kGoOn));
    EXPECT_EQ(Names(), VisitedNames(TopElement("<A/>").Get(), S_OK, kGoOn));
}

TEST_F(Dom, WalkReturnsTheFailureOfTheDom) {
    EXPECT_EQ(Names(), VisitedNames(MakeFakeNode({}).Get(), E_NOTIMPL, kGoOn));
}

[[nodiscard]] bool IsElement(IXMLDOMNode* node) {
    bool is_element = true;
    EXPECT_HRESULT(S_OK, TestElement(node, is_element));
    return is_element;
}
[[nodiscard]] bool IsElement(IXMLDOMNode* node, std::wstring_view name) {
    bool is_element = true;
    EXPECT_HRESULT(S_OK, TestElement(node, name, is_element));
    return is_element;
}

TEST_F(Dom, ElementsAreToldFromOtherNodes) {
    const auto top = TopElement("<A><?A x?></A>");
    EXPECT_TRUE(IsElement(top.Get()));
    EXPECT_TRUE(IsElement(top.Get(), L"A"));
    EXPECT_FALSE(IsElement(top.Get(), L"a"));
    ComPtr<IXMLDOMNode> instruction;
    ASSERT_HRESULT(S_OK, top->get_firstChild(instruction.Receive()));
    EXPECT_FALSE(IsElement(instruction.Get()));
    EXPECT_FALSE(IsElement(instruction.Get(), L"A"));
}

TEST_F(Dom, NodeThatCannotBeReadIsNoElement) {
    bool is_element = true;
    EXPECT_HRESULT(E_NOTIMPL, TestElement(MakeFakeNode({}).Get(), is_element));
    EXPECT_FALSE(is_element);
    is_element = true;
    EXPECT_HRESULT(E_NOTIMPL, TestElement(MakeFakeNode({}).Get(), L"A", is_element));
    EXPECT_FALSE(is_element);
}

TEST_F(Dom, FirstChildElementIsTheFirstChildThatIsOne) {
    const auto top = TopElement("<A>text<?B x?><!--B--><C>1</C><D/></A>");
    ComPtr<IXMLDOMNode> element;
    EXPECT_HRESULT(S_OK, FindFirstChildElement(top.Get(), element));
    EXPECT_EQ("C", NameOf(element.Get()));
    ComPtr<IXMLDOMNode> none;
    EXPECT_HRESULT(S_OK, FindFirstChildElement(element.Get(), none));
    EXPECT_FALSE(none);
    EXPECT_HRESULT(S_OK, FindFirstChildElement(nullptr, none));
    EXPECT_FALSE(none);
}

// The text of the element at the end of a path, or "none".
[[nodiscard]] std::string PathText(IXMLDOMNode* node, std::initializer_list<std::wstring_view> names) {
    ComPtr<IXMLDOMNode> element;
    EXPECT_HRESULT(S_OK, FindPath(node, std::span(names.begin(), names.size()), element));
    return element ? TextOf(element.Get()) : "none";
}

TEST_F(Dom, ChildIsTheFirstOfItsName) {
    const auto top = TopElement("<A><X><B>0</B></X><?B x?><B>1</B><B>2</B></A>");
    EXPECT_EQ("1", PathText(top.Get(), {L"B"}));
    EXPECT_EQ("none", PathText(top.Get(), {L"C"}));
    EXPECT_EQ("none", PathText(nullptr, {L"B"}));
}

TEST_F(Dom, PathLeadsThroughLaterSiblingsToo) {
    const auto top = TopElement("<A><B><X/></B><B><C>1</C></B><B><C>2</C></B></A>");
    EXPECT_EQ("1", PathText(top.Get(), {L"B", L"C"}));
    EXPECT_EQ("none", PathText(top.Get(), {L"C"}));
    EXPECT_EQ("none", PathText(top.Get(), {L"B", L"C", L"D"}));
}

template <size_t count>
[[nodiscard]] std::array<std::string, count> ChildTexts(IXMLDOMNode* node,
                                                        const std::array<std::wstring_view, count>& names) {
    std::array<std::string, count> texts;
    EXPECT_HRESULT(S_OK, ReadChildTexts(node, names, texts));
    return texts;
}

TEST_F(Dom, ChildTextsAreThoseOfTheFirstChildrenWithTheirNames) {
    const auto top = TopElement("<A><!--n--><C>3</C><B>1</B><B>2</B><?D x?><X><E>4</E></X></A>");
    const std::array<std::string, 4> texts = {"1", "3", "", ""};
    EXPECT_EQ(texts, ChildTexts(top.Get(), std::array{L"B"sv, L"C"sv, L"D"sv, L"E"sv}));
}

TEST_F(Dom, ChildTextThatIsEmptyIsNotTakenFromALaterChild) {
    const auto top = TopElement("<A><B/><B>2</B></A>");
    EXPECT_EQ((std::array<std::string, 1>{}), ChildTexts(top.Get(), std::array{L"B"sv}));
}

TEST_F(Dom, ChildTextsOfNoNodeAreEmpty) {
    EXPECT_EQ((std::array<std::string, 1>{}), ChildTexts(nullptr, std::array{L"B"sv}));
}

}  // namespace
}  // namespace paylodge::test
