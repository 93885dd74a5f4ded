#include "tests/component/control_under_test.hpp"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

constexpr IID kInterfaceIds[] = {
    {0xC60D4849, 0x9144, 0x48D2, {0x95, 0x01, 0x5A, 0x50, 0x57, 0x59, 0x02, 0xF2}},
    {0x8B618718, 0xEE13, 0x4DD0, {0x88, 0x6F, 0xE6, 0x2E, 0xAC, 0xFA, 0xD6, 0x03}},
    {0xFE8F447C, 0x76E0, 0x4C39, {0x8C, 0xBC, 0xB7, 0x03, 0x3C, 0xA6, 0x92, 0x6B}},
    {0xB3A419B6, 0xA238, 0x4E7C, {0x83, 0x0A, 0x4A, 0x68, 0x28, 0x33, 0x1C, 0x54}},
    {0x3E264B32, 0x2350, 0x4234, {0x9B, 0xC2, 0x78, 0x44, 0x79, 0x0E, 0x21, 0x02}},
    {0xA23DF4AB, 0x38A0, 0x4DBE, {0xB7, 0x6D, 0xD0, 0xC8, 0x1F, 0x22, 0x75, 0x50}},
    {0x1E56044F, 0xA0EA, 0x463E, {0xB4, 0x6B, 0xC3, 0xAB, 0xD3, 0xCB, 0x1A, 0xB3}},
    {0xD4DB0F3F, 0x3A68, 0x4FCC, {0xB9, 0x44, 0x34, 0x77, 0x6D, 0x0D, 0x6B, 0xD4}},
    {0xF7CD45E6, 0xC810, 0x4B03, {0x8E, 0x17, 0x22, 0xF2, 0x13, 0x04, 0x8D, 0x25}},
    {0xA4224828, 0x4E89, 0x4ADA, {0x86, 0x7B, 0xB9, 0xE9, 0xCE, 0x93, 0x69, 0x44}},
};

constexpr const char* kTextResult = "[out,retval] BSTR* pVal";

constexpr InterfaceMember kMembers[] = {
    {1, 1, 7, Kind::kMethod, "NotifyTransactionChanged", "[in] BSTR bstrTransInfo", nullptr},
    {1, 2, 8, Kind::kMethod, "SubscribeToNotifications", "", "Subscribe To Notifications"},
    {1, 3, 9, Kind::kMethod, "UnSubscribeFromNotifications", "", "UnSubscribe From Notifications"},
    {1, 4, 10, Kind::kMethod, "SetReconFeeData", "[in] BSTR bstrFeeData", nullptr},
    {1, 5, 11, Kind::kMethod, "SetReconBatchData", "[in] BSTR bstrBatchData", nullptr},
    {1, 6, 12, Kind::kMethod, "SetReconPaymentData",
     "[in] BSTR paymentData, [in] BSTR undepFundsStartDate, [in] VARIANT_BOOL isUndepFundsAccntDefault", nullptr},
    {1, 7, 13, Kind::kGet, "LHTransactionNotificationData", "[out,retval] BSTR*", "get Transaction Notification Data"},
    {1, 7, 14, Kind::kPut, "LHTransactionNotificationData", "[in] BSTR", "put Transaction Notification Data"},
    {1, 8, 15, Kind::kMethod, "SetTransactionID", "[in] BSTR bstrTransactionID", nullptr},
    {2, 9, 16, Kind::kMethod, "setEInvoicedTransactionData", "[in] BSTR bstrEInvoicedTransactionData", nullptr},
    {2, 10, 17, Kind::kMethod, "ProcessLHRequestData", "[in] BSTR bstrRequestStr, [out,retval] BSTR* bstrResponseStr",
     nullptr},
    {2, 11, 18, Kind::kMethod, "SetCustomerListData", "[in] BSTR bstrCustomerData", nullptr},
    {3, 12, 19, Kind::kMethod, "SetItemListData", "[in] BSTR bstrItemData", nullptr},
    {4, 13, 20, Kind::kMethod, "SetCustomerData", "[in] BSTR bstrCustomerData", nullptr},
    {5, 14, 21, Kind::kMethod, "SubscribeToNotifications2", "[in] BSTR bstrFeature", "Subscribe To Notifications"},
    {5, 15, 22, Kind::kMethod, "UnSubscribeFromNotifications2", "[in] BSTR bstrFeature",
     "UnSubscribe From Notifications"},
    {5, 16, 23, Kind::kMethod, "SetChannelName", "[in] BSTR bstrFeature", "Set Channel"},
    {6, 17, 24, Kind::kMethod, "SetCustomerSearchResult", "[in] BSTR bstrCustomerSearchResult", nullptr},
    {6, 18, 25, Kind::kMethod, "SetLineItemsSearchResult", "[in] BSTR bstrLineItemsSearchResult", nullptr},
    {7, 19, 26, Kind::kMethod, "ConnectDevice", "", nullptr},
    {7, 20, 27, Kind::kMethod, "StartEMV", "[in] BSTR bstrTransactionAmt", nullptr},
    {7, 21, 28, Kind::kMethod, "EMVProcessorResult", kTextResult, nullptr},
    {7, 22, 29, Kind::kMethod, "EMVGetCardParameters", kTextResult, nullptr},
    {7, 23, 30, Kind::kMethod, "SendOnlineProcessResult", "[in] BSTR bstrProcessingRes", nullptr},
    {7, 24, 31, Kind::kMethod, "EMVGetBatchData", kTextResult, nullptr},
    {7, 25, 32, Kind::kMethod, "DisconnectDevice", "", nullptr},
    {7, 26, 33, Kind::kMethod, "InitializeSession", "", nullptr},
    {7, 27, 34, Kind::kMethod, "ResetSession", "", nullptr},
    {7, 28, 35, Kind::kMethod, "EMVIsDeviceConnected", "[out,retval] VARIANT_BOOL* pVal", nullptr},
    {7, 29, 36, Kind::kMethod, "isDeviceHere", "", nullptr},
    {7, 30, 37, Kind::kMethod, "GetConnectionMode", kTextResult, nullptr},
    {7, 31, 38, Kind::kMethod, "ShowFinalConfirmationWindow", "", nullptr},
    {7, 32, 39, Kind::kMethod, "HandleAidSelecttion", "", nullptr},
    {7, 33, 40, Kind::kMethod, "CancelCheckCard", "", nullptr},
    {7, 34, 41, Kind::kMethod, "DecodeTlvData", "[in] BSTR bstrData, [in] BSTR bstrTags, [out,retval] BSTR* pVal",
     nullptr},
    {7, 35, 42, Kind::kMethod, "GetEmvDeviceInfo", "", nullptr},
    {8, 36, 43, Kind::kMethod, "GetLHUserData", "[in] BSTR bstrData, [out,retval] BSTR* pVal", nullptr},
    {9, 37, 44, Kind::kMethod, "GetPaymentIdentityStatus", kTextResult, nullptr},
    {9, 38, 45, Kind::kMethod, "AuthenticateURL", "[in] BSTR url, [out,retval] BSTR* pAuthUrl", nullptr},
    {9, 39, 46, Kind::kMethod, "isRealmMergeLinkingEnabled", kTextResult, nullptr},
    {10, 40, 47, Kind::kMethod, "GetCardBasedToken", "[in] BSTR header, [in] BSTR body, [out,retval] BSTR* pToken",
     nullptr},
    {10, 41, 48, Kind::kMethod, "GetCardBasedToken2",
     "[in] INT useAuthorization, [in] BSTR header, [in] BSTR body, [out,retval] BSTR* pToken", nullptr},
    {10, 42, 49, Kind::kMethod, "ExecuteJavaScript", "[in] BSTR bstrInfo, [in] LONG isRebill, [in] BSTR script",
     nullptr},
};

constexpr ControlEvent kEvents[] = {
    {1, "TransactionChanged", "[in] BSTR bstrTransInfo"},
    {2, "ReconBatchData", "[in] BSTR bstrBatchData"},
    {3, "ReconFeeData", "[in] BSTR bstrFeeData"},
    {4, "ReconPaymentData",
     "[in] BSTR paymentData, [in] BSTR undepFundsStartDate, [in] VARIANT_BOOL isUndepFundsAccntDefault"},
    {5, "TransactionID", "[in] BSTR bstrTransactionID"},
    {6, "EInvoicedTransactionData", "[in] BSTR bstrEInvoicedTransactionData"},
    {7, "OnProcessLHRequest", "[in] BSTR bstrRequestStr, [out,retval] BSTR* bstrResponseStr"},
    {8, "CustomerListData", "[in] BSTR bstrCustomerData"},
    {9, "ItemListData", "[in] BSTR bstrItemData"},
    {10, "CustomerData", "[in] BSTR bstrCustomerData"},
    {11, "CustomerSearchResult", "[in] BSTR bstrCustomerSearchResult"},
    {12, "LineItemsSearchResult", "[in] BSTR bstrLineItemsSearchResult"},
};

}  // namespace

std::span<const IID> ControlInterfaceIds() { return kInterfaceIds; }

std::string ControlInterfaceName(int number) {
    return number == 1 ? "IPaylodgeCtrl" : "IPaylodgeCtrl" + std::to_string(number);
}

std::span<const InterfaceMember> ControlMembers() { return kMembers; }

const InterfaceMember& FindControlMember(std::string_view name, Kind kind) {
    const auto found = std::ranges::find_if(
        kMembers, [&](const InterfaceMember& member) { return member.name == name && member.kind == kind; });
    if (found == std::end(kMembers)) {
        throw std::invalid_argument("no such member");
    }
    return *found;
}

std::span<const ControlEvent> ControlEvents() { return kEvents; }

ComPtr<IPaylodgeCtrl10> CreateControl(const ModuleUnderTest& module) {
    ComPtr<IClassFactory> factory;
    EXPECT_HRESULT(S_OK, module.GetClassObject(kControlClass, IID_IClassFactory, factory.ReceiveVoid()));
    ComPtr<IPaylodgeCtrl10> control;
    EXPECT_HRESULT(S_OK, factory->CreateInstance(nullptr, ControlInterfaceIds().back(), control.ReceiveVoid()));
    return control;
}

ComPtr<IConnectionPoint> EventPoint(IUnknown& control) {
    ComPtr<IConnectionPointContainer> container;
    EXPECT_HRESULT(S_OK, control.QueryInterface(IID_IConnectionPointContainer, container.ReceiveVoid()));
    ComPtr<IConnectionPoint> point;
    EXPECT_HRESULT(S_OK, container->FindConnectionPoint(kControlEvents, point.Receive()));
    return point;
}

}  // namespace paylodge::test
