#include "tests/support/hresult.hpp"

#include <windows.h>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <string>

#include "com/hresult_names.hpp"

namespace paylodge::test {
namespace {

HRESULT Open(const char* /*name*/, int result) { return static_cast<HRESULT>(result); }

// What a failing assertion prints; newer versions of GoogleTest end it with a line end.
template <class Assertion>
[[nodiscard]] std::string FailureOf(Assertion assertion) {
    testing::TestPartResultArray results;
    {
        const testing::ScopedFakeTestPartResultReporter reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
        assertion();
    }
    EXPECT_EQ(1, results.size());
    std::string message = results.size() == 1 ? results.GetTestPartResult(0).message() : "";
    return message.ends_with('\n') ? message.substr(0, message.size() - 1) : message;
}

TEST(ExpectHResult, AFailureNamesTheCallAndBothHResults) {
    EXPECT_EQ(
        "Open(\"books\", 1)\n"
        "  expected: E_FAIL 0x80004005\n"
        "  returned: S_FALSE 0x00000001",
        FailureOf([] { EXPECT_HRESULT(E_FAIL, Open("books", 1)); }));
}

TEST(ExpectHResult, AnHResultWithoutANamePrintsItsNumber) {
    EXPECT_EQ(
        "Open(\"books\", 0x40ABC)\n"
        "  expected: S_OK 0x00000000\n"
        "  returned: 0x00040ABC",
        FailureOf([] { EXPECT_HRESULT(S_OK, Open("books", 0x40ABC)); }));
}

TEST(ExpectHResult, WhatIsStreamedToItFollows) {
    EXPECT_EQ(
        "Open(\"books\", 1)\n"
        "  expected: S_OK 0x00000000\n"
        "  returned: S_FALSE 0x00000001\n"
        "in the second round",
        FailureOf([] { EXPECT_HRESULT(S_OK, Open("books", 1)) << "in the second round"; }));
}

TEST(ExpectHResult, TheSameHResultPasses) {
    int calls = 0;
    const auto count = [&calls] {
        ++calls;
        return S_FALSE;
    };
    EXPECT_HRESULT(S_FALSE, count());
    ASSERT_HRESULT(S_FALSE, count());
    EXPECT_EQ(2, calls);
}

TEST(AssertHResult, AFailureEndsTheTest) {
    bool went_on = false;
    const std::string failure = FailureOf([&went_on] {
        ASSERT_HRESULT(S_OK, Open("books", 1));
        went_on = true;
    });
    EXPECT_EQ("Open(\"books\", 1)\n  expected: S_OK 0x00000000\n  returned: S_FALSE 0x00000001", failure);
    EXPECT_FALSE(went_on);
}

TEST(HResultName, IsThePlatforms) {
    EXPECT_EQ("E_NOINTERFACE", HResultName(E_NOINTERFACE));
    EXPECT_EQ("DISP_E_MEMBERNOTFOUND", HResultName(DISP_E_MEMBERNOTFOUND));
    EXPECT_EQ("HRESULT_FROM_WIN32(ERROR_DISK_FULL)", HResultName(HRESULT_FROM_WIN32(ERROR_DISK_FULL)));
    EXPECT_EQ("", HResultName(static_cast<HRESULT>(0x80040ABC)));
}

}  // namespace
}  // namespace paylodge::test
