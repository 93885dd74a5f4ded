// Texts of pushes that mean no good: they reach the page as what they are, or as an event, and the next push works.

#include <vector>

#include "tests/support/hresult.hpp"
#include "tests/unit/bridge/control_fixture.hpp"

namespace paylodge::test {
namespace {

class HostilePush : public ControlTest {
  protected:
    HostilePush() { control_.SubscribeToNotifications(); }

    // The script that the page gets for this text, and whether the event has all of it.
    [[nodiscard]] std::string ScriptOf(const std::wstring& text) {
        SetBrowserInstance(L"7");
        bridge_.scripts.clear();
        EXPECT_HRESULT(S_OK, control_.SetCustomerSearchResult(Argument(text)));
        return bridge_.scripts.empty() ? "(no script)" : bridge_.scripts.back();
    }
    void ExpectEventWith(const std::wstring& text) {
        SetBrowserInstance(L"");
        events_.clear();
        EXPECT_HRESULT(S_OK, control_.SetCustomerSearchResult(Argument(text)));
        ASSERT_EQ(1U, events_.size());
        EXPECT_TRUE(events_.front() == L"sink: 11(\"" + text + L"\")");
    }

    LibraryFolder library_{L"first"};
};

[[nodiscard]] std::string Script(const std::string& argument) {
    return "$.fn.CustomerSearchResultFromLH(\"" + argument + "\")";
}

TEST_F(HostilePush, ReachesThePageAsItIs) {
    // A text of the bridge library ends at its first null.
    EXPECT_EQ("$.fn.CustomerSearchResultFromLH(\"a", ScriptOf(std::wstring(L"a\0b", 3)));
    EXPECT_EQ(Script("?? ??"), ScriptOf(L"\xD83D\xDE00 \x4E2D\xD83D"));
    EXPECT_EQ(Script("%s%n\\\"); evil(\\\""), ScriptOf(L"%s%n\"); evil(\""));
    std::string quotes;
    for (int i = 0; i < 100'000; ++i) {
        quotes += "\\\"";
    }
    EXPECT_TRUE(Script(quotes) == ScriptOf(std::wstring(100'000, L'"')));
    EXPECT_EQ(Script(""), ScriptOf(L""));
}

TEST_F(HostilePush, ReachesTheSinkAsItIs) {
    ExpectEventWith(std::wstring(L"a\0b", 3));
    ExpectEventWith(L"\xD83D \xDE00 \xFFFE\xFFFF");
    ExpectEventWith(std::wstring(100'000, L'"'));
}

TEST_F(HostilePush, OfAHundredMegabytesIsDelivered) {
#ifdef _WIN64
    const std::wstring text(50'000'000, L'x');
    EXPECT_EQ(Script("").size() + text.size(), ScriptOf(text).size());
    ExpectEventWith(text);
#else
    GTEST_SKIP() << "a process of 32 bits has no room for several texts of 100 MB";
#endif
}

}  // namespace
}  // namespace paylodge::test
