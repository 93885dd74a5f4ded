// The bridge library as it comes and changes while a process lives. What is found is kept for good, so this is one
// test.

#include "bridge/bridge_library.hpp"
#include "tests/support/hresult.hpp"
#include "tests/unit/bridge/forwarders.hpp"

namespace paylodge::test {
namespace {

using Texts = std::vector<std::wstring>;

// A folder into which the test puts libraries.
class Scratch {
  public:
    Scratch() {
        ::CreateDirectoryW(path_.c_str(), nullptr);
        Clear();
    }
    ~Scratch() {
        Clear();
        ::RemoveDirectoryW(path_.c_str());
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    [[nodiscard]] const std::wstring& Path() const noexcept { return path_; }

    // Puts this variant in place of the library that is there, which may be in use.
    void Install(const wchar_t* variant) {
        ::MoveFileExW(library_.c_str(), old_library_.c_str(), MOVEFILE_REPLACE_EXISTING);
        const std::wstring source = BridgeFolder() + L"\\" + variant + L"\\Oskerin.dll";
        EXPECT_TRUE(::CopyFileW(source.c_str(), library_.c_str(), TRUE)) << ::GetLastError();
    }

  private:
    void Clear() noexcept {
        ::DeleteFileW(library_.c_str());
        ::DeleteFileW(old_library_.c_str());
    }

    std::wstring path_ = BridgeFolder() + L"\\scratch-" + std::to_wstring(::GetCurrentProcessId());
    std::wstring library_ = path_ + L"\\Oskerin.dll";
    std::wstring old_library_ = path_ + L"\\Oskerin.old.dll";
};

class LibraryOverTime : public ControlTest {
  protected:
    void ExpectAllMissing() {
        for (const Forwarder& forwarder : Forwarders()) {
            EXPECT_EQ(Forward(forwarder, control_), WithoutFunction(forwarder)) << forwarder;
        }
        EXPECT_EQ(bridge_.calls, Texts{});
    }
    void ExpectAllFoundIn(const std::wstring& variant) {
        for (const Forwarder& forwarder : Forwarders()) {
            EXPECT_HRESULT(S_OK, Forward(forwarder, control_).code) << forwarder;
            ASSERT_FALSE(bridge_.calls.empty()) << forwarder;
            EXPECT_EQ(bridge_.calls.back(), variant + L": " + forwarder.call);
        }
    }
    void RunScript() { static_cast<void>(control_.ExecuteJavaScript(nullptr, 0, nullptr)); }
};

TEST_F(LibraryOverTime, FunctionsAreFoundWhenTheyAppearAndKeptFromThenOn) {
    Scratch scratch;
    const LibraryFolder folder(scratch.Path());
    ExpectAllMissing();

    // A library without the functions stays until a script call frees it.
    scratch.Install(L"without_functions");
    ExpectAllMissing();
    scratch.Install(L"first");
    ExpectAllMissing();
    RunScript();
    EXPECT_FALSE(IsBridgeLoaded());

    ExpectAllFoundIn(L"first");
    scratch.Install(L"second");
    ExpectAllFoundIn(L"first");
    RunScript();
    EXPECT_EQ(bridge_.calls.back(), L"first: ExecuteJavaScript(\"\", \"(\"\")\")");
    ExpectAllFoundIn(L"first");
    ::DeleteFileW((scratch.Path() + L"\\Oskerin.dll").c_str());
    ExpectAllFoundIn(L"first");
}

}  // namespace
}  // namespace paylodge::test
