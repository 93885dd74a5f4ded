#include "com/ascii_case.hpp"

#include <gtest/gtest.h>

namespace paylodge {
namespace {

// The two letter cases of A to Z are equal, and nothing else is equal to anything but itself.
TEST(AsciiCase, MakesLettersEqualAndNothingElse) {
    for (int left = 0; left < 256; ++left) {
        for (int right = 0; right < 256; ++right) {
            const bool is_letter = (left >= 'A' && left <= 'Z') || (left >= 'a' && left <= 'z');
            const bool is_equal = left == right || (is_letter && (left ^ right) == 0x20);
            const char left_text[] = {static_cast<char>(left)};
            const char right_text[] = {static_cast<char>(right)};
            ASSERT_EQ(is_equal,
                      EqualsIgnoringAsciiCase(std::string_view(left_text, 1), std::string_view(right_text, 1)))
                << left << ' ' << right;
            const wchar_t wide_left[] = {static_cast<wchar_t>(left)};
            const wchar_t wide_right[] = {static_cast<wchar_t>(right)};
            ASSERT_EQ(is_equal,
                      EqualsIgnoringAsciiCase(std::wstring_view(wide_left, 1), std::wstring_view(wide_right, 1)))
                << left << ' ' << right;
        }
    }
}

TEST(AsciiCase, ComparesWholeTexts) {
    EXPECT_TRUE(EqualsIgnoringAsciiCase(std::string_view("aBc"), "AbC"));
    EXPECT_TRUE(EqualsIgnoringAsciiCase(std::string_view(), ""));
    EXPECT_FALSE(EqualsIgnoringAsciiCase(std::string_view("abc"), "ab"));
    EXPECT_FALSE(EqualsIgnoringAsciiCase(std::string_view("ab"), "abc"));
    EXPECT_FALSE(EqualsIgnoringAsciiCase(std::wstring_view(L"\u00C9"), L"\u00E9"));
}

}  // namespace
}  // namespace paylodge
