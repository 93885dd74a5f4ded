#include <gtest/gtest.h>

#include "refhost/books/values.hpp"
#include "refhost/books/xml_reader.hpp"
#include "refhost/books/xml_writer.hpp"
#include "refhost/objects/utf8.hpp"
#include "tests/refhost/sample_books.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] Element Tricky() {
    Element root = MakeElement("Root");
    root.attributes = {{"a", "1 < 2 & \"three\"\r\n\tend"}};
    root.children = {MakeElement("Text", " \r\nx\ny\t]]> & <tag> 'q' \"d\" "), MakeElement("Blank", "  \n "),
                     MakeElement("Empty"), MakeElement("Wide", "\xE2\x82\xAC \xC3\xA9 \xF0\x9F\x98\x80")};
    return root;
}

TEST(XmlText, IsReadBackAsItWasWritten) {
    EXPECT_EQ(Read(CompactXml(Tricky())).root, Tricky());
    EXPECT_EQ(Read(IndentedXml(Tricky())).root, Tricky());
}

TEST(XmlText, IsIndentedByTwoBlanksALevel) {
    Element root = MakeElement("A");
    root.children = {MakeElement("B", "x"), MakeElement("C")};
    EXPECT_EQ(IndentedXml(root), "<A>\n  <B>x</B>\n  <C/>\n</A>\n");
    EXPECT_EQ(CompactXml(root), "<A><B>x</B><C/></A>");
}

TEST(XmlReader, KeepsInstructionsAndJoinsCharacterData) {
    const Document document =
        Read("<?xml version=\"1.0\"?><?lhxml version=\"7.0\" ?><A>x<!-- y --><![CDATA[<z>]]></A>");
    ASSERT_EQ(document.instructions.size(), 2U);
    EXPECT_EQ(document.instructions[1].target, "lhxml");
    EXPECT_EQ(Trimmed(document.instructions[1].data), "version=\"7.0\"");
    EXPECT_EQ(document.root.text, "x<z>");
}

TEST(XmlReader, RefusesWhatIsNotWellFormed) {
    using namespace std::string_literals;
    const std::string entities = "<!DOCTYPE A [<!ENTITY e 'x'>]><A>&e;</A>";
    for (const std::string& text :
         {""s, " "s, "text"s, "<A>"s, "<A></B>"s, "<A/><B/>"s, "<A>&nothing;</A>"s, "<A b='1' b='2'/>"s, "<A b=1/>"s,
          "<A>\x01</A>"s, "<A>\0</A>"s, "<A/>\0<B/>"s, "<A>]]></A>"s, "<?xml version=\"1.0\"?>"s, entities}) {
        EXPECT_THROW(static_cast<void>(Read(text)), RefusedRequest) << text;
    }
    EXPECT_THROW(static_cast<void>(ReadXml(std::wstring(L"<A>\xD800</A>"))), RefusedRequest);
}

TEST(XmlReader, RefusesEntitiesThatGrow) {
    std::string text = "<!DOCTYPE A [<!ENTITY e0 \"grow\">";
    for (int level = 1; level < 12; ++level) {
        text += "<!ENTITY e" + std::to_string(level) + " \"";
        for (int copy = 0; copy < 10; ++copy) {
            text += "&e" + std::to_string(level - 1) + ';';
        }
        text += "\">";
    }
    EXPECT_THROW(static_cast<void>(Read(text + "]><A>&e11;</A>")), RefusedRequest);
}

TEST(XmlReader, RefusesDeepNesting) {
    const auto nested = [](size_t depth) {
        std::string text;
        for (size_t level = 0; level < depth; ++level) {
            text += "<A>";
        }
        for (size_t level = 0; level < depth; ++level) {
            text += "</A>";
        }
        return text;
    };
    EXPECT_NO_THROW(static_cast<void>(Read(nested(64))));
    for (const size_t depth : {65U, 200U, 100'000U}) {
        EXPECT_THROW(static_cast<void>(Read(nested(depth))), RefusedRequest) << depth;
    }
}

TEST(Utf8, TurnsHalfASurrogatePairIntoTheReplacementCharacter) {
    EXPECT_EQ(Utf8FromWide(std::wstring(L"a\xD800z")), "a\xEF\xBF\xBDz");
    EXPECT_EQ(WideFromUntrustedUtf8("\xFF"), std::nullopt);
    EXPECT_EQ(WideFromUntrustedUtf8("\xC3\xA9"), std::wstring(L"\x00E9"));
}

}  // namespace
}  // namespace paylodge::refhost
