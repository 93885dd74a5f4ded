#include "frame/registrar/server_registration.hpp"

#include <comdef.h>

#include <array>
#include <new>

#include "bridge/misc_status.hpp"
#include "frame/com/module.hpp"

namespace paylodge {
namespace {

template <WORD script>
constexpr RegistrationStep kScript = {[](const Registrar& registrar) { return registrar.Register(script); },
                                      [](const Registrar& registrar) { return registrar.Unregister(script); }};

constexpr RegistrationStep kTypeLibrary = {
    [](const Registrar& registrar) { return RegisterTypeLibrary(registrar.Scope()); },
    [](const Registrar& registrar) { return UnregisterTypeLibrary(registrar.Scope()); }};

constexpr std::array kSteps = {kScript<101>, kScript<104>, kTypeLibrary};

[[nodiscard]] std::u16string Text(std::wstring_view text) { return {text.begin(), text.end()}; }

[[nodiscard]] HRESULT Run(HRESULT (*run)(std::span<const RegistrationStep>, const Registrar&),
                          RegistrationScope scope) {
    try {
        const Registrar registrar(
            scope, {{u"MODULE", Text(Module::Path())}, {u"OLEMISC", Text(std::to_wstring(kControlMiscStatus))}});
        return run(kSteps, registrar);
    } catch (const _com_error& error) {
        return error.Error();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace

HRESULT ApplySteps(std::span<const RegistrationStep> steps, const Registrar& registrar) {
    for (size_t done = 0; done < steps.size(); ++done) {
        if (const HRESULT result = steps[done].apply(registrar); FAILED(result)) {
            static_cast<void>(RemoveSteps(steps.first(done + 1), registrar));
            return result;
        }
    }
    return S_OK;
}

HRESULT RemoveSteps(std::span<const RegistrationStep> steps, const Registrar& registrar) {
    HRESULT first_failure = S_OK;
    for (const RegistrationStep& step : steps) {
        const HRESULT result = step.remove(registrar);
        if (SUCCEEDED(first_failure)) {
            first_failure = result;
        }
    }
    return first_failure;
}

HRESULT RegisterServer(RegistrationScope scope) { return Run(&ApplySteps, scope); }

HRESULT UnregisterServer(RegistrationScope scope) { return Run(&RemoveSteps, scope); }

}  // namespace paylodge
