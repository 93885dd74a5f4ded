#include "frame/registrar/registry_writer.hpp"

#include <iomanip>
#include <ostream>
#include <utility>

#include "tests/support/hresult.hpp"
#include "tests/support/import_slot.hpp"
#include "tests/support/scratch_registry.hpp"

namespace paylodge {
namespace {

// What the writer opened, with the access that it asked for.
struct Opened {
    std::wstring name;
    REGSAM access;
    bool operator==(const Opened&) const = default;
};
void PrintTo(const Opened& opened, std::ostream* out) {
    *out << testing::PrintToString(opened.name) << " for " << std::hex << opened.access;
}
std::vector<Opened> g_opened;

void NoteOpened(LPCWSTR name, REGSAM access) {
    if (name != nullptr) {
        g_opened.push_back({name, access});
    }
}

template <class Function>
[[nodiscard]] Function* InRegistry(const char* name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"advapi32.dll"), name)));
}

// Where keys were to be created while the registry refuses that; null while it does not.
std::vector<HKEY>* g_refused_parents = nullptr;

LSTATUS WINAPI CreateKey(HKEY parent, LPCWSTR name, DWORD reserved, LPWSTR key_class, DWORD options, REGSAM access,
                         const LPSECURITY_ATTRIBUTES attributes, PHKEY key, LPDWORD disposition) {
    NoteOpened(name, access);
    if (g_refused_parents != nullptr) {
        g_refused_parents->push_back(parent);
        return ERROR_ACCESS_DENIED;
    }
    return InRegistry<decltype(CreateKey)>("RegCreateKeyExW")(parent, name, reserved, key_class, options, access,
                                                              attributes, key, disposition);
}

LSTATUS WINAPI OpenKey(HKEY parent, LPCWSTR name, DWORD options, REGSAM access, PHKEY key) {
    NoteOpened(name, access);
    return InRegistry<decltype(OpenKey)>("RegOpenKeyExW")(parent, name, options, access, key);
}

}  // namespace
}  // namespace paylodge

extern "C" {
extern decltype(&paylodge::CreateKey) import_of_create_key PAYLODGE_IMPORT_SLOT(RegCreateKeyExW, 36);
extern decltype(&paylodge::OpenKey) import_of_open_key PAYLODGE_IMPORT_SLOT(RegOpenKeyExW, 20);
decltype(&paylodge::CreateKey) import_of_create_key = &paylodge::CreateKey;
decltype(&paylodge::OpenKey) import_of_open_key = &paylodge::OpenKey;
}

namespace paylodge {
namespace {

class RegistryWriter : public ScratchRegistry {
  protected:
    // The entries of a script, which its root key does not matter for.
    [[nodiscard]] static std::vector<RegistryEntry> Entries(std::u16string_view entries) {
        std::u16string script = u"HKCU { ";
        script += entries;
        script += u" }";
        return ParseRegistryScript(script, {}).at(0).entries;
    }
    [[nodiscard]] HRESULT Write(std::u16string_view entries) const { return WriteEntries(Root(), Entries(entries)); }
    [[nodiscard]] HRESULT Remove(std::u16string_view entries) const { return RemoveEntries(Root(), Entries(entries)); }
};

using Bytes = std::vector<BYTE>;

constexpr REGSAM kToGoThrough = KEY_READ;
constexpr REGSAM kToChange = KEY_READ | KEY_SET_VALUE;
constexpr auto kTwoKeys = u"NoRemove Shared { Ours = s 'one' { NoRemove Through { Val v = s 'x' } } }";

TEST_F(RegistryWriter, OpensForWritingOnlyTheKeysWhoseValuesItChanges) {
    ASSERT_HRESULT(S_OK, Write(kTwoKeys));
    g_opened.clear();
    ASSERT_HRESULT(S_OK, Write(kTwoKeys));
    const auto opened = std::exchange(g_opened, {});
    EXPECT_EQ((std::vector<Opened>{{L"Shared", kToGoThrough}, {L"Ours", kToChange}, {L"Through", kToChange}}), opened);
}

TEST_F(RegistryWriter, RemovesThroughKeysThatItOpensForReading) {
    ASSERT_HRESULT(S_OK, Write(kTwoKeys));
    g_opened.clear();
    ASSERT_HRESULT(S_OK, Remove(u"NoRemove Shared { NoRemove Ours { Through } }"));
    const auto opened = std::exchange(g_opened, {});
    EXPECT_EQ((std::vector<Opened>{{L"Shared", kToGoThrough}, {L"Ours", kToGoThrough}, {L"Through", kToGoThrough}}),
              opened);
    EXPECT_TRUE(HasKey(L"Shared\\Ours"));
    EXPECT_FALSE(HasKey(L"Shared\\Ours\\Through"));
}

TEST(RegistryScriptWriter, WritesBeneathTheRootKeyThatTheScriptNames) {
    const std::pair<std::u16string, HKEY> roots[] = {
        {u"HKCR", HKEY_CLASSES_ROOT},   {u"HKCU", HKEY_CURRENT_USER},     {u"HKLM", HKEY_LOCAL_MACHINE},
        {u"HKU", HKEY_USERS},           {u"HKPD", HKEY_PERFORMANCE_DATA}, {u"HKDD", HKEY_DYN_DATA},
        {u"HKCC", HKEY_CURRENT_CONFIG},
    };
    for (const auto& [name, root] : roots) {
        std::vector<HKEY> parents;
        g_refused_parents = &parents;
        const HRESULT result = WriteScript(ParseRegistryScript(name + u" { 'PaylodgeTests' }", {}));
        g_refused_parents = nullptr;
        EXPECT_HRESULT(E_ACCESSDENIED, result);
        EXPECT_EQ(parents, std::vector{root}) << std::string(name.begin(), name.end());
    }
}

TEST_F(RegistryWriter, CreatesKeysWithTheirDefaultValues) {
    ASSERT_HRESULT(S_OK, Write(u"a = s 'one' { b = s '' c }"));
    EXPECT_EQ(Text(L"a"), L"one");
    EXPECT_EQ(Text(L"a\\b"), L"");
    EXPECT_TRUE(HasKey(L"a\\c"));
    EXPECT_FALSE(Value(L"a\\c", nullptr).has_value());
    EXPECT_EQ(CountSubkeys(L"a"), 2u);
}

TEST_F(RegistryWriter, WritesNamedValues) {
    ASSERT_HRESULT(S_OK, Write(u"a { Val 'Threading Model' = s 'Apartment' }"));
    EXPECT_EQ(Text(L"a", L"Threading Model"), L"Apartment");
    EXPECT_FALSE(HasKey(L"a\\Threading Model"));
    EXPECT_FALSE(Value(L"a", nullptr).has_value());
}

TEST_F(RegistryWriter, StoresEachTypeOfData) {
    ASSERT_HRESULT(S_OK, Write(u"a = d 131473 { Val m = m 'b\\0c' Val e = m '' Val b = b '00FF' Val n = b '' }"));
    const auto number = Value(L"a", nullptr).value();
    EXPECT_EQ(number.type, DWORD{REG_DWORD});
    EXPECT_EQ(number.bytes, (Bytes{0x91, 0x01, 0x02, 0x00}));
    const auto texts = Value(L"a", L"m").value();
    EXPECT_EQ(texts.type, DWORD{REG_MULTI_SZ});
    EXPECT_EQ(texts.bytes, (Bytes{'b', 0, 0, 0, 'c', 0, 0, 0, 0, 0}));
    EXPECT_EQ(Value(L"a", L"e").value().bytes, (Bytes{0, 0}));
    const auto bytes = Value(L"a", L"b").value();
    EXPECT_EQ(bytes.type, DWORD{REG_BINARY});
    EXPECT_EQ(bytes.bytes, (Bytes{0x00, 0xFF}));
    EXPECT_TRUE(Value(L"a", L"n").value().bytes.empty());
}

TEST_F(RegistryWriter, KeepsWhatStandsInAKeyThatExists) {
    SetText(L"a", L"other", L"stays");
    SetText(L"a", nullptr, L"old");
    CreateKey(L"a\\foreign");
    ASSERT_HRESULT(S_OK, Write(u"a = s 'new' { b }"));
    EXPECT_EQ(Text(L"a"), L"new");
    EXPECT_EQ(Text(L"a", L"other"), L"stays");
    EXPECT_TRUE(HasKey(L"a\\foreign"));
}

TEST_F(RegistryWriter, EmptiesAForceRemoveKeyFirst) {
    SetText(L"a", L"other", L"goes");
    CreateKey(L"a\\foreign\\deeper");
    ASSERT_HRESULT(S_OK, Write(u"ForceRemove a = s 'new' { b }"));
    EXPECT_EQ(Text(L"a"), L"new");
    EXPECT_EQ(CountValues(L"a"), 1u);
    EXPECT_EQ(CountSubkeys(L"a"), 1u);
}

TEST_F(RegistryWriter, DeletesTheKeysThatAScriptDeletes) {
    CreateKey(L"a\\old\\deeper");
    CreateKey(L"a\\kept");
    ASSERT_HRESULT(S_OK, Write(u"a { Delete old Delete missing }"));
    EXPECT_FALSE(HasKey(L"a\\old"));
    EXPECT_TRUE(HasKey(L"a\\kept"));
}

TEST_F(RegistryWriter, NeverDeletesWhatComponentsShare) {
    CreateKey(L"clsid\\foreign");
    CreateKey(L"Software\\Classes\\foreign");
    CreateKey(L"TypeLib\\foreign");
    ASSERT_HRESULT(S_OK, Write(u"ForceRemove CLSID { a } Delete Software Delete TypeLib"));
    ASSERT_HRESULT(S_OK, Remove(u"ForceRemove CLSID { a } Software { Classes } ForceRemove TypeLib"));
    EXPECT_TRUE(HasKey(L"CLSID\\foreign"));
    EXPECT_FALSE(HasKey(L"CLSID\\a"));
    EXPECT_TRUE(HasKey(L"Software\\Classes\\foreign"));
    EXPECT_TRUE(HasKey(L"TypeLib\\foreign"));
}

TEST_F(RegistryWriter, RemovesAProgramIdsClassId) {
    constexpr auto script = u"Program = s 'x' { CLSID = s '{y}' }";
    ASSERT_HRESULT(S_OK, Write(script));
    ASSERT_HRESULT(S_OK, Remove(script));
    EXPECT_FALSE(HasKey(L"Program"));
}

TEST_F(RegistryWriter, StoresTextsOfAllScripts) {
    ASSERT_HRESULT(S_OK, Write(u"'\u65e5\u672c ''\u00e4''' = s 'C:\\\u03a9 \U0001F600\\''x''.dll'"));
    EXPECT_EQ(Text(L"\u65e5\u672c '\u00e4'"), L"C:\\\u03a9 \U0001F600\\'x'.dll");
}

TEST_F(RegistryWriter, EndsAtTheFirstFailure) {
    std::u16string script = u"a { ";
    script.append(300, u'n');
    script += u" } b";
    RegistryKey key;
    const LSTATUS too_long = ::RegCreateKeyExW(Root(), std::wstring(300, L'n').c_str(), 0, nullptr, 0, KEY_READ,
                                               nullptr, key.Receive(), nullptr);
    ASSERT_NE(too_long, ERROR_SUCCESS);
    EXPECT_HRESULT(HRESULT_FROM_WIN32(too_long), Write(script));
    EXPECT_TRUE(HasKey(L"a"));
    EXPECT_FALSE(HasKey(L"b"));
}

TEST_F(RegistryWriter, ReturnsTheFailureToWriteAValue) {
    CreateKey(L"a");
    RegistryKey read_only;
    ASSERT_EQ(::RegOpenKeyExW(Root(), L"a", 0, KEY_READ, read_only.Receive()), ERROR_SUCCESS);
    EXPECT_HRESULT(E_ACCESSDENIED, WriteEntries(read_only.Get(), Entries(u"Val v = s 'x'")));
    EXPECT_EQ(CountValues(L"a"), 0u);
}

TEST_F(RegistryWriter, RemovesWhatItWrote) {
    constexpr auto script = u"a = s 'x' { b { Val c = d 1 } ForceRemove d } Val v = s 'y'";
    ASSERT_HRESULT(S_OK, Write(script));
    ASSERT_HRESULT(S_OK, Remove(script));
    EXPECT_EQ(CountSubkeys(nullptr), 0u);
    EXPECT_EQ(CountValues(nullptr), 0u);
}

TEST_F(RegistryWriter, RemovesAgainWithoutFailure) {
    EXPECT_HRESULT(S_OK, Remove(u"a { b { Val c = d 1 } } ForceRemove d NoRemove e { f } Val v = s 'y'"));
    EXPECT_EQ(CountSubkeys(nullptr), 0u);
}

TEST_F(RegistryWriter, LeavesNoRemoveKeysAndValues) {
    constexpr auto script =
        u"NoRemove a = s 'x' { b NoRemove Val c = s 'c' Val d = s 'd' } ForceRemove NoRemove e { f }";
    ASSERT_HRESULT(S_OK, Write(script));
    ASSERT_HRESULT(S_OK, Remove(script));
    EXPECT_EQ(Text(L"a"), L"x");
    EXPECT_EQ(Text(L"a", L"c"), L"c");
    EXPECT_FALSE(Value(L"a", L"d").has_value());
    EXPECT_EQ(CountSubkeys(L"a"), 0u);
    EXPECT_TRUE(HasKey(L"e"));
    EXPECT_FALSE(HasKey(L"e\\f"));
}

TEST_F(RegistryWriter, RemovesForceRemoveKeysWithAllThatIsInThem) {
    CreateKey(L"a\\foreign\\deeper");
    ASSERT_HRESULT(S_OK, Remove(u"ForceRemove a { b }"));
    EXPECT_FALSE(HasKey(L"a"));
}

TEST_F(RegistryWriter, LeavesAKeyWithSubkeysThatAreNotItsOwn) {
    ASSERT_HRESULT(S_OK, Write(u"a = s 'x' { b }"));
    CreateKey(L"a\\foreign");
    ASSERT_HRESULT(S_OK, Remove(u"a = s 'x' { b }"));
    EXPECT_TRUE(HasKey(L"a\\foreign"));
    EXPECT_FALSE(HasKey(L"a\\b"));
}

TEST_F(RegistryWriter, DoesNotRestoreDeletedKeysWhenRemoving) {
    CreateKey(L"a");
    ASSERT_HRESULT(S_OK, Remove(u"Delete a"));
    EXPECT_TRUE(HasKey(L"a"));
}

// One root key may only be read, the other may be changed.
class TwoRoots : public RegistryWriter {
  protected:
    TwoRoots() {
        CreateKey(L"refusing");
        CreateKey(L"granting");
        EXPECT_EQ(::RegOpenKeyExW(Root(), L"refusing", 0, KEY_READ, refusing_.Receive()), ERROR_SUCCESS);
        EXPECT_EQ(::RegOpenKeyExW(Root(), L"granting", 0, KEY_ALL_ACCESS, granting_.Receive()), ERROR_SUCCESS);
    }
    // Runs work(script) while the first of its roots is the one that refuses, or the second.
    template <class Work>
    HRESULT Run(bool is_first_refusing, const Work& work) {
        const Redirection classes(HKEY_CLASSES_ROOT, is_first_refusing ? refusing_.Get() : granting_.Get());
        const Redirection user(HKEY_CURRENT_USER, is_first_refusing ? granting_.Get() : refusing_.Get());
        return work(ParseRegistryScript(u"HKCR { Val v = s 'x' } HKCU { Val v = s 'x' }", {}));
    }

  private:
    RegistryKey refusing_;
    RegistryKey granting_;
};

TEST_F(TwoRoots, AreBothRemovedThoughOneFails) {
    for (const bool is_first_refusing : {true, false}) {
        SetText(L"refusing", L"v", L"x");
        SetText(L"granting", L"v", L"x");
        EXPECT_HRESULT(E_ACCESSDENIED, Run(is_first_refusing, &RemoveScript)) << is_first_refusing;
        EXPECT_EQ(Text(L"refusing", L"v"), L"x");
        EXPECT_EQ(Text(L"granting", L"v"), L"(none)") << is_first_refusing;
    }
}

TEST_F(TwoRoots, AreWrittenUpToTheFirstFailure) {
    EXPECT_HRESULT(E_ACCESSDENIED, Run(true, &WriteScript));
    EXPECT_EQ(Text(L"granting", L"v"), L"(none)");
    EXPECT_HRESULT(E_ACCESSDENIED, Run(false, &WriteScript));
    EXPECT_EQ(Text(L"granting", L"v"), L"x");
}

TEST_F(RegistryWriter, RemovesTheRestAfterAFailure) {
    CreateKey(L"a");
    SetText(L"a", L"v", L"x");
    CreateKey(L"a\\b");
    RegistryKey read_only;
    ASSERT_EQ(::RegOpenKeyExW(Root(), L"a", 0, KEY_READ, read_only.Receive()), ERROR_SUCCESS);
    EXPECT_HRESULT(E_ACCESSDENIED, RemoveEntries(read_only.Get(), Entries(u"Val v = s 'x' ForceRemove b")));
    EXPECT_EQ(Text(L"a", L"v"), L"x");
    EXPECT_FALSE(HasKey(L"a\\b"));
}

}  // namespace
}  // namespace paylodge
