// A program that ends while one of its libraries still holds a subscribed control: that library was loaded before the
// module, so it is notified of the end after the module was. Exit code 0 when all goes well.

#include <windows.h>

#include <objbase.h>

#include "com/com_ptr.hpp"
#include "paylodge.h"

namespace {

template <class Function>
[[nodiscard]] Function* Find(HMODULE library, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
}

}  // namespace

int main() {
    using namespace paylodge;
    if (FAILED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        return 1;
    }
    const HMODULE releaser = ::LoadLibraryW(L"late_releaser.dll");
    const HMODULE module = ::LoadLibraryW(L"..\\Paylodge.dll");
    if (releaser == nullptr || module == nullptr) {
        return 2;
    }
    ComPtr<IClassFactory> factory;
    ComPtr<IPaylodgeCtrl10> control;
    if (FAILED(Find<HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**)>(module, "DllGetClassObject")(
            CLSID_PaylodgeCtrl, IID_IClassFactory, factory.ReceiveVoid())) ||
        FAILED(factory->CreateInstance(nullptr, IID_IPaylodgeCtrl10, control.ReceiveVoid())) ||
        FAILED(control->SubscribeToNotifications())) {
        return 3;
    }
    Find<void __cdecl(IUnknown*)>(releaser, "KeepUntilTheEnd")(control.Detach());
    factory.Reset();
    return 0;
}
