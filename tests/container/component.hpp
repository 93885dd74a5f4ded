// The component itself, loaded from beside the tests and served to this process without registration.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <objbase.h>

#include <string>

#include "com/com_ptr.hpp"
#include "com/owner.hpp"
#include "paylodge.h"
#include "tests/support/hresult.hpp"

namespace paylodge::test {

class Component {
  public:
    Component() : library_(::LoadLibraryW(FileName().c_str())) {
        ComPtr<IClassFactory> factory;
        const auto get_class_object = Function<decltype(DllGetClassObject)>("DllGetClassObject");
        EXPECT_HRESULT(S_OK, get_class_object(CLSID_PaylodgeCtrl, IID_IClassFactory, factory.ReceiveVoid()));
        EXPECT_HRESULT(S_OK, ::CoRegisterClassObject(CLSID_PaylodgeCtrl, factory.Get(), CLSCTX_INPROC_SERVER,
                                                     REGCLS_MULTIPLEUSE, &registration_));
    }
    // Nothing of the component may be left alive.
    ~Component() {
        EXPECT_HRESULT(S_OK, ::CoRevokeClassObject(registration_));
        EXPECT_HRESULT(S_OK, Function<decltype(DllCanUnloadNow)>("DllCanUnloadNow")());
    }
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;

    [[nodiscard]] static ComPtr<IOleObject> NewControl() {
        ComPtr<IOleObject> control;
        EXPECT_HRESULT(S_OK, ::CoCreateInstance(CLSID_PaylodgeCtrl, nullptr, CLSCTX_INPROC_SERVER, IID_IOleObject,
                                                control.ReceiveVoid()));
        return control;
    }

  private:
    [[nodiscard]] static std::wstring FileName() {
        std::wstring path(MAX_PATH, L'\0');
        path.resize(::GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
        return path.substr(0, path.rfind(L'\\')) + L"\\..\\Paylodge.dll";
    }
    template <class Signature>
    [[nodiscard]] Signature* Function(const char* name) const {
        return reinterpret_cast<Signature*>(reinterpret_cast<void*>(::GetProcAddress(library_.Get(), name)));
    }

    ModuleHandle library_;
    DWORD registration_ = 0;
};

}  // namespace paylodge::test
