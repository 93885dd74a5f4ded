#include "refhost/objects/utf8.hpp"

#include <gtest/gtest.h>

namespace paylodge::refhost {
namespace {

TEST(Utf8, TurnsHalfASurrogatePairIntoTheReplacementCharacter) {
    EXPECT_EQ(Utf8FromWide(std::wstring(L"a\xD800z")), "a\xEF\xBF\xBDz");
    EXPECT_EQ(WideFromUntrustedUtf8("\xFF"), std::nullopt);
    EXPECT_EQ(WideFromUntrustedUtf8("\xC3\xA9"), std::wstring(L"\x00E9"));
}

}  // namespace
}  // namespace paylodge::refhost
