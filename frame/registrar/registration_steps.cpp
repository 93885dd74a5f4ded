#include "frame/registrar/registration_steps.hpp"

namespace paylodge {

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

}  // namespace paylodge
