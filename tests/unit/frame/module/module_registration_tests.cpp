// The module itself, registered from a folder with an awkward name.
#include "com/com_ptr.hpp"
#include "com/module.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/scratch_registry.hpp"

namespace paylodge {
namespace {

class ModuleRegistration : public ScratchRegistry {
  public:
    ModuleRegistration() {
        const std::wstring program = Module::Path();
        const std::wstring tests = program.substr(0, program.find_last_of(L'\\'));
        folder_ = tests + L"\\It's 100% \u65e5\u672c \u03a9 %MODULE%";
        path_ = folder_ + L"\\Paylodge.dll";
        ::CreateDirectoryW(folder_.c_str(), nullptr);
        EXPECT_TRUE(::CopyFileW((tests + L"\\..\\Paylodge.dll").c_str(), path_.c_str(), FALSE));
        module_ = ModuleHandle(::LoadLibraryW(path_.c_str()));
        Redirection::LetTypeLibrariesFollow();
        EXPECT_EQ(::RegOverridePredefKey(HKEY_CLASSES_ROOT, Root()), ERROR_SUCCESS);
    }
    ~ModuleRegistration() override {
        EXPECT_EQ(::RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr), ERROR_SUCCESS);
        module_.Reset();
        EXPECT_TRUE(::DeleteFileW(path_.c_str()));
        EXPECT_TRUE(::RemoveDirectoryW(folder_.c_str()));
    }

  protected:
    [[nodiscard]] HRESULT Call(const char* name) const {
        const FARPROC function = ::GetProcAddress(module_.Get(), name);
        EXPECT_NE(function, nullptr) << name;
        return function == nullptr ? E_UNEXPECTED
                                   : reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(reinterpret_cast<void*>(function))();
    }
    [[nodiscard]] const std::wstring& Path() const noexcept { return path_; }

    // The registry refuses lasting keys below a volatile one.
    void MakeVolatile(const wchar_t* path) const {
        RegistryKey key;
        EXPECT_EQ(
            ::RegCreateKeyExW(Root(), path, 0, nullptr, REG_OPTION_VOLATILE, KEY_READ, nullptr, key.Receive(), nullptr),
            ERROR_SUCCESS);
    }
    // What automation itself says to the registration of the module's type library.
    [[nodiscard]] HRESULT RegisterLibraryAlone() const {
        ComPtr<ITypeLib> library;
        EXPECT_HRESULT(S_OK, ::LoadTypeLibEx(path_.c_str(), REGKIND_NONE, library.Receive()));
        std::wstring path = path_;
        std::wstring folder = folder_;
        return ::RegisterTypeLib(library.Get(), path.data(), folder.data());
    }

  private:
    std::wstring folder_;
    std::wstring path_;
    ModuleHandle module_;
};

TEST_F(ModuleRegistration, KnowsWhereTheModuleIs) {
    ASSERT_HRESULT(S_OK, Call("DllRegisterServer"));
    EXPECT_EQ(Text(L"CLSID\\{F8A9E1FD-7DCD-4be8-B510-7CBB849364AB}\\InprocServer32"), Path());
    EXPECT_EQ(Text(L"CLSID\\{00A0CCCE-89E6-4779-AACD-E774651CB5AD}\\InprocServer32"), Path());
    EXPECT_EQ(Text(L"CLSID\\{00A0CCCE-89E6-4779-AACD-E774651CB5AD}\\ToolboxBitmap32"), Path() + L", 103");
    EXPECT_EQ(Text(sizeof(void*) == 8 ? L"TypeLib\\{C29F0A7C-64E9-4345-A15A-EBCB89E54784}\\1.0\\0\\win64"
                                      : L"TypeLib\\{C29F0A7C-64E9-4345-A15A-EBCB89E54784}\\1.0\\0\\win32"),
              Path());
}

TEST_F(ModuleRegistration, IsTakenBackWhole) {
    ASSERT_HRESULT(S_OK, Call("DllRegisterServer"));
    ASSERT_HRESULT(S_OK, Call("DllUnregisterServer"));
    EXPECT_FALSE(HasKey(L"Paylodge.Paylodge"));
    EXPECT_EQ(CountSubkeys(L"CLSID"), 0u);
    EXPECT_FALSE(HasKey(L"TypeLib\\{C29F0A7C-64E9-4345-A15A-EBCB89E54784}"));
    EXPECT_HRESULT(S_OK, Call("DllUnregisterServer"));
}

TEST_F(ModuleRegistration, MayBeDoneTwice) {
    ASSERT_HRESULT(S_OK, Call("DllRegisterServer"));
    EXPECT_HRESULT(S_OK, Call("DllRegisterServer"));
    EXPECT_EQ(CountSubkeys(L"CLSID"), 2u);
}

TEST_F(ModuleRegistration, ReturnsTheRegistrysFailureAndLeavesNothingHalfDone) {
    MakeVolatile(L"CLSID");
    EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE), Call("DllRegisterServer"));
    EXPECT_FALSE(HasKey(L"Paylodge.Paylodge"));
    EXPECT_EQ(CountSubkeys(L"CLSID"), 0u);
    EXPECT_FALSE(HasKey(L"TypeLib"));
}

TEST_F(ModuleRegistration, ReturnsTheFailureOfTheTypeLibraryAndLeavesNothingHalfDone) {
    MakeVolatile(L"TypeLib");
    const HRESULT failure = RegisterLibraryAlone();
    ASSERT_TRUE(FAILED(failure));
    EXPECT_HRESULT(failure, Call("DllRegisterServer"));
    EXPECT_FALSE(HasKey(L"Paylodge.Paylodge"));
    EXPECT_EQ(CountSubkeys(L"CLSID"), 0u);
    EXPECT_EQ(CountSubkeys(L"TypeLib"), 0u);
}

// A deleted key is open as long as somebody uses it.
TEST_F(ModuleRegistration, FailsWhereTheClassesAreGone) {
    CreateKey(L"Gone");
    RegistryKey gone;
    ASSERT_EQ(::RegOpenKeyExW(Root(), L"Gone", 0, KEY_ALL_ACCESS, gone.Receive()), ERROR_SUCCESS);
    ASSERT_EQ(::RegDeleteKeyW(Root(), L"Gone"), ERROR_SUCCESS);
    ASSERT_EQ(::RegOverridePredefKey(HKEY_CLASSES_ROOT, gone.Get()), ERROR_SUCCESS);
    EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_KEY_DELETED), Call("DllRegisterServer"));
    EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_KEY_DELETED), Call("DllUnregisterServer"));
    EXPECT_EQ(CountSubkeys(nullptr), 0u);
}

}  // namespace
}  // namespace paylodge
