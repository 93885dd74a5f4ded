// The card reader and the account services on a machine where the bridge library, or its functions, are missing. No
// function is ever found in this program.

#include "bridge/bridge_library.hpp"
#include "tests/support/hresult.hpp"
#include "tests/unit/bridge/forwarders.hpp"

namespace paylodge::test {
namespace {

class MissingFunctions : public ControlTest, public ::testing::WithParamInterface<Forwarder> {};

INSTANTIATE_TEST_SUITE_P(Control, MissingFunctions, ::testing::ValuesIn(Forwarders().begin(), Forwarders().end()),
                         NameOfForwarder);

TEST_P(MissingFunctions, AreHarmlessWithoutTheLibrary) {
    const LibraryFolder missing(L".");
    EXPECT_EQ(Forward(GetParam(), control_), WithoutFunction(GetParam()));
    EXPECT_EQ(Forward(GetParam(), control_), WithoutFunction(GetParam()));
    EXPECT_FALSE(IsBridgeLoaded());
}

TEST_P(MissingFunctions, AreHarmlessInALibraryWithoutThem) {
    const LibraryFolder without_functions(L"without_functions");
    EXPECT_EQ(Forward(GetParam(), control_), WithoutFunction(GetParam()));
    EXPECT_EQ(Forward(GetParam(), control_), WithoutFunction(GetParam()));
    EXPECT_TRUE(IsBridgeLoaded());
    // Only a script call frees what the others have loaded.
    EXPECT_HRESULT(E_FAIL, control_.ExecuteJavaScript(nullptr, 0, nullptr));
    EXPECT_FALSE(IsBridgeLoaded());
}

TEST(UserData, OfNoNameFailsWithoutTheLibrary) {
    const ProcessState state;
    const LibraryFolder missing(L".");
    const auto control = Control::Create();
    for (const wchar_t* const wanted : {static_cast<const wchar_t*>(nullptr), L""}) {
        StringSink data;
        EXPECT_HRESULT(E_FAIL, control->GetLHUserData(Argument(wanted), data.Slot()));
        EXPECT_EQ(data.Get(), nullptr);
    }
}

}  // namespace
}  // namespace paylodge::test
