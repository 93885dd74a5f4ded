// A control made of every stock piece, drawing a frame and a name, to test the pieces with.
#pragma once

#include <windows.h>

#include <string_view>

#include "com/class_object.hpp"
#include "com/object_with_site.hpp"
#include "control/class_info.hpp"
#include "control/connection_points.hpp"
#include "control/data_object.hpp"
#include "control/gdi.hpp"
#include "control/in_place.hpp"
#include "control/object_safety.hpp"
#include "control/ole_object.hpp"
#include "control/persistence.hpp"
#include "control/property_pages.hpp"
#include "control/quick_activate.hpp"
#include "control/service_provider.hpp"
#include "control/view_object.hpp"
#include "paylodge.h"

namespace paylodge::test {

// {6E2A7E57-90A4-4E0B-8E0B-2C6E6B1D7F11}, registered nowhere.
inline constexpr CLSID kTestControlId = {0x6E2A7E57, 0x90A4, 0x4E0B, {0x8E, 0x0B, 0x2C, 0x6E, 0x6B, 0x1D, 0x7F, 0x11}};

class TestControl
    : public IPersistStreamInitImpl<TestControl>,
      public IOleControlImpl<TestControl>,
      public IOleObjectImpl<TestControl>,
      public IOleInPlaceActiveObjectImpl<TestControl>,
      public IViewObjectExImpl<TestControl>,
      public IOleInPlaceObjectWindowlessImpl<TestControl>,
      public IConnectionPointContainerImpl<TestControl>,
      public IConnectionPointImpl<TestControl, &DIID__IPaylodgeCtrlEvents>,
      public IObjectWithSiteImpl<TestControl>,
      public IServiceProviderImpl<TestControl>,
      public IPersistStorageImpl<TestControl>,
      public ISpecifyPropertyPagesImpl<TestControl>,
      public IQuickActivateImpl<TestControl>,
      public IDataObjectImpl<TestControl>,
      public IProvideClassInfo2Impl<&CLSID_PaylodgeCtrl, &DIID__IPaylodgeCtrlEvents, &LIBID_PAYLODGELib, 1, 0>,
      public IPropertyNotifySinkCP<TestControl>,
      public IObjectSafetyImpl<TestControl, INTERFACESAFE_FOR_UNTRUSTED_CALLER>,
      public CComCoClass<TestControl, &kTestControlId>,
      public CComControl<TestControl> {
  public:
    using Events = IConnectionPointImpl<TestControl, &DIID__IPaylodgeCtrlEvents>;
    using ConnectionPoints = ConnectionPointTable<Events, IPropertyNotifySinkCP<TestControl>>;
    using Row = InterfaceRow<TestControl>;
    static constexpr std::array kInterfaces = {
        Row::Of<IOleObject>(),
        Row::Of<IOleControl>(),
        Row::Of<IPersistStreamInit>(),
        Row::Of<IPersist, IPersistStreamInit>(),
        Row::Of<IPersistStorage>(),
        Row::Of<IOleInPlaceActiveObject>(),
        Row::Of<IOleInPlaceObjectWindowless>(),
        Row::Of<IOleInPlaceObject, IOleInPlaceObjectWindowless>(),
        Row::Of<IOleWindow, IOleInPlaceObjectWindowless>(),
        Row::Of<IViewObjectEx>(),
        Row::Of<IViewObject2, IViewObjectEx>(),
        Row::Of<IViewObject, IViewObjectEx>(),
        Row::Of<IConnectionPointContainer>(),
        Row::Of<IObjectWithSite>(),
        Row::Of<IServiceProvider>(),
        Row::Of<ISpecifyPropertyPages>(),
        Row::Of<IQuickActivate>(),
        Row::Of<IDataObject>(),
        Row::Of<IProvideClassInfo2>(),
        Row::Of<IProvideClassInfo, IProvideClassInfo2>(),
        Row::Of<IObjectSafety>(),
    };

    static constexpr DWORD kMiscStatus = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_CANTLINKINSIDE | OLEMISC_INSIDEOUT |
                                         OLEMISC_ACTIVATEWHENVISIBLE | OLEMISC_SETCLIENTSITEFIRST;
    [[nodiscard]] static DWORD MiscStatus() noexcept { return kMiscStatus; }

    HRESULT OnDraw(const DrawContext& context) override {
        constexpr std::string_view kText = "PaylodgeCtrl";
        const auto [dc, bounds] = context;
        const ClipToRectangle clip(dc, bounds);
        ::Rectangle(dc, bounds.left, bounds.top, bounds.right, bounds.bottom);
        ::SetTextAlign(dc, TA_CENTER | TA_BASELINE);
        ::TextOutA(dc, (bounds.left + bounds.right) / 2, (bounds.top + bounds.bottom) / 2, kText.data(),
                   static_cast<int>(kText.size()));
        last_bounds = bounds;
        ++draw_count;
        return draw_result;
    }

    RECTL last_bounds{};
    int draw_count = 0;
    HRESULT draw_result = S_OK;

  protected:
    ~TestControl() = default;
};

// Asks for an interface that the object has; null when it does not.
template <class Interface, class Object>
[[nodiscard]] ComPtr<Interface> Query(const ComPtr<Object>& object) {
    ComPtr<Interface> result;
    static_cast<void>(object->QueryInterface(__uuidof(Interface), result.ReceiveVoid()));
    return result;
}

// How many references there are to an object.
template <class Object>
[[nodiscard]] ULONG References(const ComPtr<Object>& object) {
    object->AddRef();
    return object->Release();
}

}  // namespace paylodge::test
