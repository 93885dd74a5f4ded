#include "tests/component/module_under_test.hpp"

#include <filesystem>

#include "frame/com/module.hpp"
#include "frame/com/object_root.hpp"

namespace paylodge::test {
namespace {

// The host's application locator.
constexpr CLSID kLocatorClass = {0x1143B0F7, 0xC473, 0x41E6, {0xA3, 0xD3, 0x5B, 0xE6, 0x74, 0x7C, 0x4B, 0xF2}};

class FailingClassObject : public IClassFactory {
  public:
    using Interfaces = InterfaceTable<Entry<IClassFactory>>;

    STDMETHODIMP CreateInstance(IUnknown*, REFIID, void** object) override {
        *object = nullptr;
        return E_FAIL;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  protected:
    ~FailingClassObject() = default;
};

}  // namespace

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
    EXPECT_EQ(S_OK, CanUnloadNow());
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
    EXPECT_EQ(S_OK, GetClassObject(CLSID_Paylodge, IID_IClassFactory, factory.ReceiveVoid()));
    ComPtr<IPaylodge8> object;
    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IPaylodge8, object.ReceiveVoid()));
    return object;
}

NoApplication::NoApplication() : class_object_(ComObject<FailingClassObject>::Create().Get()) {
    EXPECT_EQ(S_OK, ::CoRegisterClassObject(kLocatorClass, class_object_.Get(), CLSCTX_INPROC_SERVER,
                                            REGCLS_MULTIPLEUSE, &registration_));
}

NoApplication::~NoApplication() { EXPECT_EQ(S_OK, ::CoRevokeClassObject(registration_)); }

void PrintTo(const Member& member, std::ostream* out) { *out << NameOf(member); }

}  // namespace paylodge::test
