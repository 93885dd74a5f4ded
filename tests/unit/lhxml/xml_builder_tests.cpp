#include "lhxml/xml_builder.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace paylodge {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

[[nodiscard]] std::string TakeText(XMLBuilder& builder) { return std::move(builder).GetText(); }

// What stands before the tag that a builder opens after so many steps up or down.
[[nodiscard]] std::string LastLine(const XMLBuilder& builder) {
    const std::string text = builder.GetText();
    const std::size_t before = text.rfind("\r\n", text.size() - 3);
    return before == std::string::npos ? text : text.substr(before + 2);
}

[[nodiscard]] std::string Element(std::string_view name, std::string_view value) {
    XMLBuilder builder;
    builder.AddElement(name, value);
    return builder.GetText();
}

[[nodiscard]] std::string Escaped(std::string_view value) {
    const std::string line = Element("A", value);
    return line.substr(3, line.size() - "<A></A>\r\n"sv.size());
}

TEST(XmlBuilder, BeginsEmptyAndAtTheMargin) {
    XMLBuilder builder;
    EXPECT_EQ("", builder.GetText());
    builder.AddElement("A", "x");
    EXPECT_EQ("<A>x</A>\r\n", builder.GetText());
}

TEST(XmlBuilder, ProcessingInstructionStandsBetweenAngleBracketsOnALine) {
    XMLBuilder builder;
    builder.AddProcessingInstruction("?xml version=\"1.0\" ?");
    EXPECT_EQ("<?xml version=\"1.0\" ?>\r\n", builder.GetText());
}

TEST(XmlBuilder, ProcessingInstructionIsNeitherIndentedNorEscapedAndLeavesTheDepth) {
    XMLBuilder builder;
    builder.OpenElement("A");
    builder.AddProcessingInstruction("a<&'\">");
    builder.AddElement("B", "x");
    EXPECT_EQ("<A>\r\n<a<&'\">>\r\n    <B>x</B>\r\n", builder.GetText());
}

TEST(XmlBuilder, ElementIsNestedByFourSpaces) {
    XMLBuilder builder;
    builder.OpenElement("A");
    builder.AddElement("B", "x");
    builder.CloseElement("A");
    EXPECT_EQ("<A>\r\n    <B>x</B>\r\n</A>\r\n", builder.GetText());
}

TEST(XmlBuilder, EveryLevelIndentsByFourSpaces) {
    XMLBuilder builder;
    for (std::size_t depth = 0; depth < 100; ++depth) {
        builder.OpenElement("A");
        ASSERT_EQ(std::string(4 * depth, ' ') + "<A>\r\n", LastLine(builder));
    }
    for (std::size_t depth = 100; depth-- > 0;) {
        builder.CloseElement("A");
        ASSERT_EQ(std::string(4 * depth, ' ') + "</A>\r\n", LastLine(builder));
    }
}

TEST(XmlBuilder, SiblingsStandAtTheSameLevel) {
    XMLBuilder builder;
    builder.AddElement("A", "1");
    builder.AddElement("A", "2");
    EXPECT_EQ("<A>1</A>\r\n<A>2</A>\r\n", builder.GetText());
}

TEST(XmlBuilder, AggregateWithoutContentIsStillOpenedAndClosed) {
    XMLBuilder builder;
    builder.OpenElement("A");
    builder.CloseElement("A");
    EXPECT_EQ("<A>\r\n</A>\r\n", builder.GetText());
}

TEST(XmlBuilder, ElementWithEmptyValueIsLeftOutWithItsIndentation) {
    XMLBuilder builder;
    builder.OpenElement("A");
    builder.AddElement("B", "");
    builder.AddElement("C", "x");
    EXPECT_EQ("<A>\r\n    <C>x</C>\r\n", builder.GetText());
}

TEST(XmlBuilder, ElementWithBlankValueIsWritten) { EXPECT_EQ("<A> </A>\r\n", Element("A", " ")); }

TEST(XmlBuilder, DepthBelowOneIndentsNothing) {
    XMLBuilder builder;
    builder.CloseElement("A");
    builder.CloseElement("B");
    EXPECT_EQ("</A>\r\n</B>\r\n", builder.GetText());
    builder.AddElement("C", "x");
    EXPECT_EQ("<C>x</C>\r\n", LastLine(builder));
}

TEST(XmlBuilder, DepthBelowZeroIsCountedAsItIs) {
    XMLBuilder builder;
    builder.CloseElement("A");
    builder.CloseElement("A");
    for (const std::string_view line : {"<B>\r\n", "<B>\r\n", "<B>\r\n", "    <B>\r\n"}) {
        builder.OpenElement("B");
        EXPECT_EQ(line, LastLine(builder));
    }
}

TEST(XmlBuilder, AttributesStandInTheirOrder) {
    XMLBuilder builder;
    builder.OpenElement("A", std::array{"b"sv, "a"sv}, std::array{"1"sv, "2"sv});
    builder.CloseElement("A");
    EXPECT_EQ("<A b=\"1\" a=\"2\">\r\n</A>\r\n", builder.GetText());
}

TEST(XmlBuilder, AttributeWithEmptyValueIsWritten) {
    XMLBuilder builder;
    builder.OpenElement("A", std::array{"b"sv}, std::array{""sv});
    EXPECT_EQ("<A b=\"\">\r\n", builder.GetText());
}

TEST(XmlBuilder, AttributeValueIsEscaped) {
    XMLBuilder builder;
    builder.OpenElement("A", std::array{"b"sv}, std::array{"a<b & \"c\""sv});
    EXPECT_EQ("<A b=\"a&lt;b &amp; &quot;c&quot;\">\r\n", builder.GetText());
}

TEST(XmlBuilder, ElementValueIsEscaped) { EXPECT_EQ("<A>&quot;&amp;&apos;&lt;&gt;</A>\r\n", Element("A", "\"&'<>")); }

TEST(XmlBuilder, NamesAreNeverEscaped) {
    EXPECT_EQ("<a&\"'<>>x</a&\"'<>>\r\n", Element("a&\"'<>", "x"));
    XMLBuilder builder;
    builder.OpenElement("&", std::array{"<"sv}, std::array{"x"sv});
    builder.CloseElement("&");
    EXPECT_EQ("<& <=\"x\">\r\n</&>\r\n", builder.GetText());
}

TEST(XmlBuilder, VerbatimTextIsCopiedWithoutAnyChange) {
    XMLBuilder builder;
    builder.OpenElement("A");
    builder.AddVerbatim("<b c='&'>\0\n"sv);
    builder.CloseElement("A");
    EXPECT_EQ("<A>\r\n<b c='&'>\0\n</A>\r\n"s, builder.GetText());
}

TEST(XmlBuilder, CopyGoesOnByItself) {
    XMLBuilder builder;
    builder.OpenElement("A");
    XMLBuilder copy = builder;
    copy.AddElement("B", "x");
    EXPECT_EQ("<A>\r\n", builder.GetText());
    EXPECT_EQ("<A>\r\n    <B>x</B>\r\n", copy.GetText());
}

TEST(XmlBuilder, LongValueIsWrittenWhole) {
    const std::string value(1'000'000, '&');
    const std::string text = Element("A", value);
    EXPECT_EQ(5 * value.size() + "<A></A>\r\n"sv.size(), text.size());
    EXPECT_EQ("<A>&amp;&amp;", text.substr(0, 13));
}

// Short pieces are copied in another way than long ones, and the text grows many times on the way.
TEST(XmlBuilder, NamesAndValuesOfEveryLengthAreWrittenWhole) {
    const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.:abcdefghijklmn";
    XMLBuilder builder;
    std::string expected;
    for (std::size_t size = 1; size <= letters.size(); ++size) {
        const std::string name = letters.substr(0, size);
        const std::string value = letters.substr(letters.size() - size) + "<";
        const std::string escaped = letters.substr(letters.size() - size) + "&lt;";
        builder.OpenElement(name, std::array{std::string_view(name)}, std::array{std::string_view(value)});
        builder.AddElement(name, value);
        builder.CloseElement(name);
        expected += "<" + name + " " + name + "=\"" + escaped + "\">\r\n";
        expected += "    <" + name + ">" + escaped + "</" + name + ">\r\n";
        expected += "</" + name + ">\r\n";
        ASSERT_EQ(expected, builder.GetText()) << size;
    }
    EXPECT_EQ(expected, TakeText(builder));
}

TEST(XmlBuilder, BuilderWhoseTextWasTakenBeginsAgain) {
    XMLBuilder builder;
    builder.AddElement("A", "x");
    EXPECT_EQ("<A>x</A>\r\n", TakeText(builder));
    builder.AddElement("B", "y");
    EXPECT_EQ("<B>y</B>\r\n", builder.GetText());
}

struct Escape {
    std::string_view special;
    std::string_view entity;
};
class EscapeTable : public testing::TestWithParam<Escape> {};

TEST_P(EscapeTable, ReplacesTheCharacterByItsEntity) {
    EXPECT_EQ("a" + std::string(GetParam().entity) + "b", Escaped("a" + std::string(GetParam().special) + "b"));
}

INSTANTIATE_TEST_SUITE_P(XmlBuilder, EscapeTable,
                         testing::Values(Escape{"\"", "&quot;"}, Escape{"&", "&amp;"}, Escape{"'", "&apos;"},
                                         Escape{"<", "&lt;"}, Escape{">", "&gt;"}));

TEST(XmlBuilderEscapes, EverySpecialCharacterAtEveryPosition) {
    constexpr std::string_view kSpecial = "\"&'<>";
    constexpr std::string_view kEntities[] = {"&quot;", "&amp;", "&apos;", "&lt;", "&gt;"};
    for (std::size_t size = 1; size <= 50; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            for (std::size_t i = 0; i < kSpecial.size(); ++i) {
                std::string value(size, 'x');
                value[place] = kSpecial[i];
                std::string expected(size, 'x');
                expected.replace(place, 1, kEntities[i]);
                ASSERT_EQ(expected, Escaped(value));
            }
        }
    }
}

TEST(XmlBuilderEscapes, TwoSpecialCharactersAnyDistanceApart) {
    for (std::size_t first = 0; first < 40; ++first) {
        for (std::size_t second = first + 1; second < 40; ++second) {
            std::string value(40, 'x');
            value[first] = '&';
            value[second] = '<';
            std::string expected(40, 'x');
            expected.replace(second, 1, "&lt;").replace(first, 1, "&amp;");
            ASSERT_EQ(expected, Escaped(value));
        }
    }
}

TEST(XmlBuilderEscapes, NoBytesThatDifferInOneBit) {
    for (const char special : "\"&'<>"s) {
        for (int bit = 0; bit < 8; ++bit) {
            const char other = static_cast<char>(static_cast<unsigned char>(special) ^ (1U << bit));
            if ("\"&'<>"s.find(other) == std::string::npos) {
                const std::string value(33, other);
                ASSERT_EQ(value, Escaped(value)) << static_cast<int>(other);
            }
        }
    }
}

TEST(XmlBuilderEscapes, NoOtherByte) {
    for (int code = 0; code < 256; ++code) {
        const std::string byte(1, static_cast<char>(code));
        if ("\"&'<>"sv.find(byte) == std::string_view::npos) {
            EXPECT_EQ(byte, Escaped(byte)) << code;
        }
    }
}

TEST(XmlBuilderEscapes, WhatLooksEscapedAlready) { EXPECT_EQ("&amp;amp;", Escaped("&amp;")); }

TEST(XmlBuilderEscapes, WhatFollowsANul) { EXPECT_EQ("a\0&lt;"s, Escaped("a\0<"sv)); }

}  // namespace
}  // namespace paylodge
