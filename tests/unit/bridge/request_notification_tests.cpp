// The page's own requests, of which the control on the accounting object's channel is notified.

#include "bridge/channel_registry.hpp"
#include "tests/support/fake_site.hpp"
#include "tests/support/hresult.hpp"
#include "tests/unit/bridge/control_fixture.hpp"

namespace paylodge::test {
namespace {

using Texts = std::vector<std::wstring>;

class RequestNotification : public OperationTest {
  protected:
    RequestNotification() { static_cast<void>(Advise(*control_.Get(), *sink_.Get())); }

    [[nodiscard]] Result Process(const wchar_t* body = L"<Body/>") {
        return Ask(object_, &CPaylodge::ProcessLHRequest, body);
    }
    // The object's own channel, and the channel on which the control passes on.
    void UseChannel(std::wstring_view name) {
        EXPECT_HRESULT(S_OK, object_.SetNotificationChannel(Argument(name)));
        EXPECT_HRESULT(S_OK, control_->SetChannelName(Argument(name)));
    }

  private:
    ProcessState state_;

  protected:
    Texts events_;
    ComPtr<Control> control_ = Control::Create();
    ComPtr<ComObject<EventSink>> sink_ = ComObject<EventSink>::Create(L"sink", events_);
};

TEST_F(RequestNotification, NotifiesTheControlOnTheObjectsChannel) {
    UseChannel(L"Feature");
    control_->SubscribeToNotifications2(Argument(L"Feature"));
    RespondExactly(L"<caf\xE9/>");
    EXPECT_EQ(Process(), (Result{S_OK, L"<caf\xE9/>"}));
    EXPECT_EQ(events_, Texts{L"sink: 7(\"<Body/>\", \"<caf\xE9/>\")"});
}

TEST_F(RequestNotification, PassesTheBodyOnAsItIsAndTheResponseAsThePageGetsIt) {
    UseChannel(L"Feature");
    control_->SubscribeToNotifications2(Argument(L"Feature"));
    RespondExactly(L"<R>\x2606</R>");
    EXPECT_EQ(Process(L"\x2606"), (Result{S_OK, L"<R>?</R>"}));
    EXPECT_EQ(events_, Texts{L"sink: 7(\"\x2606\", \"<R>?</R>\")"});
}

TEST_F(RequestNotification, RaisesTheEventInScriptModeToo) {
    UseChannel(L"Feature");
    control_->SubscribeToNotifications2(Argument(L"Feature"));
    ::SetBrowserInstance(L"7");
    EXPECT_HRESULT(S_OK, Process().code);
    EXPECT_EQ(events_.size(), 1U);
}

TEST_F(RequestNotification, IgnoresWhatTheControlReturns) {
    UseChannel(L"Feature");
    control_->SubscribeToNotifications2(Argument(L"Feature"));
    sink_->code = E_ABORT;
    RespondExactly(L"<R/>");
    EXPECT_EQ(Process(), (Result{S_OK, L"<R/>"}));
    // The control itself looks for the channel of the pushes, on which there is nobody.
    EXPECT_HRESULT(S_OK, control_->SetChannelName(Argument(L"Other")));
    RespondExactly(L"<R/>");
    EXPECT_EQ(Process(), (Result{S_OK, L"<R/>"}));
    EXPECT_EQ(events_.size(), 1U);
}

TEST_F(RequestNotification, NotifiesNobodyWithoutAChannelName) {
    control_->SubscribeToNotifications();
    RespondExactly(L"<R/>");
    EXPECT_EQ(Process(), (Result{S_OK, L"<R/>"}));
    EXPECT_EQ(events_, Texts{});
}

// The control on the object's channel is asked to pass the request on, and does so on the channel of the pushes.
TEST_F(RequestNotification, ReachesTheControlOnTheChannelOfThePushes) {
    const auto pushed = Control::Create();
    const auto pushed_sink = ComObject<EventSink>::Create(L"pushed", events_);
    static_cast<void>(Advise(*pushed.Get(), *pushed_sink.Get()));
    EXPECT_HRESULT(S_OK, object_.SetNotificationChannel(Argument(L"Requests")));
    control_->SubscribeToNotifications2(Argument(L"Requests"));
    pushed->SubscribeToNotifications2(Argument(L"Pushes"));
    EXPECT_HRESULT(S_OK, control_->SetChannelName(Argument(L"Pushes")));
    RespondExactly(L"<R/>");
    EXPECT_EQ(Process(), (Result{S_OK, L"<R/>"}));
    EXPECT_EQ(events_, Texts{L"pushed: 7(\"<Body/>\", \"<R/>\")"});
    // Without a control on the object's own channel nobody passes it on.
    control_->UnSubscribeFromNotifications2(Argument(L"Requests"));
    EXPECT_HRESULT(S_OK, Process().code);
    EXPECT_EQ(events_.size(), 1U);
}

// Null is the empty name.
TEST_F(RequestNotification, NotifiesTheControlOnTheEmptyChannelWithoutAChannelName) {
    control_->SubscribeToNotifications2(Argument(L""));
    EXPECT_HRESULT(S_OK, control_->SetChannelName(nullptr));
    EXPECT_HRESULT(S_OK, Process().code);
    EXPECT_EQ(events_.size(), 1U);
    EXPECT_HRESULT(S_OK, object_.SetNotificationChannel(Argument(L"Feature")));
    EXPECT_HRESULT(S_OK, Process().code);
    EXPECT_EQ(events_.size(), 1U);
    EXPECT_HRESULT(S_OK, object_.SetNotificationChannel(nullptr));
    EXPECT_HRESULT(S_OK, Process().code);
    EXPECT_EQ(events_.size(), 2U);
}

TEST_F(RequestNotification, NotifiesTheControlOnTheChannelThatWasSetLast) {
    control_->SubscribeToNotifications2(Argument(L"second"));
    EXPECT_HRESULT(S_OK, control_->SetChannelName(Argument(L"second")));
    EXPECT_HRESULT(S_OK, object_.SetNotificationChannel(Argument(L"first")));
    EXPECT_HRESULT(S_OK, Process().code);
    EXPECT_EQ(events_, Texts{});
    EXPECT_HRESULT(S_OK, object_.SetNotificationChannel(Argument(L"second")));
    EXPECT_HRESULT(S_OK, Process().code);
    EXPECT_EQ(events_.size(), 1U);
}

TEST_F(RequestNotification, KeepsACopyOfTheChannelName) {
    UseChannel(L"Feature");
    control_->SubscribeToNotifications2(Argument(L"Feature"));
    const Argument name(L"Feature");
    EXPECT_HRESULT(S_OK, object_.SetNotificationChannel(name));
    static_cast<BSTR>(name)[0] = L'X';
    EXPECT_HRESULT(S_OK, Process().code);
    EXPECT_EQ(events_.size(), 1U);
}

TEST_F(RequestNotification, NotifiesNobodyOfARequestOfARefusedPage) {
    UseChannel(L"Feature");
    control_->SubscribeToNotifications2(Argument(L"Feature"));
    FakeSite site(PageAt(kRefusedPage));
    const OnSite on_site(static_cast<IObjectWithSite*>(&object_), site);
    EXPECT_EQ(Process(), (Result{E_FAIL, kUntouched}));
    EXPECT_EQ(events_, Texts{});
    EXPECT_TRUE(host_.requests.empty());
}

TEST_F(RequestNotification, NotifiesNobodyOfAnotherChannel) {
    UseChannel(L"Feature");
    control_->SubscribeToNotifications2(Argument(L"feature"));
    EXPECT_HRESULT(S_OK, Process().code);
    EXPECT_EQ(events_, Texts{});
}

TEST_F(RequestNotification, NotifiesNobodyOfARequestThatFails) {
    UseChannel(L"Feature");
    control_->SubscribeToNotifications2(Argument(L"Feature"));
    host_.answers.push_back({.result = kHostFailure});
    EXPECT_EQ(Process(), (Result{kHostFailure, kUntouched}));
    host_.answers.push_back({.is_null = true});
    EXPECT_EQ(Process(), (Result{S_OK, kUntouched}));
    EXPECT_EQ(events_, Texts{});
}

TEST_F(RequestNotification, NotifiesNobodyOfASavedPayment) {
    UseChannel(L"Feature");
    control_->SubscribeToNotifications2(Argument(L"Feature"));
    RespondExactly(L"<R/>");
    EXPECT_EQ(Ask(object_, &CPaylodge::SavePaymentTxn, L"<Body/>"), (Result{S_OK, L"<R/>"}));
    EXPECT_EQ(events_, Texts{});
}

TEST_F(RequestNotification, OutlivesASinkThatReleasesTheControl) {
    UseChannel(L"Feature");
    control_->SubscribeToNotifications2(Argument(L"Feature"));
    sink_->on_event = [this] { control_.Reset(); };
    RespondExactly(L"<R/>");
    EXPECT_EQ(Process(), (Result{S_OK, L"<R/>"}));
    EXPECT_EQ(events_.size(), 1U);
}

}  // namespace
}  // namespace paylodge::test
