// A fake of the host's bridge library: it notifies the test program of each call. BRIDGE_VARIANT names it.

#include <windows.h>

#include <oleauto.h>

#include <stdexcept>

#include "tests/unit/bridge/bridge_observer.hpp"

namespace paylodge::test {
namespace {

[[nodiscard]] BridgeObserver& Observer() {
    static auto* const find = reinterpret_cast<FindBridgeObserver*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(nullptr), "TheBridgeObserver")));
    return *find();
}

void Pass(const wchar_t* text) { Observer().GotText(text); }
void Pass(const char* text) { Observer().GotNarrowText(text); }
void Pass(int number) { Observer().GotNumber(number); }

// Notifies of a call, and has what the functions return.
template <class... Arguments>
[[nodiscard]] BridgeObserver& Call(const char* function, Arguments... arguments) {
    Observer().Called(BRIDGE_VARIANT, function);
    (Pass(arguments), ...);
    return Observer();
}

template <class... Arguments>
void Do(const char* function, Arguments... arguments) {
    static_cast<void>(Call(function, arguments...));
}

using Text = const wchar_t*;

}  // namespace

extern "C" {

void __cdecl ExecuteJavaScript(const char* browser, const char* script) {
    BridgeObserver& observer = Call(__func__, browser, script);
    observer.Ran();
    if (observer.ThrowsAtEnd()) {
        throw std::runtime_error("the page is gone");
    }
}

void __cdecl InitializeSession() { Do(__func__); }
void __cdecl ResetSession() { Do(__func__); }
void __cdecl ConnectDevice() { Do(__func__); }
void __cdecl DisconnectDevice() { Do(__func__); }
void __cdecl StartEMV(Text amount) { Do(__func__, amount); }
void __cdecl HandleAidSelecttion() { Do(__func__); }
void __cdecl SendOnlineProcessResult(Text result) { Do(__func__, result); }
void __cdecl ShowFinalConfirmationWindow() { Do(__func__); }
void __cdecl CancelCheckCard() { Do(__func__); }
void __cdecl isDeviceHere() { Do(__func__); }
void __cdecl GetEmvDeviceInfo() { Do(__func__); }
unsigned char __cdecl EMVIsDeviceConnected() { return Call(__func__).Byte(); }

Text __cdecl EMVProcessorResult() { return Call(__func__).Text(); }
Text __cdecl EMVGetCardParameters() { return Call(__func__).Text(); }
Text __cdecl EMVGetBatchData() { return Call(__func__).Text(); }
Text __cdecl GetConnectionMode() { return Call(__func__).Text(); }
Text __cdecl GetDecodedTlvData(Text data, Text tags) { return Call(__func__, data, tags).Text(); }
Text __cdecl GetCardBasedToken(Text header, Text body) { return Call(__func__, header, body).Text(); }
Text __cdecl GetCardBasedToken2(int use, Text header, Text body) { return Call(__func__, use, header, body).Text(); }

BSTR __cdecl GetLHUserData(Text wanted) { return Call(__func__, wanted).String(); }
BSTR __cdecl GetPaymentIdentityStatus() { return Call(__func__).String(); }
BSTR __cdecl AuthenticateURL(Text url) { return Call(__func__, url).String(); }
BSTR __cdecl isRealmMergeLinkingEnabled() { return Call(__func__).String(); }

}  // extern "C"

}  // namespace paylodge::test
