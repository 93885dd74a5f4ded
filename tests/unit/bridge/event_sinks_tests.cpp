// The sinks of the control's events: their order, their results, and what they do within an event.

#include "tests/support/hresult.hpp"
#include "tests/unit/bridge/control_fixture.hpp"

namespace paylodge::test {
namespace {

using Texts = std::vector<std::wstring>;

class Sinks : public ControlTest {
  protected:
    Sinks() { control_.SubscribeToNotifications(); }
    [[nodiscard]] HRESULT Send() { return control_.SetTransactionID(Argument(L"1")); }

    ComPtr<ComObject<EventSink>> b_ = MakeSink(L"b");
    ComPtr<ComObject<EventSink>> c_ = MakeSink(L"c");
    DWORD cookie_b_ = Advise(control_, *b_.Get());
    DWORD cookie_c_ = Advise(control_, *c_.Get());
};

TEST_F(Sinks, AreCalledInTheOrderInWhichTheyWereConnected) {
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(events_, (Texts{L"sink: 5(\"1\")", L"b: 5(\"1\")", L"c: 5(\"1\")"}));
}

TEST_F(Sinks, DoNotStopTheOthersWhenTheyFail) {
    sink_->code = E_ABORT;
    b_->code = E_NOTIMPL;
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(events_.size(), 3U);
}

TEST_F(Sinks, ReturnTheResultOfTheLast) {
    c_->code = E_NOTIMPL;
    EXPECT_HRESULT(E_NOTIMPL, Send());
    EXPECT_HRESULT(S_OK, Unadvise(control_, cookie_c_));
    b_->code = S_FALSE;
    EXPECT_HRESULT(S_FALSE, Send());
}

TEST_F(Sinks, AreSkippedWhereASlotIsEmpty) {
    EXPECT_HRESULT(S_OK, Unadvise(control_, cookie_b_));
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(events_, (Texts{L"sink: 5(\"1\")", L"c: 5(\"1\")"}));
}

TEST_F(Sinks, MayDisconnectWithinAnEvent) {
    b_->on_event = [this] {
        EXPECT_HRESULT(S_OK, Unadvise(control_, cookie_b_));
        EXPECT_HRESULT(S_OK, Unadvise(control_, cookie_c_));
    };
    EXPECT_HRESULT(S_OK, Send());
    b_->on_event = nullptr;
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(events_, (Texts{L"sink: 5(\"1\")", L"b: 5(\"1\")", L"sink: 5(\"1\")"}));
}

TEST_F(Sinks, MayPushThemselves) {
    sink_->on_event = [this] {
        sink_->on_event = nullptr;
        EXPECT_HRESULT(S_OK, Send());
    };
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_EQ(events_.size(), 6U);
}

TEST_F(Sinks, MayUnsubscribeTheControlAndReleaseIt) {
    ComPtr<Control> brief = Control::Create();
    ComPtr<ComObject<EventSink>> sink = MakeSink(L"brief");
    static_cast<void>(Advise(*brief.Get(), *sink.Get()));
    brief->SubscribeToNotifications();
    sink->on_event = [&] {
        brief->UnSubscribeFromNotifications();
        brief.Reset();
    };
    EXPECT_HRESULT(S_OK, Send());
    EXPECT_HRESULT(E_FAIL, Send());
    EXPECT_EQ(events_, Texts{L"brief: 5(\"1\")"});
}

TEST_F(Sinks, GetNoReferenceForGood) {
    b_->AddRef();
    const ULONG before = b_->Release();
    EXPECT_HRESULT(S_OK, Send());
    b_->AddRef();
    EXPECT_EQ(b_->Release(), before);
}

}  // namespace
}  // namespace paylodge::test
