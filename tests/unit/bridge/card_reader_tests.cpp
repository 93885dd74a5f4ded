// The card reader and the account services with the bridge library. It stays in this process once a function is found.

#include <cstring>

#include "bridge/bridge_library.hpp"
#include "tests/support/bstr_allocations.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/live_allocations.hpp"
#include "tests/support/rows.hpp"
#include "tests/unit/bridge/forwarders.hpp"

namespace paylodge::test {
namespace {

using Texts = std::vector<std::wstring>;

class CardReaderAndServices : public ControlTest {
  protected:
    LibraryFolder library_{L"first"};
};
class Forwarding : public CardReaderAndServices, public ::testing::WithParamInterface<Forwarder> {};

INSTANTIATE_TEST_SUITE_P(Control, Forwarding, ::testing::ValuesIn(Forwarders().begin(), Forwarders().end()),
                         NameOfForwarder);

// What the method returns when its function returns this text, and this text with what the code page lacks replaced.
[[nodiscard]] Result Expected(Returns returns, const wchar_t* text, const wchar_t* reencoded) {
    switch (returns) {
        case Returns::kNothing:
            return {S_OK, kUntouched};
        case Returns::kByte:
            return {S_OK, kTrue};
        case Returns::kReencodedText:
            return {S_OK, reencoded};
        case Returns::kCopiedText:
        case Returns::kString:
            return {S_OK, text};
    }
    return {E_UNEXPECTED};
}

TEST_P(Forwarding, CallsTheFunctionWithTheArgumentsInOrder) {
    const Result expected = Expected(GetParam().returns, L"answer", L"answer");
    EXPECT_EQ(Forward(GetParam(), control_), expected);
    EXPECT_EQ(Forward(GetParam(), control_), expected);
    const std::wstring call = std::wstring(L"first: ") + GetParam().call;
    EXPECT_EQ(bridge_.calls, (Texts{call, call}));
}

TEST_P(Forwarding, ReturnsCharactersOutsideTheCodePageWhereTextsAreNotReencoded) {
    bridge_.text = L"caf\xE9 \x20AC \x0416 \x2606 \xD83D\xDE00";
    EXPECT_EQ(Forward(GetParam(), control_), Expected(GetParam().returns, bridge_.text, L"caf\xE9 \x20AC ? ? ??"));
}

TEST_P(Forwarding, ReturnsAnEmptyTextForNullWhereTextsAreReencoded) {
    bridge_.text = nullptr;
    EXPECT_EQ(Forward(GetParam(), control_), Expected(GetParam().returns, kNull, L""));
    bridge_.text = L"";
    EXPECT_EQ(Forward(GetParam(), control_), Expected(GetParam().returns, L"", L""));
}

TEST_P(Forwarding, LeavesNothingAllocated) {
    if (!LiveAllocations::CanCountStrings()) {
        GTEST_SKIP() << "OANOCACHE is not set";
    }
    const LiveAllocations live;
    EXPECT_HRESULT(S_OK, Forward(GetParam(), control_).code);
    EXPECT_EQ(live.Count(), 0);
}

TEST_P(Forwarding, HasEmptiedTheResultBeforeTheCallWhereItIsNullWithoutTheFunction) {
    StringSink text;
    BoolSink flag;
    std::wstring before;
    bridge_.on_call = [&] { before = text.Show(); };
    EXPECT_HRESULT(S_OK, GetParam().run(control_, text.Slot(), flag.Slot()));
    EXPECT_EQ(before, WithoutFunction(GetParam()).text);
}

TEST_P(Forwarding, ReturnsLongTextsWhole) {
    const std::wstring text(5'000'000, L'\xE9');
    bridge_.text = text.c_str();
    // Compared without showing them.
    EXPECT_TRUE(Forward(GetParam(), control_) == Expected(GetParam().returns, text.c_str(), text.c_str()));
}

class ForwardingAResult : public Forwarding {};

INSTANTIATE_TEST_SUITE_P(Control, ForwardingAResult,
                         ::testing::ValuesIn(RowsThat(Forwarders(),
                                                      [](const Forwarder& forwarder) {
                                                          return forwarder.returns != Returns::kNothing;
                                                      })),
                         NameOfForwarder);

TEST_P(ForwardingAResult, NullOutParameterIsEPointer) {
    EXPECT_HRESULT(E_POINTER, GetParam().run(control_, nullptr, nullptr));
}

class ForwardingAByte : public Forwarding {};

INSTANTIATE_TEST_SUITE_P(Control, ForwardingAByte,
                         ::testing::ValuesIn(RowsThat(Forwarders(),
                                                      [](const Forwarder& forwarder) {
                                                          return forwarder.returns == Returns::kByte;
                                                      })),
                         NameOfForwarder);

TEST_P(ForwardingAByte, ReturnsAnyByteButZeroAsTrue) {
    for (int byte = 0; byte <= 0xFF; ++byte) {
        bridge_.byte = static_cast<unsigned char>(byte);
        EXPECT_EQ(Forward(GetParam(), control_), (Result{S_OK, byte == 0 ? kFalse : kTrue})) << byte;
    }
}

class ForwardingAString : public Forwarding {};

INSTANTIATE_TEST_SUITE_P(Control, ForwardingAString,
                         ::testing::ValuesIn(RowsThat(Forwarders(),
                                                      [](const Forwarder& forwarder) {
                                                          return forwarder.returns == Returns::kString;
                                                      })),
                         NameOfForwarder);

TEST_P(ForwardingAString, HandsOverTheStringItself) {
    StringSink text;
    EXPECT_HRESULT(S_OK, GetParam().run(control_, text.Slot(), nullptr));
    ASSERT_EQ(bridge_.given.size(), 1U);
    EXPECT_EQ(text.Get(), bridge_.given[0]);
}

// Texts are the library's and are copied.
class ForwardingAText : public Forwarding {};

INSTANTIATE_TEST_SUITE_P(Control, ForwardingAText,
                         ::testing::ValuesIn(RowsThat(Forwarders(),
                                                      [](const Forwarder& forwarder) {
                                                          return forwarder.returns == Returns::kCopiedText ||
                                                                 forwarder.returns == Returns::kReencodedText;
                                                      })),
                         NameOfForwarder);

TEST_P(ForwardingAText, LeavesTextsToTheLibrary) {
    const std::wstring kept = L"kept by the library";
    bridge_.text = kept.c_str();
    StringSink text;
    EXPECT_HRESULT(S_OK, GetParam().run(control_, text.Slot(), nullptr));
    EXPECT_NE(text.Get(), kept.c_str());
    text.Get()[0] = L'K';
    EXPECT_EQ(kept, L"kept by the library");
}

// The result is allocated last.
TEST_P(ForwardingAText, ThrowsOnAFailedAllocationOfItsResult) {
    int last = 0;
    {
        const BstrAllocations allocations;
        EXPECT_HRESULT(S_OK, Forward(GetParam(), control_).code);
        last = allocations.Count();
    }
    StringSink text;
    {
        const BstrAllocations allocations(last);
        try {
            const HRESULT code = GetParam().run(control_, text.Slot(), nullptr);
            ADD_FAILURE() << "no error was thrown, and the code is " << code;
        } catch (const _com_error& error) {
            EXPECT_HRESULT(E_OUTOFMEMORY, error.Error());
        }
        EXPECT_TRUE(allocations.HasFailed());
    }
    EXPECT_EQ(bridge_.calls.size(), 2U);
    EXPECT_EQ(text.Show(), WithoutFunction(GetParam()).text);
    EXPECT_EQ(Forward(GetParam(), control_), (Result{S_OK, L"answer"}));
}

TEST_F(CardReaderAndServices, GetLongTextsWhole) {
    const std::wstring text(5'000'000, L'\x0416');
    EXPECT_HRESULT(S_OK, control_.StartEMV(Argument(text)));
    ASSERT_EQ(bridge_.calls.size(), 1U);
    EXPECT_TRUE(bridge_.calls[0] == L"first: StartEMV(\"" + text + L"\")");
}

TEST_F(CardReaderAndServices, GetTheCallersOwnTexts) {
    const Argument amount(L"12.50");
    const Argument header(L"header");
    const Argument body(std::wstring{L'a', L'\0', L'b'});
    EXPECT_HRESULT(S_OK, control_.StartEMV(amount));
    StringSink token;
    EXPECT_HRESULT(S_OK, control_.GetCardBasedToken2(1, header, body, token.Slot()));
    EXPECT_EQ(bridge_.texts, (std::vector<const wchar_t*>{amount, header, body}));
}

TEST_F(CardReaderAndServices, GetNullForNull) {
    StringSink text;
    EXPECT_HRESULT(S_OK, control_.StartEMV(nullptr));
    EXPECT_HRESULT(S_OK, control_.DecodeTlvData(nullptr, nullptr, text.Slot()));
    EXPECT_EQ(bridge_.calls, (Texts{L"first: StartEMV(null)", L"first: GetDecodedTlvData(null, null)"}));
}

TEST_F(CardReaderAndServices, AreNotAskedForUserDataWithoutAName) {
    for (const wchar_t* const wanted : {static_cast<const wchar_t*>(nullptr), L""}) {
        StringSink data;
        EXPECT_HRESULT(E_FAIL, control_.GetLHUserData(Argument(wanted), data.Slot()));
        EXPECT_EQ(data.Get(), nullptr);
    }
    EXPECT_EQ(bridge_.calls, Texts{});
}

TEST_F(CardReaderAndServices, GoOnAfterScriptCallsThatFreeTheLibrary) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_HRESULT(S_OK, control_.ConnectDevice());
        EXPECT_HRESULT(S_OK, control_.ExecuteJavaScript(Argument(L"a"), 0, Argument(L"fn")));
        EXPECT_EQ(g_hBridgeModule, nullptr);
        EXPECT_TRUE(IsBridgeLoaded());
    }
    EXPECT_EQ(bridge_.calls.size(), 6U);
    EXPECT_EQ(bridge_.calls.back(), L"first: ExecuteJavaScript(\"\", \"fn(\"a\")\")");
}

TEST_F(CardReaderAndServices, HaveTheNamesThatScriptsUse) {
    ComPtr<IDispatch> dispatch;
    ASSERT_HRESULT(S_OK, control_.QueryInterface(IID_IDispatch, dispatch.ReceiveVoid()));
    for (const Forwarder& forwarder : Forwarders()) {
        std::wstring name(forwarder.name, forwarder.name + std::strlen(forwarder.name));
        wchar_t* names[] = {name.data()};
        DISPID id = DISPID_UNKNOWN;
        EXPECT_HRESULT(S_OK, dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)) << forwarder.name;
        EXPECT_EQ(id, 19 + (&forwarder - Forwarders().data())) << forwarder.name;
    }
}

}  // namespace
}  // namespace paylodge::test
