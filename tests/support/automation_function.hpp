// Functions of automation past the slots that a test program has taken for itself.
#pragma once

#include <windows.h>

namespace paylodge::test {

// Null when automation has no function of this name.
template <class Function>
[[nodiscard]] Function* FindInAutomation(const char* name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(::GetProcAddress(::LoadLibraryW(L"oleaut32.dll"), name)));
}

}  // namespace paylodge::test
