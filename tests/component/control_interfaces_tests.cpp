// Which interfaces the built control has, beside those of its own chain.

#include <gtest/gtest.h>
#include <ocidl.h>
#include <olectl.h>
#include <servprov.h>

#include <vector>

#include "com/object_safety_id.hpp"
#include "tests/component/control_under_test.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

struct NamedInterface {
    const char* name;
    IID id;
};

// With those that one of them extends.
const NamedInterface kStockInterfaces[] = {
    {"IUnknown", IID_IUnknown},
    {"IDispatch", IID_IDispatch},
    {"IPersist", IID_IPersist},
    {"IPersistStreamInit", IID_IPersistStreamInit},
    {"IPersistStorage", IID_IPersistStorage},
    {"IOleControl", IID_IOleControl},
    {"IOleObject", IID_IOleObject},
    {"IOleWindow", IID_IOleWindow},
    {"IOleInPlaceActiveObject", IID_IOleInPlaceActiveObject},
    {"IOleInPlaceObject", IID_IOleInPlaceObject},
    {"IOleInPlaceObjectWindowless", IID_IOleInPlaceObjectWindowless},
    {"IViewObject", IID_IViewObject},
    {"IViewObject2", IID_IViewObject2},
    {"IViewObjectEx", IID_IViewObjectEx},
    {"IConnectionPointContainer", IID_IConnectionPointContainer},
    {"IObjectWithSite", __uuidof(IObjectWithSite)},
    {"IServiceProvider", IID_IServiceProvider},
    {"ISpecifyPropertyPages", IID_ISpecifyPropertyPages},
    {"IQuickActivate", IID_IQuickActivate},
    {"IDataObject", IID_IDataObject},
    {"IProvideClassInfo", IID_IProvideClassInfo},
    {"IProvideClassInfo2", IID_IProvideClassInfo2},
    {"IObjectSafety", {0xCB5BDC81, 0x93C1, 0x11CF, {0x8F, 0x20, 0x00, 0x80, 0x5F, 0x2C, 0xD0, 0x64}}},
};

class ControlInterfaces : public ControlComponent {
  protected:
    template <class Interface>
    [[nodiscard]] ComPtr<Interface> Query() {
        ComPtr<Interface> found;
        EXPECT_HRESULT(S_OK, control->QueryInterface(__uuidof(Interface), found.ReceiveVoid()));
        return found;
    }
};

TEST_F(ControlInterfaces, AreAllOfOneObject) {
    const auto identity = Query<IUnknown>();
    for (const auto& [name, id] : kStockInterfaces) {
        ComPtr<IUnknown> found;
        ASSERT_HRESULT(S_OK, control->QueryInterface(id, found.ReceiveVoid())) << name;
        ComPtr<IUnknown> found_identity;
        EXPECT_HRESULT(S_OK, found->QueryInterface(IID_IUnknown, found_identity.ReceiveVoid())) << name;
        EXPECT_EQ(identity.Get(), found_identity.Get()) << name;
    }
}

TEST_F(ControlInterfaces, OthersAreRefused) {
    for (const IID& id : {IID_IPaylodge, kControlEvents, kControlClass, IID_IPropertyNotifySink, IID_IMarshal}) {
        void* found = &found;
        EXPECT_HRESULT(E_NOINTERFACE, control->QueryInterface(id, &found));
        EXPECT_EQ(nullptr, found);
    }
    EXPECT_HRESULT(E_POINTER, control->QueryInterface(IID_IUnknown, nullptr));
}

TEST_F(ControlInterfaces, MiscStatusIsThatOfAVisibleInsideOutControl) {
    DWORD status = 0;
    EXPECT_HRESULT(S_OK, Query<IOleObject>()->GetMiscStatus(DVASPECT_CONTENT, &status));
    EXPECT_EQ(131473U, status);
}

TEST_F(ControlInterfaces, SafetyIsForUntrustedCallersOnly) {
    constexpr DWORD kForUntrustedCaller = 1;
    constexpr DWORD kForUntrustedData = 2;
    const auto safety = Query<IObjectSafety>();
    DWORD supported = 7;
    DWORD enabled = 7;
    for (const IID& id : {IID_IDispatch, ControlInterfaceIds().back()}) {
        EXPECT_HRESULT(S_OK, safety->GetInterfaceSafetyOptions(id, &supported, &enabled));
        EXPECT_EQ(kForUntrustedCaller, supported);
        EXPECT_EQ(0U, enabled);
    }
    EXPECT_HRESULT(E_FAIL, safety->SetInterfaceSafetyOptions(IID_IDispatch, kForUntrustedData, kForUntrustedData));
    EXPECT_HRESULT(E_FAIL, safety->SetInterfaceSafetyOptions(IID_IDispatch, kForUntrustedCaller | kForUntrustedData,
                                                             kForUntrustedCaller));
    EXPECT_HRESULT(S_OK, safety->SetInterfaceSafetyOptions(IID_IDispatch, kForUntrustedCaller, kForUntrustedCaller));
    EXPECT_HRESULT(S_OK, safety->GetInterfaceSafetyOptions(IID_IDispatch, &supported, &enabled));
    EXPECT_EQ(kForUntrustedCaller, enabled);
}

TEST_F(ControlInterfaces, ConnectionPointsAreForItsEventsAndForPropertyChanges) {
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_HRESULT(S_OK, Query<IConnectionPointContainer>()->EnumConnectionPoints(points.Receive()));
    for (const IID& expected : {kControlEvents, IID_IPropertyNotifySink}) {
        ComPtr<IConnectionPoint> point;
        ASSERT_HRESULT(S_OK, points->Next(1, point.Receive(), nullptr));
        IID id{};
        EXPECT_HRESULT(S_OK, point->GetConnectionInterface(&id));
        EXPECT_TRUE(IsEqualIID(expected, id));
    }
    ComPtr<IConnectionPoint> none;
    EXPECT_HRESULT(S_FALSE, points->Next(1, none.Receive(), nullptr));
    EXPECT_FALSE(none);
}

TEST_F(ControlInterfaces, ConnectionPointForAnythingElseIsRefused) {
    ComPtr<IConnectionPoint> none;
    EXPECT_HRESULT(CONNECT_E_NOCONNECTION,
                   Query<IConnectionPointContainer>()->FindConnectionPoint(IID_IPaylodgeCtrl, none.Receive()));
    EXPECT_FALSE(none);
}

TEST_F(ControlInterfaces, ClassInformationNamesTheClassAndItsEvents) {
    const auto info = Query<IProvideClassInfo2>();
    ComPtr<ITypeInfo> type;
    ASSERT_HRESULT(S_OK, info->GetClassInfo(type.Receive()));
    TYPEATTR* attributes = nullptr;
    ASSERT_HRESULT(S_OK, type->GetTypeAttr(&attributes));
    EXPECT_TRUE(IsEqualGUID(kControlClass, attributes->guid));
    type->ReleaseTypeAttr(attributes);
    GUID events{};
    EXPECT_HRESULT(S_OK, info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events));
    EXPECT_TRUE(IsEqualGUID(kControlEvents, events));
}

}  // namespace
}  // namespace paylodge::test
