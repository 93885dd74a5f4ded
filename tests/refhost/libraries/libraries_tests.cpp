#include <windows.h>

#include <gtest/gtest.h>
#include <msxml2.h>
#include <objbase.h>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "tests/refhost/objects/host_server.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::refhost {
namespace {

#ifdef _WIN64
constexpr const char* kCreateDOMDocument = "?CreateDOMDocument@MSXML_XML@Util@@YAJPEAPEAUIXMLDOMDocument2@@@Z";
constexpr const char* kGetFeatureParamAsBool = "?GetFeatureParamAsBool@KestoAccess@Kesto@@SA_NPEBD00@Z";
#else
constexpr const char* kCreateDOMDocument = "?CreateDOMDocument@MSXML_XML@Util@@YAJPAPAUIXMLDOMDocument2@@@Z";
constexpr const char* kGetFeatureParamAsBool = "?GetFeatureParamAsBool@KestoAccess@Kesto@@SA_NPBD00@Z";
#endif

// One export of a library of the host, under the name that the host's compiler gives it.
template <class Function>
class Export {
  public:
    Export(std::wstring_view library, const char* name)
        : library_(::LoadLibraryW(PathBesideProgram(library).c_str())),
          function_(reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(library_.Get(), name)))) {}

    [[nodiscard]] Function* Get() const noexcept { return function_; }

  private:
    ModuleHandle library_;
    Function* function_;
};

class Utilities : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_HRESULT(S_OK, ::CoInitialize(nullptr));
        ASSERT_NE(create_.Get(), nullptr);
    }
    void TearDown() override {
        ::SetEnvironmentVariableA("LHUTILITIES_FAIL", nullptr);
        ::CoUninitialize();
    }

    Export<HRESULT __cdecl(IXMLDOMDocument2**)> create_{L"../refhost/LHUtilities.dll", kCreateDOMDocument};
};

TEST_F(Utilities, MakeADocumentThatLoadsText) {
    ComPtr<IXMLDOMDocument2> document;
    ASSERT_HRESULT(S_OK, create_.Get()(document.Receive()));
    ASSERT_TRUE(document);
    VARIANT_BOOL is_loaded = VARIANT_FALSE;
    EXPECT_HRESULT(S_OK, document->loadXML(MakeBstr(L"<?lhxml version=\"7.0\" ?><A>x</A>").Get(), &is_loaded));
    EXPECT_EQ(is_loaded, VARIANT_TRUE);
}

TEST_F(Utilities, NeedASlotForTheDocument) { EXPECT_HRESULT(E_POINTER, create_.Get()(nullptr)); }

TEST_F(Utilities, FailAsTheEnvironmentSays) {
    ::SetEnvironmentVariableA("LHUTILITIES_FAIL", "0x80004001");
    ComPtr<IXMLDOMDocument2> document;
    EXPECT_HRESULT(E_NOTIMPL, create_.Get()(document.Receive()));
    EXPECT_FALSE(document);
}

class FeatureFlags : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(flag_.Get(), nullptr); }
    void TearDown() override { ::SetEnvironmentVariableA("KESTO_FLAGS", nullptr); }

    [[nodiscard]] bool Flag(const char* default_value = nullptr) const {
        return flag_.Get()("SBSSettings", "NetworkAdapter.EnableLogContext", default_value);
    }

    Export<bool __cdecl(const char*, const char*, const char*)> flag_{L"../refhost/Kesto.dll", kGetFeatureParamAsBool};
};

TEST_F(FeatureFlags, HaveTheirDefaultWhenNothingIsSet) {
    EXPECT_FALSE(Flag());
    EXPECT_FALSE(Flag("false"));
    EXPECT_FALSE(Flag("1"));
    EXPECT_TRUE(Flag("true"));
}

TEST_F(FeatureFlags, AreReadFromTheEnvironmentOnEachCall) {
    ::SetEnvironmentVariableA("KESTO_FLAGS", "A/b=true;SBSSettings/NetworkAdapter.EnableLogContext=true;");
    EXPECT_TRUE(Flag());
    EXPECT_TRUE(flag_.Get()("A", "b", nullptr));
    ::SetEnvironmentVariableA("KESTO_FLAGS", "SBSSettings/NetworkAdapter.EnableLogContext=false");
    EXPECT_FALSE(Flag("true"));
    EXPECT_FALSE(flag_.Get()(nullptr, nullptr, nullptr));
}

TEST_F(FeatureFlags, TakeTheLastOfTwoEntries) {
    ::SetEnvironmentVariableA("KESTO_FLAGS",
                              "SBSSettings/NetworkAdapter.EnableLogContext=true;;=;x;"
                              "SBSSettings/NetworkAdapter.EnableLogContext=false");
    EXPECT_FALSE(Flag("true"));
}

}  // namespace
}  // namespace paylodge::refhost
