#include "frame/registrar/type_library_registration.hpp"

#include <gtest/gtest.h>

#include <string>

#include "com/bstr.hpp"
#include "com/module.hpp"
#include "paylodge.h"
#include "tests/support/hresult.hpp"
#include "tests/support/import_slot.hpp"

namespace paylodge {
namespace {

// Stands for the platform's functions while it lives. Each notes what it was called with and returns what a test set.
class FakeAutomation {
  public:
    FakeAutomation() { active_ = this; }
    ~FakeAutomation() { active_ = nullptr; }
    FakeAutomation(const FakeAutomation&) = delete;
    FakeAutomation& operator=(const FakeAutomation&) = delete;

    static HRESULT WINAPI Register(ITypeLib* library, OLECHAR* path, OLECHAR* folder) {
        if (active_ == nullptr) {
            return E_UNEXPECTED;
        }
        TLIBATTR* attributes = nullptr;
        EXPECT_HRESULT(S_OK, library->GetLibAttr(&attributes));
        active_->library = attributes->guid;
        library->ReleaseTLibAttr(attributes);
        active_->path = path;
        active_->folder = folder;
        return active_->result;
    }
    static HRESULT WINAPI Unregister(REFGUID library, WORD major, WORD minor, LCID locale, SYSKIND system) {
        if (active_ == nullptr) {
            return E_UNEXPECTED;
        }
        active_->library = library;
        EXPECT_EQ(1, major);
        EXPECT_EQ(0, minor);
        EXPECT_EQ(0U, locale);
        EXPECT_EQ(sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32, system);
        return active_->result;
    }
    static HRESULT WINAPI QueryPath(REFGUID library, USHORT major, USHORT minor, LCID locale, BSTR* path) {
        if (active_ == nullptr) {
            return E_UNEXPECTED;
        }
        EXPECT_TRUE(IsEqualGUID(LIBID_PAYLODGELib, library));
        EXPECT_EQ(1, major);
        EXPECT_EQ(0, minor);
        EXPECT_EQ(0U, locale);
        if (!active_->is_registered) {
            return TYPE_E_LIBNOTREGISTERED;
        }
        *path = MakeBstr(L"C:\\Paylodge.dll").Detach();
        return S_OK;
    }

    HRESULT result = S_OK;
    bool is_registered = false;
    GUID library = {};
    std::wstring path;
    std::wstring folder;

  private:
    static inline FakeAutomation* active_ = nullptr;
};

}  // namespace
}  // namespace paylodge

extern "C" {
extern decltype(&RegisterTypeLib) import_of_register_type_lib PAYLODGE_IMPORT_SLOT(RegisterTypeLib, 12);
extern decltype(&UnRegisterTypeLib) import_of_unregister_type_lib PAYLODGE_IMPORT_SLOT(UnRegisterTypeLib, 20);
extern decltype(&QueryPathOfRegTypeLib) import_of_query_path PAYLODGE_IMPORT_SLOT(QueryPathOfRegTypeLib, 20);
decltype(&RegisterTypeLib) import_of_register_type_lib = &paylodge::FakeAutomation::Register;
decltype(&UnRegisterTypeLib) import_of_unregister_type_lib = &paylodge::FakeAutomation::Unregister;
decltype(&QueryPathOfRegTypeLib) import_of_query_path = &paylodge::FakeAutomation::QueryPath;
}

namespace paylodge {
namespace {

class TypeLibraryRegistration : public ::testing::Test {
  protected:
    FakeAutomation automation_;
};

TEST_F(TypeLibraryRegistration, NamesTheModuleAndItsFolder) {
    EXPECT_HRESULT(S_OK, RegisterTypeLibrary(RegistrationScope::kMachine));
    EXPECT_TRUE(IsEqualGUID(LIBID_PAYLODGELib, automation_.library));
    EXPECT_EQ(Module::Path(), automation_.path);
    ASSERT_NE(L"", automation_.folder);
    EXPECT_EQ(L'\\', automation_.folder.back());
    EXPECT_EQ(automation_.folder + L"registrar_tests.exe", automation_.path);
}

TEST_F(TypeLibraryRegistration, ReturnsThePlatformsFailure) {
    automation_.result = TYPE_E_REGISTRYACCESS;
    EXPECT_HRESULT(TYPE_E_REGISTRYACCESS, RegisterTypeLibrary(RegistrationScope::kMachine));
}

TEST_F(TypeLibraryRegistration, IsRemovedByIdVersionAndSystem) {
    EXPECT_HRESULT(S_OK, UnregisterTypeLibrary(RegistrationScope::kMachine));
    EXPECT_TRUE(IsEqualGUID(LIBID_PAYLODGELib, automation_.library));
}

TEST_F(TypeLibraryRegistration, IsRemovedThoughThereIsNone) {
    automation_.result = TYPE_E_REGISTRYACCESS;
    EXPECT_HRESULT(S_OK, UnregisterTypeLibrary(RegistrationScope::kMachine));
}

TEST_F(TypeLibraryRegistration, ThatStaysIsAFailure) {
    automation_.result = TYPE_E_REGISTRYACCESS;
    automation_.is_registered = true;
    EXPECT_HRESULT(TYPE_E_REGISTRYACCESS, UnregisterTypeLibrary(RegistrationScope::kMachine));
}

}  // namespace
}  // namespace paylodge
