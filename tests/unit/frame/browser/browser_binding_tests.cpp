#include "frame/browser/browser_binding.hpp"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/bstr_allocations.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge {
namespace {

class BrowserBinding : public ::testing::Test {
  protected:
    // Before any test has named a browser.
    static void SetUpTestSuite() {
        was_there_at_start_ = static_cast<bool>(g_bstrBrowserInstance);
        length_at_start_ = View(g_bstrBrowserInstance).size();
    }

    inline static bool was_there_at_start_ = false;
    inline static size_t length_at_start_ = 1;
};

TEST_F(BrowserBinding, StartsAsTheEmptyStringNotNull) {
    EXPECT_TRUE(was_there_at_start_);
    EXPECT_EQ(0U, length_at_start_);
}

TEST_F(BrowserBinding, KeepsACopyOfTheText) {
    std::wstring text = L"browser-1";
    SetBrowserInstance(text.c_str());
    text[0] = L'X';
    EXPECT_EQ(L"browser-1", View(g_bstrBrowserInstance));
    EXPECT_EQ(9U * sizeof(wchar_t), ::SysStringByteLen(g_bstrBrowserInstance.Get()));
}

TEST_F(BrowserBinding, AnotherStringReplacesIt) {
    SetBrowserInstance(L"browser-1");
    SetBrowserInstance(L"browser-2, longer");
    EXPECT_EQ(L"browser-2, longer", View(g_bstrBrowserInstance));
    SetBrowserInstance(L"");
    EXPECT_TRUE(static_cast<bool>(g_bstrBrowserInstance));
    EXPECT_EQ(L"", View(g_bstrBrowserInstance));
}

TEST_F(BrowserBinding, SamePointerTwiceKeepsTheText) {
    const wchar_t* const text = L"browser-1";
    SetBrowserInstance(text);
    SetBrowserInstance(text);
    EXPECT_EQ(L"browser-1", View(g_bstrBrowserInstance));
}

TEST_F(BrowserBinding, TheVeryStringThatIsHeldChangesNothing) {
    SetBrowserInstance(L"browser-1");
    const BSTR held = g_bstrBrowserInstance.Get();
    SetBrowserInstance(held);
    EXPECT_EQ(held, g_bstrBrowserInstance.Get());
    EXPECT_EQ(L"browser-1", View(held));
}

TEST_F(BrowserBinding, PartOfTheHeldStringCanReplaceIt) {
    SetBrowserInstance(L"browser-1");
    SetBrowserInstance(g_bstrBrowserInstance.Get() + 8);
    EXPECT_EQ(L"1", View(g_bstrBrowserInstance));
}

TEST_F(BrowserBinding, HugeTextIsKeptWhole) {
    const std::wstring text(1'000'000, L'b');
    SetBrowserInstance(text.c_str());
    EXPECT_EQ(text, View(g_bstrBrowserInstance));
}

[[nodiscard]] HRESULT RaisedBySetting(const wchar_t* text) {
    const test::BstrAllocations failing(1);
    try {
        SetBrowserInstance(text);
    } catch (const _com_error& error) {
        return error.Error();
    }
    return S_OK;
}

TEST_F(BrowserBinding, FailedAllocationIsThrownAndKeepsTheText) {
    SetBrowserInstance(L"browser-1");
    EXPECT_HRESULT(E_OUTOFMEMORY, RaisedBySetting(L"browser-2"));
    EXPECT_EQ(L"browser-1", View(g_bstrBrowserInstance));
}

TEST_F(BrowserBinding, NullTakesTheNameAway) {
    SetBrowserInstance(L"browser-1");
    SetBrowserInstance(nullptr);
    EXPECT_FALSE(static_cast<bool>(g_bstrBrowserInstance));
    SetBrowserInstance(nullptr);
    SetBrowserInstance(L"browser-2");
    EXPECT_EQ(L"browser-2", View(g_bstrBrowserInstance));
}

}  // namespace
}  // namespace paylodge
