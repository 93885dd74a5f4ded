// The boundary to COM callers: what is thrown inside leaves as an HRESULT.
#pragma once

#include <windows.h>

namespace paylodge {

// The HRESULT for the exception that is being handled: a COM error's own, E_OUTOFMEMORY for a failed allocation and for
// a text that no string can hold, E_UNEXPECTED for everything else. Only inside a catch clause.
[[nodiscard]] HRESULT CaughtHResult() noexcept;

// What the work returns, or the HRESULT for what it throws.
template <class Work>
[[nodiscard]] HRESULT AtBoundary(const Work& work) noexcept {
    try {
        return work();
    } catch (...) {
        return CaughtHResult();
    }
}

}  // namespace paylodge
