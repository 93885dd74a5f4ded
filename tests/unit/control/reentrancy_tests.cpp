// What a container may do from within the calls that it gets: deactivate its control, show it, take its site away,
// release it.

#include <gtest/gtest.h>

#include "tests/support/hresult.hpp"
#include "tests/unit/control/in_place_fixture.hpp"

namespace paylodge::test {
namespace {

TEST_F(InPlace, MayBeDeactivatedFromWithinItsActivation) {
    for (const char* const call : {"OnInPlaceActivate", "GetWindowContext"}) {
        record_.reactions = {{call, [this] { in_place_->InPlaceDeactivate(); }}};
        EXPECT_HRESULT(E_FAIL, Do(OLEIVERB_SHOW)) << call;
        EXPECT_EQ(nullptr, ChildWindow()) << call;
    }
    record_.reactions = {{"OnUIActivate", [this] { in_place_->InPlaceDeactivate(); }}};
    static_cast<void>(Do(OLEIVERB_UIACTIVATE));
    EXPECT_EQ(nullptr, ChildWindow());
    EXPECT_FALSE(site_->frame->active_object);
    record_.reactions.clear();
    record_.Clear();
    ShowControl();
}

TEST_F(InPlace, MayBeReleasedFromWithinItsCalls) {
    ShowControl();
    ::SetFocus(ControlWindow());
    const HWND window = ControlWindow();
    object_.Reset();
    in_place_.Reset();
    record_.reactions["OnFocusLost"] = [this] { control_.Reset(); };
    ::SetFocus(site_->parent);
    EXPECT_FALSE(::IsWindow(window));
}

// Each call of the container that ends an activation releases the control's last reference.
class LastReference : public InPlace {
  protected:
    // The control is gone when the verb or method returns, and nothing of it was used afterwards.
    template <class Method>
    void ExpectReleaseAt(const char* call, const Method& method) {
        ASSERT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
        const HWND window = ControlWindow();
        IOleObject* const object = object_.Detach();
        IOleInPlaceObjectWindowless* const in_place = in_place_.Detach();
        int times = 0;
        record_.reactions[call] = [&, object, in_place] {
            ASSERT_EQ(1, ++times);
            site_->frame->active_object.Reset();
            control_.Reset();
            object->Release();
            in_place->Release();
        };
        method(*object, *in_place);
        EXPECT_EQ(1, times) << call;
        record_.reactions.clear();
        EXPECT_FALSE(::IsWindow(window));
        EXPECT_EQ(1, Module::References() - modules_before_ - 1) << "site and frame alone are left";
    }

    // The same for a control that is only shown, and what its window is sent.
    template <class Send>
    void ExpectReleaseWhileShownAt(const char* call, const Send& send) {
        ShowControl();
        const HWND window = ControlWindow();
        object_.Reset();
        in_place_.Reset();
        int times = 0;
        record_.reactions[call] = [&] {
            ASSERT_EQ(1, ++times);
            control_.Reset();
        };
        send(window);
        EXPECT_EQ(1, times);
        record_.reactions.clear();
        // The frame may have been given a reference after that.
        site_->frame->active_object.Reset();
        EXPECT_FALSE(::IsWindow(window));
        EXPECT_EQ(1, Module::References() - modules_before_ - 1) << "site and frame alone are left";
        record_.Clear();
    }
};

TEST_F(LastReference, GoesWhileTheUserInterfaceIsDeactivated) {
    ExpectReleaseAt("OnUIDeactivate", [](IOleObject&, IOleInPlaceObjectWindowless& in_place) {
        EXPECT_HRESULT(S_OK, in_place.UIDeactivate());
    });
}

TEST_F(LastReference, GoesWhileTheControlIsHidden) {
    ExpectReleaseAt("OnUIDeactivate", [this](IOleObject& object, IOleInPlaceObjectWindowless&) {
        EXPECT_HRESULT(S_OK, object.DoVerb(OLEIVERB_HIDE, nullptr, site_.Get(), 0, site_->parent, nullptr));
    });
}

TEST_F(LastReference, GoesWhileTheControlIsDeactivated) {
    ExpectReleaseAt("OnInPlaceDeactivate", [](IOleObject&, IOleInPlaceObjectWindowless& in_place) {
        EXPECT_HRESULT(S_OK, in_place.InPlaceDeactivate());
    });
}

TEST_F(LastReference, GoesWhileTheControlIsClosed) {
    ExpectReleaseAt("OnInPlaceDeactivate", [](IOleObject& object, IOleInPlaceObjectWindowless&) {
        EXPECT_HRESULT(S_OK, object.Close(OLECLOSE_NOSAVE));
    });
}

TEST_F(LastReference, GoesWhileAClickAsksForTheUserMode) {
    ExpectReleaseWhileShownAt("Ambient-709", [](HWND window) { ::SendMessageW(window, WM_MOUSEACTIVATE, 0, 0); });
}

TEST_F(LastReference, GoesWhileAClickActivatesTheUserInterface) {
    for (const char* const call : {"OnUIActivate", "NoBorderSpace", "OnFocus"}) {
        SCOPED_TRACE(call);
        ExpectReleaseWhileShownAt(call, [](HWND window) { ::SendMessageW(window, WM_MOUSEACTIVATE, 0, 0); });
        control_ = ComObject<TestControl>::Create();
        object_ = Query<IOleObject>(control_);
        in_place_ = Query<IOleInPlaceObjectWindowless>(control_);
        ASSERT_HRESULT(S_OK, object_->SetClientSite(site_.Get()));
    }
}

TEST_F(LastReference, GoesWhileAVerbActivatesTheUserInterface) {
    for (const char* const call :
         {"CanInPlaceActivate", "OnInPlaceActivate", "GetWindowContext", "ShowObject", "OnUIActivate", "OnFocus"}) {
        SCOPED_TRACE(call);
        auto control = ComObject<TestControl>::Create();
        IOleObject* const object = Query<IOleObject>(control).Detach();
        ASSERT_HRESULT(S_OK, object->SetClientSite(site_.Get()));
        const LONG modules = Module::References();
        int times = 0;
        record_.reactions[call] = [&] {
            ASSERT_EQ(1, ++times);
            control.Reset();
            object->Release();
            site_->frame->active_object.Reset();
        };
        static_cast<void>(object->DoVerb(OLEIVERB_UIACTIVATE, nullptr, site_.Get(), 0, site_->parent, nullptr));
        EXPECT_EQ(1, times);
        record_.reactions.clear();
        site_->frame->active_object.Reset();
        EXPECT_EQ(modules - 1, Module::References()) << "the control is gone";
        EXPECT_EQ(nullptr, ChildWindow());
        record_.Clear();
    }
}

TEST_F(LastReference, GoesWhileTheFocusIsLost) {
    ShowControl();
    ::SetFocus(ControlWindow());
    object_.Reset();
    in_place_.Reset();
    record_.Clear();
    control_.Reset();
    EXPECT_EQ("", record_.Take()) << "a control that goes away does not call its site";
    EXPECT_EQ(nullptr, ChildWindow());
}

// Sinks and what they are notified of by a control without a window.
class ReleasedBySink : public ::testing::Test {
  protected:
    void TearDown() override {
        site_.Reset();
        EXPECT_EQ(modules_before_, Module::References());
    }

    // Releases the control when the call comes; what `notify` does is over then, and the control is gone.
    template <class Notify>
    void ExpectReleaseAt(const char* call, const Notify& notify) {
        IOleObject* const object = control_.Detach();
        int times = 0;
        record_.reactions[call] = [&] {
            ASSERT_EQ(1, ++times);
            object->Release();
        };
        notify(*object);
        EXPECT_EQ(1, times) << call;
        record_.reactions.clear();
        EXPECT_EQ(modules_before_ + kSiteAndFrame, Module::References()) << call;
    }

    static constexpr LONG kSiteAndFrame = 2;
    const LONG modules_before_ = Module::References();
    Record record_;
    ComPtr<ComObject<RecordingSite>> site_ = ComObject<RecordingSite>::Create(record_);
    ComPtr<IOleObject> control_ = Query<IOleObject>(ComObject<TestControl>::Create());
};

TEST_F(ReleasedBySink, GoesWhileADataSinkIsNotifiedOfANewSize) {
    DWORD cookie = 0;
    FORMATETC format = PictureFormat();
    ASSERT_HRESULT(S_OK, Query<IDataObject>(control_)->DAdvise(&format, ADVF_NODATA, site_.Get(), &cookie));
    ASSERT_HRESULT(S_OK, Query<IViewObjectEx>(control_)->SetAdvise(DVASPECT_CONTENT, 0, site_.Get()));
    ExpectReleaseAt("OnDataChange", [](IOleObject& control) {
        SIZEL size{7, 8};
        EXPECT_HRESULT(S_OK, control.SetExtent(DVASPECT_CONTENT, &size));
    });
    EXPECT_EQ("OnDataChange OnViewChange(1,-1)", record_.Take()) << "the others are notified all the same";
}

TEST_F(ReleasedBySink, GoesWhileAViewSinkIsNotified) {
    ASSERT_HRESULT(S_OK, Query<IViewObjectEx>(control_)->SetAdvise(DVASPECT_CONTENT, 0, site_.Get()));
    ExpectReleaseAt("OnViewChange(1,-1)", [](IOleObject& control) {
        SIZEL size{7, 8};
        EXPECT_HRESULT(S_OK, control.SetExtent(DVASPECT_CONTENT, &size));
    });
}

TEST_F(ReleasedBySink, GoesWhileAViewSinkIsNotifiedAtOnce) {
    IViewObjectEx* const view = Query<IViewObjectEx>(control_).Get();
    ExpectReleaseAt("OnViewChange(1,-1)", [&](IOleObject&) {
        EXPECT_HRESULT(S_OK, view->SetAdvise(DVASPECT_CONTENT, ADVF_PRIMEFIRST, site_.Get()));
    });
}

TEST_F(ReleasedBySink, GoesWhileItsOldViewSinkDoes) {
    auto old_sink = ComObject<SiteWithLastWord>::Create(record_);
    ASSERT_HRESULT(S_OK, Query<IViewObjectEx>(control_)->SetAdvise(DVASPECT_CONTENT, 0, old_sink.Get()));
    IOleObject* const object = control_.Detach();
    IViewObjectEx* const view = Query<IViewObjectEx>(ComPtr<IOleObject>(object)).Get();
    old_sink->on_last_release = [object] { object->Release(); };
    old_sink.Reset();
    EXPECT_HRESULT(S_OK, view->SetAdvise(DVASPECT_CONTENT, ADVF_PRIMEFIRST, site_.Get()));
    EXPECT_EQ("OnViewChange(1,-1)", record_.Take());
    EXPECT_EQ(modules_before_ + kSiteAndFrame, Module::References());
}

TEST_F(ReleasedBySink, GoesWhileSinksAreNotifiedThatItWasSaved) {
    DWORD cookie = 0;
    ASSERT_HRESULT(S_OK, control_->Advise(site_.Get(), &cookie));
    IPersistStorage* const storage = Query<IPersistStorage>(control_).Get();
    ExpectReleaseAt("OnSave", [storage](IOleObject&) { EXPECT_HRESULT(S_OK, storage->SaveCompleted(nullptr)); });
}

TEST_F(ReleasedBySink, GoesWhileItIsClosed) {
    DWORD cookie = 0;
    ASSERT_HRESULT(S_OK, control_->Advise(site_.Get(), &cookie));
    ASSERT_HRESULT(S_OK, Query<IViewObjectEx>(control_)->SetAdvise(DVASPECT_CONTENT, 0, site_.Get()));
    ExpectReleaseAt("OnClose", [](IOleObject& control) { EXPECT_HRESULT(S_OK, control.Close(OLECLOSE_NOSAVE)); });
}

TEST_F(ReleasedBySink, GoesWhileItsSiteSavesIt) {
    auto dirty_control = ComObject<TestControl>::Create();
    dirty_control->SetControlDirty(true);
    control_ = Query<IOleObject>(dirty_control);
    dirty_control.Reset();
    DWORD cookie = 0;
    ASSERT_HRESULT(S_OK, control_->Advise(site_.Get(), &cookie));
    ASSERT_HRESULT(S_OK, control_->SetClientSite(site_.Get()));
    ExpectReleaseAt("SaveObject",
                    [](IOleObject& control) { EXPECT_HRESULT(S_OK, control.Close(OLECLOSE_SAVEIFDIRTY)); });
    EXPECT_EQ("SaveObject OnSave OnClose", record_.Take());
}

// A sink that releases its control when it is asked for its interface.
class HastySink : public RecordingSink {
  public:
    using RecordingSink::RecordingSink;
    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (IUnknown* const released = std::exchange(control, nullptr)) {
            released->Release();
        }
        return QueryInterfaceOf(static_cast<RecordingSink*>(this), id, object);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }

    IUnknown* control = nullptr;
    ULONG references = 1;
};

TEST_F(ReleasedBySink, GoesWhileASinkIsAdvised) {
    HastySink sink(record_, "event", DIID__IPaylodgeCtrlEvents);
    ComPtr<IConnectionPoint> found;
    ASSERT_HRESULT(S_OK, Query<IConnectionPointContainer>(control_)->FindConnectionPoint(DIID__IPaylodgeCtrlEvents,
                                                                                         found.Receive()));
    control_.Reset();
    IConnectionPoint* const point = found.Detach();
    sink.control = point;
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, point->Advise(&sink, &cookie));
    EXPECT_NE(0u, cookie);
    EXPECT_EQ(1u, sink.references) << "the sink was released with the control";
}

TEST_F(ReleasedBySink, GoesWhileItIsActivatedQuickly) {
    HastySink property_sink(record_, "property", IID_IPropertyNotifySink);
    HastySink event_sink(record_, "event", DIID__IPaylodgeCtrlEvents);
    IQuickActivate* const activation = Query<IQuickActivate>(control_).Get();
    property_sink.control = control_.Detach();
    QACONTAINER container{};
    container.cbSize = sizeof container;
    container.pPropertyNotifySink = reinterpret_cast<IPropertyNotifySink*>(static_cast<IUnknown*>(&property_sink));
    container.pUnkEventSink = &event_sink;
    QACONTROL result{};
    result.cbSize = sizeof result;
    EXPECT_HRESULT(S_OK, activation->QuickActivate(&container, &result));
    EXPECT_NE(0u, result.dwEventCookie);
    EXPECT_EQ(1u, property_sink.references);
    EXPECT_EQ(1u, event_sink.references);
}

// The site goes from within each of the calls that it gets; it is released once nothing of it is in use.
class SiteTakenAway : public InPlace {
  protected:
    void TakeAwayAt(const char* call) {
        record_.reactions[call] = [this] { EXPECT_HRESULT(S_OK, object_->SetClientSite(nullptr)); };
    }
    void GiveBack() {
        record_.reactions.clear();
        EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
        EXPECT_EQ(1u, References(site_));
        EXPECT_HRESULT(S_OK, object_->SetClientSite(site_.Get()));
        record_.Clear();
    }
};

TEST_F(SiteTakenAway, FromWithinAnActivation) {
    for (const char* const call : {"CanInPlaceActivate", "OnInPlaceActivate", "GetWindowContext", "ShowObject",
                                   "OnUIActivate", "ActiveObject", "OnFocus"}) {
        SCOPED_TRACE(call);
        TakeAwayAt(call);
        EXPECT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
        EXPECT_NE(nullptr, ControlWindow()) << "the activation has a site of its own";
        GiveBack();
    }
}

TEST_F(SiteTakenAway, FromWithinADeactivation) {
    for (const char* const call : {"NoActiveObject", "OnUIDeactivate", "OnFocusLost", "OnInPlaceDeactivate"}) {
        SCOPED_TRACE(call);
        ASSERT_HRESULT(S_OK, Do(OLEIVERB_UIACTIVATE));
        TakeAwayAt(call);
        EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
        EXPECT_EQ(nullptr, ChildWindow());
        GiveBack();
    }
}

TEST_F(SiteTakenAway, FromWithinAClickAndAKey) {
    ShowControl();
    TakeAwayAt("Ambient-709");
    EXPECT_EQ(MA_ACTIVATE, ::SendMessageW(ControlWindow(), WM_MOUSEACTIVATE, 0, 0));
    GiveBack();
    ShowControl();
    TakeAwayAt("Key0");
    MSG key{};
    EXPECT_HRESULT(S_OK, Query<IOleInPlaceActiveObject>(control_)->TranslateAccelerator(&key));
    GiveBack();
}

TEST_F(SiteTakenAway, FromWithinASave) {
    DWORD cookie = 0;
    EXPECT_HRESULT(S_OK, object_->Advise(site_.Get(), &cookie));
    for (const char* const call : {"SaveObject", "OnSave", "OnClose"}) {
        SCOPED_TRACE(call);
        control_->SetControlDirty(true);
        TakeAwayAt(call);
        EXPECT_HRESULT(S_OK, object_->Close(OLECLOSE_SAVEIFDIRTY));
        EXPECT_EQ("SaveObject OnSave OnClose", record_.Take());
        record_.reactions.clear();
        EXPECT_HRESULT(S_OK, object_->SetClientSite(site_.Get()));
    }
    EXPECT_HRESULT(S_OK, object_->Unadvise(cookie));
}

TEST_F(InPlace, MayBeShownFromWithinItsActivation) {
    for (const char* const call : {"OnInPlaceActivate", "GetWindowContext"}) {
        SCOPED_TRACE(call);
        int times = 0;
        record_.reactions = {{call, [&] {
                                  if (++times == 1) {
                                      EXPECT_HRESULT(S_OK, Do(OLEIVERB_SHOW));
                                  }
                              }}};
        EXPECT_HRESULT(S_OK, Do(OLEIVERB_SHOW));
        EXPECT_EQ(ControlWindow(), ChildWindow());
        EXPECT_EQ(nullptr, ::GetWindow(ChildWindow(), GW_HWNDNEXT)) << "there is one window";
        EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
        EXPECT_EQ(nullptr, ChildWindow());
    }
}

TEST_F(InPlace, UserInterfaceEndedFromWithinItsActivationStaysEnded) {
    for (const char* const call : {"OnUIActivate", "ActiveObject"}) {
        SCOPED_TRACE(call);
        ShowControl();
        ::SetFocus(site_->parent);
        record_.Clear();
        record_.reactions = {{call, [this] { EXPECT_HRESULT(S_OK, in_place_->UIDeactivate()); }}};
        ::SendMessageW(ControlWindow(), WM_MOUSEACTIVATE, 0, 0);
        record_.reactions.clear();
        EXPECT_FALSE(site_->frame->active_object);
        EXPECT_EQ(site_->parent, ::GetFocus());
        EXPECT_HRESULT(S_OK, in_place_->UIDeactivate());
        EXPECT_HRESULT(S_OK, in_place_->InPlaceDeactivate());
        record_.Clear();
    }
}

}  // namespace
}  // namespace paylodge::test
