#include "tests/component/module_under_test.hpp"

#include <filesystem>

#include "com/module.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {

std::wstring ModulePath() {
    return std::filesystem::path(Module::Path()).parent_path().parent_path() / L"Paylodge.dll";
}

ModuleUnderTest::ModuleUnderTest() {
    // Stays loaded as in a host with a browser, and spares each test the time for it.
    static const HMODULE url_library = ::LoadLibraryW(L"urlmon.dll");
    EXPECT_NE(nullptr, url_library);
    handle_ = ::LoadLibraryW(ModulePath().c_str());
    EXPECT_NE(nullptr, handle_);
}

ModuleUnderTest::~ModuleUnderTest() {
    EXPECT_HRESULT(S_OK, CanUnloadNow());
    ::FreeLibrary(handle_);
    EXPECT_EQ(nullptr, ::GetModuleHandleW(L"Paylodge.dll"));
}

HRESULT ModuleUnderTest::GetClassObject(REFCLSID class_id, REFIID interface_id, void** object) const {
    return Export<HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**)>("DllGetClassObject")(class_id, interface_id,
                                                                                         object);
}

HRESULT ModuleUnderTest::CanUnloadNow() const { return Export<HRESULT STDAPICALLTYPE()>("DllCanUnloadNow")(); }

ComPtr<IPaylodge8> ModuleUnderTest::CreatePaylodge() const {
    ComPtr<IClassFactory> factory;
    EXPECT_HRESULT(S_OK, GetClassObject(CLSID_Paylodge, IID_IClassFactory, factory.ReceiveVoid()));
    ComPtr<IPaylodge8> object;
    EXPECT_HRESULT(S_OK, factory->CreateInstance(nullptr, IID_IPaylodge8, object.ReceiveVoid()));
    return object;
}

void PrintTo(const Member& member, std::ostream* out) { *out << NameOf(member); }

}  // namespace paylodge::test
