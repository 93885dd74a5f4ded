// Script calls: ExecuteJavaScript, and what every one of them leaves behind.

#include <comdef.h>

#include <limits>
#include <new>

#include "bridge/bridge_library.hpp"
#include "tests/support/hresult.hpp"
#include "tests/unit/bridge/control_fixture.hpp"

namespace paylodge::test {
namespace {

using Texts = std::vector<std::wstring>;

// The control's own script call, which needs no subscriber.
class ScriptCalls : public ControlTest {
  protected:
    [[nodiscard]] HRESULT Execute(const wchar_t* info, LONG is_rebill, const wchar_t* script) {
        return control_.ExecuteJavaScript(Argument(info), is_rebill, Argument(script));
    }
    [[nodiscard]] static std::wstring Call(const std::wstring& script, const std::wstring& browser = L"7") {
        return L"first: ExecuteJavaScript(\"" + browser + L"\", \"" + script + L"\")";
    }
    // A script that ends in another one, and then in this.
    void ExpectFailureAfterNesting(const std::function<void()>& fail) {
        HRESULT inner = E_UNEXPECTED;
        bridge_.on_script = [&] {
            bridge_.on_script = nullptr;
            inner = Execute(L"inner", 0, L"fn");
            fail();
        };
        EXPECT_HRESULT(E_FAIL, Execute(L"outer", 0, L"fn"));
        EXPECT_HRESULT(S_OK, inner);
        ExpectNoLibrary();
        bridge_.throws_at_end = false;
        EXPECT_HRESULT(S_OK, Execute(L"next", 0, L"fn"));
    }

    LibraryFolder library_{L"first"};
};

TEST_F(ScriptCalls, EscapeLineFeedsForZeroAndQuotesForAnyOtherNumber) {
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, Execute(L"a\n\"b\"", 0, L"fn"));
    for (const LONG is_rebill : {1L, -1L, 2L, std::numeric_limits<LONG>::min()}) {
        EXPECT_HRESULT(S_OK, Execute(L"a\n\"b\"", is_rebill, L"fn"));
    }
    const std::wstring quoted = Call(L"fn(\"a\n\\\"b\\\"\")");
    EXPECT_EQ(bridge_.calls, (Texts{Call(L"fn(\"a\\n\"b\"\")"), quoted, quoted, quoted, quoted}));
}

TEST_F(ScriptCalls, HaveAnEmptyArgumentForAnEmptyText) {
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, Execute(L"", 0, L"fn"));
    EXPECT_HRESULT(S_OK, Execute(nullptr, 1, L"fn"));
    EXPECT_HRESULT(S_OK, Execute(L"a", 0, nullptr));
    EXPECT_EQ(bridge_.calls, (Texts{Call(L"fn(\"\")"), Call(L"fn(\"\")"), Call(L"(\"a\")")}));
}

TEST_F(ScriptCalls, RunWhateverTheBrowserInstanceIs) {
    for (const wchar_t* const browser : {L"", L"undefined", L"UNDEFINED"}) {
        ::SetBrowserInstance(browser);
        EXPECT_HRESULT(S_OK, Execute(L"a", 0, L"fn"));
    }
    ::SetBrowserInstance(nullptr);
    EXPECT_HRESULT(S_OK, Execute(L"a", 0, L"fn"));
    EXPECT_EQ(bridge_.calls, (Texts{Call(L"fn(\"a\")", L""), Call(L"fn(\"a\")", L"undefined"),
                                    Call(L"fn(\"a\")", L"UNDEFINED"), Call(L"fn(\"a\")", L"")}));
}

TEST_F(ScriptCalls, AreInTheAnsiCodePage) {
    ::SetBrowserInstance(L"caf\xE9 \x0416");
    EXPECT_HRESULT(S_OK, Execute(L"\x20AC \xE9 \x0416", 0, L"fn\xE9\x0416"));
    EXPECT_EQ(bridge_.calls, Texts{Call(L"fn\xE9?(\"\x80 \xE9 ?\")", L"caf\xE9 ?")});
}

// The library takes texts that end with a NUL.
TEST_F(ScriptCalls, EndAtAnEmbeddedNul) {
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, control_.ExecuteJavaScript(Argument(std::wstring{L'a', L'\0', L'b'}), 0, Argument(L"fn")));
    EXPECT_EQ(bridge_.calls, Texts{Call(L"fn(\"a")});
}

TEST_F(ScriptCalls, LoadTheLibraryForTheirOwnTimeOnly) {
    bool is_loaded = false;
    bridge_.on_script = [&] { is_loaded = IsBridgeLoaded(); };
    for (int round = 0; round < 3; ++round) {
        is_loaded = false;
        EXPECT_HRESULT(S_OK, Execute(L"a", 0, L"fn"));
        EXPECT_TRUE(is_loaded);
        EXPECT_FALSE(IsBridgeLoaded());
        EXPECT_EQ(g_hBridgeModule, nullptr);
    }
}

TEST_F(ScriptCalls, UseTheLibraryThatIsThereAtTheTime) {
    EXPECT_HRESULT(S_OK, Execute(L"a", 0, L"fn"));
    {
        const LibraryFolder second(L"second");
        EXPECT_HRESULT(S_OK, Execute(L"b", 0, L"fn"));
    }
    {
        const LibraryFolder missing(L".");
        EXPECT_HRESULT(E_FAIL, Execute(L"c", 0, L"fn"));
    }
    EXPECT_EQ(bridge_.calls, (Texts{Call(L"fn(\"a\")", L""), L"second: ExecuteJavaScript(\"\", \"fn(\"b\")\")"}));
}

TEST_F(ScriptCalls, FailWithoutTheFunctionAndFreeTheLibrary) {
    const LibraryFolder without_functions(L"without_functions");
    EXPECT_HRESULT(E_FAIL, Execute(L"a", 0, L"fn"));
    EXPECT_FALSE(IsBridgeLoaded());
    EXPECT_EQ(g_hBridgeModule, nullptr);
}

TEST_F(ScriptCalls, FailWhenTheirTextCannotBeMadeAndFreeTheLibrary) {
    EXPECT_HRESULT(E_FAIL, RunScript([]() -> std::string { throw std::bad_alloc(); }));
    EXPECT_HRESULT(E_FAIL, RunScript([]() -> std::string { throw _com_error(E_OUTOFMEMORY); }));
    EXPECT_EQ(bridge_.calls, Texts{});
    EXPECT_FALSE(IsBridgeLoaded());
}

TEST_F(ScriptCalls, FailWhenAnExceptionLeavesTheFunctionAndFreeTheLibrary) {
#ifdef _WIN64
    bridge_.throws_at_end = true;
    EXPECT_HRESULT(E_FAIL, Execute(L"a", 0, L"fn"));
    ExpectNoLibrary();
    bridge_.throws_at_end = false;
    EXPECT_HRESULT(S_OK, Execute(L"b", 0, L"fn"));
#else
    GTEST_SKIP() << kNoExceptionsBetweenModules;
#endif
}

TEST_F(ScriptCalls, FailWhenAStructuredExceptionLeavesTheFunctionAndFreeTheLibrary) {
    for (const DWORD code : kStructuredExceptions) {
        bridge_.on_script = [code] { ::RaiseException(code, 0, 0, nullptr); };
        EXPECT_HRESULT(E_FAIL, Execute(L"a", 0, L"fn"));
        ExpectNoLibrary();
    }
    bridge_.on_script = nullptr;
    EXPECT_HRESULT(S_OK, Execute(L"b", 0, L"fn"));
}

// A script of the library may end in another push.
TEST_F(ScriptCalls, MayNest) {
    bridge_.on_script = [this] {
        bridge_.on_script = nullptr;
        EXPECT_HRESULT(S_OK, Execute(L"inner", 0, L"fn"));
    };
    EXPECT_HRESULT(S_OK, Execute(L"outer", 0, L"fn"));
    EXPECT_EQ(bridge_.calls, (Texts{Call(L"fn(\"outer\")", L""), Call(L"fn(\"inner\")", L"")}));
    EXPECT_FALSE(IsBridgeLoaded());
}

// The inner script has freed the library by then.
TEST_F(ScriptCalls, FailWhenTheyNestBeforeAnExceptionAndFreeTheLibrary) {
#ifdef _WIN64
    ExpectFailureAfterNesting([this] { bridge_.throws_at_end = true; });
#else
    GTEST_SKIP() << kNoExceptionsBetweenModules;
#endif
}

TEST_F(ScriptCalls, FailWhenTheyNestBeforeAStructuredExceptionAndFreeTheLibrary) {
    for (const DWORD code : kStructuredExceptions) {
        ExpectFailureAfterNesting([code] { ::RaiseException(code, 0, 0, nullptr); });
    }
}

}  // namespace
}  // namespace paylodge::test
