#include "frame/module/server_registration.hpp"

#include <array>

#include "bridge/misc_status.hpp"
#include "com/boundary.hpp"
#include "com/module.hpp"
#include "frame/module/resource.h"
#include "frame/registrar/registration_steps.hpp"

namespace paylodge {
namespace {

template <WORD script>
constexpr RegistrationStep kScript = {[](const Registrar& registrar) { return registrar.Register(script); },
                                      [](const Registrar& registrar) { return registrar.Unregister(script); }};

constexpr RegistrationStep kTypeLibrary = {
    [](const Registrar& registrar) { return RegisterTypeLibrary(registrar.Scope()); },
    [](const Registrar& registrar) { return UnregisterTypeLibrary(registrar.Scope()); }};

constexpr std::array kSteps = {kScript<IDR_PAYLODGE>, kScript<IDR_PAYLODGE_CTRL>, kTypeLibrary};

template <class Characters>
[[nodiscard]] std::u16string Text(const Characters& text) {
    return {text.begin(), text.end()};
}

[[nodiscard]] HRESULT Run(HRESULT (*run)(std::span<const RegistrationStep>, const Registrar&),
                          RegistrationScope scope) {
    return AtBoundary([&] {
        const Registrar registrar(
            scope, {{u"MODULE", Text(Module::Path())}, {u"OLEMISC", Text(std::to_string(kControlMiscStatus))}});
        return run(kSteps, registrar);
    });
}

}  // namespace

HRESULT RegisterServer(RegistrationScope scope) { return Run(&ApplySteps, scope); }

HRESULT UnregisterServer(RegistrationScope scope) { return Run(&RemoveSteps, scope); }

}  // namespace paylodge
