#include "frame/module/server_registration.hpp"

#include "com/module.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/platform.hpp"
#include "tests/support/scratch_registry.hpp"

namespace paylodge {
namespace {

constexpr auto kPaylodgeKey = L"CLSID\\{F8A9E1FD-7DCD-4be8-B510-7CBB849364AB}";
constexpr auto kPaylodgeCtrlKey = L"CLSID\\{00A0CCCE-89E6-4779-AACD-E774651CB5AD}";
constexpr auto kLibraryKey = L"TypeLib\\{C29F0A7C-64E9-4345-A15A-EBCB89E54784}\\1.0";

[[nodiscard]] std::wstring Join(const wchar_t* key, const wchar_t* subkey) {
    return std::wstring(key) + L"\\" + subkey;
}

class ServerRegistration : public ScratchRegistry {
    Redirection classes_{HKEY_CLASSES_ROOT, Root()};
};

TEST_F(ServerRegistration, RegistersTheModuleAndItsTypeLibrary) {
    const std::wstring module = Module::Path();
    ASSERT_HRESULT(S_OK, RegisterServer());
    EXPECT_EQ(Text(Join(kPaylodgeKey, L"InprocServer32").c_str()), module);
    EXPECT_EQ(Text(Join(kPaylodgeCtrlKey, L"InprocServer32").c_str()), module);
    EXPECT_EQ(Text(Join(kPaylodgeCtrlKey, L"MiscStatus\\1").c_str()), L"131473");
    EXPECT_EQ(Text(kLibraryKey), L"Paylodge 1.0 Type Library");
    EXPECT_EQ(Text(Join(kLibraryKey, sizeof(void*) == 8 ? L"0\\win64" : L"0\\win32").c_str()), module);
}

TEST_F(ServerRegistration, RemovesTheModuleAndItsTypeLibrary) {
    ASSERT_HRESULT(S_OK, RegisterServer());
    ASSERT_HRESULT(S_OK, UnregisterServer());
    EXPECT_FALSE(HasKey(L"Paylodge.Paylodge"));
    EXPECT_EQ(CountSubkeys(L"CLSID"), 0u);
    EXPECT_FALSE(HasKey(kLibraryKey));
}

class UserServerRegistration : public ScratchRegistry {
    Redirection user_{HKEY_CURRENT_USER, Root()};
    Redirection classes_{HKEY_CLASSES_ROOT, Root()};
};

TEST_F(UserServerRegistration, WritesToTheUsersClassesAlone) {
    const std::wstring classes = L"Software\\Classes\\";
    const std::wstring server = classes + Join(kPaylodgeKey, L"InprocServer32");
    // Wine registers every type library for the machine.
    const std::wstring library = std::wstring(test::WindowsOrWine(classes.c_str(), L"")) +
                                 Join(kLibraryKey, sizeof(void*) == 8 ? L"0\\win64" : L"0\\win32");
    ASSERT_HRESULT(S_OK, RegisterServer(RegistrationScope::kCurrentUser));
    EXPECT_EQ(Text(server.c_str()), Module::Path());
    EXPECT_EQ(Text(library.c_str()), Module::Path());
    EXPECT_FALSE(HasKey(L"CLSID"));
    ASSERT_HRESULT(S_OK, UnregisterServer(RegistrationScope::kCurrentUser));
    EXPECT_FALSE(HasKey(server.c_str()));
    EXPECT_FALSE(HasKey(library.c_str()));
}

TEST_F(ServerRegistration, RemovesWhatIsNotThereWithoutFailure) { EXPECT_HRESULT(S_OK, UnregisterServer()); }

}  // namespace
}  // namespace paylodge
