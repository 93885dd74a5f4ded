// The DOM helpers on a machine that has none of the host's libraries.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "lhxml/dom.hpp"
#include "lhxml/response_status.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge {
namespace {

class WithoutHost : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(::SetEnvironmentVariableW(L"PATH", L""));
        ASSERT_EQ(nullptr, ::GetModuleHandleW(L"LHUtilities.dll"));
    }
};

TEST_F(WithoutHost, DocumentCannotBeCreated) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::string error = "sentinel";
        EXPECT_FALSE(LoadXmlDocument("<A/>", error));
        EXPECT_EQ("Instantiate MSXML DOM OBJ failed", error);
    }
}

TEST_F(WithoutHost, ResponseHoldsNoElement) {
    ComPtr<IXMLDOMNode> element;
    EXPECT_HRESULT(S_OK, FindResponseElement("<A/>", L"A", element));
    EXPECT_FALSE(element);
}

TEST_F(WithoutHost, AddResponseIsRefused) {
    EXPECT_HRESULT(E_FAIL, CheckAddResponse("<AccountAddRs statusCode='0'/>", L"AccountAddRs"));
}

}  // namespace
}  // namespace paylodge
