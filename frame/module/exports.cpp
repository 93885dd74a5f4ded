// The functions that the module exports, beside SetBrowserInstance. Plain names on both architectures: exports.def.

#include <windows.h>

#include <array>

#include "bridge/paylodge_ctrl.hpp"
#include "com/class_object.hpp"
#include "frame/module/server_registration.hpp"
#include "operations/paylodge.hpp"

namespace paylodge {
namespace {

const std::array kClasses = {MakeClassEntry<CPaylodge>(), MakeClassEntry<CPaylodgeCtrl>()};

}  // namespace
}  // namespace paylodge

// S_OK when no object, class object or lock of the module is alive, else S_FALSE.
STDAPI DllCanUnloadNow() { return paylodge::Module::References() == 0 ? S_OK : S_FALSE; }

// CLASS_E_CLASSNOTAVAILABLE for a class that is not the module's.
STDAPI DllGetClassObject(REFCLSID class_id, REFIID interface_id, void** class_object) {
    return paylodge::GetClassObject(paylodge::kClasses, class_id, interface_id, class_object);
}

// The HRESULT of the step that failed.
STDAPI DllRegisterServer() { return paylodge::RegisterServer(); }

STDAPI DllUnregisterServer() { return paylodge::UnregisterServer(); }
