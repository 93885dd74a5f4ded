// The order of what a container is notified of, and what it still holds and finds at each step.

#include <gtest/gtest.h>

#include <array>

#include "tests/support/hresult.hpp"
#include "tests/unit/control/in_place_fixture.hpp"

namespace paylodge::test {
namespace {

TEST_F(InPlace, WindowIsDestroyedBeforeTheSiteIsNotifiedOfTheDeactivation) {
    ShowControl();
    const HWND window = ControlWindow();
    int times = 0;
    record_.reactions["OnInPlaceDeactivate"] = [&] {
        ++times;
        EXPECT_FALSE(::IsWindow(window));
        EXPECT_EQ(nullptr, ControlWindow());
    };
    EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
    EXPECT_EQ(1, times);
}

TEST_F(InPlace, WindowIsStillThereWhenTheUserInterfaceIsDeactivated) {
    ASSERT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
    const HWND window = ControlWindow();
    int times = 0;
    record_.reactions["OnUIDeactivate"] = [&] {
        ++times;
        EXPECT_TRUE(::IsWindow(window));
        EXPECT_TRUE(::IsWindowVisible(window));
        EXPECT_FALSE(site_->frame->active_object);
    };
    EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
    EXPECT_EQ(1, times);
}

TEST_F(InPlace, HidingDeactivatesTheUserInterfaceFirst) {
    ASSERT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
    const HWND window = ControlWindow();
    ::SetFocus(site_->parent);
    record_.Clear();
    record_.reactions["OnUIDeactivate"] = [&] { EXPECT_TRUE(::IsWindowVisible(window)); };
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_HIDE));
    EXPECT_EQ("NoActiveObject OnUIDeactivate", record_.Take());
    EXPECT_FALSE(::IsWindowVisible(window));
    EXPECT_EQ(window, ControlWindow()) << "hidden is not inactive";
    EXPECT_HRESULT(S_OK, in_place_->UIDeactivate());
    EXPECT_EQ("", record_.Take());
}

// What is held of frame and document beside the test's own references.
class FrameAndDocument : public InPlace {
  protected:
    FrameAndDocument() { site_->document = ComObject<RecordingFrame>::Create(record_); }

    void ExpectReferences(ULONG expected) {
        EXPECT_EQ(1u + expected, References(site_->frame));
        EXPECT_EQ(1u + expected, References(site_->document));
    }
};

TEST_F(FrameAndDocument, AreHeldWhileTheControlIsActiveOnly) {
    ExpectReferences(0);
    ShowControl();
    ExpectReferences(1);
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_HIDE));
    ExpectReferences(1);
    EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
    ExpectReferences(0);
}

TEST_F(FrameAndDocument, AreReleasedBeforeTheSiteIsNotifiedOfTheDeactivation) {
    ShowControl();
    record_.reactions["OnInPlaceDeactivate"] = [this] { ExpectReferences(0); };
    EXPECT_HRESULT(S_OK, object_->Close(OLECLOSE_NOSAVE));
    ExpectReferences(0);
}

TEST_F(FrameAndDocument, AreNotHeldAfterAnActivationThatFails) {
    const HWND parent = std::exchange(site_->parent, nullptr);
    EXPECT_TRUE(FAILED(Do(OLEIVERB_SHOW)));
    ExpectReferences(0);
    site_->parent = parent;
    record_.reactions["GetWindowContext"] = [this] { EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate()); };
    EXPECT_HRESULT(E_FAIL, Do(OLEIVERB_SHOW));
    ExpectReferences(0);
}

TEST_F(FrameAndDocument, AreReleasedWithTheControl) {
    ShowControl();
    object_.Reset();
    in_place_.Reset();
    control_.Reset();
    ExpectReferences(0);
}

TEST_F(FrameAndDocument, BothAreNotifiedOfTheActiveObject) {
    ASSERT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
    EXPECT_EQ(std::string(kActivation) + " OnUIActivate ActiveObject NoBorderSpace ActiveObject NoBorderSpace OnFocus",
              record_.Take());
    EXPECT_TRUE(site_->frame->active_object);
    EXPECT_TRUE(site_->document->active_object);
    EXPECT_HRESULT(S_OK, in_place_->UIDeactivate());
    EXPECT_EQ("NoActiveObject NoActiveObject OnUIDeactivate", record_.Take());
    EXPECT_FALSE(site_->frame->active_object);
    EXPECT_FALSE(site_->document->active_object);
}

TEST_F(FrameAndDocument, DocumentIsNotGivenAnObjectWhoseUserInterfaceHasEnded) {
    record_.reactions["ActiveObject"] = [this] { EXPECT_HRESULT(S_OK, in_place_->UIDeactivate()); };
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
    EXPECT_FALSE(site_->frame->active_object);
    EXPECT_FALSE(site_->document->active_object);
    record_.reactions.clear();
}

// An ambient property of another type than a boolean is one that the container does not have.
TEST_F(InPlace, AnAmbientPropertyOfAnotherTypeCountsAsMissing) {
    ShowControl();
    site_->ambient[DISPID_AMBIENT_USERMODE] = VARIANT_FALSE;
    for (const VARTYPE type : {VT_I2, VT_EMPTY, VT_NULL, VT_ERROR}) {
        site_->ambient_type = type;
        ::SendMessageW(ControlWindow(), WM_MOUSEACTIVATE, 0, 0);
        EXPECT_TRUE(site_->frame->active_object) << type;
        EXPECT_HRESULT(S_OK, in_place_->UIDeactivate());
        ::SetFocus(site_->parent);
    }
    record_.Clear();
    site_->ambient_type = VT_BOOL;
    site_->answers["Ambient-709"] = E_FAIL;
    ::SendMessageW(ControlWindow(), WM_MOUSEACTIVATE, 0, 0);
    EXPECT_TRUE(site_->frame->active_object) << "what comes with a failure is no value";
    EXPECT_HRESULT(S_OK, in_place_->UIDeactivate());
    site_->answers.clear();
    // Every value but VARIANT_FALSE is true.
    site_->ambient[DISPID_AMBIENT_USERMODE] = 1;
    ::SendMessageW(ControlWindow(), WM_MOUSEACTIVATE, 0, 0);
    EXPECT_TRUE(site_->frame->active_object);
    record_.Clear();
}

TEST_F(InPlace, AClickActivatesItWithoutAmbientProperties) {
    ShowControl();
    EXPECT_HRESULT(S_OK, object_->SetClientSite(nullptr));
    EXPECT_EQ(MA_ACTIVATE, ::SendMessageW(ControlWindow(), WM_MOUSEACTIVATE, 0, 0));
    EXPECT_TRUE(site_->frame->active_object) << "without a client site there is nobody to ask";
    EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
}

TEST_F(InPlace, TheUserInterfaceIsNotActivatedWhenTheControlCannotBeShown) {
    site_->answers["OnInPlaceActivate"] = E_ABORT;
    EXPECT_HRESULT(E_ABORT, Do(OLEIVERB_UIACTIVATE));
    site_->answers.clear();
    record_.Clear();
    record_.reactions["ShowObject"] = [this] { EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate()); };
    EXPECT_HRESULT(E_UNEXPECTED, Do(OLEIVERB_UIACTIVATE)) << "the container ended the activation";
    EXPECT_EQ(std::string(kActivation) + " OnInPlaceDeactivate", record_.Take());
}

TEST_F(InPlace, AUserInterfaceThatWasRefusedIsAskedForAgain) {
    site_->answers["OnUIActivate"] = E_ABORT;
    EXPECT_HRESULT(E_ABORT, Do(OLEIVERB_UIACTIVATE));
    record_.Clear();
    EXPECT_HRESULT(S_OK, in_place_->UIDeactivate());
    EXPECT_EQ("", record_.Take()) << "there is nothing to end";
    site_->answers.clear();
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
    EXPECT_EQ("ShowObject OnUIActivate ActiveObject NoBorderSpace OnFocus", record_.Take());
}

TEST_F(InPlace, ShowsOnlyWhatIsInsideTheClipFromTheStart) {
    site_->clip = {0, 0, 110, 70};
    ShowControl();
    RECT visible{};
    EXPECT_EQ(SIMPLEREGION, ::GetWindowRgnBox(ControlWindow(), &visible));
    const RECT expected{0, 0, 100, 50};
    EXPECT_TRUE(::EqualRect(&expected, &visible));
}

TEST_F(InPlace, LeavesTheFocusInAChildOfItsWindow) {
    ShowControl();
    const HWND child = ::CreateWindowExW(0, L"Static", L"", WS_CHILD | WS_VISIBLE, 0, 0, 10, 10, ControlWindow(),
                                         nullptr, nullptr, nullptr);
    ::SetFocus(child);
    record_.Clear();
    EXPECT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
    EXPECT_EQ(child, ::GetFocus());
    EXPECT_EQ("ShowObject OnUIActivate ActiveObject NoBorderSpace", record_.Take());
}

TEST_F(InPlace, WindowIsDrawnAnewInEachSizeAndHasTheArrow) {
    ShowControl();
    EXPECT_EQ(static_cast<ULONG_PTR>(CS_HREDRAW | CS_VREDRAW | CS_DBLCLKS),
              ::GetClassLongPtrW(ControlWindow(), GCL_STYLE));
    EXPECT_EQ(reinterpret_cast<ULONG_PTR>(::LoadCursorW(nullptr, IDC_ARROW)),
              ::GetClassLongPtrW(ControlWindow(), GCLP_HCURSOR));
    EXPECT_EQ(reinterpret_cast<ULONG_PTR>(Module::Instance()), ::GetClassLongPtrW(ControlWindow(), GCLP_HMODULE));
    EXPECT_NE(0u, ::GetClassLongPtrW(ControlWindow(), GCLP_HBRBACKGROUND));
}

TEST_F(InPlace, OffersKeysWithTheModifiersThatAreDown) {
    constexpr struct {
        int key;
        int bit;
    } kModifiers[] = {{VK_SHIFT, 1}, {VK_CONTROL, 2}, {VK_MENU, 4}};
    const auto active_object = Query<IOleInPlaceActiveObject>(control_);
    std::array<BYTE, 256> before{};
    ASSERT_TRUE(::GetKeyboardState(before.data()));
    for (int pressed = 0; pressed < 8; ++pressed) {
        std::array<BYTE, 256> keys{};
        for (const auto& [key, bit] : kModifiers) {
            // The lowest bit says that a key is toggled, which does not count.
            keys.at(static_cast<size_t>(key)) = (pressed & bit) != 0 ? 0x80 : 0x01;
        }
        ASSERT_TRUE(::SetKeyboardState(keys.data()));
        MSG key{};
        EXPECT_HRESULT(S_OK, active_object->TranslateAccelerator(&key));
        EXPECT_EQ("Key" + std::to_string(pressed), record_.Take());
    }
    ASSERT_TRUE(::SetKeyboardState(before.data()));
}

TEST_F(InPlace, AnythingButSuccessFromTheContainerLeavesTheKeyToOthers) {
    const auto active_object = Query<IOleInPlaceActiveObject>(control_);
    MSG key{};
    for (const HRESULT answer : {S_FALSE, E_NOTIMPL, E_FAIL}) {
        site_->answers["Key0"] = answer;
        EXPECT_HRESULT(S_FALSE, active_object->TranslateAccelerator(&key));
    }
    record_.Clear();
}

}  // namespace
}  // namespace paylodge::test
