// The control through which the host talks to the page in its browser, and through which the page reaches the card
// reader.
#pragma once

#include <windows.h>

#include "bridge/event_proxy.hpp"
#include "bridge/misc_status.hpp"
#include "com/class_object.hpp"
#include "com/dispatch_impl.hpp"
#include "com/object_with_site.hpp"
#include "control/class_info.hpp"
#include "control/control_base.hpp"
#include "control/data_object.hpp"
#include "control/in_place.hpp"
#include "control/object_safety.hpp"
#include "control/ole_object.hpp"
#include "control/persistence.hpp"
#include "control/property_pages.hpp"
#include "control/quick_activate.hpp"
#include "control/service_provider.hpp"
#include "control/view_object.hpp"
#include "paylodge_methods.hpp"

namespace paylodge {

// It holds no data of its own beyond the control framework's: channels, the browser instance and the notification data
// belong to the process. Results are new strings that the caller owns; E_POINTER for a null out parameter. A failed
// allocation is thrown as a COM error (E_OUTOFMEMORY), except while a script is made and run: E_FAIL. Used on the
// host's user-interface thread. What each member does stands beside its implementation: channels in paylodge_ctrl.cpp,
// pushes in notifications.cpp, the card reader and the account services in card_reader.cpp.
class CPaylodgeCtrl
    : public IDispatchImpl<IPaylodgeCtrl10, &IID_IPaylodgeCtrl10, &LIBID_PAYLODGELib, 1, 0, CCustomTypeInfoHolder>,
      public IPersistStreamInitImpl<CPaylodgeCtrl>,
      public IOleControlImpl<CPaylodgeCtrl>,
      public IOleObjectImpl<CPaylodgeCtrl>,
      public IOleInPlaceActiveObjectImpl<CPaylodgeCtrl>,
      public IViewObjectExImpl<CPaylodgeCtrl>,
      public IOleInPlaceObjectWindowlessImpl<CPaylodgeCtrl>,
      public IConnectionPointContainerImpl<CPaylodgeCtrl>,
      public CProxy_IPaylodgeCtrlEvents<CPaylodgeCtrl>,
      public IObjectWithSiteImpl<CPaylodgeCtrl>,
      public IServiceProviderImpl<CPaylodgeCtrl>,
      public IPersistStorageImpl<CPaylodgeCtrl>,
      public ISpecifyPropertyPagesImpl<CPaylodgeCtrl>,
      public IQuickActivateImpl<CPaylodgeCtrl>,
      public IDataObjectImpl<CPaylodgeCtrl>,
      public IProvideClassInfo2Impl<&CLSID_PaylodgeCtrl, &DIID__IPaylodgeCtrlEvents, &LIBID_PAYLODGELib, 1, 0>,
      public IPropertyNotifySinkCP<CPaylodgeCtrl>,
      public IObjectSafetyImpl<CPaylodgeCtrl, INTERFACESAFE_FOR_UNTRUSTED_CALLER>,
      public CComCoClass<CPaylodgeCtrl, &CLSID_PaylodgeCtrl>,
      public CComControl<CPaylodgeCtrl> {
  public:
    using Row = InterfaceRow<CPaylodgeCtrl>;
    static constexpr std::array kInterfaces = {
        Row::Of<IPaylodgeCtrl10>(),
        Row::Of<IPaylodgeCtrl9>(),
        Row::Of<IPaylodgeCtrl8>(),
        Row::Of<IPaylodgeCtrl7>(),
        Row::Of<IPaylodgeCtrl6>(),
        Row::Of<IPaylodgeCtrl5>(),
        Row::Of<IPaylodgeCtrl4>(),
        Row::Of<IPaylodgeCtrl3>(),
        Row::Of<IPaylodgeCtrl2>(),
        Row::Of<IPaylodgeCtrl>(),
        Row::Of<IDispatch>(),
        Row::Of<IViewObjectEx>(),
        Row::Of<IViewObject2, IViewObjectEx>(),
        Row::Of<IViewObject, IViewObjectEx>(),
        Row::Of<IOleInPlaceObjectWindowless>(),
        Row::Of<IOleInPlaceObject, IOleInPlaceObjectWindowless>(),
        Row::Of<IOleWindow, IOleInPlaceObjectWindowless>(),
        Row::Of<IOleInPlaceActiveObject>(),
        Row::Of<IOleControl>(),
        Row::Of<IOleObject>(),
        Row::Of<IPersistStreamInit>(),
        Row::Of<IPersist, IPersistStreamInit>(),
        Row::Of<IConnectionPointContainer>(),
        Row::Of<ISpecifyPropertyPages>(),
        Row::Of<IQuickActivate>(),
        Row::Of<IPersistStorage>(),
        Row::Of<IDataObject>(),
        Row::Of<IProvideClassInfo2>(),
        Row::Of<IProvideClassInfo, IProvideClassInfo2>(),
        Row::Of<IObjectWithSite>(),
        Row::Of<IServiceProvider>(),
        Row::Of<IObjectSafety>(),
    };

    using ConnectionPoints =
        ConnectionPointTable<CProxy_IPaylodgeCtrlEvents<CPaylodgeCtrl>, IPropertyNotifySinkCP<CPaylodgeCtrl>>;

    [[nodiscard]] static constexpr DWORD MiscStatus() noexcept { return kControlMiscStatus; }

    // A rectangle with the control's name in the middle.
    HRESULT OnDraw(const DrawContext& context) override;

    // IPaylodgeCtrl
    STDMETHODIMP NotifyTransactionChanged(BSTR bstrTransInfo) override;
    STDMETHODIMP SubscribeToNotifications() override;
    STDMETHODIMP UnSubscribeFromNotifications() override;
    STDMETHODIMP SetReconFeeData(BSTR bstrFeeData) override;
    STDMETHODIMP SetReconBatchData(BSTR bstrBatchData) override;
    STDMETHODIMP SetReconPaymentData(BSTR paymentData, BSTR undepFundsStartDate,
                                     VARIANT_BOOL isUndepFundsAccntDefault) override;
    STDMETHODIMP get_LHTransactionNotificationData(BSTR* pVal) override;
    STDMETHODIMP put_LHTransactionNotificationData(BSTR newVal) override;
    STDMETHODIMP SetTransactionID(BSTR bstrTransactionID) override;

    // IPaylodgeCtrl2
    STDMETHODIMP setEInvoicedTransactionData(BSTR bstrEInvoicedTransactionData) override;
    STDMETHODIMP ProcessLHRequestData(BSTR bstrRequestStr, BSTR* bstrResponseStr) override;
    STDMETHODIMP SetCustomerListData(BSTR bstrCustomerData) override;

    // IPaylodgeCtrl3
    STDMETHODIMP SetItemListData(BSTR bstrItemData) override;

    // IPaylodgeCtrl4
    STDMETHODIMP SetCustomerData(BSTR bstrCustomerData) override;

    // IPaylodgeCtrl5
    STDMETHODIMP SubscribeToNotifications2(BSTR bstrFeature) override;
    STDMETHODIMP UnSubscribeFromNotifications2(BSTR bstrFeature) override;
    STDMETHODIMP SetChannelName(BSTR bstrFeature) override;

    // IPaylodgeCtrl6
    STDMETHODIMP SetCustomerSearchResult(BSTR bstrCustomerSearchResult) override;
    STDMETHODIMP SetLineItemsSearchResult(BSTR bstrLineItemsSearchResult) override;

    // IPaylodgeCtrl7
    STDMETHODIMP ConnectDevice() override;
    STDMETHODIMP StartEMV(BSTR bstrTransactionAmt) override;
    STDMETHODIMP EMVProcessorResult(BSTR* pVal) override;
    STDMETHODIMP EMVGetCardParameters(BSTR* pVal) override;
    STDMETHODIMP SendOnlineProcessResult(BSTR bstrProcessingRes) override;
    STDMETHODIMP EMVGetBatchData(BSTR* pVal) override;
    STDMETHODIMP DisconnectDevice() override;
    STDMETHODIMP InitializeSession() override;
    STDMETHODIMP ResetSession() override;
    STDMETHODIMP EMVIsDeviceConnected(VARIANT_BOOL* pVal) override;
    STDMETHODIMP isDeviceHere() override;
    STDMETHODIMP GetConnectionMode(BSTR* pVal) override;
    STDMETHODIMP ShowFinalConfirmationWindow() override;
    STDMETHODIMP HandleAidSelecttion() override;
    STDMETHODIMP CancelCheckCard() override;
    STDMETHODIMP DecodeTlvData(BSTR bstrData, BSTR bstrTags, BSTR* pVal) override;
    STDMETHODIMP GetEmvDeviceInfo() override;

    // IPaylodgeCtrl8
    STDMETHODIMP GetLHUserData(BSTR bstrData, BSTR* pVal) override;

    // IPaylodgeCtrl9
    STDMETHODIMP GetPaymentIdentityStatus(BSTR* pVal) override;
    STDMETHODIMP AuthenticateURL(BSTR url, BSTR* pAuthUrl) override;
    STDMETHODIMP isRealmMergeLinkingEnabled(BSTR* pVal) override;

    // IPaylodgeCtrl10
    STDMETHODIMP GetCardBasedToken(BSTR header, BSTR body, BSTR* pToken) override;
    STDMETHODIMP GetCardBasedToken2(INT useAuthorization, BSTR header, BSTR body, BSTR* pToken) override;
    STDMETHODIMP ExecuteJavaScript(BSTR bstrInfo, LONG isRebill, BSTR script) override;

  protected:
    CPaylodgeCtrl() = default;
    // Leaves the channels, so that no push reaches a control that is gone.
    ~CPaylodgeCtrl();
};

}  // namespace paylodge
