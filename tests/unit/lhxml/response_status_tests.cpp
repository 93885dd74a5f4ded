#include "lhxml/response_status.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "com/ansi_text.hpp"
#include "lhxml/dom.hpp"
#include "tests/support/hresult.hpp"
#include "tests/unit/lhxml/document_fixture.hpp"
#include "tests/unit/lhxml/fake_node.hpp"

namespace paylodge::test {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

struct Status {
    HRESULT result;
    std::string code;
    std::string message;
    bool operator==(const Status&) const = default;
};

void PrintTo(const Status& status, std::ostream* out) {
    *out << std::hex << status.result << " \"" << status.code << "\" \"" << status.message << '"';
}

[[nodiscard]] Status ReadStatus(IXMLDOMNode* node) {
    Status status{S_OK, "old code", "old message"};
    status.result = GetResponseStatus(node, status.code, status.message);
    return status;
}

[[nodiscard]] Status ReadStatus(std::string_view document) { return ReadStatus(TopElement(document).Get()); }

// Whether an element that has to answer for its request says that it succeeded.
[[nodiscard]] bool IsOK(IXMLDOMNode* node) {
    std::string code;
    std::string message;
    static_cast<void>(GetResponseStatus(node, code, message));
    return IsStatusOK(code);
}

[[nodiscard]] bool IsOK(std::string_view document) { return IsOK(TopElement(document).Get()); }

struct Copy {
    HRESULT result;
    std::string text;
    bool operator==(const Copy&) const = default;
};

void PrintTo(const Copy& copy, std::ostream* out) { *out << std::hex << copy.result << ' ' << copy.text; }

[[nodiscard]] Copy CopyStatus(IXMLDOMNode* node) {
    XMLBuilder builder;
    const HRESULT result = CopyStatusAttributes(builder, node, "DepositAddRs");
    builder.CloseElement("DepositAddRs");
    return {result, builder.GetText()};
}

// What CopyStatus returns for these values.
[[nodiscard]] Copy Copied(HRESULT result, const std::string& id, const std::string& code, const std::string& severity,
                          const std::string& message) {
    return {result, "<DepositAddRs requestID=\"" + id + "\" statusCode=\"" + code + "\" statusSeverity=\"" + severity +
                        "\" statusMessage=\"" + message + "\">\r\n</DepositAddRs>\r\n"};
}

[[nodiscard]] Copy CopyStatus(std::string_view document) { return CopyStatus(TopElement(document).Get()); }

class ResponseStatus : public DocumentTest {};

TEST_F(ResponseStatus, IsReadFromTheElement) {
    EXPECT_EQ(
        (Status{S_OK, "3100", "Exists & \xE9"}),
        ReadStatus("<A requestID='1' statusCode='3100' statusSeverity='Error' statusMessage='Exists &amp; \xE9'/>"));
}

TEST_F(ResponseStatus, LeavesWhatIsMissing) {
    EXPECT_EQ((Status{S_OK, "old code", "m"}), ReadStatus("<A statusMessage='m'/>"));
    EXPECT_EQ((Status{S_FALSE, "0", "old message"}), ReadStatus("<A statusCode='0'/>"));
    EXPECT_EQ((Status{S_FALSE, "old code", "old message"}), ReadStatus("<A/>"));
}

TEST_F(ResponseStatus, EmptyAttributesReplace) {
    EXPECT_EQ((Status{S_OK, "", ""}), ReadStatus("<A statusCode='' statusMessage=''/>"));
}

TEST_F(ResponseStatus, IsNotReadFromChildren) {
    EXPECT_EQ((Status{S_FALSE, "old code", "old message"}), ReadStatus("<A><B statusCode='0' statusMessage='m'/></A>"));
}

TEST_F(ResponseStatus, ReturnsTheHResultOfFetchingTheAttributes) {
    const auto node = MakeFakeNode({.fetch = E_ACCESSDENIED});
    EXPECT_EQ((Status{E_ACCESSDENIED, "old code", "old message"}), ReadStatus(node.Get()));
}

TEST_F(ResponseStatus, ReturnsTheHResultOfReadingTheStatusCodeBeforeTheMessages) {
    const auto node = MakeFakeNode({.failures = {{L"statusCode", E_ABORT}, {L"statusMessage", E_ACCESSDENIED}}});
    EXPECT_EQ((Status{E_ABORT, "old code", "old message"}), ReadStatus(node.Get()));
}

TEST_F(ResponseStatus, ReadsTheCodeWhereTheMessageCannotBeRead) {
    const auto node =
        MakeFakeNode({.failures = {{L"statusMessage", E_ACCESSDENIED}}, .values = {{L"statusCode", L"7"}}});
    EXPECT_EQ((Status{E_ACCESSDENIED, "7", "old message"}), ReadStatus(node.Get()));
}

TEST_F(ResponseStatus, NeedsANodeWithAttributes) {
    EXPECT_EQ((Status{E_POINTER, "old code", "old message"}), ReadStatus(nullptr));
    const auto node = MakeFakeNode({.has_map = false});
    EXPECT_EQ((Status{E_POINTER, "old code", "old message"}), ReadStatus(node.Get()));
}

TEST_F(ResponseStatus, IsOKForExactlyZero) { EXPECT_TRUE(IsOK("<A statusCode='0'/>")); }

TEST_F(ResponseStatus, IsNotOKForAnythingElse) {
    for (const auto code : {"00", " 0", "0 ", "+0", "-0", "0.0", "0x0", "", "1", "3100", "&#x660;", "O", "01"}) {
        EXPECT_FALSE(IsOK("<A statusCode='"s + code + "'/>")) << code;
    }
}

TEST_F(ResponseStatus, IsNotOKWithoutACode) {
    EXPECT_FALSE(IsOK("<A/>"));
    EXPECT_FALSE(IsOK("<A statusMessage='0'/>"));
    EXPECT_FALSE(IsOK("<A StatusCode='0'/>"));
    EXPECT_FALSE(IsOK("<A><B statusCode='0'/></A>"));
}

TEST_F(ResponseStatus, IsNotOKWithoutReadableAttributes) {
    EXPECT_FALSE(IsOK(static_cast<IXMLDOMNode*>(nullptr)));
    EXPECT_FALSE(IsOK(MakeFakeNode({.fetch = E_FAIL, .values = {{L"statusCode", L"0"}}}).Get()));
    EXPECT_FALSE(IsOK(MakeFakeNode({.failures = {{L"statusCode", E_FAIL}}}).Get()));
    ComPtr<IXMLDOMNode> text_without_attributes;
    ASSERT_HRESULT(S_OK, TopElement("<A>text</A>")->get_firstChild(text_without_attributes.Receive()));
    EXPECT_FALSE(IsOK(text_without_attributes.Get()));
}

TEST_F(ResponseStatus, IsCopiedInTheGivenOrder) {
    EXPECT_EQ(Copied(S_OK, "1", "0", "Info", "Status OK"),
              CopyStatus("<A statusMessage='Status OK' statusSeverity='Info' statusCode='0' requestID='1'/>"));
}

TEST_F(ResponseStatus, IsCopiedWithoutOtherAttributes) {
    EXPECT_EQ(Copied(S_OK, "1", "0", "Info", "m"),
              CopyStatus("<A x='y' requestID='1' statusCode='0' statusSeverity='Info' statusMessage='m' z='0'>t</A>"));
}

TEST_F(ResponseStatus, IsCopiedWithEmptyValuesForWhatIsMissing) {
    EXPECT_EQ(Copied(S_OK, "", "", "", "m"), CopyStatus("<A statusMessage='m'/>"));
    EXPECT_EQ(Copied(S_FALSE, "", "0", "", ""), CopyStatus("<A statusCode='0'/>"));
    EXPECT_EQ(Copied(S_FALSE, "", "", "", ""), CopyStatus("<A/>"));
}

TEST_F(ResponseStatus, IsCopiedEscaped) {
    EXPECT_EQ(Copied(S_OK, "&apos;", "&quot;", "&gt;", "a&lt;b &amp; c"),
              CopyStatus("<A requestID=\"'\" statusCode='\"' statusSeverity='>' statusMessage='a&lt;b &amp; c'/>"));
}

TEST_F(ResponseStatus, CopyReturnsTheHResultOfTheLastRead) {
    const auto last =
        MakeFakeNode({.failures = {{L"statusMessage", E_ACCESSDENIED}}, .values = {{L"statusCode", L"0"}}});
    EXPECT_EQ(Copied(E_ACCESSDENIED, "", "0", "", ""), CopyStatus(last.Get()));
    const auto earlier = MakeFakeNode({.failures = {{L"statusCode", E_FAIL}}, .values = {{L"statusMessage", L"m"}}});
    EXPECT_EQ(Copied(S_OK, "", "", "", "m"), CopyStatus(earlier.Get()));
}

TEST_F(ResponseStatus, CopyReturnsTheHResultOfFetchingTheAttributes) {
    EXPECT_EQ(Copied(E_ABORT, "", "", "", ""), CopyStatus(MakeFakeNode({.fetch = E_ABORT}).Get()));
    EXPECT_EQ(Copied(E_POINTER, "", "", "", ""), CopyStatus(nullptr));
}

TEST_F(ResponseStatus, CopyIsIndentedAndLeavesTheElementOpen) {
    XMLBuilder builder;
    builder.OpenElement("A");
    EXPECT_HRESULT(S_OK, CopyStatusAttributes(builder, TopElement("<B statusMessage='m'/>").Get(), "B"));
    builder.AddElement("C", "x");
    EXPECT_EQ(
        "<A>\r\n"
        "    <B requestID=\"\" statusCode=\"\" statusSeverity=\"\" statusMessage=\"m\">\r\n"
        "        <C>x</C>\r\n",
        builder.GetText());
}

// The checks of add and modify responses that are in use.
struct Check {
    std::wstring element;
    std::optional<std::string_view> extra_code;
};

void PrintTo(const Check& check, std::ostream* out) { *out << AnsiFromWide(check.element); }

class AddResponse : public testing::TestWithParam<Check> {
  protected:
    [[nodiscard]] static HRESULT CheckText(std::string_view response) {
        return CheckAddResponse(response, GetParam().element, GetParam().extra_code);
    }
    [[nodiscard]] static std::string Element(std::string_view attributes) {
        return "<" + AnsiFromWide(GetParam().element) + " " + std::string(attributes) + "/>";
    }
    [[nodiscard]] static std::string Response(std::string_view elements) {
        return "<?xml version=\"1.0\" ?><LHXML><LHXMLMsgsRs>" + std::string(elements) + "</LHXMLMsgsRs></LHXML>";
    }
    [[nodiscard]] static std::string WithStatus(std::string_view code) {
        return Response(Element("requestID='1' statusCode='" + std::string(code) + "' statusMessage='m'"));
    }
};

INSTANTIATE_TEST_SUITE_P(InUse, AddResponse,
                         testing::Values(Check{L"AccountAddRs", kNameExists}, Check{L"CustomerAddRs", kNameExists},
                                         Check{L"ItemPaymentAddRs", kPaymentItemExists},
                                         Check{L"AccountModRs", std::nullopt}, Check{L"DepositAddRs", std::nullopt}),
                         [](const auto& check) { return AnsiFromWide(check.param.element); });

TEST_P(AddResponse, IsAcceptedForZero) { EXPECT_HRESULT(S_OK, CheckText(WithStatus("0"))); }

TEST_P(AddResponse, IsAcceptedForItsExtraCodeAlone) {
    for (const auto code : {"3100"sv, "3180"sv}) {
        EXPECT_HRESULT(code == GetParam().extra_code ? S_OK : E_FAIL, CheckText(WithStatus(code))) << code;
    }
}

TEST_P(AddResponse, IsRefusedForAnyOtherCode) {
    for (const auto code : {"00", " 0", "0 ", "", "1", "500", "3100 ", " 3180", "03100", "31800", "-1"}) {
        EXPECT_HRESULT(E_FAIL, CheckText(WithStatus(code))) << code;
    }
}

TEST_P(AddResponse, IsRefusedWithoutACode) {
    EXPECT_HRESULT(E_FAIL, CheckText(Response(Element(""))));
    EXPECT_HRESULT(E_FAIL, CheckText(Response(Element("statusMessage='0'"))));
}

TEST_P(AddResponse, IsAcceptedWithoutAMessage) { EXPECT_HRESULT(S_OK, CheckText(Response(Element("statusCode='0'")))); }

TEST_P(AddResponse, IsAcceptedWithoutTheElement) {
    EXPECT_HRESULT(S_OK, CheckText(Response("")));
    EXPECT_HRESULT(S_OK, CheckText(Response("<OtherRs statusCode='500'/>")));
    EXPECT_HRESULT(S_OK, CheckText("<LHXML/>"));
}

TEST_P(AddResponse, IsJudgedByItsFirstElement) {
    EXPECT_HRESULT(S_OK, CheckText(Response(Element("statusCode='0'") + Element("statusCode='500'"))));
    EXPECT_HRESULT(E_FAIL, CheckText(Response(Element("statusCode='500'") + Element("statusCode='0'"))));
}

TEST_P(AddResponse, IsFoundAnywhereInTheDocument) {
    EXPECT_HRESULT(E_FAIL, CheckText(Element("statusCode='500'")));
    EXPECT_HRESULT(
        E_FAIL, CheckText(Response("<A><B>" + Element("statusCode='500'") + "</B></A>" + Element("statusCode='0'"))));
}

TEST_P(AddResponse, IsRefusedWhenItDoesNotLoad) {
    for (const auto text : {"", "no XML", "<LHXML>", "<LHXML></LHXMLMsgsRs>"}) {
        EXPECT_HRESULT(E_FAIL, CheckText(text)) << text;
    }
    EXPECT_HRESULT(E_FAIL, CheckText(WithStatus("0") + "x"));
}

TEST(StatusCodes, AreTheHosts) {
    EXPECT_EQ("3100", kNameExists);
    EXPECT_EQ("3180", kPaymentItemExists);
}

}  // namespace
}  // namespace paylodge::test
