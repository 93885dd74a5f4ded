// The component's control in a container that offers what the platform's host window lacks: ambient properties, advise
// sinks, services and event sinks.

#include <gtest/gtest.h>

#include "com/bstr.hpp"
#include "tests/container/component.hpp"
#include "tests/support/drawing_surface.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"

namespace paylodge::test {
namespace {

class ControlInContainer : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        desktop_window_ = ::CreateWindowExW(0, L"Static", L"page", WS_POPUP | WS_VISIBLE, 0, 0, 600, 400, nullptr,
                                            nullptr, nullptr, nullptr);
    }
    static void TearDownTestSuite() { ::DestroyWindow(desktop_window_); }
    void SetUp() override { site_->parent = desktop_window_; }
    void TearDown() override {
        control_.Reset();
        EXPECT_EQ(nullptr, ::GetWindow(desktop_window_, GW_CHILD));
        site_->AddRef();
        EXPECT_EQ(1u, site_->Release());
    }
    template <class Interface>
    [[nodiscard]] ComPtr<Interface> Control() {
        ComPtr<Interface> result;
        EXPECT_HRESULT(S_OK, control_.As(result));
        return result;
    }

    inline static HWND desktop_window_ = nullptr;

    Component component_;
    Record record_;
    ComPtr<ComObject<RecordingSite>> site_ = ComObject<RecordingSite>::Create(record_);
    ComPtr<IOleObject> control_ = Component::NewControl();
};

// The order of calls in which containers take a control in and let it go.
TEST_F(ControlInContainer, LivesAWholeLife) {
    DWORD misc_status = 0;
    EXPECT_HRESULT(S_OK, control_->GetMiscStatus(DVASPECT_CONTENT, &misc_status));
    EXPECT_EQ(131473u, misc_status);
    EXPECT_HRESULT(S_OK, control_->SetClientSite(site_.Get()));
    EXPECT_HRESULT(S_OK, Control<IPersistStreamInit>()->InitNew());
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, control_->Advise(site_.Get(), &cookie));
    EXPECT_HRESULT(S_OK, Control<IViewObjectEx>()->SetAdvise(DVASPECT_CONTENT, 0, site_.Get()));
    SIZEL extent{2540, 1270};
    EXPECT_HRESULT(S_OK, control_->SetExtent(DVASPECT_CONTENT, &extent));
    EXPECT_EQ("OnViewChange(1,-1)", record_.Take());

    EXPECT_HRESULT(S_OK, control_->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, site_.Get(), 0, site_->parent, nullptr));
    EXPECT_EQ("CanInPlaceActivate OnInPlaceActivate GetWindowContext ShowObject", record_.Take());
    HWND window = nullptr;
    EXPECT_HRESULT(S_OK, Control<IOleInPlaceObject>()->GetWindow(&window));
    EXPECT_TRUE(::IsWindowVisible(window));
    const RECT place{0, 0, 50, 40};
    EXPECT_HRESULT(S_OK, Control<IOleInPlaceObject>()->SetObjectRects(&place, &place));
    RECT client{};
    ::GetClientRect(window, &client);
    EXPECT_TRUE(::EqualRect(&place, &client));

    EXPECT_HRESULT(S_OK, Control<IOleInPlaceObject>()->InPlaceDeactivate());
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_HRESULT(S_OK, control_->Close(OLECLOSE_NOSAVE));
    EXPECT_EQ("OnInPlaceDeactivate OnClose", record_.Take());
    EXPECT_HRESULT(S_OK, Control<IViewObjectEx>()->SetAdvise(DVASPECT_CONTENT, 0, nullptr));
    EXPECT_HRESULT(S_OK, control_->SetClientSite(nullptr));
}

TEST_F(ControlInContainer, ConnectsQuicklyAndRaisesItsEvents) {
    const auto sink = ComObject<RecordingSink>::Create(record_, "event", DIID__IPaylodgeCtrlEvents);
    QACONTAINER container{};
    container.cbSize = sizeof container;
    container.pClientSite = site_.Get();
    container.pAdviseSink = site_.Get();
    container.pUnkEventSink = sink.Get();
    QACONTROL result{};
    result.cbSize = sizeof result;
    ASSERT_HRESULT(S_OK, Control<IQuickActivate>()->QuickActivate(&container, &result));
    EXPECT_EQ(131473u, result.dwMiscStatus);
    EXPECT_NE(0u, result.dwEventCookie);

    const auto interfaces = Control<IPaylodgeCtrl10>();
    EXPECT_HRESULT(S_OK, interfaces->SubscribeToNotifications());
    EXPECT_HRESULT(S_OK, interfaces->SetReconFeeData(MakeBstr(L"fees").Get()));
    EXPECT_EQ("event3", record_.Take());
    EXPECT_EQ(std::vector<std::wstring>{L"fees"}, sink->arguments);
    EXPECT_TRUE(sink->is_call_as_documented);
    EXPECT_HRESULT(S_OK, interfaces->UnSubscribeFromNotifications());
}

TEST_F(ControlInContainer, DrawsWithoutAWindow) {
    DrawingSurface surface(200, 100);
    const RECTL bounds{20, 10, 180, 90};
    EXPECT_HRESULT(S_OK, Control<IViewObjectEx>()->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, surface.Dc(),
                                                        &bounds, nullptr, nullptr, 0));
    const RECT drawn =
        surface.Around(surface.All(), [](COLORREF pixel) { return pixel != DrawingSurface::kUntouched; });
    EXPECT_EQ(20, drawn.left);
    EXPECT_EQ(90, drawn.bottom);
    const RECT text = surface.Around({21, 11, 179, 89}, [](COLORREF pixel) { return pixel != RGB(255, 255, 255); });
    EXPECT_NEAR(100, (text.left + text.right) / 2.0, 2.0);
    EXPECT_LT(text.top, 45);
    EXPECT_GE(text.bottom, 50);
    EXPECT_LE(text.bottom, 56);
}

TEST_F(ControlInContainer, NamesItsClassAndEvents) {
    const auto info = Control<IProvideClassInfo2>();
    GUID id{};
    EXPECT_HRESULT(S_OK, info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &id));
    EXPECT_TRUE(IsEqualGUID(DIID__IPaylodgeCtrlEvents, id));
    EXPECT_HRESULT(S_OK, Control<IPersistStreamInit>()->GetClassID(&id));
    EXPECT_TRUE(IsEqualGUID(CLSID_PaylodgeCtrl, id));
    ComPtr<ITypeInfo> type;
    ASSERT_HRESULT(S_OK, info->GetClassInfo(type.Receive()));
    OwnedBstr name;
    EXPECT_HRESULT(S_OK, type->GetDocumentation(MEMBERID_NIL, name.Receive(), nullptr, nullptr, nullptr));
    EXPECT_EQ(L"PaylodgeCtrl", View(name));
}

TEST_F(ControlInContainer, ReleasedWhileActiveLeavesNothingBehind) {
    EXPECT_HRESULT(S_OK, control_->SetClientSite(site_.Get()));
    EXPECT_HRESULT(S_OK, control_->DoVerb(OLEIVERB_SHOW, nullptr, nullptr, 0, nullptr, nullptr));
    EXPECT_NE(nullptr, ::GetWindow(desktop_window_, GW_CHILD));
}

}  // namespace
}  // namespace paylodge::test
