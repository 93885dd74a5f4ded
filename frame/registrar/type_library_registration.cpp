#include "frame/registrar/type_library_registration.hpp"

#include <string>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "com/module.hpp"

namespace paylodge {
namespace {

template <class Function>
[[nodiscard]] Function FindOr(Function otherwise, HMODULE library, const char* name) noexcept {
    const FARPROC found = ::GetProcAddress(library, name);
    return found == nullptr ? otherwise : reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

// Always loaded, since this module imports it.
[[nodiscard]] TypeLibraryFunctions Functions(RegistrationScope scope) noexcept {
    return FindTypeLibraryFunctions(scope, ::GetModuleHandleW(L"OLEAUT32.DLL"));
}

[[nodiscard]] HRESULT LoadOwnLibrary(const std::wstring& path, ComPtr<ITypeLib>& library) {
    return ::LoadTypeLibEx(path.c_str(), REGKIND_NONE, library.Receive());
}

[[nodiscard]] bool IsRegistered(const TLIBATTR& library) noexcept {
    OwnedBstr path;
    return SUCCEEDED(::QueryPathOfRegTypeLib(library.guid, library.wMajorVerNum, library.wMinorVerNum, library.lcid,
                                             path.Receive()));
}

[[nodiscard]] HRESULT Unregister(const TLIBATTR& library, RegistrationScope scope) {
    const HRESULT result = Functions(scope).unregister_library(library.guid, library.wMajorVerNum, library.wMinorVerNum,
                                                               library.lcid, library.syskind);
    return FAILED(result) && !IsRegistered(library) ? S_OK : result;
}

}  // namespace

TypeLibraryFunctions FindTypeLibraryFunctions(RegistrationScope scope, HMODULE automation) noexcept {
    const TypeLibraryFunctions machine = {&::RegisterTypeLib, &::UnRegisterTypeLib};
    if (scope == RegistrationScope::kMachine) {
        return machine;
    }
    return {FindOr(machine.register_library, automation, "RegisterTypeLibForUser"),
            FindOr(machine.unregister_library, automation, "UnRegisterTypeLibForUser")};
}

HRESULT RegisterTypeLibrary(RegistrationScope scope) {
    std::wstring path = Module::Path();
    ComPtr<ITypeLib> library;
    if (const HRESULT result = LoadOwnLibrary(path, library); FAILED(result)) {
        return result;
    }
    std::wstring folder = path.substr(0, path.find_last_of(L'\\') + 1);
    return Functions(scope).register_library(library.Get(), path.data(), folder.data());
}

HRESULT UnregisterTypeLibrary(RegistrationScope scope) {
    ComPtr<ITypeLib> library;
    TLIBATTR* attributes = nullptr;
    HRESULT result = LoadOwnLibrary(Module::Path(), library);
    if (SUCCEEDED(result)) {
        result = library->GetLibAttr(&attributes);
    }
    if (SUCCEEDED(result)) {
        result = Unregister(*attributes, scope);
        library->ReleaseTLibAttr(attributes);
    }
    return result;
}

}  // namespace paylodge
