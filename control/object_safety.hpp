// IObjectSafety: what a browser may do with an object.
#pragma once

#include <windows.h>

#include "com/object_root.hpp"
#include "com/object_safety_id.hpp"

namespace paylodge {

// supported_options are the INTERFACESAFE_ bits that the class knows.
template <class Class, DWORD supported_options>
class IObjectSafetyImpl : public IObjectSafety {
  public:
    // E_POINTER; for an interface that the object lacks both out parameters become 0 and E_NOINTERFACE is returned.
    STDMETHODIMP GetInterfaceSafetyOptions(REFIID id, DWORD* supported, DWORD* enabled) override {
        if (supported == nullptr || enabled == nullptr) {
            return E_POINTER;
        }
        const bool has = HasInterface(id);
        *supported = has ? supported_options : 0;
        *enabled = has ? enabled_options_ : 0;
        return has ? S_OK : E_NOINTERFACE;
    }

    // E_NOINTERFACE for an interface that the object lacks, E_FAIL for options that it does not know.
    STDMETHODIMP SetInterfaceSafetyOptions(REFIID id, DWORD option_set_mask, DWORD enabled_options) override {
        if (!HasInterface(id)) {
            return E_NOINTERFACE;
        }
        if ((option_set_mask & ~supported_options) != 0) {
            return E_FAIL;
        }
        enabled_options_ = (enabled_options_ & ~option_set_mask) | (enabled_options & option_set_mask);
        return S_OK;
    }

  private:
    [[nodiscard]] bool HasInterface(REFIID id) noexcept {
        return FindInterface(static_cast<Class*>(this), id) != nullptr;
    }

    DWORD enabled_options_ = 0;
};

}  // namespace paylodge
