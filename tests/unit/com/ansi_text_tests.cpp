#include "com/ansi_text.hpp"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/bstr_allocations.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/thread_locale.hpp"

namespace paylodge::test {
namespace {

using namespace std::string_literals;

TEST(AnsiText, TestsExpectTheWesternCodePage) { ASSERT_EQ(1252U, ::GetACP()); }

TEST(AnsiText, WideTextBecomesNarrow) {
    EXPECT_EQ("caf\xE9 \x80", AnsiFromWide(L"caf\xE9 \x20AC"));
    EXPECT_EQ("", AnsiFromWide(L""));
}

// These texts are not given to the platform.
TEST(AnsiText, AsciiStaysItselfAtEveryLength) {
    std::wstring wide;
    std::string narrow;
    for (int code = 0; code < 0x80; ++code) {
        EXPECT_EQ(narrow, AnsiFromWide(wide)) << code;
        EXPECT_EQ(narrow, NarrowFromWide(CP_ACP, wide)) << code;
        EXPECT_EQ(wide, View(BstrFromAnsi(narrow))) << code;
        EXPECT_EQ(wide, View(BstrFromThreadAnsi(narrow))) << code;
        wide += static_cast<wchar_t>(code);
        narrow += static_cast<char>(code);
    }
    EXPECT_EQ(narrow, AnsiFromWide(wide));
}

TEST(AnsiText, OneOtherCharacterIsConvertedAtEveryPlace) {
    for (std::size_t size = 1; size <= 70; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            std::wstring text(size, L'x');
            text[place] = L'\x20AC';
            std::string expected(size, 'x');
            expected[place] = '\x80';
            ASSERT_EQ(expected, AnsiFromWide(text));
            ASSERT_EQ(text, View(BstrFromAnsi(expected)));
        }
    }
}

TEST(AnsiText, FirstCharacterBehindAsciiIsThePlatforms) {
    EXPECT_EQ(NarrowFromWide(CP_ACP, L"\x80"), AnsiFromWide(L"\x80"));
}

TEST(AnsiText, CharactersOutsideTheCodePageBecomeItsDefault) {
    EXPECT_EQ("a?b", AnsiFromWide(L"a\x65E5"
                                  L"b"));
}

// Full-width and other look-alikes of what XML, script and paths give a meaning to.
TEST(AnsiText, CharactersThatLookLikeMarkupDoNotBecomeMarkup) {
    for (const wchar_t look_alike : {L'\uFF1C', L'\uFF1E', L'\uFF06', L'\uFF02', L'\uFF07', L'\u2039', L'\u2329',
                                     L'\u2032', L'\uFF3C', L'\u2216', L'\uFF0F', L'\u2044'}) {
        const std::string narrow = AnsiFromWide(std::wstring(1, look_alike));
        ASSERT_EQ(1U, narrow.size());
        EXPECT_EQ(std::string::npos, narrow.find_first_of("<>&\"'\\/")) << std::hex << static_cast<int>(look_alike);
    }
    EXPECT_EQ("a?b", AnsiFromWide(L"a\uFF1C"
                                  L"b"));
}

// Code pages that refuse the flag for that hold every character.
TEST(AnsiText, CodePagesWithEveryCharacterAreUsedAsTheyAre) {
    EXPECT_EQ(
        "a\xEF\xBC\x9C"
        "b",
        NarrowFromWide(CP_UTF8,
                       L"a\uFF1C"
                       L"b"));
    EXPECT_EQ("", NarrowFromWide(CP_UTF8, L""));
    EXPECT_EQ("\xC3\xA9\0z"s, NarrowFromWide(CP_UTF8, L"\xE9\0z"s));
}

// UTF-7 takes no flags at all.
TEST(AnsiText, CodePagesThatRefuseTheFlagConvertWithoutIt) {
    EXPECT_EQ("a+AOk-b", NarrowFromWide(CP_UTF7,
                                        L"a\xE9"
                                        L"b"));
    EXPECT_EQ("text", NarrowFromWide(CP_UTF7, L"text"));
}

constexpr UINT kJapanese = 932;

TEST(AnsiText, CodePagesWithLongerCharactersGetAllOfThem) {
    EXPECT_EQ("\x93\xFA-\x96\x7B", NarrowFromWide(kJapanese, L"\x65E5-\x672C"));
}

// The yen sign, which looks like a backslash to that code page.
TEST(AnsiText, LookAlikesStayOutBesideLongerCharactersToo) {
    EXPECT_EQ("\x93\xFA?", NarrowFromWide(kJapanese, L"\x65E5\xA5"));
}

TEST(AnsiText, EmbeddedNulsSurvive) {
    EXPECT_EQ("a\0b\0"s, AnsiFromWide(L"a\0b\0"s));
    EXPECT_EQ("a\0b\0"s, AnsiFromBstr(MakeBstr(L"a\0b\0"s).Get()));
    EXPECT_EQ(L"a\0b\0"s, View(BstrFromAnsi("a\0b\0"s)));
    EXPECT_EQ(L"a\0b\0"s, View(BstrFromThreadAnsi("a\0b\0"s)));
}

TEST(AnsiText, NullStringIsTheEmptyText) { EXPECT_EQ("", AnsiFromBstr(nullptr)); }

TEST(AnsiText, EmptyTextIsAStringOfItsOwn) {
    const auto is_empty_string = [](const OwnedBstr& text) { return text && ::SysStringLen(text.Get()) == 0; };
    EXPECT_TRUE(is_empty_string(BstrFromAnsi("")));
    EXPECT_TRUE(is_empty_string(BstrFromThreadAnsi("")));
}

TEST(AnsiText, EveryByteOfTheCodePageComesBack) {
    for (int code = 1; code < 256; ++code) {
        const std::string byte(1, static_cast<char>(code));
        EXPECT_EQ(byte, AnsiFromBstr(BstrFromAnsi(byte).Get())) << code;
    }
}

TEST(AnsiText, LongTextComesBack) {
    std::string text;
    text.assign(10'000'000, '\xE9');
    EXPECT_EQ(text, AnsiFromBstr(BstrFromAnsi(text).Get()));
}

TEST(AnsiText, ThreadsCodePageIsTheThreads) {
    const ThreadLocale locale(kGreek);
    EXPECT_EQ(L"\x3B1", View(BstrFromThreadAnsi("\xE1")));
}

TEST(AnsiText, SystemsCodePageDoesNotDependOnTheThread) {
    const ThreadLocale locale(kGreek);
    EXPECT_EQ(L"\xE1", View(BstrFromAnsi("\xE1")));
    EXPECT_EQ("\xE1?", AnsiFromWide(L"\xE1\x3C8"));
}

using Convert = OwnedBstr (*)(std::string_view);
class LackOfMemory : public testing::TestWithParam<Convert> {};

INSTANTIATE_TEST_SUITE_P(AnsiText, LackOfMemory, testing::Values(&BstrFromAnsi, &BstrFromThreadAnsi));

TEST_P(LackOfMemory, IsThrown) {
    for (const std::string_view text : {"", "text"}) {
        const BstrAllocations allocations(1);
        try {
            static_cast<void>(GetParam()(text));
            ADD_FAILURE() << "nothing was thrown";
        } catch (const _com_error& error) {
            EXPECT_HRESULT(E_OUTOFMEMORY, error.Error());
        }
    }
}

}  // namespace
}  // namespace paylodge::test
