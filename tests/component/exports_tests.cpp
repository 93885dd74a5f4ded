#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "tests/component/module_under_test.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

// Reads the tables of a module's image in memory.
class Image {
  public:
    explicit Image(HMODULE module) : start_(reinterpret_cast<const BYTE*>(module)) {}

    template <class Type>
    [[nodiscard]] const Type* At(DWORD offset) const {
        return reinterpret_cast<const Type*>(start_ + offset);
    }

    [[nodiscard]] const IMAGE_DATA_DIRECTORY& Directory(int entry) const {
        const auto* const dos = At<IMAGE_DOS_HEADER>(0);
        const auto* const headers = At<IMAGE_NT_HEADERS>(static_cast<DWORD>(dos->e_lfanew));
        return headers->OptionalHeader.DataDirectory[entry];
    }

  private:
    const BYTE* start_;
};

struct Export {
    WORD ordinal;
    const char* name;
};

constexpr Export kExports[] = {
    {1, "DllCanUnloadNow"},     {2, "DllGetClassObject"},  {3, "DllRegisterServer"},
    {4, "DllUnregisterServer"}, {5, "SetBrowserInstance"},
};

class Exports : public ::testing::Test {
  protected:
    ModuleUnderTest module;
};

TEST_F(Exports, HavePlainNamesAndFixedOrdinals) {
    for (const auto& [ordinal, name] : kExports) {
        const FARPROC by_name = ::GetProcAddress(module.Handle(), name);
        EXPECT_NE(nullptr, by_name) << name;
        EXPECT_EQ(by_name, ::GetProcAddress(module.Handle(), MAKEINTRESOURCEA(ordinal))) << name;
    }
}

TEST_F(Exports, AreTheFiveAndNoOther) {
    const Image image(module.Handle());
    const auto* const exports =
        image.At<IMAGE_EXPORT_DIRECTORY>(image.Directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    EXPECT_EQ(1U, exports->Base);
    EXPECT_EQ(5U, exports->NumberOfFunctions);
    EXPECT_EQ(5U, exports->NumberOfNames);
    EXPECT_STREQ("Paylodge.dll", image.At<char>(exports->Name));
    EXPECT_EQ(nullptr, ::GetProcAddress(module.Handle(), "DllInstall"));
}

TEST_F(Exports, ImportsAreSystemLibrariesOnly) {
    const std::set<std::string> system_libraries = {"advapi32.dll", "gdi32.dll",  "kernel32.dll",
                                                    "msvcrt.dll",   "ole32.dll",  "oleaut32.dll",
                                                    "shlwapi.dll",  "urlmon.dll", "user32.dll"};
    const Image image(module.Handle());
    const auto* import =
        image.At<IMAGE_IMPORT_DESCRIPTOR>(image.Directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    ASSERT_NE(0U, import->Name);
    for (; import->Name != 0; ++import) {
        std::string name = image.At<char>(import->Name);
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        EXPECT_EQ(1U, system_libraries.count(name)) << name;
    }
    EXPECT_EQ(0U, image.Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT).Size);
}

// While a module is being attached, the loader's lock is held: no provider may be loaded and no registry read.
TEST_F(Exports, NoCryptographicProviderIsAsked) {
    const Image image(module.Handle());
    const auto* import =
        image.At<IMAGE_IMPORT_DESCRIPTOR>(image.Directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    int count = 0;
    for (; import->Name != 0; ++import) {
        const auto* thunk = image.At<IMAGE_THUNK_DATA>(import->OriginalFirstThunk);
        for (; thunk->u1.AddressOfData != 0; ++thunk, ++count) {
            if (!IMAGE_SNAP_BY_ORDINAL(thunk->u1.Ordinal)) {
                const std::string name = reinterpret_cast<const char*>(
                    image.At<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(thunk->u1.AddressOfData))->Name);
                EXPECT_FALSE(name.starts_with("Crypt") || name.starts_with("SystemFunction") || name == "rand_s")
                    << name;
            }
        }
    }
    EXPECT_GT(count, 50);
}

TEST_F(Exports, SetBrowserInstanceTakesAnyText) {
    auto* const set = module.Export<void __cdecl(const wchar_t*)>("SetBrowserInstance");
    ASSERT_NE(nullptr, set);
    for (const wchar_t* text : {L"", L"browser-1", L"browser-1", L"browser-2", static_cast<const wchar_t*>(nullptr)}) {
        set(text);
        set(text);
    }
    EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

TEST_F(Exports, ResourcesAreThoseThatRegistrationAsksFor) {
    const auto has = [this](int number, const wchar_t* type) {
        return ::FindResourceW(module.Handle(), MAKEINTRESOURCEW(number), type) != nullptr;
    };
    EXPECT_TRUE(has(1, L"TYPELIB"));
    EXPECT_TRUE(has(101, L"REGISTRY"));
    EXPECT_TRUE(has(104, L"REGISTRY"));
    wchar_t text[16] = L"";
    EXPECT_EQ(8, ::LoadStringW(module.Handle(), 100, text, 16));
    EXPECT_STREQ(L"Paylodge", text);
}

}  // namespace
}  // namespace paylodge::test
