// Connection points and the raising of events.

#include <gtest/gtest.h>

#include "com/bstr.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"
#include "tests/unit/control/test_control.hpp"

namespace paylodge::test {
namespace {

class ConnectionPoints : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_HRESULT(S_OK, container_->FindConnectionPoint(DIID__IPaylodgeCtrlEvents, point_.Receive()));
    }
    // Whatever a test did, nothing may be left of it.
    void TearDown() override {
        sinks_.clear();
        point_.Reset();
        container_.Reset();
        EXPECT_EQ(1u, References(control_));
        control_.Reset();
        EXPECT_EQ(modules_before_, Module::References());
    }

    [[nodiscard]] ComObject<RecordingSink>& NewSink(const std::string& name,
                                                    REFIID event_interface = DIID__IPaylodgeCtrlEvents) {
        sinks_.push_back(ComObject<RecordingSink>::Create(record_, name, event_interface));
        return *sinks_.back().Get();
    }
    [[nodiscard]] DWORD Connect(IUnknown& sink) {
        DWORD cookie = 0;
        EXPECT_HRESULT(S_OK, point_->Advise(&sink, &cookie));
        EXPECT_NE(0u, cookie);
        return cookie;
    }
    HRESULT Fire(DISPID event, std::initializer_list<EventArgument> arguments = {}) {
        return RaiseEvent(static_cast<TestControl::Events&>(*control_.Get()).Point(), event, arguments);
    }

    const LONG modules_before_ = Module::References();
    Record record_;
    ComPtr<ComObject<TestControl>> control_ = ComObject<TestControl>::Create();
    ComPtr<IConnectionPointContainer> container_ = Query<IConnectionPointContainer>(control_);
    ComPtr<IConnectionPoint> point_;
    std::vector<ComPtr<ComObject<RecordingSink>>> sinks_;
};

TEST_F(ConnectionPoints, AreEnumeratedInTheOrderOfTheirTable) {
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_HRESULT(S_OK, container_->EnumConnectionPoints(points.Receive()));
    IConnectionPoint* given[3] = {};
    ULONG fetched = 0;
    ASSERT_HRESULT(S_FALSE, points->Next(3, given, &fetched));
    ASSERT_EQ(2u, fetched);
    const IID expected[] = {DIID__IPaylodgeCtrlEvents, IID_IPropertyNotifySink};
    for (int index = 0; index < 2; ++index) {
        const auto point = ComPtr<IConnectionPoint>::Attach(given[index]);
        IID id{};
        EXPECT_HRESULT(S_OK, point->GetConnectionInterface(&id));
        EXPECT_TRUE(IsEqualIID(expected[index], id));
    }
}

TEST_F(ConnectionPoints, EnumeratorGoesOnWhereItStopped) {
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_HRESULT(S_OK, container_->EnumConnectionPoints(points.Receive()));
    for (const IID& expected : {DIID__IPaylodgeCtrlEvents, IID_IPropertyNotifySink}) {
        ComPtr<IConnectionPoint> point;
        ASSERT_HRESULT(S_OK, points->Next(1, point.Receive(), nullptr));
        IID id{};
        EXPECT_HRESULT(S_OK, point->GetConnectionInterface(&id));
        EXPECT_TRUE(IsEqualIID(expected, id));
    }
    IConnectionPoint* none = nullptr;
    ULONG fetched = 5;
    EXPECT_HRESULT(S_FALSE, points->Next(1, &none, &fetched));
    EXPECT_EQ(0u, fetched);
}

TEST_F(ConnectionPoints, EnumeratorSkipsResetsAndIsCloned) {
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_HRESULT(S_OK, container_->EnumConnectionPoints(points.Receive()));
    EXPECT_HRESULT(S_OK, points->Skip(1));
    ComPtr<IEnumConnectionPoints> copy;
    ASSERT_HRESULT(S_OK, points->Clone(copy.Receive()));
    EXPECT_HRESULT(S_FALSE, points->Skip(2));
    EXPECT_HRESULT(S_OK, points->Reset());
    EXPECT_HRESULT(S_OK, points->Skip(2));
    EXPECT_HRESULT(S_OK, copy->Skip(1));
    EXPECT_HRESULT(S_FALSE, copy->Skip(1));
    EXPECT_HRESULT(E_POINTER, points->Clone(nullptr));
    EXPECT_HRESULT(E_POINTER, points->Next(1, nullptr, nullptr));
    IConnectionPoint* given[2] = {};
    EXPECT_HRESULT(E_POINTER, points->Next(2, given, nullptr));
}

TEST_F(ConnectionPoints, AreFoundByTheirInterface) {
    ComPtr<IConnectionPoint> property_point;
    EXPECT_HRESULT(S_OK, container_->FindConnectionPoint(IID_IPropertyNotifySink, property_point.Receive()));
    ComPtr<IConnectionPoint> none;
    EXPECT_HRESULT(CONNECT_E_NOCONNECTION, container_->FindConnectionPoint(IID_IDispatch, none.Receive()));
    EXPECT_FALSE(none);
}

TEST_F(ConnectionPoints, AreObjectsOfTheirOwn) {
    const auto unknown = Query<IUnknown>(point_);
    EXPECT_NE(Query<IUnknown>(control_).Get(), unknown.Get());
    EXPECT_EQ(point_.Get(), Query<IConnectionPoint>(unknown).Get());
    EXPECT_FALSE(Query<IOleObject>(point_));
    ComPtr<IConnectionPointContainer> container;
    ASSERT_HRESULT(S_OK, point_->GetConnectionPointContainer(container.Receive()));
    EXPECT_EQ(container_.Get(), container.Get());
}

TEST_F(ConnectionPoints, KeepTheirControlAlive) {
    auto point = std::move(point_);
    container_.Reset();
    control_.Reset();
    EXPECT_GT(Module::References(), modules_before_);
    IID id{};
    EXPECT_HRESULT(S_OK, point->GetConnectionInterface(&id));
    point.Reset();
    EXPECT_EQ(modules_before_, Module::References());
    control_ = ComObject<TestControl>::Create();
}

TEST_F(ConnectionPoints, NullPointersAreEPointer) {
    DWORD cookie = 1;
    EXPECT_HRESULT(E_POINTER, container_->EnumConnectionPoints(nullptr));
    EXPECT_HRESULT(E_POINTER, container_->FindConnectionPoint(IID_IPropertyNotifySink, nullptr));
    EXPECT_HRESULT(E_POINTER, point_->GetConnectionInterface(nullptr));
    EXPECT_HRESULT(E_POINTER, point_->GetConnectionPointContainer(nullptr));
    EXPECT_HRESULT(E_POINTER, point_->EnumConnections(nullptr));
    EXPECT_HRESULT(E_POINTER, point_->Advise(nullptr, &cookie));
    EXPECT_EQ(0u, cookie);
    EXPECT_HRESULT(E_POINTER, point_->Advise(&NewSink("a"), nullptr));
    EXPECT_HRESULT(E_POINTER, point_->QueryInterface(IID_IUnknown, nullptr));
}

TEST_F(ConnectionPoints, RefuseASinkWithoutTheInterface) {
    DWORD cookie = 1;
    EXPECT_HRESULT(CONNECT_E_CANNOTCONNECT, point_->Advise(&NewSink("a", IID_IPropertyNotifySink), &cookie));
    EXPECT_EQ(0u, cookie);
}

TEST_F(ConnectionPoints, HoldASinkUntilItIsUnadvised) {
    auto& sink = NewSink("a");
    const DWORD cookie = Connect(sink);
    EXPECT_EQ(2u, References(sinks_[0]));
    EXPECT_HRESULT(S_OK, point_->Unadvise(cookie));
    EXPECT_EQ(1u, References(sinks_[0]));
    EXPECT_HRESULT(CONNECT_E_NOCONNECTION, point_->Unadvise(cookie));
    EXPECT_HRESULT(CONNECT_E_NOCONNECTION, point_->Unadvise(0));
}

TEST_F(ConnectionPoints, ReleaseTheirSinksWithTheControl) {
    static_cast<void>(Connect(NewSink("a")));
    point_.Reset();
    container_.Reset();
    control_.Reset();
    EXPECT_EQ(1u, References(sinks_[0]));
    control_ = ComObject<TestControl>::Create();
}

TEST_F(ConnectionPoints, NeverReturnTheSameCookieTwice) {
    auto& sink = NewSink("a");
    const DWORD first = Connect(sink);
    EXPECT_HRESULT(S_OK, point_->Unadvise(first));
    const DWORD second = Connect(sink);
    EXPECT_NE(first, second);
    EXPECT_HRESULT(CONNECT_E_NOCONNECTION, point_->Unadvise(first));
    EXPECT_HRESULT(S_OK, point_->Unadvise(second));
}

TEST_F(ConnectionPoints, EnumerateWhoIsConnected) {
    const DWORD first = Connect(NewSink("a"));
    const DWORD second = Connect(NewSink("b"));
    const DWORD third = Connect(NewSink("c"));
    EXPECT_HRESULT(S_OK, point_->Unadvise(second));
    ComPtr<IEnumConnections> connections;
    ASSERT_HRESULT(S_OK, point_->EnumConnections(connections.Receive()));
    CONNECTDATA given[3] = {};
    ULONG fetched = 0;
    EXPECT_HRESULT(S_FALSE, connections->Next(3, given, &fetched));
    ASSERT_EQ(2u, fetched);
    EXPECT_EQ(first, given[0].dwCookie);
    EXPECT_EQ(third, given[1].dwCookie);
    EXPECT_EQ(sinks_[2].Get(), given[1].pUnk);
    for (const CONNECTDATA& connection : {given[0], given[1]}) {
        connection.pUnk->Release();
    }
}

TEST_F(ConnectionPoints, EventWithoutSinksSucceeds) { EXPECT_HRESULT(S_OK, Fire(1)); }

TEST_F(ConnectionPoints, EventReachesSinksInTheOrderOfTheirSlots) {
    static_cast<void>(Connect(NewSink("a")));
    const DWORD second = Connect(NewSink("b"));
    static_cast<void>(Connect(NewSink("c")));
    EXPECT_HRESULT(S_OK, Fire(7));
    EXPECT_EQ("a7 b7 c7", record_.Take());
    EXPECT_HRESULT(S_OK, point_->Unadvise(second));
    EXPECT_HRESULT(S_OK, Fire(8));
    EXPECT_EQ("a8 c8", record_.Take());
    static_cast<void>(Connect(NewSink("d")));
    EXPECT_HRESULT(S_OK, Fire(9));
    EXPECT_EQ("a9 d9 c9", record_.Take());
}

TEST_F(ConnectionPoints, EventCarriesItsArguments) {
    auto& sink = NewSink("a");
    static_cast<void>(Connect(sink));
    const OwnedBstr with_null = MakeBstr(std::wstring_view(L"x\0y", 3));
    EXPECT_HRESULT(S_OK, Fire(4, {with_null.Get(), BSTR{nullptr}, VARIANT_TRUE, VARIANT_BOOL{1}}));
    EXPECT_TRUE(sink.is_call_as_documented);
    const std::vector<std::wstring> expected = {std::wstring(L"x\0y", 3), L"(null)", L"bool -1", L"bool 1"};
    EXPECT_EQ(expected, sink.arguments);
}

TEST_F(ConnectionPoints, EventResultsAreCleared) {
    NewSink("a").gives_result = true;
    static_cast<void>(Connect(*sinks_[0].Get()));
    EXPECT_HRESULT(S_OK, Fire(1));
}

TEST_F(ConnectionPoints, AFailingSinkDoesNotStopTheNext) {
    NewSink("a").answer = E_ACCESSDENIED;
    static_cast<void>(Connect(*sinks_[0].Get()));
    static_cast<void>(Connect(NewSink("b")));
    EXPECT_HRESULT(S_OK, Fire(1));
    EXPECT_EQ("a1 b1", record_.Take());
    sinks_[1]->answer = E_ABORT;
    EXPECT_HRESULT(E_ABORT, Fire(1));
}

TEST_F(ConnectionPoints, ASinkMayDisconnectItselfFromWithinAnEvent) {
    const DWORD first = Connect(NewSink("a"));
    static_cast<void>(Connect(NewSink("b")));
    record_.reactions["a1"] = [&] { EXPECT_HRESULT(S_OK, point_->Unadvise(first)); };
    EXPECT_HRESULT(S_OK, Fire(1));
    EXPECT_EQ("a1 b1", record_.Take());
    EXPECT_HRESULT(S_OK, Fire(1));
    EXPECT_EQ("b1", record_.Take());
}

TEST_F(ConnectionPoints, ASinkDisconnectedByAnotherIsNotCalledAnyMore) {
    static_cast<void>(Connect(NewSink("a")));
    const DWORD second = Connect(NewSink("b"));
    record_.reactions["a1"] = [&] { EXPECT_HRESULT(S_OK, point_->Unadvise(second)); };
    EXPECT_HRESULT(S_OK, Fire(1));
    EXPECT_EQ("a1", record_.Take());
}

TEST_F(ConnectionPoints, SinksMayComeInGreatNumbersFromWithinAnEvent) {
    constexpr int kMany = 100;
    static_cast<void>(Connect(NewSink("a")));
    static_cast<void>(Connect(NewSink("b")));
    record_.reactions["a1"] = [&] {
        for (int number = 0; number < kMany; ++number) {
            static_cast<void>(Connect(NewSink("new")));
        }
    };
    EXPECT_HRESULT(S_OK, Fire(1));
    EXPECT_EQ("a1 b1", record_.Take());
}

TEST_F(ConnectionPoints, ASinkMayReleaseTheControlFromWithinAnEvent) {
    static_cast<void>(Connect(NewSink("a")));
    static_cast<void>(Connect(NewSink("b")));
    auto& events = static_cast<TestControl::Events&>(*control_.Get()).Point();
    point_.Reset();
    container_.Reset();
    record_.reactions["a1"] = [&] { control_.Reset(); };
    EXPECT_HRESULT(S_OK, RaiseEvent(events, 1, {}));
    EXPECT_EQ("a1 b1", record_.Take());
    control_ = ComObject<TestControl>::Create();
}

}  // namespace
}  // namespace paylodge::test
