// The control in the platform's own host window for controls.

#include <windows.h>

#include <gtest/gtest.h>
#include <ocidl.h>

#include <algorithm>
#include <cstddef>

#include "tests/container/component.hpp"
#include "tests/container/picture.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/platform.hpp"

namespace paylodge::test {
namespace {

constexpr wchar_t kControlClass[] = L"{00A0CCCE-89E6-4779-AACD-E774651CB5AD}";
constexpr int kWidth = 240;
constexpr int kHeight = 80;

class HostWindow : public ::testing::Test {
  protected:
    // Showing and destroying a window of the desktop takes seconds without a window manager, so there is only one.
    static void SetUpTestSuite() {
        desktop_window_ = ::CreateWindowExW(0, L"Static", L"page", WS_POPUP | WS_VISIBLE, 0, 0, 600, 400, nullptr,
                                            nullptr, nullptr, nullptr);
        // The one that every Windows has.
        library_.Reset(::LoadLibraryW(L"atl.dll"));
        ASSERT_TRUE(Function<BOOL WINAPI()>("AtlAxWinInit")());
    }
    static void TearDownTestSuite() {
        ::DestroyWindow(desktop_window_);
        library_.Reset();
    }

    template <class Signature>
    [[nodiscard]] static Signature* Function(const char* name) {
        return reinterpret_cast<Signature*>(reinterpret_cast<void*>(::GetProcAddress(library_.Get(), name)));
    }

    // A host window that has created the control that its text names.
    [[nodiscard]] static HWND NewHost(int left, int top) {
        const HWND host = ::CreateWindowExW(0, L"AtlAxWin", kControlClass, WS_CHILD | WS_VISIBLE, left, top, kWidth,
                                            kHeight, desktop_window_, nullptr, nullptr, nullptr);
        EXPECT_NE(nullptr, host);
        return host;
    }
    [[nodiscard]] static ComPtr<IOleObject> ControlOf(HWND host) {
        ComPtr<IUnknown> unknown;
        ComPtr<IOleObject> control;
        EXPECT_HRESULT(S_OK, Function<HRESULT WINAPI(HWND, IUnknown**)>("AtlAxGetControl")(host, unknown.Receive()));
        EXPECT_HRESULT(S_OK, unknown.As(control));
        return control;
    }
    [[nodiscard]] static HWND WindowOf(const ComPtr<IOleObject>& control) {
        ComPtr<IOleInPlaceObject> in_place;
        HWND window = nullptr;
        EXPECT_HRESULT(S_OK, control.As(in_place));
        static_cast<void>(in_place->GetWindow(&window));
        return window;
    }
    [[nodiscard]] static SIZE ClientSize(HWND window) {
        RECT client{};
        ::GetClientRect(window, &client);
        return {client.right, client.bottom};
    }

    inline static HWND desktop_window_ = nullptr;
    inline static ModuleHandle library_;

    Component component_;
};

TEST_F(HostWindow, ActivatesTheControlInPlace) {
    const HWND host = NewHost(0, 0);
    const HWND window = WindowOf(ControlOf(host));
    ASSERT_NE(nullptr, window);
    EXPECT_EQ(host, ::GetParent(window));
    EXPECT_TRUE(::IsWindowVisible(window));
    EXPECT_EQ(0x56000000u, static_cast<DWORD>(::GetWindowLongPtrW(window, GWL_STYLE)));
    EXPECT_EQ(kWidth, ClientSize(window).cx);
    EXPECT_EQ(kHeight, ClientSize(window).cy);
    ::DestroyWindow(host);
    EXPECT_FALSE(::IsWindow(window));
}

TEST_F(HostWindow, ResizesTheControl) {
    const HWND host = NewHost(0, 0);
    const auto control = ControlOf(host);
    ::SetWindowPos(host, nullptr, 0, 0, 120, 50, SWP_NOZORDER | SWP_NOMOVE);
    EXPECT_EQ(120, ClientSize(WindowOf(control)).cx);
    EXPECT_EQ(50, ClientSize(WindowOf(control)).cy);
    ::DestroyWindow(host);
}

TEST_F(HostWindow, DeactivatesAndShowsTheControlAgain) {
    const HWND host = NewHost(0, 0);
    const auto control = ControlOf(host);
    ComPtr<IOleInPlaceObject> in_place;
    ASSERT_HRESULT(S_OK, control.As(in_place));
    EXPECT_HRESULT(S_OK, in_place->InPlaceDeactivate());
    EXPECT_EQ(nullptr, WindowOf(control));
    ComPtr<IOleClientSite> site;
    EXPECT_HRESULT(S_OK, control->GetClientSite(site.Receive()));
    ASSERT_TRUE(site);
    EXPECT_HRESULT(S_OK, control->DoVerb(OLEIVERB_SHOW, nullptr, site.Get(), 0, host, nullptr));
    EXPECT_NE(nullptr, WindowOf(control));
    site.Reset();
    ::DestroyWindow(host);
}

TEST_F(HostWindow, AControlMayOutliveItsHost) {
    const HWND host = NewHost(0, 0);
    auto control = ControlOf(host);
    ::DestroyWindow(host);
    EXPECT_EQ(nullptr, WindowOf(control));
    ComPtr<IDispatch> dispatch;
    EXPECT_HRESULT(S_OK, control.As(dispatch));
}

TEST_F(HostWindow, TwoControlsAreDestroyedInAnyOrder) {
    for (const bool first_goes_first : {true, false}) {
        const HWND first = NewHost(0, 0);
        const HWND second = NewHost(kWidth, 0);
        const HWND survivor = first_goes_first ? second : first;
        ::DestroyWindow(first_goes_first ? first : second);
        EXPECT_TRUE(::IsWindow(WindowOf(ControlOf(survivor)))) << first_goes_first;
        ::DestroyWindow(survivor);
    }
}

TEST_F(HostWindow, AHundredControlsComeAndGo) {
    constexpr int kRounds = 100;
    for (int round = 0; round < kRounds; ++round) {
        EXPECT_TRUE(::DestroyWindow(NewHost(0, 0))) << round;
    }
    // The component says at the end of each test whether something is left.
}

[[nodiscard]] Picture ReferencePicture() {
    const HRSRC found = ::FindResourceW(nullptr, MAKEINTRESOURCEW(1), RT_RCDATA);
    const HGLOBAL loaded = ::LoadResource(nullptr, found);
    return ReadPng({static_cast<BYTE*>(::LockResource(loaded)), ::SizeofResource(nullptr, found)});
}

// The frame of a picture, and nothing inside it.
[[nodiscard]] Picture FrameOf(Picture picture) {
    constexpr size_t kBytesPerPixel = 4;
    const size_t stride = picture.width * kBytesPerPixel;
    for (size_t row = 1; row + 1 < picture.height; ++row) {
        const auto start = picture.bytes.begin() + static_cast<std::ptrdiff_t>(row * stride);
        std::fill(start + kBytesPerPixel, start + static_cast<std::ptrdiff_t>(stride - kBytesPerPixel), BYTE{0xFF});
    }
    return picture;
}

// The control's picture is in docs/pictures/control.png. What was seen is written to control.png in the folder that the
// program runs in: copy it over the other when the drawing is meant to change.
TEST_F(HostWindow, ShowsAFrameAndTheControlsName) {
    // Fonts are not quite the same on all machines.
    constexpr double kTolerance = 0.005;
    const HWND host = NewHost(0, 0);
    const HWND window = WindowOf(ControlOf(host));
    ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    const Picture seen = PictureOf(window);
    EXPECT_TRUE(WritePng(seen, L"control.png"));
    const Picture expected = ReferencePicture();
    if (IsWine()) {
        EXPECT_LE(Difference(seen, expected), kTolerance);
    }
    // The system's own font has other letters.
    EXPECT_LE(Difference(FrameOf(seen), FrameOf(expected)), kTolerance);
    EXPECT_GT(Difference(FrameOf(seen), seen), kTolerance) << "there is nothing in the frame";
    EXPECT_GT(Difference(FrameOf(expected), expected), kTolerance) << "a frame without the name would pass";
    ::DestroyWindow(host);
}

}  // namespace
}  // namespace paylodge::test
