// A control and a container with a window to show it in.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"
#include "tests/unit/control/test_control.hpp"

namespace paylodge::test {

// What an activation calls.
inline constexpr char kActivation[] = "CanInPlaceActivate OnInPlaceActivate GetWindowContext ShowObject";
inline constexpr DWORD kControlStyle = WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS;

class InPlace : public ::testing::Test {
  protected:
    // Showing and destroying a window of the desktop takes seconds without a window manager, so there is only one.
    static void SetUpTestSuite() {
        desktop_window_ = ::CreateWindowExW(0, L"Static", L"container", WS_POPUP | WS_VISIBLE, 0, 0, 400, 300, nullptr,
                                            nullptr, nullptr, nullptr);
    }
    static void TearDownTestSuite() { ::DestroyWindow(desktop_window_); }

    void SetUp() override {
        site_->parent = ::CreateWindowExW(0, L"Static", L"", WS_CHILD | WS_VISIBLE, 0, 0, 400, 300, desktop_window_,
                                          nullptr, nullptr, nullptr);
        ASSERT_NE(nullptr, site_->parent);
        ASSERT_HRESULT(S_OK, object_->SetClientSite(site_.Get()));
    }
    void TearDown() override {
        if (object_) {
            EXPECT_HRESULT(S_OK, object_->Close(OLECLOSE_NOSAVE));
            EXPECT_HRESULT(S_OK, object_->SetClientSite(nullptr));
        }
        object_.Reset();
        in_place_.Reset();
        if (control_) {
            EXPECT_EQ(1u, References(control_));
        }
        control_.Reset();
        EXPECT_EQ(1u, References(site_));
        EXPECT_EQ(nullptr, ChildWindow());
        ::DestroyWindow(site_->parent);
        site_.Reset();
        EXPECT_EQ(modules_before_, Module::References());
    }

    HRESULT Do(LONG verb) { return object_->DoVerb(verb, nullptr, site_.Get(), 0, site_->parent, nullptr); }
    void ShowControl() {
        ASSERT_HRESULT(S_OK, Do(OLEIVERB_SHOW));
        ASSERT_EQ(kActivation, record_.Take());
    }
    [[nodiscard]] HWND ControlWindow() {
        HWND window = nullptr;
        static_cast<void>(in_place_->GetWindow(&window));
        return window;
    }
    [[nodiscard]] HWND ChildWindow() { return ::GetWindow(site_->parent, GW_CHILD); }
    // The control's window in the coordinates of its parent.
    [[nodiscard]] RECT Place() {
        RECT place{};
        ::GetWindowRect(ControlWindow(), &place);
        ::MapWindowPoints(nullptr, site_->parent, reinterpret_cast<POINT*>(&place), 2);
        return place;
    }
    void ExpectPlace(const RECT& expected) {
        const RECT place = Place();
        EXPECT_TRUE(::EqualRect(&expected, &place))
            << place.left << "," << place.top << "," << place.right << "," << place.bottom;
    }

    inline static HWND desktop_window_ = nullptr;

    const LONG modules_before_ = Module::References();
    Record record_;
    ComPtr<ComObject<RecordingSite>> site_ = ComObject<RecordingSite>::Create(record_);
    ComPtr<ComObject<TestControl>> control_ = ComObject<TestControl>::Create();
    ComPtr<IOleObject> object_ = Query<IOleObject>(control_);
    ComPtr<IOleInPlaceObjectWindowless> in_place_ = Query<IOleInPlaceObjectWindowless>(control_);
};

}  // namespace paylodge::test
