// Which control receives what is pushed: subscribing, the channel's name, and the notification data.

#include <cstring>

#include "bridge/channel_registry.hpp"
#include "tests/support/bstr_allocations.hpp"
#include "tests/support/hresult.hpp"
#include "tests/unit/bridge/control_fixture.hpp"

namespace paylodge::test {
namespace {

using Events = std::vector<std::wstring>;

class Channels : public ControlTest {
  protected:
    // A push to the current channel.
    [[nodiscard]] HRESULT Push(const wchar_t* data) { return control_.SetTransactionID(Argument(data)); }
    void Subscribe(CPaylodgeCtrl& control, std::wstring_view name) {
        EXPECT_HRESULT(S_OK, control.SubscribeToNotifications2(Argument(name)));
    }
    void SetChannelName(std::wstring_view name) { EXPECT_HRESULT(S_OK, control_.SetChannelName(Argument(name))); }
};

TEST(Process, StartsWithoutControlsOnTheDefaultChannel) {
    EXPECT_FALSE(g_start_state.has_controls);
    EXPECT_EQ(g_start_state.channel, L"Default");
    EXPECT_TRUE(g_start_state.has_browser_instance_string);
    EXPECT_EQ(g_start_state.browser_instance, L"");
    EXPECT_FALSE(g_start_state.has_notification_data);
    EXPECT_FALSE(g_start_state.has_bridge_library);
}

TEST_F(Channels, ASubscriberReceivesThePushesOfTheDefaultChannel) {
    EXPECT_HRESULT(S_OK, control_.SubscribeToNotifications());
    EXPECT_HRESULT(S_OK, Push(L"1"));
    EXPECT_EQ(events_, Events{L"sink: 5(\"1\")"});
}

TEST_F(Channels, WithoutASubscriberAPushFails) {
    EXPECT_HRESULT(E_FAIL, Push(L"1"));
    EXPECT_EQ(events_, Events{});
}

TEST_F(Channels, TheLatestSubscriberReceivesThePushes) {
    control_.SubscribeToNotifications();
    other_.SubscribeToNotifications();
    EXPECT_HRESULT(S_OK, Push(L"1"));
    EXPECT_EQ(events_, Events{});
    control_.SubscribeToNotifications();
    EXPECT_HRESULT(S_OK, Push(L"2"));
    EXPECT_EQ(events_, Events{L"sink: 5(\"2\")"});
}

TEST_F(Channels, UnsubscribingRemovesWhicheverControlIsSubscribed) {
    control_.SubscribeToNotifications();
    other_.SubscribeToNotifications();
    EXPECT_HRESULT(S_OK, control_.UnSubscribeFromNotifications());
    EXPECT_HRESULT(E_FAIL, Push(L"1"));
    Subscribe(other_, L"Feature");
    EXPECT_HRESULT(S_OK, control_.UnSubscribeFromNotifications2(Argument(L"Feature")));
    EXPECT_TRUE(g_mapChannelControls.empty());
}

TEST_F(Channels, UnsubscribingAnAbsentChannelIsNoError) {
    EXPECT_HRESULT(S_OK, control_.UnSubscribeFromNotifications());
    EXPECT_HRESULT(S_OK, control_.UnSubscribeFromNotifications2(Argument(L"Feature")));
    EXPECT_HRESULT(S_OK, control_.UnSubscribeFromNotifications2(nullptr));
}

TEST_F(Channels, BothWaysOfSubscribingMeetUnderTheDefaultName) {
    Subscribe(control_, L"Default");
    EXPECT_HRESULT(S_OK, Push(L"1"));
    EXPECT_HRESULT(S_OK, other_.UnSubscribeFromNotifications());
    EXPECT_HRESULT(E_FAIL, Push(L"2"));
}

TEST_F(Channels, NamesAreCaseSensitive) {
    Subscribe(control_, L"default");
    EXPECT_HRESULT(E_FAIL, Push(L"1"));
    SetChannelName(L"default");
    EXPECT_HRESULT(S_OK, Push(L"2"));
}

TEST_F(Channels, NamesAreComparedWhole) {
    for (const wchar_t* const name : {L"Featur", L"Features", L" Feature", L"Feature "}) {
        Subscribe(control_, name);
    }
    SetChannelName(L"Feature");
    EXPECT_HRESULT(E_FAIL, Push(L"1"));
    EXPECT_EQ(g_mapChannelControls.size(), 4U);
}

TEST_F(Channels, NamesHoldAnyCharacters) {
    const std::wstring names[] = {
        {L'a', L'\0', L'b'}, {L'a', L'\0', L'c'}, L"\u2606\xD800", std::wstring(100'000, L'x')};
    for (const std::wstring& name : names) {
        Subscribe(control_, name);
        SetChannelName(name);
        EXPECT_HRESULT(S_OK, Push(L"1"));
    }
    EXPECT_EQ(g_mapChannelControls.size(), std::size(names));
}

TEST_F(Channels, NamesAreOrderedByTheirCodeUnits) {
    for (const wchar_t* const name : {L"b", L"\uFF21", L"aa", L"a", L"B", L"", L"\xD83D\xDE00"}) {
        Subscribe(control_, name);
    }
    std::vector<std::wstring> order;
    for (const auto& [name, control] : g_mapChannelControls) {
        order.push_back(name);
    }
    EXPECT_EQ(order, (std::vector<std::wstring>{L"", L"B", L"a", L"aa", L"b", L"\xD83D\xDE00", L"\uFF21"}));
}

TEST_F(Channels, ANullNameIsTheEmptyName) {
    EXPECT_HRESULT(S_OK, control_.SetChannelName(nullptr));
    EXPECT_HRESULT(E_FAIL, Push(L"1"));
    Subscribe(control_, L"");
    EXPECT_HRESULT(S_OK, Push(L"2"));
    SetChannelName(L"");
    EXPECT_HRESULT(S_OK, Push(L"3"));
    EXPECT_HRESULT(S_OK, control_.UnSubscribeFromNotifications2(nullptr));
    EXPECT_HRESULT(E_FAIL, Push(L"4"));
    EXPECT_HRESULT(S_OK, control_.SubscribeToNotifications2(nullptr));
    EXPECT_HRESULT(S_OK, Push(L"5"));
}

TEST_F(Channels, OneControlReceivesThePushesOfSeveralChannels) {
    Subscribe(control_, L"A");
    Subscribe(control_, L"B");
    SetChannelName(L"A");
    EXPECT_HRESULT(S_OK, Push(L"1"));
    EXPECT_HRESULT(S_OK, control_.UnSubscribeFromNotifications2(Argument(L"A")));
    EXPECT_HRESULT(E_FAIL, Push(L"2"));
    SetChannelName(L"B");
    EXPECT_HRESULT(S_OK, Push(L"3"));
    EXPECT_EQ(events_, (Events{L"sink: 5(\"1\")", L"sink: 5(\"3\")"}));
}

TEST_F(Channels, TheNameIsSharedByAllControls) {
    Subscribe(control_, L"A");
    EXPECT_HRESULT(S_OK, other_.SetChannelName(Argument(L"A")));
    EXPECT_HRESULT(S_OK, Push(L"1"));
}

TEST_F(Channels, TheNameIsACopy) {
    OwnedBstr name = MakeBstr(L"A");
    EXPECT_HRESULT(S_OK, control_.SetChannelName(name.Get()));
    EXPECT_NE(g_bstrChannelName.Get(), name.Get());
    name.Get()[0] = L'B';
    EXPECT_EQ(View(g_bstrChannelName), L"A");
}

TEST_F(Channels, SettingTheVeryNameThatIsHeldChangesNothing) {
    SetChannelName(L"A");
    BSTR const held = g_bstrChannelName.Get();
    EXPECT_HRESULT(S_OK, control_.SetChannelName(held));
    EXPECT_EQ(g_bstrChannelName.Get(), held);
    EXPECT_EQ(View(held), L"A");
}

TEST_F(Channels, SubscribingTakesNoReference) {
    control_.AddRef();
    const ULONG before = control_.Release();
    Subscribe(control_, L"A");
    Subscribe(control_, L"A");
    control_.AddRef();
    EXPECT_EQ(control_.Release(), before);
}

TEST_F(Channels, AControlThatIsGoneIsNoSubscriber) {
    {
        const ComPtr<Control> brief = Control::Create();
        brief->SubscribeToNotifications();
        Subscribe(*brief.Get(), L"A");
        Subscribe(control_, L"B");
    }
    EXPECT_HRESULT(E_FAIL, Push(L"1"));
    EXPECT_EQ(g_mapChannelControls.size(), 1U);
}

TEST_F(Channels, FailedAllocationsAreThrown) {
    Subscribe(control_, L"A");
    const Argument name(L"B");
    BstrAllocations allocations(1);
    HRESULT thrown = S_OK;
    try {
        static_cast<void>(control_.SetChannelName(name));
    } catch (const _com_error& error) {
        thrown = error.Error();
    }
    EXPECT_HRESULT(E_OUTOFMEMORY, thrown);
    EXPECT_EQ(View(g_bstrChannelName), L"Default");
}

class NotificationData : public ControlTest {
  protected:
    [[nodiscard]] std::wstring Get() {
        StringSink data;
        EXPECT_HRESULT(S_OK, other_.get_LHTransactionNotificationData(data.Slot()));
        return data.Show();
    }
};

TEST_F(NotificationData, IsNullBeforeAnythingIsStored) { EXPECT_EQ(Get(), kNull); }

TEST_F(NotificationData, IsSharedByAllControls) {
    EXPECT_HRESULT(S_OK, control_.put_LHTransactionNotificationData(Argument(L"data")));
    EXPECT_EQ(Get(), L"data");
}

TEST_F(NotificationData, IsReplacedAndSetBackToNull) {
    control_.put_LHTransactionNotificationData(Argument(L"first"));
    control_.put_LHTransactionNotificationData(Argument(L""));
    EXPECT_EQ(Get(), L"");
    EXPECT_HRESULT(S_OK, control_.put_LHTransactionNotificationData(nullptr));
    EXPECT_EQ(Get(), kNull);
}

TEST_F(NotificationData, KeepsEmbeddedNulsAndOddBytes) {
    const OwnedBstr odd(::SysAllocStringByteLen("a\0b\0\0\0c", 7));
    EXPECT_HRESULT(S_OK, control_.put_LHTransactionNotificationData(odd.Get()));
    StringSink data;
    EXPECT_HRESULT(S_OK, control_.get_LHTransactionNotificationData(data.Slot()));
    ASSERT_EQ(::SysStringByteLen(data.Get()), 7U);
    EXPECT_EQ(std::memcmp(data.Get(), odd.Get(), 7), 0);
}

TEST_F(NotificationData, IsHandedOutAsANewCopyEachTime) {
    control_.put_LHTransactionNotificationData(Argument(L"data"));
    StringSink first;
    StringSink second;
    control_.get_LHTransactionNotificationData(first.Slot());
    control_.get_LHTransactionNotificationData(second.Slot());
    EXPECT_NE(first.Get(), second.Get());
    first.Get()[0] = L'D';
    EXPECT_EQ(Get(), L"data");
}

TEST_F(NotificationData, NullOutParameterIsEPointer) {
    EXPECT_HRESULT(E_POINTER, control_.get_LHTransactionNotificationData(nullptr));
}

TEST_F(NotificationData, IsStoredByATransactionChange) {
    control_.SubscribeToNotifications();
    EXPECT_HRESULT(S_OK, control_.NotifyTransactionChanged(Argument(L"changed")));
    EXPECT_EQ(Get(), L"changed");
    EXPECT_HRESULT(S_OK, control_.NotifyTransactionChanged(nullptr));
    EXPECT_EQ(Get(), kNull);
}

TEST_F(NotificationData, IsStoredBeforeTheEventIsRaised) {
    control_.SubscribeToNotifications();
    std::wstring seen;
    sink_->on_event = [&] { seen = Get(); };
    EXPECT_HRESULT(S_OK, control_.NotifyTransactionChanged(Argument(L"changed")));
    EXPECT_EQ(seen, L"changed");
}

TEST_F(NotificationData, IsNotStoredByAChangeThatReachesNobody) {
    EXPECT_HRESULT(E_FAIL, control_.NotifyTransactionChanged(Argument(L"changed")));
    EXPECT_EQ(Get(), kNull);
}

TEST(BrowserInstance, IsACopyOfTheTextThatIsGiven) {
    const ProcessState state;
    std::wstring text = L"7";
    ::SetBrowserInstance(text.c_str());
    text = L"8";
    EXPECT_EQ(View(g_bstrBrowserInstance), L"7");
    ::SetBrowserInstance(text.c_str());
    EXPECT_EQ(View(g_bstrBrowserInstance), L"8");
}

TEST(BrowserInstance, StaysWhenItIsTheVeryTextThatIsHeld) {
    const ProcessState state;
    ::SetBrowserInstance(L"7");
    BSTR const held = g_bstrBrowserInstance.Get();
    ::SetBrowserInstance(held);
    EXPECT_EQ(g_bstrBrowserInstance.Get(), held);
    EXPECT_EQ(View(held), L"7");
}

}  // namespace
}  // namespace paylodge::test
