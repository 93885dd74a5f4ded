// Oskerin.dll of the reference host: the functions that the component's control looks up by name. Wide texts that come
// back are the library's own and valid until the same function is called again; BSTRs become the caller's. Null texts
// count as empty.

#include <windows.h>

#include <oleauto.h>

#include <string>

#include "refhost/objects/utf8.hpp"
#include "refhost/oskerin/account_services.hpp"
#include "refhost/oskerin/script_listener.hpp"
#include "refhost/oskerin/simulated_reader.hpp"
#include "refhost/oskerin/tlv.hpp"

namespace paylodge::refhost {
namespace {

CardReader g_reader;
// What the functions named after them returned last.
std::wstring g_processor_result;
std::wstring g_card_parameters;
std::wstring g_batch_data;
std::wstring g_connection_mode;
std::wstring g_decoded_tlv_data;
std::wstring g_token;
std::wstring g_token2;

[[nodiscard]] std::string Utf8(const wchar_t* text) { return text == nullptr ? std::string() : Utf8FromWide(text); }

[[nodiscard]] const wchar_t* Keep(std::wstring& kept, const std::string& text) {
    kept = WideFromUtf8(text);
    return kept.c_str();
}

[[nodiscard]] BSTR Give(const std::string& text) {
    const std::wstring wide = WideFromUtf8(text);
    return ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

}  // namespace

extern "C" {

void __cdecl ExecuteJavaScript(const char* browser_instance, const char* script) {
    ListenToScript(browser_instance == nullptr ? "" : browser_instance, script == nullptr ? "" : script);
}

// Not one of the host's functions, and so not in oskerin.def: how a program that plays the host gets the scripts for
// its pages.
__declspec(dllexport) void __cdecl SetScriptListener(ScriptListener* listener, void* context) {
    ListenWith(listener, context);
}

void __cdecl InitializeSession() { g_reader.InitializeSession(); }
void __cdecl ResetSession() { g_reader.ResetSession(); }
void __cdecl ConnectDevice() { g_reader.Connect(); }
void __cdecl DisconnectDevice() { g_reader.Disconnect(); }
void __cdecl StartEMV(const wchar_t* amount) { g_reader.Start(Utf8(amount)); }
void __cdecl HandleAidSelecttion() { g_reader.SelectApplication(); }
void __cdecl SendOnlineProcessResult(const wchar_t* result) { g_reader.SendOnlineResult(Utf8(result)); }
void __cdecl ShowFinalConfirmationWindow() { g_reader.Confirm(); }
void __cdecl CancelCheckCard() { g_reader.Cancel(); }

bool __cdecl EMVIsDeviceConnected() { return g_reader.IsConnected(); }
// Looks for the reader; EMVIsDeviceConnected returns what was found.
void __cdecl isDeviceHere() {}
// Asks for the reader's description, which EMVProcessorResult returns once.
void __cdecl GetEmvDeviceInfo() { g_reader.RequestDeviceInfo(); }

const wchar_t* __cdecl EMVProcessorResult() { return Keep(g_processor_result, g_reader.TakeResult()); }
const wchar_t* __cdecl EMVGetCardParameters() { return Keep(g_card_parameters, g_reader.CardParameters()); }
const wchar_t* __cdecl EMVGetBatchData() { return Keep(g_batch_data, g_reader.BatchData()); }
const wchar_t* __cdecl GetConnectionMode() { return Keep(g_connection_mode, g_reader.IsConnected() ? "USB" : "NONE"); }
const wchar_t* __cdecl GetDecodedTlvData(const wchar_t* data, const wchar_t* tags) {
    return Keep(g_decoded_tlv_data, DescribeTlv(Utf8(data), Utf8(tags)));
}

BSTR __cdecl GetLHUserData(const wchar_t* wanted) { return Give(UserData(Utf8(wanted))); }
BSTR __cdecl GetPaymentIdentityStatus() { return Give(PaymentIdentityStatus()); }
BSTR __cdecl AuthenticateURL(const wchar_t* url) { return Give(AuthenticatedUrl(Utf8(url))); }
BSTR __cdecl isRealmMergeLinkingEnabled() { return Give(RealmMergeLinking()); }

const wchar_t* __cdecl GetCardBasedToken(const wchar_t* header, const wchar_t* body) {
    return Keep(g_token, CardBasedToken(true, Utf8(header), Utf8(body)));
}
const wchar_t* __cdecl GetCardBasedToken2(int use_authorization, const wchar_t* header, const wchar_t* body) {
    return Keep(g_token2, CardBasedToken(use_authorization != 0, Utf8(header), Utf8(body)));
}

}  // extern "C"

}  // namespace paylodge::refhost
