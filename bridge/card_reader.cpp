// The card reader and the account services: each method calls one function of the bridge library, and takes what that
// returns as it is.

#include "bridge/bridge_library.hpp"
#include "bridge/paylodge_ctrl.hpp"
#include "com/ansi_text.hpp"

namespace paylodge {
namespace {

using Text = const wchar_t*;

// Functions without a result. A missing one is invisible to the page.
template <class... Parameters, class... Arguments>
[[nodiscard]] HRESULT Forward(BridgeFunction<void, Parameters...>& function, Arguments... arguments) {
    if (auto* const call = function.Find()) {
        call(arguments...);
    }
    return S_OK;
}

// Texts that stay the library's and reach the page as far as the ANSI code page can hold them; null without the
// function.
[[nodiscard]] HRESULT ForwardReencoded(BridgeFunction<Text>& function, BSTR* result) {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    if (auto* const call = function.Find()) {
        const Text text = call();
        *result = BstrFromAnsi(AnsiFromWide(text == nullptr ? std::wstring_view() : text)).Detach();
    }
    return S_OK;
}

// Texts that stay the library's and are copied; E_FAIL with the result untouched without the function.
template <class... Parameters, class... Arguments>
[[nodiscard]] HRESULT ForwardCopied(BridgeFunction<Text, Parameters...>& function, BSTR* result,
                                    Arguments... arguments) {
    if (result == nullptr) {
        return E_POINTER;
    }
    auto* const call = function.Find();
    if (call == nullptr) {
        return E_FAIL;
    }
    const Text text = call(arguments...);
    *result = text == nullptr ? nullptr : MakeBstr(text).Detach();
    return S_OK;
}

// Strings that become the caller's own; null without the function.
template <class... Parameters, class... Arguments>
[[nodiscard]] HRESULT ForwardOwned(BridgeFunction<BSTR, Parameters...>& function, BSTR* result,
                                   Arguments... arguments) {
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    if (auto* const call = function.Find()) {
        *result = call(arguments...);
    }
    return S_OK;
}

// The library's functions, each with the address that was found for it.
BridgeFunction<void> g_connect_device("ConnectDevice");
BridgeFunction<void, Text> g_start_emv("StartEMV");
BridgeFunction<Text> g_emv_processor_result("EMVProcessorResult");
BridgeFunction<Text> g_emv_get_card_parameters("EMVGetCardParameters");
BridgeFunction<void, Text> g_send_online_process_result("SendOnlineProcessResult");
BridgeFunction<Text> g_emv_get_batch_data("EMVGetBatchData");
BridgeFunction<void> g_disconnect_device("DisconnectDevice");
BridgeFunction<void> g_initialize_session("InitializeSession");
BridgeFunction<void> g_reset_session("ResetSession");
// One byte, of which any value but zero is true.
BridgeFunction<unsigned char> g_emv_is_device_connected("EMVIsDeviceConnected");
BridgeFunction<void> g_is_device_here("isDeviceHere");
BridgeFunction<Text> g_get_connection_mode("GetConnectionMode");
BridgeFunction<void> g_show_final_confirmation_window("ShowFinalConfirmationWindow");
BridgeFunction<void> g_handle_aid_selection("HandleAidSelecttion");
BridgeFunction<void> g_cancel_check_card("CancelCheckCard");
BridgeFunction<Text, Text, Text> g_decode_tlv_data("GetDecodedTlvData");
BridgeFunction<void> g_get_emv_device_info("GetEmvDeviceInfo");
BridgeFunction<BSTR, Text> g_get_lh_user_data("GetLHUserData");
BridgeFunction<BSTR> g_get_payment_identity_status("GetPaymentIdentityStatus");
BridgeFunction<BSTR, Text> g_authenticate_url("AuthenticateURL");
BridgeFunction<BSTR> g_is_realm_merge_linking_enabled("isRealmMergeLinkingEnabled");
BridgeFunction<Text, Text, Text> g_get_card_based_token("GetCardBasedToken");
BridgeFunction<Text, int, Text, Text> g_get_card_based_token2("GetCardBasedToken2");

}  // namespace

STDMETHODIMP CPaylodgeCtrl::ConnectDevice() { return Forward(g_connect_device); }

STDMETHODIMP CPaylodgeCtrl::StartEMV(BSTR bstrTransactionAmt) { return Forward(g_start_emv, bstrTransactionAmt); }

STDMETHODIMP CPaylodgeCtrl::EMVProcessorResult(BSTR* pVal) { return ForwardReencoded(g_emv_processor_result, pVal); }

STDMETHODIMP CPaylodgeCtrl::EMVGetCardParameters(BSTR* pVal) {
    return ForwardReencoded(g_emv_get_card_parameters, pVal);
}

STDMETHODIMP CPaylodgeCtrl::SendOnlineProcessResult(BSTR bstrProcessingRes) {
    return Forward(g_send_online_process_result, bstrProcessingRes);
}

STDMETHODIMP CPaylodgeCtrl::EMVGetBatchData(BSTR* pVal) { return ForwardReencoded(g_emv_get_batch_data, pVal); }

STDMETHODIMP CPaylodgeCtrl::DisconnectDevice() { return Forward(g_disconnect_device); }

STDMETHODIMP CPaylodgeCtrl::InitializeSession() { return Forward(g_initialize_session); }

STDMETHODIMP CPaylodgeCtrl::ResetSession() { return Forward(g_reset_session); }

// The caller's variable keeps its value without the function.
STDMETHODIMP CPaylodgeCtrl::EMVIsDeviceConnected(VARIANT_BOOL* pVal) {
    if (pVal == nullptr) {
        return E_POINTER;
    }
    if (auto* const call = g_emv_is_device_connected.Find()) {
        *pVal = call() != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    }
    return S_OK;
}

STDMETHODIMP CPaylodgeCtrl::isDeviceHere() { return Forward(g_is_device_here); }

STDMETHODIMP CPaylodgeCtrl::GetConnectionMode(BSTR* pVal) { return ForwardReencoded(g_get_connection_mode, pVal); }

STDMETHODIMP CPaylodgeCtrl::ShowFinalConfirmationWindow() { return Forward(g_show_final_confirmation_window); }

STDMETHODIMP CPaylodgeCtrl::HandleAidSelecttion() { return Forward(g_handle_aid_selection); }

STDMETHODIMP CPaylodgeCtrl::CancelCheckCard() { return Forward(g_cancel_check_card); }

STDMETHODIMP CPaylodgeCtrl::DecodeTlvData(BSTR bstrData, BSTR bstrTags, BSTR* pVal) {
    return ForwardCopied(g_decode_tlv_data, pVal, bstrData, bstrTags);
}

STDMETHODIMP CPaylodgeCtrl::GetEmvDeviceInfo() { return Forward(g_get_emv_device_info); }

// E_FAIL, with or without the library, when no data is asked for.
STDMETHODIMP CPaylodgeCtrl::GetLHUserData(BSTR bstrData, BSTR* pVal) {
    if (pVal == nullptr) {
        return E_POINTER;
    }
    *pVal = nullptr;
    return ::SysStringLen(bstrData) == 0 ? E_FAIL : ForwardOwned(g_get_lh_user_data, pVal, bstrData);
}

STDMETHODIMP CPaylodgeCtrl::GetPaymentIdentityStatus(BSTR* pVal) {
    return ForwardOwned(g_get_payment_identity_status, pVal);
}

STDMETHODIMP CPaylodgeCtrl::AuthenticateURL(BSTR url, BSTR* pAuthUrl) {
    return ForwardOwned(g_authenticate_url, pAuthUrl, url);
}

STDMETHODIMP CPaylodgeCtrl::isRealmMergeLinkingEnabled(BSTR* pVal) {
    return ForwardOwned(g_is_realm_merge_linking_enabled, pVal);
}

STDMETHODIMP CPaylodgeCtrl::GetCardBasedToken(BSTR header, BSTR body, BSTR* pToken) {
    return ForwardCopied(g_get_card_based_token, pToken, header, body);
}

STDMETHODIMP CPaylodgeCtrl::GetCardBasedToken2(INT useAuthorization, BSTR header, BSTR body, BSTR* pToken) {
    return ForwardCopied(g_get_card_based_token2, pToken, useAuthorization, header, body);
}

}  // namespace paylodge
