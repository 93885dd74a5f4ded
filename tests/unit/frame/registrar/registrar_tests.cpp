#include "frame/registrar/registrar.hpp"

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "com/module.hpp"
#include "frame/registrar/registration_steps.hpp"
#include "tests/support/hresult.hpp"
#include "tests/support/scratch_registry.hpp"

namespace paylodge {
namespace {

constexpr WORD kPaylodge = 101;
constexpr WORD kPaylodgeCtrl = 104;
constexpr WORD kMistake = 201;
constexpr WORD kRefused = 202;
constexpr WORD kAnsi = 203;
constexpr WORD kMissing = 299;

constexpr auto kPaylodgeKey = L"CLSID\\{F8A9E1FD-7DCD-4be8-B510-7CBB849364AB}";
constexpr auto kPaylodgeCtrlKey = L"CLSID\\{00A0CCCE-89E6-4779-AACD-E774651CB5AD}";
constexpr auto kPaylodgeId = L"{F8A9E1FD-7DCD-4be8-B510-7CBB849364AB}";
constexpr auto kLibraryId = L"{C29F0A7C-64E9-4345-A15A-EBCB89E54784}";

constexpr auto kModule16 = u"C:\\Program Files\\It's \u65e5\u672c 100%\\Paylodge.dll";
constexpr auto kModule = L"C:\\Program Files\\It's \u65e5\u672c 100%\\Paylodge.dll";

[[nodiscard]] Registrar MakeRegistrar(RegistrationScope scope = RegistrationScope::kMachine) {
    return Registrar(scope, {{u"MODULE", kModule16}, {u"OLEMISC", u"131473"}});
}

[[nodiscard]] std::wstring Join(const wchar_t* key, const wchar_t* subkey) {
    return std::wstring(key) + L"\\" + subkey;
}

class MachineRegistration : public ScratchRegistry {
  protected:
    // What the registry returns for the name in the script that it refuses.
    [[nodiscard]] HRESULT RefusedResult() const {
        RegistryKey key;
        const LSTATUS status = ::RegCreateKeyExW(Root(), std::wstring(300, L'n').c_str(), 0, nullptr, 0, KEY_READ,
                                                 nullptr, key.Receive(), nullptr);
        EXPECT_NE(status, ERROR_SUCCESS);
        return HRESULT_FROM_WIN32(status);
    }

    Redirection classes_{HKEY_CLASSES_ROOT, Root()};
};

class UserRegistration : public ScratchRegistry {
  protected:
    Redirection user_{HKEY_CURRENT_USER, Root()};
};

TEST_F(MachineRegistration, WritesTheProgramIdOfPaylodge) {
    ASSERT_HRESULT(S_OK, MakeRegistrar().Register(kPaylodge));
    EXPECT_EQ(Text(L"Paylodge.Paylodge"), L"Paylodge Class");
    EXPECT_EQ(Text(L"Paylodge.Paylodge\\CLSID"), kPaylodgeId);
    EXPECT_EQ(Text(L"Paylodge.Paylodge\\CurVer"), L"Paylodge.Paylodge");
    EXPECT_EQ(CountSubkeys(L"Paylodge.Paylodge"), 2u);
    EXPECT_EQ(CountSubkeys(nullptr), 2u);
}

TEST_F(MachineRegistration, WritesTheClassOfPaylodge) {
    ASSERT_HRESULT(S_OK, MakeRegistrar().Register(kPaylodge));
    EXPECT_EQ(Text(kPaylodgeKey), L"Paylodged Class");
    EXPECT_EQ(Text(Join(kPaylodgeKey, L"ProgID").c_str()), L"Paylodge.Paylodge");
    EXPECT_EQ(Text(Join(kPaylodgeKey, L"VersionIndependentProgID").c_str()), L"Paylodge.Paylodge");
    EXPECT_TRUE(HasKey(Join(kPaylodgeKey, L"Programmable").c_str()));
    EXPECT_EQ(CountValues(Join(kPaylodgeKey, L"Programmable").c_str()), 0u);
    EXPECT_EQ(Text(Join(kPaylodgeKey, L"TypeLib").c_str()), kLibraryId);
    EXPECT_EQ(CountSubkeys(kPaylodgeKey), 5u);
    EXPECT_EQ(CountValues(kPaylodgeKey), 1u);
}

TEST_F(MachineRegistration, WritesNoThreadingModelForPaylodge) {
    ASSERT_HRESULT(S_OK, MakeRegistrar().Register(kPaylodge));
    EXPECT_EQ(Text(Join(kPaylodgeKey, L"InprocServer32").c_str()), kModule);
    EXPECT_EQ(CountValues(Join(kPaylodgeKey, L"InprocServer32").c_str()), 1u);
}

TEST_F(MachineRegistration, WritesTheClassOfTheControl) {
    ASSERT_HRESULT(S_OK, MakeRegistrar().Register(kPaylodgeCtrl));
    EXPECT_EQ(Text(kPaylodgeCtrlKey), L"PaylodgeCtrl Class");
    EXPECT_EQ(CountValues(Join(kPaylodgeCtrlKey, L"Programmable").c_str()), 0u);
    EXPECT_EQ(Text(Join(kPaylodgeCtrlKey, L"InprocServer32").c_str()), kModule);
    EXPECT_EQ(Text(Join(kPaylodgeCtrlKey, L"InprocServer32").c_str(), L"ThreadingModel"), L"Apartment");
    EXPECT_EQ(CountValues(Join(kPaylodgeCtrlKey, L"Control").c_str()), 0u);
    EXPECT_EQ(Text(Join(kPaylodgeCtrlKey, L"ToolboxBitmap32").c_str()), std::wstring(kModule) + L", 103");
    EXPECT_EQ(Text(Join(kPaylodgeCtrlKey, L"MiscStatus").c_str()), L"0");
    EXPECT_EQ(Text(Join(kPaylodgeCtrlKey, L"MiscStatus\\1").c_str()), L"131473");
    EXPECT_EQ(Text(Join(kPaylodgeCtrlKey, L"TypeLib").c_str()), kLibraryId);
    EXPECT_EQ(Text(Join(kPaylodgeCtrlKey, L"Version").c_str()), L"1.0");
    EXPECT_EQ(CountSubkeys(kPaylodgeCtrlKey), 7u);
    EXPECT_EQ(CountSubkeys(nullptr), 1u);
}

TEST_F(MachineRegistration, RewritesTheClassKeysWhenRegisteredAgain) {
    CreateKey(Join(kPaylodgeKey, L"Leftover").c_str());
    SetText(Join(kPaylodgeKey, L"InprocServer32").c_str(), L"ThreadingModel", L"Both");
    ASSERT_HRESULT(S_OK, MakeRegistrar().Register(kPaylodge));
    EXPECT_FALSE(HasKey(Join(kPaylodgeKey, L"Leftover").c_str()));
    EXPECT_FALSE(Value(Join(kPaylodgeKey, L"InprocServer32").c_str(), L"ThreadingModel").has_value());
}

TEST_F(MachineRegistration, LeavesOtherClassesAlone) {
    CreateKey(L"CLSID\\{other}");
    for (const WORD script : {kPaylodge, kPaylodgeCtrl}) {
        ASSERT_HRESULT(S_OK, MakeRegistrar().Register(script));
        ASSERT_HRESULT(S_OK, MakeRegistrar().Unregister(script));
    }
    EXPECT_TRUE(HasKey(L"CLSID\\{other}"));
    EXPECT_EQ(CountSubkeys(L"CLSID"), 1u);
    EXPECT_EQ(CountSubkeys(nullptr), 1u);
}

TEST_F(MachineRegistration, ReadsScriptsInTheAnsiCodePage) {
    ASSERT_HRESULT(S_OK, MakeRegistrar().Register(kAnsi));
    wchar_t expected[2] = {};
    ASSERT_EQ(::MultiByteToWideChar(CP_ACP, 0, "\xe4", 1, expected, 1), 1);
    EXPECT_EQ(Text(L"Encoded"), expected);
}

TEST_F(MachineRegistration, ChangesNothingForAScriptWithAMistake) {
    EXPECT_HRESULT(DISP_E_EXCEPTION, MakeRegistrar().Register(kMistake));
    EXPECT_HRESULT(DISP_E_EXCEPTION, MakeRegistrar().Unregister(kMistake));
    EXPECT_EQ(CountSubkeys(nullptr), 0u);
}

TEST_F(MachineRegistration, FailsForAVariableWithoutValue) {
    EXPECT_HRESULT(DISP_E_EXCEPTION, Registrar(RegistrationScope::kMachine, {}).Register(kPaylodge));
    EXPECT_EQ(CountSubkeys(nullptr), 0u);
}

TEST_F(MachineRegistration, ReturnsTheRegistrysFailure) {
    EXPECT_HRESULT(RefusedResult(), MakeRegistrar().Register(kRefused));
    EXPECT_EQ(Text(L"Refused"), L"x");
}

TEST_F(MachineRegistration, FailsForAScriptThatIsMissing) {
    EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_RESOURCE_NAME_NOT_FOUND), MakeRegistrar().Register(kMissing));
}

TEST_F(UserRegistration, WritesToTheClassesOfTheUser) {
    const Registrar registrar = MakeRegistrar(RegistrationScope::kCurrentUser);
    EXPECT_EQ(registrar.Scope(), RegistrationScope::kCurrentUser);
    ASSERT_HRESULT(S_OK, registrar.Register(kPaylodge));
    EXPECT_EQ(Text(L"Software\\Classes\\Paylodge.Paylodge\\CLSID"), kPaylodgeId);
    EXPECT_EQ(Text(Join(Join(L"Software\\Classes", kPaylodgeKey).c_str(), L"InprocServer32").c_str()), kModule);
    ASSERT_HRESULT(S_OK, registrar.Unregister(kPaylodge));
    EXPECT_EQ(CountSubkeys(L"Software\\Classes"), 1u);
    EXPECT_EQ(CountSubkeys(L"Software\\Classes\\CLSID"), 0u);
}

constexpr RegistrationStep kPaylodgeStep = {[](const Registrar& registrar) { return registrar.Register(kPaylodge); },
                                            [](const Registrar& registrar) { return registrar.Unregister(kPaylodge); }};
constexpr RegistrationStep kRefusedStep = {[](const Registrar& registrar) { return registrar.Register(kRefused); },
                                           [](const Registrar& registrar) { return registrar.Unregister(kRefused); }};
constexpr RegistrationStep kUntouchedStep = {[](const Registrar&) -> HRESULT {
                                                 ADD_FAILURE() << "a step after the one that failed";
                                                 return S_OK;
                                             },
                                             [](const Registrar&) -> HRESULT {
                                                 ADD_FAILURE() << "a step that was never applied";
                                                 return S_OK;
                                             }};

TEST_F(MachineRegistration, TakesBackWhatItWroteWhenAStepFails) {
    const RegistrationStep steps[] = {kPaylodgeStep, kRefusedStep, kUntouchedStep};
    EXPECT_HRESULT(RefusedResult(), ApplySteps(steps, MakeRegistrar()));
    EXPECT_FALSE(HasKey(L"Paylodge.Paylodge"));
    EXPECT_FALSE(HasKey(L"Refused"));
    EXPECT_EQ(CountSubkeys(L"CLSID"), 0u);
}

TEST_F(MachineRegistration, RemovesTheOtherStepsWhenOneFails) {
    constexpr RegistrationStep failing = {nullptr, [](const Registrar&) -> HRESULT { return E_ABORT; }};
    ASSERT_HRESULT(S_OK, MakeRegistrar().Register(kPaylodge));
    const RegistrationStep steps[] = {failing, kPaylodgeStep};
    EXPECT_HRESULT(E_ABORT, RemoveSteps(steps, MakeRegistrar()));
    EXPECT_FALSE(HasKey(L"Paylodge.Paylodge"));
}

template <class Function>
[[nodiscard]] void* Address(Function* function) noexcept {
    return reinterpret_cast<void*>(function);
}

TEST(TypeLibraryFunctions, AreTheMachinesUnlessTheUserAsks) {
    const auto functions = FindTypeLibraryFunctions(RegistrationScope::kMachine, ::GetModuleHandleW(L"OLEAUT32.DLL"));
    EXPECT_EQ(functions.register_library, &::RegisterTypeLib);
    EXPECT_EQ(functions.unregister_library, &::UnRegisterTypeLib);
}

TEST(TypeLibraryFunctions, AreLookedUpByNameForTheUser) {
    const HMODULE automation = ::GetModuleHandleW(L"OLEAUT32.DLL");
    const auto functions = FindTypeLibraryFunctions(RegistrationScope::kCurrentUser, automation);
    EXPECT_EQ(Address(functions.register_library), Address(::GetProcAddress(automation, "RegisterTypeLibForUser")));
    EXPECT_EQ(Address(functions.unregister_library), Address(::GetProcAddress(automation, "UnRegisterTypeLibForUser")));
}

TEST(TypeLibraryFunctions, FallBackToTheMachinesWhereTheUsersAreMissing) {
    const auto functions =
        FindTypeLibraryFunctions(RegistrationScope::kCurrentUser, ::GetModuleHandleW(L"kernel32.dll"));
    EXPECT_EQ(functions.register_library, &::RegisterTypeLib);
    EXPECT_EQ(functions.unregister_library, &::UnRegisterTypeLib);
}

}  // namespace
}  // namespace paylodge
