// A control as a window in a container that records what it is asked, refuses, and interferes.

#include <gtest/gtest.h>

#include "tests/support/hresult.hpp"
#include "tests/unit/control/in_place_fixture.hpp"

namespace paylodge::test {
namespace {

TEST_F(InPlace, HasNoWindowBeforeItIsActivated) {
    HWND window = site_->parent;
    EXPECT_HRESULT(E_FAIL, in_place_->GetWindow(&window));
    EXPECT_EQ(nullptr, window);
    EXPECT_HRESULT(E_POINTER, in_place_->GetWindow(nullptr));
    const auto active_object = Query<IOleInPlaceActiveObject>(control_);
    window = site_->parent;
    EXPECT_HRESULT(E_FAIL, active_object->GetWindow(&window));
    EXPECT_EQ(nullptr, window);
}

TEST_F(InPlace, ShowsAChildWindowWhereTheSiteSays) {
    ShowControl();
    ASSERT_NE(nullptr, ControlWindow());
    EXPECT_EQ(site_->parent, ::GetParent(ControlWindow()));
    EXPECT_EQ(kControlStyle, static_cast<DWORD>(::GetWindowLongPtrW(ControlWindow(), GWL_STYLE)));
    EXPECT_EQ(0, ::GetWindowLongPtrW(ControlWindow(), GWL_EXSTYLE));
    ExpectPlace(site_->position);
    HWND window = nullptr;
    EXPECT_HRESULT(S_OK, Query<IOleInPlaceActiveObject>(control_)->GetWindow(&window));
    EXPECT_EQ(ControlWindow(), window);
}

TEST_F(InPlace, DrawsItselfInItsWindow) {
    ShowControl();
    ::InvalidateRect(ControlWindow(), nullptr, TRUE);
    control_->draw_count = 0;
    ::UpdateWindow(ControlWindow());
    EXPECT_EQ(1, control_->draw_count);
    EXPECT_EQ(0, control_->last_bounds.left);
    EXPECT_EQ(0, control_->last_bounds.top);
    EXPECT_EQ(200, control_->last_bounds.right);
    EXPECT_EQ(100, control_->last_bounds.bottom);
}

TEST_F(InPlace, ActivationVerbsShowIt) {
    for (const LONG verb : {OLEIVERB_PRIMARY, OLEIVERB_SHOW, OLEIVERB_OPEN, OLEIVERB_INPLACEACTIVATE}) {
        EXPECT_HRESULT(S_OK, Do(verb)) << verb;
        EXPECT_EQ(kActivation, record_.Take()) << verb;
        EXPECT_NE(nullptr, ControlWindow()) << verb;
        EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
        EXPECT_EQ("OnInPlaceDeactivate", record_.Take());
    }
    EXPECT_HRESULT(OLEOBJ_S_INVALIDVERB, Do(17));
    EXPECT_NE(nullptr, ControlWindow());
}

TEST_F(InPlace, ActivatingTwiceActivatesOnce) {
    ShowControl();
    const HWND window = ControlWindow();
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_INPLACEACTIVATE));
    EXPECT_EQ("ShowObject", record_.Take());
    EXPECT_EQ(window, ControlWindow());
}

TEST_F(InPlace, UsesTheSiteOfTheVerbWithoutAClientSite) {
    EXPECT_HRESULT(S_OK, object_->SetClientSite(nullptr));
    ShowControl();
    EXPECT_NE(nullptr, ControlWindow());
}

TEST_F(InPlace, UsesThePlaceOfTheVerbWhereTheSiteHasNone) {
    site_->answers["GetWindowContext"] = E_NOTIMPL;
    const RECT place{1, 2, 31, 42};
    EXPECT_HRESULT(S_OK, object_->DoVerb(OLEIVERB_SHOW, nullptr, site_.Get(), 0, site_->parent, &place));
    ExpectPlace(place);
}

TEST_F(InPlace, StaysInactiveWhenTheSiteRefuses) {
    const struct {
        const char* call;
        HRESULT answer;
        HRESULT result;
        const char* calls;
    } refusals[] = {
        {"CanInPlaceActivate", S_FALSE, E_FAIL, "CanInPlaceActivate"},
        {"OnInPlaceActivate", E_ABORT, E_ABORT, "CanInPlaceActivate OnInPlaceActivate"},
        {"GetWindow", E_ABORT, E_FAIL, "CanInPlaceActivate OnInPlaceActivate OnInPlaceDeactivate"},
        {"GetWindowContext", E_ABORT, E_FAIL,
         "CanInPlaceActivate OnInPlaceActivate GetWindowContext OnInPlaceDeactivate"},
    };
    for (const auto& refusal : refusals) {
        site_->answers = {{refusal.call, refusal.answer}};
        EXPECT_HRESULT(refusal.result, Do(OLEIVERB_SHOW)) << refusal.call;
        EXPECT_EQ(refusal.calls, record_.Take());
        EXPECT_EQ(nullptr, ControlWindow());
    }
    site_->answers.clear();
    ShowControl();
}

TEST_F(InPlace, StaysInactiveWithoutAParentWindow) {
    const HWND parent = std::exchange(site_->parent, nullptr);
    EXPECT_TRUE(FAILED(Do(OLEIVERB_SHOW)));
    EXPECT_EQ("CanInPlaceActivate OnInPlaceActivate GetWindowContext OnInPlaceDeactivate", record_.Take());
    site_->parent = parent;
    EXPECT_EQ(nullptr, ControlWindow());
}

TEST_F(InPlace, MovesWhereItIsTold) {
    ShowControl();
    const RECT place{5, 6, 105, 56};
    EXPECT_HRESULT(S_OK, in_place_->SetObjectRects(&place, &site_->clip));
    ExpectPlace(place);
    EXPECT_HRESULT(S_OK, in_place_->SetObjectRects(&place, &site_->clip)) << "twice";
    EXPECT_HRESULT(E_INVALIDARG, in_place_->SetObjectRects(nullptr, &site_->clip));
    EXPECT_HRESULT(E_INVALIDARG, in_place_->SetObjectRects(&place, nullptr));
}

TEST_F(InPlace, ShowsOnlyWhatIsInsideTheClip) {
    ShowControl();
    const RECT place{10, 10, 110, 60};
    const RECT clip{0, 0, 50, 30};
    EXPECT_HRESULT(S_OK, in_place_->SetObjectRects(&place, &clip));
    RECT visible{};
    EXPECT_EQ(SIMPLEREGION, ::GetWindowRgnBox(ControlWindow(), &visible));
    const RECT expected{0, 0, 40, 20};
    EXPECT_TRUE(::EqualRect(&expected, &visible));
    EXPECT_HRESULT(S_OK, in_place_->SetObjectRects(&place, &site_->clip));
    EXPECT_EQ(ERROR, ::GetWindowRgnBox(ControlWindow(), &visible)) << "the window is whole again";
}

TEST_F(InPlace, PaintsWhatAWiderClipUncovers) {
    ShowControl();
    const RECT place{10, 10, 110, 60};
    const RECT narrow{0, 0, 50, 30};
    const RECT wide{0, 0, 80, 30};
    EXPECT_HRESULT(S_OK, in_place_->SetObjectRects(&place, &narrow));
    ::UpdateWindow(ControlWindow());
    control_->draw_count = 0;
    EXPECT_HRESULT(S_OK, in_place_->SetObjectRects(&place, &wide));
    ::UpdateWindow(ControlWindow());
    EXPECT_LT(0, control_->draw_count);
    control_->draw_count = 0;
    EXPECT_HRESULT(S_OK, in_place_->SetObjectRects(&place, &site_->clip));
    ::UpdateWindow(ControlWindow());
    EXPECT_LT(0, control_->draw_count) << "whole again";
}

TEST_F(InPlace, PlacingItWhileInactiveDoesNothing) {
    EXPECT_HRESULT(S_OK, in_place_->SetObjectRects(&site_->position, &site_->clip));
    EXPECT_EQ(nullptr, ChildWindow());
    EXPECT_EQ("", record_.Take());
}

TEST_F(InPlace, HidesAndShowsAgain) {
    ShowControl();
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_HIDE));
    EXPECT_FALSE(::IsWindowVisible(ControlWindow()));
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_SHOW));
    EXPECT_TRUE(::IsWindowVisible(ControlWindow()));
}

TEST_F(InPlace, DeactivatingTakesTheWindowAway) {
    ShowControl();
    const HWND window = ControlWindow();
    EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
    EXPECT_EQ("OnInPlaceDeactivate", record_.Take());
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate()) << "twice";
    EXPECT_HRESULT(S_OK, in_place_->UIDeactivate());
    EXPECT_EQ("", record_.Take());
    ShowControl();
}

TEST_F(InPlace, ClosingDeactivates) {
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, object_->Advise(site_.Get(), &cookie));
    ShowControl();
    EXPECT_HRESULT(S_OK, object_->Close(OLECLOSE_NOSAVE));
    EXPECT_EQ("OnInPlaceDeactivate OnClose", record_.Take());
    EXPECT_EQ(nullptr, ControlWindow());
    EXPECT_HRESULT(S_OK, object_->Unadvise(cookie));
}

TEST_F(InPlace, UiActivationNotifiesSiteAndFrame) {
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
    EXPECT_EQ(std::string(kActivation) + " OnUIActivate ActiveObject NoBorderSpace OnFocus", record_.Take());
    EXPECT_EQ(ControlWindow(), ::GetFocus());
    EXPECT_TRUE(site_->frame->active_object);
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE)) << "twice";
    EXPECT_EQ("ShowObject", record_.Take());
    EXPECT_HRESULT(S_OK, in_place_->UIDeactivate());
    EXPECT_EQ("NoActiveObject OnUIDeactivate", record_.Take());
    EXPECT_NE(nullptr, ControlWindow());
}

TEST_F(InPlace, DeactivatingEndsUiActivationFirst) {
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
    ::SetFocus(site_->parent);
    record_.Clear();
    EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
    EXPECT_EQ("NoActiveObject OnUIDeactivate OnInPlaceDeactivate", record_.Take());
}

TEST_F(InPlace, StaysActiveWhenUiActivationIsRefused) {
    site_->answers["OnUIActivate"] = E_ABORT;
    EXPECT_HRESULT(E_ABORT, Do(OLEIVERB_UIACTIVATE));
    EXPECT_NE(nullptr, ControlWindow());
    EXPECT_FALSE(site_->frame->active_object);
}

TEST_F(InPlace, AClickActivatesItForTheUser) {
    ShowControl();
    EXPECT_EQ(MA_ACTIVATE, ::SendMessageW(ControlWindow(), WM_MOUSEACTIVATE, 0, 0));
    EXPECT_EQ("Ambient-709 OnUIActivate ActiveObject NoBorderSpace OnFocus", record_.Take());
}

TEST_F(InPlace, AClickInADesignerDoesNot) {
    ShowControl();
    site_->ambient[DISPID_AMBIENT_USERMODE] = VARIANT_FALSE;
    ::SendMessageW(ControlWindow(), WM_MOUSEACTIVATE, 0, 0);
    EXPECT_EQ("Ambient-709", record_.Take());
}

TEST_F(InPlace, NotifiesItsSiteOfTheFocus) {
    ShowControl();
    ::SetFocus(ControlWindow());
    ::SetFocus(site_->parent);
    EXPECT_EQ("OnFocus OnFocusLost", record_.Take());
}

TEST_F(InPlace, OffersKeysToItsSite) {
    const auto active_object = Query<IOleInPlaceActiveObject>(control_);
    MSG key{};
    EXPECT_HRESULT(S_OK, active_object->TranslateAccelerator(&key));
    EXPECT_EQ("Key0", record_.Take());
    site_->answers["Key0"] = S_FALSE;
    EXPECT_HRESULT(S_FALSE, active_object->TranslateAccelerator(&key));
    EXPECT_HRESULT(E_POINTER, active_object->TranslateAccelerator(nullptr));
    EXPECT_HRESULT(S_OK, object_->SetClientSite(nullptr));
    EXPECT_HRESULT(S_FALSE, active_object->TranslateAccelerator(&key));
}

TEST_F(InPlace, UnsupportedMethodsReturnTheirStockResults) {
    LRESULT result = 5;
    EXPECT_HRESULT(S_FALSE, in_place_->OnWindowMessage(WM_PAINT, 0, 0, &result));
    EXPECT_EQ(0, result);
    EXPECT_HRESULT(E_POINTER, in_place_->OnWindowMessage(WM_PAINT, 0, 0, nullptr));
    ComPtr<IDropTarget> target;
    EXPECT_HRESULT(E_NOTIMPL, in_place_->GetDropTarget(target.Receive()));
    EXPECT_HRESULT(E_POINTER, in_place_->GetDropTarget(nullptr));
    EXPECT_HRESULT(INPLACE_E_NOTUNDOABLE, in_place_->ReactivateAndUndo());
    EXPECT_HRESULT(E_NOTIMPL, in_place_->ContextSensitiveHelp(TRUE));
    const auto active_object = Query<IOleInPlaceActiveObject>(control_);
    EXPECT_HRESULT(E_NOTIMPL, active_object->ContextSensitiveHelp(TRUE));
    EXPECT_HRESULT(S_OK, active_object->OnFrameWindowActivate(TRUE));
    EXPECT_HRESULT(S_OK, active_object->OnDocWindowActivate(FALSE));
    EXPECT_HRESULT(S_OK, active_object->ResizeBorder(nullptr, nullptr, TRUE));
    EXPECT_HRESULT(S_OK, active_object->EnableModeless(FALSE));
}

TEST_F(InPlace, RedrawsAndNotifiesTheViewSinkOfANewSize) {
    ShowControl();
    ::UpdateWindow(ControlWindow());
    EXPECT_HRESULT(S_OK, Query<IViewObjectEx>(control_)->SetAdvise(DVASPECT_CONTENT, 0, site_.Get()));
    SIZEL size{100, 200};
    EXPECT_HRESULT(S_OK, object_->SetExtent(DVASPECT_CONTENT, &size));
    EXPECT_EQ("OnViewChange(1,-1)", record_.Take());
    EXPECT_TRUE(::GetUpdateRect(ControlWindow(), nullptr, FALSE));
}

TEST_F(InPlace, ReleasedWhileActiveTakesItsWindowAlong) {
    ShowControl();
    const HWND window = ControlWindow();
    object_.Reset();
    in_place_.Reset();
    control_.Reset();
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ("", record_.Take());
}

TEST_F(InPlace, SurvivesItsWindowBeingDestroyedByTheContainer) {
    ShowControl();
    ::DestroyWindow(ControlWindow());
    EXPECT_EQ(nullptr, ControlWindow());
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_SHOW));
    EXPECT_NE(nullptr, ControlWindow());
    ::DestroyWindow(ControlWindow());
    record_.Clear();
    EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
    EXPECT_EQ("OnInPlaceDeactivate", record_.Take());
}

TEST_F(InPlace, PrintingLeavesTheCallersContextAsItWas) {
    ShowControl();
    const HDC dc = ::CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = ::CreateCompatibleBitmap(dc, 300, 200);
    const HGDIOBJ before = ::SelectObject(dc, bitmap);
    ::SetTextAlign(dc, TA_RIGHT);
    const HRGN clip = ::CreateRectRgn(5, 6, 70, 80);
    ::SelectClipRgn(dc, clip);
    control_->draw_count = 0;
    ::SendMessageW(ControlWindow(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc), PRF_CLIENT);
    EXPECT_EQ(1, control_->draw_count);
    EXPECT_EQ(RGB(255, 255, 255), ::GetPixel(dc, 20, 20)) << "it is drawn there and nowhere else";
    EXPECT_EQ(static_cast<UINT>(TA_RIGHT), ::GetTextAlign(dc));
    RECT clipped{};
    EXPECT_EQ(SIMPLEREGION, ::GetClipBox(dc, &clipped));
    const RECT expected{5, 6, 70, 80};
    EXPECT_TRUE(::EqualRect(&expected, &clipped));
    ::SelectObject(dc, before);
    ::DeleteObject(clip);
    ::DeleteObject(bitmap);
    ::DeleteDC(dc);
}

TEST_F(InPlace, TwoControlsAreIndependent) {
    Record other_record;
    const auto other_site = ComObject<RecordingSite>::Create(other_record);
    other_site->parent = site_->parent;
    auto other = Query<IOleObject>(ComObject<TestControl>::Create());
    EXPECT_HRESULT(S_OK, other->SetClientSite(other_site.Get()));
    ShowControl();
    EXPECT_HRESULT(S_OK, other->DoVerb(OLEIVERB_SHOW, nullptr, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(kActivation, other_record.Take());
    other.Reset();
    EXPECT_NE(nullptr, ControlWindow());
    EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
}

TEST_F(InPlace, LeavesNoWindowClassBehind) {
    ShowControl();
    wchar_t name[100];
    ASSERT_NE(0, ::GetClassNameW(ControlWindow(), name, 100));
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    EXPECT_TRUE(::GetClassInfoExW(Module::Instance(), name, &description));
    EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
    object_.Reset();
    in_place_.Reset();
    control_.Reset();
    EXPECT_FALSE(::GetClassInfoExW(Module::Instance(), name, &description));
}

}  // namespace
}  // namespace paylodge::test
