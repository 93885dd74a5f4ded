// The functions that the module exports, under plain names on both architectures: refhost.def.in.

#include <windows.h>

#include <comdef.h>

#include <array>
#include <string>

#include "com/class_object.hpp"
#include "frame/registrar/registrar.hpp"
#include "refhost/control/reference_host.hpp"
#include "refhost/objects/application_locator.hpp"
#include "refhost/objects/host.hpp"
#include "refhost/objects/host_boundary.hpp"
#include "refhost/objects/object_broker.hpp"
#include "refhost/objects/processor_object.hpp"

namespace paylodge::refhost {
namespace {

constexpr WORD kRegistryScript = 101;

const std::array kClasses = {MakeClassEntry<CHostObjectBroker>(), MakeClassEntry<CRequestProcessor>(),
                             MakeClassEntry<CApplicationLocator>(), MakeClassEntry<CReferenceHost>()};

[[nodiscard]] Registrar MakeRegistrar() {
    const std::wstring path = Module::Path();
    return {RegistrationScope::kMachine, {{u"MODULE", std::u16string(path.begin(), path.end())}}};
}

}  // namespace
}  // namespace paylodge::refhost

using namespace paylodge;  // NOLINT: this file stands for the module, not for a header

// The host's state would go with the module, so the module stays once there is any.
STDAPI DllCanUnloadNow() { return Module::References() == 0 && !refhost::Host::Exists() ? S_OK : S_FALSE; }

// CLASS_E_CLASSNOTAVAILABLE for a class that is not the module's.
STDAPI DllGetClassObject(REFCLSID class_id, REFIID interface_id, void** class_object) {
    return GetClassObject(refhost::kClasses, class_id, interface_id, class_object);
}

// The HRESULT of the step that failed.
STDAPI DllRegisterServer() {
    return refhost::Guarded([] { return refhost::MakeRegistrar().Register(refhost::kRegistryScript); });
}

STDAPI DllUnregisterServer() {
    return refhost::Guarded([] { return refhost::MakeRegistrar().Unregister(refhost::kRegistryScript); });
}

BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD reason, void* is_process_ending) {
    // When the process ends, the system takes back everything, the lock of the company file included.
    if (reason == DLL_PROCESS_DETACH && is_process_ending == nullptr) {
        refhost::Host::Destroy();
    }
    return TRUE;
}
