#include "tests/unit/bridge/forwarders.hpp"

namespace paylodge::test {
namespace {

using Control = CPaylodgeCtrl;

template <HRESULT (STDMETHODCALLTYPE Control::*method)()>
HRESULT Plain(Control& control, BSTR*, VARIANT_BOOL*) {
    return (control.*method)();
}
template <HRESULT (STDMETHODCALLTYPE Control::*method)(BSTR)>
HRESULT WithText(Control& control, BSTR*, VARIANT_BOOL*) {
    return (control.*method)(Argument(L"12.50"));
}
template <HRESULT (STDMETHODCALLTYPE Control::*method)(BSTR*)>
HRESULT Asked(Control& control, BSTR* text, VARIANT_BOOL*) {
    return (control.*method)(text);
}
template <HRESULT (STDMETHODCALLTYPE Control::*method)(BSTR, BSTR*)>
HRESULT AskedWithText(Control& control, BSTR* text, VARIANT_BOOL*) {
    return (control.*method)(Argument(L"\u2606 a"), text);
}
template <HRESULT (STDMETHODCALLTYPE Control::*method)(BSTR, BSTR, BSTR*)>
HRESULT AskedWithTexts(Control& control, BSTR* text, VARIANT_BOOL*) {
    return (control.*method)(Argument(L"first"), Argument(L"second"), text);
}

HRESULT IsConnected(Control& control, BSTR*, VARIANT_BOOL* flag) { return control.EMVIsDeviceConnected(flag); }

HRESULT Token2(Control& control, BSTR* text, VARIANT_BOOL*) {
    return control.GetCardBasedToken2(-7, Argument(L"first"), Argument(L"second"), text);
}

constexpr Forwarder kForwarders[] = {
    {"ConnectDevice", Returns::kNothing, L"ConnectDevice()", Plain<&Control::ConnectDevice>},
    {"StartEMV", Returns::kNothing, L"StartEMV(\"12.50\")", WithText<&Control::StartEMV>},
    {"EMVProcessorResult", Returns::kReencodedText, L"EMVProcessorResult()", Asked<&Control::EMVProcessorResult>},
    {"EMVGetCardParameters", Returns::kReencodedText, L"EMVGetCardParameters()", Asked<&Control::EMVGetCardParameters>},
    {"SendOnlineProcessResult", Returns::kNothing, L"SendOnlineProcessResult(\"12.50\")",
     WithText<&Control::SendOnlineProcessResult>},
    {"EMVGetBatchData", Returns::kReencodedText, L"EMVGetBatchData()", Asked<&Control::EMVGetBatchData>},
    {"DisconnectDevice", Returns::kNothing, L"DisconnectDevice()", Plain<&Control::DisconnectDevice>},
    {"InitializeSession", Returns::kNothing, L"InitializeSession()", Plain<&Control::InitializeSession>},
    {"ResetSession", Returns::kNothing, L"ResetSession()", Plain<&Control::ResetSession>},
    {"EMVIsDeviceConnected", Returns::kByte, L"EMVIsDeviceConnected()", IsConnected},
    {"isDeviceHere", Returns::kNothing, L"isDeviceHere()", Plain<&Control::isDeviceHere>},
    {"GetConnectionMode", Returns::kReencodedText, L"GetConnectionMode()", Asked<&Control::GetConnectionMode>},
    {"ShowFinalConfirmationWindow", Returns::kNothing, L"ShowFinalConfirmationWindow()",
     Plain<&Control::ShowFinalConfirmationWindow>},
    {"HandleAidSelecttion", Returns::kNothing, L"HandleAidSelecttion()", Plain<&Control::HandleAidSelecttion>},
    {"CancelCheckCard", Returns::kNothing, L"CancelCheckCard()", Plain<&Control::CancelCheckCard>},
    {"DecodeTlvData", Returns::kCopiedText, L"GetDecodedTlvData(\"first\", \"second\")",
     AskedWithTexts<&Control::DecodeTlvData>},
    {"GetEmvDeviceInfo", Returns::kNothing, L"GetEmvDeviceInfo()", Plain<&Control::GetEmvDeviceInfo>},
    {"GetLHUserData", Returns::kString, L"GetLHUserData(\"\u2606 a\")", AskedWithText<&Control::GetLHUserData>},
    {"GetPaymentIdentityStatus", Returns::kString, L"GetPaymentIdentityStatus()",
     Asked<&Control::GetPaymentIdentityStatus>},
    {"AuthenticateURL", Returns::kString, L"AuthenticateURL(\"\u2606 a\")", AskedWithText<&Control::AuthenticateURL>},
    {"isRealmMergeLinkingEnabled", Returns::kString, L"isRealmMergeLinkingEnabled()",
     Asked<&Control::isRealmMergeLinkingEnabled>},
    {"GetCardBasedToken", Returns::kCopiedText, L"GetCardBasedToken(\"first\", \"second\")",
     AskedWithTexts<&Control::GetCardBasedToken>},
    {"GetCardBasedToken2", Returns::kCopiedText, L"GetCardBasedToken2(-7, \"first\", \"second\")", Token2},
};

}  // namespace

std::span<const Forwarder> Forwarders() noexcept { return kForwarders; }

Result Forward(const Forwarder& forwarder, CPaylodgeCtrl& control) {
    StringSink text;
    BoolSink flag;
    const HRESULT code = forwarder.run(control, text.Slot(), flag.Slot());
    if (forwarder.returns == Returns::kByte) {
        EXPECT_EQ(text.Show(), kUntouched);
        const bool is_untouched = *flag.Slot() == *BoolSink().Slot();
        return {code, is_untouched ? kUntouched : flag.Show()};
    }
    return {code, text.Show()};
}

Result WithoutFunction(const Forwarder& forwarder) {
    switch (forwarder.returns) {
        case Returns::kNothing:
        case Returns::kByte:
            return {S_OK, kUntouched};
        case Returns::kReencodedText:
        case Returns::kString:
            return {S_OK, kNull};
        case Returns::kCopiedText:
            return {E_FAIL, kUntouched};
    }
    return {E_UNEXPECTED};
}

}  // namespace paylodge::test
