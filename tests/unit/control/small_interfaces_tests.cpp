// Interfaces of a few methods: quick activation, class information, object safety, property pages, services.

#include <gtest/gtest.h>

#include "com/bstr.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/recording_container.hpp"
#include "tests/unit/control/test_control.hpp"

namespace paylodge::test {
namespace {

class SmallInterfaces : public ::testing::Test {
  protected:
    void TearDown() override {
        EXPECT_EQ(1u, References(control_));
        control_.Reset();
        site_.Reset();
        EXPECT_EQ(modules_before_, Module::References());
    }

    const LONG modules_before_ = Module::References();
    Record record_;
    ComPtr<ComObject<RecordingSite>> site_ = ComObject<RecordingSite>::Create(record_);
    ComPtr<ComObject<TestControl>> control_ = ComObject<TestControl>::Create();
};

TEST_F(SmallInterfaces, AnswerForAllInterfacesTheyExtend) {
    const auto unknown = Query<IUnknown>(control_);
    const IID ids[] = {IID_IPersist,          IID_IPersistStreamInit, IID_IPersistStorage,
                       IID_IOleWindow,        IID_IOleInPlaceObject,  IID_IOleInPlaceObjectWindowless,
                       IID_IViewObject,       IID_IViewObject2,       IID_IViewObjectEx,
                       IID_IProvideClassInfo, IID_IProvideClassInfo2, IID_IOleInPlaceActiveObject};
    for (const IID& id : ids) {
        ComPtr<IUnknown> found;
        ASSERT_HRESULT(S_OK, unknown->QueryInterface(id, found.ReceiveVoid()));
        EXPECT_EQ(unknown.Get(), Query<IUnknown>(found).Get());
    }
}

class QuickActivation : public SmallInterfaces {
  protected:
    void SetUp() override {
        container_.cbSize = sizeof container_;
        result_.cbSize = sizeof result_;
    }
    HRESULT Activate() { return Query<IQuickActivate>(control_)->QuickActivate(&container_, &result_); }

    QACONTAINER container_{};
    QACONTROL result_{};
};

TEST_F(QuickActivation, ConnectsEverythingAtOnce) {
    const auto event_sink = ComObject<RecordingSink>::Create(record_, "event", DIID__IPaylodgeCtrlEvents);
    const auto property_sink = ComObject<RecordingSink>::Create(record_, "property", IID_IPropertyNotifySink);
    container_.pClientSite = site_.Get();
    container_.pAdviseSink = site_.Get();
    container_.pUnkEventSink = event_sink.Get();
    // Only its presence matters here: nothing is called on it.
    container_.pPropertyNotifySink = reinterpret_cast<IPropertyNotifySink*>(property_sink.Get());
    EXPECT_HRESULT(S_OK, Activate());
    EXPECT_EQ(sizeof result_, result_.cbSize);
    EXPECT_EQ(131473u, result_.dwMiscStatus);
    EXPECT_EQ(static_cast<DWORD>(VIEWSTATUS_OPAQUE), result_.dwViewStatus);
    EXPECT_EQ(0u, result_.dwPointerActivationPolicy);
    EXPECT_NE(0u, result_.dwEventCookie);
    EXPECT_NE(0u, result_.dwPropNotifyCookie);

    RaiseEvent(static_cast<TestControl::Events&>(*control_.Get()).Point(), 5, {});
    EXPECT_EQ("event5", record_.Take());
    ComPtr<IAdviseSink> sink;
    EXPECT_HRESULT(S_OK, Query<IViewObjectEx>(control_)->GetAdvise(nullptr, nullptr, sink.Receive()));
    EXPECT_EQ(static_cast<IAdviseSink*>(site_.Get()), sink.Get());
    ComPtr<IOleClientSite> client_site;
    EXPECT_HRESULT(S_OK, Query<IOleObject>(control_)->GetClientSite(client_site.Receive()));
    EXPECT_EQ(static_cast<IOleClientSite*>(site_.Get()), client_site.Get());
}

TEST_F(QuickActivation, NeedsNoSinks) {
    EXPECT_HRESULT(S_OK, Activate());
    EXPECT_EQ(131473u, result_.dwMiscStatus);
    EXPECT_EQ(0u, result_.dwEventCookie);
    EXPECT_EQ(0u, result_.dwPropNotifyCookie);
}

TEST_F(QuickActivation, ReportsASinkThatDoesNotFit) {
    container_.pUnkEventSink = static_cast<IOleClientSite*>(site_.Get());
    EXPECT_HRESULT(CONNECT_E_CANNOTCONNECT, Activate());
    EXPECT_EQ(0u, result_.dwEventCookie);
}

TEST_F(QuickActivation, EndsAtTheFirstSinkThatDoesNotFit) {
    const auto event_sink = ComObject<RecordingSink>::Create(record_, "event", DIID__IPaylodgeCtrlEvents);
    // A sink of events is none of property changes.
    container_.pPropertyNotifySink = reinterpret_cast<IPropertyNotifySink*>(event_sink.Get());
    container_.pUnkEventSink = event_sink.Get();
    EXPECT_HRESULT(CONNECT_E_CANNOTCONNECT, Activate());
    EXPECT_EQ(0u, result_.dwPropNotifyCookie);
    EXPECT_EQ(0u, result_.dwEventCookie);
    EXPECT_EQ(1u, References(event_sink));
    EXPECT_EQ(131473u, result_.dwMiscStatus);
}

TEST_F(QuickActivation, ReplacesTheSiteAndTheViewSink) {
    container_.pClientSite = site_.Get();
    container_.pAdviseSink = site_.Get();
    EXPECT_HRESULT(S_OK, Activate());
    container_.pClientSite = nullptr;
    container_.pAdviseSink = nullptr;
    EXPECT_HRESULT(S_OK, Activate());
    ComPtr<IOleClientSite> client_site;
    EXPECT_HRESULT(S_OK, Query<IOleObject>(control_)->GetClientSite(client_site.Receive()));
    EXPECT_FALSE(client_site);
    ComPtr<IAdviseSink> sink;
    EXPECT_HRESULT(S_OK, Query<IViewObjectEx>(control_)->GetAdvise(nullptr, nullptr, sink.Receive()));
    EXPECT_TRUE(sink) << "a container that brings none leaves the one that is there";
}

TEST_F(QuickActivation, ChecksItsStructures) {
    const auto quick = Query<IQuickActivate>(control_);
    EXPECT_HRESULT(E_POINTER, quick->QuickActivate(nullptr, &result_));
    EXPECT_HRESULT(E_POINTER, quick->QuickActivate(&container_, nullptr));
    result_.cbSize = 4;
    EXPECT_HRESULT(E_INVALIDARG, Activate());
    result_.cbSize = sizeof result_;
    container_.cbSize = 0;
    EXPECT_HRESULT(E_INVALIDARG, Activate());
}

TEST_F(QuickActivation, SetsTheExtent) {
    const auto quick = Query<IQuickActivate>(control_);
    SIZEL size{11, 22};
    EXPECT_HRESULT(S_OK, quick->SetContentExtent(&size));
    size = {};
    EXPECT_HRESULT(S_OK, quick->GetContentExtent(&size));
    EXPECT_EQ(11, size.cx);
    EXPECT_EQ(22, size.cy);
    EXPECT_HRESULT(E_POINTER, quick->SetContentExtent(nullptr));
    EXPECT_HRESULT(E_POINTER, quick->GetContentExtent(nullptr));
}

TEST_F(SmallInterfaces, ClassInformationIsTheCoclass) {
    const auto info = Query<IProvideClassInfo2>(control_);
    ComPtr<ITypeInfo> type;
    ASSERT_HRESULT(S_OK, info->GetClassInfo(type.Receive()));
    TYPEATTR* attributes = nullptr;
    ASSERT_HRESULT(S_OK, type->GetTypeAttr(&attributes));
    EXPECT_EQ(TKIND_COCLASS, attributes->typekind);
    EXPECT_TRUE(IsEqualGUID(CLSID_PaylodgeCtrl, attributes->guid));
    type->ReleaseTypeAttr(attributes);
    EXPECT_HRESULT(E_POINTER, info->GetClassInfo(nullptr));
}

TEST_F(SmallInterfaces, ClassInformationNamesTheEvents) {
    const auto info = Query<IProvideClassInfo2>(control_);
    GUID id{};
    EXPECT_HRESULT(S_OK, info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &id));
    EXPECT_TRUE(IsEqualGUID(DIID__IPaylodgeCtrlEvents, id));
    EXPECT_HRESULT(E_INVALIDARG, info->GetGUID(0, &id));
    EXPECT_TRUE(IsEqualGUID(GUID_NULL, id));
    EXPECT_HRESULT(E_POINTER, info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, nullptr));
}

TEST_F(SmallInterfaces, SafetyOptionsChangeWhereTheMaskSaysSo) {
    const auto safety = Query<IObjectSafety>(control_);
    const auto enabled = [&safety] {
        DWORD supported = 0;
        DWORD options = 99;
        EXPECT_HRESULT(S_OK, safety->GetInterfaceSafetyOptions(IID_IOleObject, &supported, &options));
        EXPECT_EQ(static_cast<DWORD>(INTERFACESAFE_FOR_UNTRUSTED_CALLER), supported);
        return options;
    };
    EXPECT_EQ(0u, enabled());
    EXPECT_HRESULT(S_OK, safety->SetInterfaceSafetyOptions(IID_IOleObject, 1, 1));
    EXPECT_EQ(1u, enabled());
    EXPECT_HRESULT(S_OK, safety->SetInterfaceSafetyOptions(IID_IOleObject, 0, 0)) << "a mask of nothing";
    EXPECT_EQ(1u, enabled());
    EXPECT_HRESULT(S_OK, safety->SetInterfaceSafetyOptions(IID_IOleObject, 1, 2)) << "an option outside the mask";
    EXPECT_EQ(0u, enabled());
}

TEST_F(SmallInterfaces, SafetyOptionsThatAreNotKnownAreRefused) {
    const auto safety = Query<IObjectSafety>(control_);
    EXPECT_HRESULT(E_FAIL, safety->SetInterfaceSafetyOptions(IID_IOleObject, INTERFACESAFE_FOR_UNTRUSTED_DATA, 0));
    EXPECT_HRESULT(E_NOINTERFACE, safety->SetInterfaceSafetyOptions(IID_IStream, 1, 1));
    DWORD supported = 9;
    DWORD enabled = 9;
    EXPECT_HRESULT(E_NOINTERFACE, safety->GetInterfaceSafetyOptions(IID_IStream, &supported, &enabled));
    EXPECT_EQ(0u, supported);
    EXPECT_EQ(0u, enabled);
    EXPECT_HRESULT(E_POINTER, safety->GetInterfaceSafetyOptions(IID_IOleObject, nullptr, &enabled));
    EXPECT_HRESULT(E_POINTER, safety->GetInterfaceSafetyOptions(IID_IOleObject, &supported, nullptr));
}

TEST_F(SmallInterfaces, ThereAreNoPropertyPages) {
    const auto pages = Query<ISpecifyPropertyPages>(control_);
    CAUUID list{9, nullptr};
    EXPECT_HRESULT(S_OK, pages->GetPages(&list));
    EXPECT_EQ(0u, list.cElems);
    EXPECT_EQ(nullptr, list.pElems);
    EXPECT_HRESULT(E_POINTER, pages->GetPages(nullptr));
}

TEST_F(SmallInterfaces, ServicesAreThoseOfTheHost) {
    const auto services = Query<IServiceProvider>(control_);
    void* found = &found;
    EXPECT_HRESULT(E_NOINTERFACE, services->QueryService(IID_IOleClientSite, IID_IOleClientSite, &found));
    EXPECT_EQ(nullptr, found);
    EXPECT_HRESULT(E_POINTER, services->QueryService(IID_IOleClientSite, IID_IOleClientSite, nullptr));

    EXPECT_HRESULT(S_OK, Query<IOleObject>(control_)->SetClientSite(site_.Get()));
    ComPtr<IOleControlSite> service;
    EXPECT_HRESULT(S_OK, services->QueryService(CLSID_PaylodgeCtrl, IID_IOleControlSite, service.ReceiveVoid()));
    EXPECT_EQ("QueryService", record_.Take());
    EXPECT_TRUE(IsEqualGUID(CLSID_PaylodgeCtrl, site_->last_service));
}

TEST_F(SmallInterfaces, ServicesAreAskedOfTheBrowserFirst) {
    Record browser_record;
    const auto browser = ComObject<RecordingSite>::Create(browser_record);
    EXPECT_HRESULT(S_OK, Query<IOleObject>(control_)->SetClientSite(site_.Get()));
    EXPECT_HRESULT(S_OK, Query<IObjectWithSite>(control_)->SetSite(static_cast<IOleClientSite*>(browser.Get())));
    ComPtr<IOleControlSite> service;
    EXPECT_HRESULT(S_OK, Query<IServiceProvider>(control_)->QueryService(CLSID_PaylodgeCtrl, IID_IOleControlSite,
                                                                         service.ReceiveVoid()));
    EXPECT_EQ("QueryService", browser_record.Take());
    EXPECT_EQ("", record_.Take());
    EXPECT_HRESULT(S_OK, Query<IObjectWithSite>(control_)->SetSite(nullptr));
}

}  // namespace
}  // namespace paylodge::test
