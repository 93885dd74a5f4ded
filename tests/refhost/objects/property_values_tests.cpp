#include "refhost/objects/property_values.hpp"

#include <gtest/gtest.h>

#include "com/bstr.hpp"
#include "com/variant.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::refhost {
namespace {

class Parsed : public OwnedVariant {
  public:
    explicit Parsed(const PropertyText& text) { EXPECT_HRESULT(S_OK, ValueFromText(text, Receive())); }
};

TEST(EscapedText, LeavesOrdinaryTextAlone) {
    EXPECT_EQ(EscapedText(L""), "");
    EXPECT_EQ(EscapedText(L"2026-11-21 10:00 <&>\""), "2026-11-21 10:00 <&>\"");
    EXPECT_EQ(EscapedText(L"Caf\u00E9 \U0001F600"), "Caf\xC3\xA9 \xF0\x9F\x98\x80");
}

TEST(EscapedText, WritesWhatXmlCannotCarryAsNumbers) {
    EXPECT_EQ(EscapedText(std::wstring_view(L"a\0b", 3)), "a\\u0000b");
    EXPECT_EQ(EscapedText(L"\r\n\t"), "\\u000D\\u000A\\u0009");
    EXPECT_EQ(EscapedText(L"\\"), "\\u005C");
    EXPECT_EQ(EscapedText(L"\xFFFE\xFFFF"), "\\uFFFE\\uFFFF");
}

TEST(EscapedText, WritesHalvesOfSurrogatePairsAsNumbers) {
    EXPECT_EQ(EscapedText(std::wstring{0xD83D}), "\\uD83D");
    EXPECT_EQ(EscapedText(std::wstring{0xDE00, 0xD83D}), "\\uDE00\\uD83D");
    EXPECT_EQ(EscapedText(std::wstring{0xD83D, L'x'}), "\\uD83Dx");
}

TEST(EscapedText, LeavesWholePairsAloneWhereverTheyStand) {
    EXPECT_EQ(EscapedText(L"\U0001F600x"), "\xF0\x9F\x98\x80x");
    EXPECT_EQ(EscapedText(L"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
    EXPECT_EQ(EscapedText(std::wstring{0xD83D, 0xD83D, 0xDE00, 0xDE00}), "\\uD83D\xF0\x9F\x98\x80\\uDE00");
}

TEST(EscapedText, LeavesTheCharactersBesideThoseAlone) {
    EXPECT_EQ(EscapedText(L" \x1F[]"), " \\u001F[]");
    EXPECT_EQ(EscapedText(L"\xD7FF\xE000\xFFFD"), "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD");
    EXPECT_EQ(EscapedText(std::wstring{0xD800}), "\\uD800");
    EXPECT_EQ(EscapedText(std::wstring{0xDBFF, L'-', 0xDC00, 0xDFFF}), "\\uDBFF-\\uDC00\\uDFFF");
}

TEST(UnescapedText, IsTheTextThatWasEscaped) {
    std::wstring every_unit;
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        every_unit += static_cast<wchar_t>(unit);
    }
    EXPECT_EQ(UnescapedText(EscapedText(every_unit)), every_unit);
    EXPECT_EQ(UnescapedText(EscapedText(L"\\u0041")), L"\\u0041");
}

TEST(UnescapedText, LeavesWhatIsNoEscapeAlone) {
    EXPECT_EQ(UnescapedText("\\"), L"\\");
    EXPECT_EQ(UnescapedText("\\u"), L"\\u");
    EXPECT_EQ(UnescapedText("\\u12"), L"\\u12");
    EXPECT_EQ(UnescapedText("\\uXYZW"), L"\\uXYZW");
    EXPECT_EQ(UnescapedText("\\n"), L"\\n");
    // The characters before and after the digits and the letters, at each of the four places.
    for (const char beside : {'/', ':', '@', 'G', '`', 'g'}) {
        for (size_t place = 2; place < 6; ++place) {
            std::string text = "\\u0041";
            text[place] = beside;
            EXPECT_EQ(UnescapedText(text), std::wstring(text.begin(), text.end()));
        }
    }
    EXPECT_EQ(UnescapedText("\\u0041\\u00e9x\\u005a"), L"A\u00E9xZ");
    EXPECT_EQ(UnescapedText("\\U0041"), L"\\U0041");
}

TEST(PropertyValue, OfEachKindComesBackAsItWas) {
    VARIANT value = {};
    V_VT(&value) = VT_I2;
    V_I2(&value) = -32768;
    EXPECT_EQ(TextFromValue(value), (PropertyText{"int16", "-32768"}));
    EXPECT_EQ(V_I2(&Parsed(*TextFromValue(value)).Get()), -32768);
    V_VT(&value) = VT_I4;
    V_I4(&value) = 2147483647;
    EXPECT_EQ(TextFromValue(value), (PropertyText{"int32", "2147483647"}));
    EXPECT_EQ(V_I4(&Parsed(*TextFromValue(value)).Get()), 2147483647);
    V_VT(&value) = VT_BOOL;
    V_BOOL(&value) = VARIANT_TRUE;
    EXPECT_EQ(V_BOOL(&Parsed(*TextFromValue(value)).Get()), VARIANT_TRUE);
    V_VT(&value) = VT_CY;
    V_CY(&value).int64 = -1234567;
    EXPECT_EQ(TextFromValue(value), (PropertyText{"currency", "-123.4567"}));
    EXPECT_EQ(V_CY(&Parsed(*TextFromValue(value)).Get()).int64, -1234567);
}

TEST(PropertyValue, OfAStringIsItsText) {
    const OwnedVariant string(MakeBstr(std::wstring_view(L"a\0b", 3)));
    EXPECT_EQ(TextFromValue(string.Get()), (PropertyText{"string", "a\\u0000b"}));
    EXPECT_EQ(View(Parsed(*TextFromValue(string.Get())).Bstr()), std::wstring_view(L"a\0b", 3));
    const OwnedVariant null{OwnedBstr()};
    EXPECT_EQ(TextFromValue(null.Get()), (PropertyText{"string", ""}));
}

TEST(PropertyValue, OfAnyOtherKindIsNotKept) {
    for (const VARTYPE type : {VT_EMPTY, VT_NULL, VT_R8, VT_DISPATCH, VT_UNKNOWN, VT_DECIMAL}) {
        VARIANT value = {};
        V_VT(&value) = type;
        EXPECT_EQ(TextFromValue(value), std::nullopt) << type;
    }
    VARIANT reference = {};
    LONG number = 1;
    V_VT(&reference) = VT_I4 | VT_BYREF;
    V_I4REF(&reference) = &number;
    EXPECT_EQ(TextFromValue(reference), std::nullopt);
}

TEST(PropertyValue, OfAnUnknownKindOrNoNumberIsAFailure) {
    VARIANT value = {};
    EXPECT_HRESULT(DISP_E_BADVARTYPE, ValueFromText({"text", "a"}, &value));
    EXPECT_HRESULT(DISP_E_TYPEMISMATCH, ValueFromText({"int32", "four"}, &value));
    EXPECT_HRESULT(DISP_E_OVERFLOW, ValueFromText({"int16", "32768"}, &value));
    EXPECT_EQ(V_VT(&value), VT_EMPTY);
}

}  // namespace
}  // namespace paylodge::refhost
