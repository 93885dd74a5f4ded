#include <gtest/gtest.h>

#include "refhost/books/status.hpp"
#include "refhost/books/values.hpp"
#include "refhost/books/xml_reader.hpp"
#include "refhost/books/xml_writer.hpp"

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
    EXPECT_EQ(ReadXml(CompactXml(Tricky())).root, Tricky());
    EXPECT_EQ(ReadXml(IndentedXml(Tricky())).root, Tricky());
}

TEST(XmlText, IsIndentedByTwoBlanksALevel) {
    Element root = MakeElement("A");
    root.children = {MakeElement("B", "x"), MakeElement("C")};
    EXPECT_EQ(IndentedXml(root), "<A>\n  <B>x</B>\n  <C/>\n</A>\n");
    EXPECT_EQ(CompactXml(root), "<A><B>x</B><C/></A>");
}

TEST(XmlReader, KeepsInstructionsAndJoinsCharacterData) {
    const Document document =
        ReadXml("<?xml version=\"1.0\"?><?lhxml version=\"7.0\" ?><A>x<!-- y --><![CDATA[<z>]]></A>");
    ASSERT_EQ(document.instructions.size(), 2U);
    EXPECT_EQ(document.instructions[1].target, "lhxml");
    EXPECT_EQ(Trimmed(document.instructions[1].data), "version=\"7.0\"");
    EXPECT_EQ(document.root.text, "x<z>");
}

TEST(XmlReader, LeavesOutTheMarkOfTheEncodingAtTheBeginningOnly) {
    EXPECT_EQ(ReadXml("\xEF\xBB\xBF<A>x</A>").root.text, "x");
    EXPECT_EQ(ReadXml("<A>\xEF\xBB\xBFx</A>").root.text, "\xEF\xBB\xBFx");
    EXPECT_THROW(static_cast<void>(ReadXml("\xEF\xBB\xBF\xEF\xBB\xBF<A/>")), RefusedRequest);
}

TEST(XmlReader, ReadsUtf8WhateverTheDeclarationSays) {
    EXPECT_EQ(ReadXml("<?xml version=\"1.0\" encoding=\"UTF-8\"?><A>\xC3\xA9</A>").root.text, "\xC3\xA9");
    EXPECT_EQ(ReadXml("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><A>\xC3\xA9</A>").root.text, "\xC3\xA9");
    for (const std::string& text :
         {std::string("<A>\xE9</A>"), std::string("<A>\xC3</A>"), std::string("<A>\xC0\xAF</A>"),
          std::string("<A>\xF5\x80\x80\x80</A>"), std::string("<A b='\xFF'/>")}) {
        EXPECT_THROW(static_cast<void>(ReadXml(text)), RefusedRequest);
    }
}

TEST(XmlReader, ReadsTextsOfManyMegabytesWhole) {
    const std::string text(20'000'000, 'x');
    EXPECT_EQ(ReadXml("<A>" + text + "</A>").root.text.size(), text.size());
    EXPECT_EQ(ReadXml("<A b=\"" + text + "\"/>").root.attributes.front().value.size(), text.size());
    EXPECT_THROW(static_cast<void>(ReadXml("<A>" + text)), RefusedRequest);
}

// An external entity stands in a type declaration, at which reading ends.
TEST(XmlReader, FetchesNothing) {
    for (const char* text : {"<!DOCTYPE A SYSTEM \"file:///etc/hostname\"><A/>",
                             "<!DOCTYPE A [<!ENTITY e SYSTEM \"file:///etc/hostname\">]><A>&e;</A>",
                             "<!DOCTYPE A [<!ENTITY % e SYSTEM \"file:///etc/hostname\"> %e;]><A/>"}) {
        try {
            static_cast<void>(ReadXml(text));
            ADD_FAILURE() << "was read: " << text;
        } catch (const RefusedRequest& refused) {
            EXPECT_NE(refused.GetStatus().message.find("a document type declaration stands here"), std::string::npos);
        }
    }
}

TEST(XmlReader, RefusesWhatIsNotWellFormed) {
    using namespace std::string_literals;
    const std::string entities = "<!DOCTYPE A [<!ENTITY e 'x'>]><A>&e;</A>";
    for (const std::string& text :
         {""s, " "s, "text"s, "<A>"s, "<A></B>"s, "<A/><B/>"s, "<A>&nothing;</A>"s, "<A b='1' b='2'/>"s, "<A b=1/>"s,
          "<A>\x01</A>"s, "<A>\0</A>"s, "<A/>\0<B/>"s, "<A>]]></A>"s, "<?xml version=\"1.0\"?>"s, entities}) {
        EXPECT_THROW(static_cast<void>(ReadXml(text)), RefusedRequest) << text;
    }
    EXPECT_THROW(static_cast<void>(ReadXml("<A>\xED\xA0\x80</A>")), RefusedRequest);
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
    EXPECT_THROW(static_cast<void>(ReadXml(text + "]><A>&e11;</A>")), RefusedRequest);
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
    EXPECT_NO_THROW(static_cast<void>(ReadXml(nested(64))));
    for (const size_t depth : {65U, 200U, 100'000U}) {
        EXPECT_THROW(static_cast<void>(ReadXml(nested(depth))), RefusedRequest) << depth;
    }
}

struct PlaceCase {
    const char* name;
    const char* text;
    const char* message;
};

void PrintTo(const PlaceCase& place, std::ostream* output) { *output << place.name; }

class MalformedXml : public ::testing::TestWithParam<PlaceCase> {};

TEST_P(MalformedXml, IsRefusedWithLineColumnAndWhatBelongsThere) {
    try {
        static_cast<void>(ReadXml(GetParam().text));
        FAIL() << "was read";
    } catch (const RefusedRequest& refused) {
        EXPECT_EQ(refused.GetStatus().code, Code::kMalformedDocument);
        EXPECT_EQ(refused.GetStatus().message,
                  "The document is not well-formed XML: " + std::string(GetParam().message));
    }
}

INSTANTIATE_TEST_SUITE_P(
    , MalformedXml,
    ::testing::Values(
        PlaceCase{"OtherEndTag", "<A>\n  <B></C>\n</A>",
                  "line 2, column 8: this end tag closes nothing: </B> is expected."},
        PlaceCase{"TextAlone", "\nhello",
                  "line 2, column 1: no text can stand here: an element such as <LHXML> is expected."},
        PlaceCase{"NoEnd", "<A>\n<B>x", "line 2, column 5: the document ends here: </B> is expected."},
        PlaceCase{"Nothing", "",
                  "line 1, column 1: the document element is missing: an element such as <LHXML> is expected."},
        PlaceCase{
            "TwoElements", "<A/>\n<B/>",
            "line 2, column 1: something stands behind the document element: the end of the document is expected."},
        PlaceCase{"Doctype", "<!DOCTYPE A><A/>",
                  "line 1, column 12: a document type declaration stands here: the document element is expected."},
        PlaceCase{
            "BareAmpersand", "<A>Juniper & Sons</A>",
            "line 1, column 13: this character cannot stand here: a name, a text or the end of a tag is expected; an "
            "ampersand in a text is written &amp;, a less-than sign &lt;."},
        PlaceCase{
            "UnknownEntity", "<A>&nbsp;</A>",
            "line 1, column 4: the entity is unknown: &amp;, &lt;, &gt;, &quot;, &apos; or a number such as &#233; is "
            "expected."},
        PlaceCase{"UnclosedTag", "<A", "line 1, column 1: this tag does not end: > is expected."},
        PlaceCase{"UnclosedTagWithin", "<A><B", "line 1, column 4: this tag does not end: > is expected."},
        PlaceCase{"HalfCharacter", "<A>\xC3", "line 1, column 4: the text ends within a character."},
        PlaceCase{"ImpossibleCharacter", "<A>&#0;</A>", "line 1, column 4: no character has this number."},
        PlaceCase{"LateDeclaration", " <?xml version=\"1.0\"?><A/>",
                  "line 1, column 2: the XML declaration is expected at the very beginning."},
        PlaceCase{"MalformedDeclaration", "<?xml versoin=\"1.0\"?><A/>",
                  "line 1, column 7: the XML declaration is malformed: <?xml version=\"1.0\"?> is expected."},
        PlaceCase{"UnclosedCdata", "<A><![CDATA[x</A>",
                  "line 1, column 18: the CDATA section does not end: ]]> is expected."},
        PlaceCase{"AttributeTwice", "<A b='1' b='2'/>",
                  "line 1, column 10: the attribute is given twice: once is expected."}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace paylodge::refhost
