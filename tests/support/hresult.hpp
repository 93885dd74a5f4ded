// Comparing HRESULTs: a failure names the call and both HRESULTs.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <concepts>

// EXPECT_HRESULT(expected, call): that the call returns this HRESULT. Both have to be an HRESULT, not a number or a
// BOOL that converts to one. Macros, as GoogleTest's own are, for the text of the call and the line that fails.
#define EXPECT_HRESULT(expected, call) EXPECT_PRED_FORMAT2(::paylodge::test::IsHResult, expected, call)
#define ASSERT_HRESULT(expected, call) ASSERT_PRED_FORMAT2(::paylodge::test::IsHResult, expected, call)

namespace paylodge::test {

// Success, or a failure that reads
//     stream->Commit(0)
//       expected: S_OK 0x00000000
//       returned: E_FAIL 0x80004005
[[nodiscard]] testing::AssertionResult CompareHResults(const char* call, HRESULT expected, HRESULT returned);

template <std::same_as<HRESULT> Expected, std::same_as<HRESULT> Returned>
[[nodiscard]] testing::AssertionResult IsHResult(const char* /*expected_text*/, const char* call, Expected expected,
                                                 Returned returned) {
    return CompareHResults(call, expected, returned);
}

}  // namespace paylodge::test
