// The running host application.
#pragma once

#include <comdef.h>

#include "com/com_ptr.hpp"
#include "com/guarded_call.hpp"
#include "hostapi/application.hpp"

namespace paylodge {

// One of the application's interfaces; null when no application runs or it lacks the interface. Every other failure is
// thrown as a COM error, what the host throws included.
template <class Interface>
[[nodiscard]] ComPtr<Interface> FindApplication() {
    const auto raise_failure = [](HRESULT result) {
        if (FAILED(result)) {
            _com_issue_error(result);
        }
    };
    ComPtr<IHostApplicationLocator> locator;
    raise_failure(CallHost([slot = locator.ReceiveVoid()] {
        return ::CoCreateInstance(kHostApplicationLocatorClass, nullptr, CLSCTX_INPROC_SERVER,
                                  __uuidof(IHostApplicationLocator), slot);
    }));
    ComPtr<IUnknown> running;
    raise_failure(CallHost([&] { return locator->GetRunningApplication(running.Receive()); }));
    ComPtr<Interface> application;
    if (running) {
        const HRESULT result = CallHost([&] { return running.As(application); });
        raise_failure(result == E_NOINTERFACE ? S_OK : result);
    }
    return application;
}

}  // namespace paylodge
