#include "tests/refhost/objects/host_server.hpp"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "com/module.hpp"
#include "refhost/books/company_text.hpp"
#include "refhost/objects/utf8.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The sample company of examples/ as a company file; made once for the process.
[[nodiscard]] const std::string& SampleBytes() {
    static const std::string bytes = [] {
        const std::filesystem::path path =
            std::filesystem::temp_directory_path() / ("sample-" + std::to_string(::GetCurrentProcessId()));
        const std::string text = ReadFile(PathBesideProgram(L"riverside.xml"));
        ImportText(*Company::Create(path.string(), CompanyNameIn(text)), text);
        std::string made = ReadFile(path);
        std::filesystem::remove(path);
        return made;
    }();
    return bytes;
}

}  // namespace

std::wstring PathBesideProgram(std::wstring_view relative) {
    return (std::filesystem::path(Module::Path()).parent_path() / relative).lexically_normal().wstring();
}

TemporaryCompanyFile::TemporaryCompanyFile() {
    static int count = 0;
    path_ = (std::filesystem::temp_directory_path() /
             ("refhost-" + std::to_string(::GetCurrentProcessId()) + '-' + std::to_string(++count) + ".lhcompany"))
                .wstring();
    Write(SampleBytes());
}

TemporaryCompanyFile::~TemporaryCompanyFile() { Remove(); }

std::string TemporaryCompanyFile::Bytes() const {
    std::ifstream file(std::filesystem::path(path_), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::unique_ptr<Company> TemporaryCompanyFile::Open() const { return Company::Open(Utf8FromWide(path_)); }

void TemporaryCompanyFile::Write(std::string_view bytes) const {
    Remove();
    std::ofstream(std::filesystem::path(path_), std::ios::binary) << bytes;
}

void TemporaryCompanyFile::Remove() const {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
    std::filesystem::remove(path_ + L"-journal", ignored);
}

HostServer::HostServer() : module_(::LoadLibraryW(PathBesideProgram(L"../refhost/refhost.dll").c_str())) {
    EXPECT_TRUE(module_) << "refhost.dll cannot be loaded: system error " << ::GetLastError();
}

HRESULT HostServer::GetClassObject(REFCLSID class_id, ComPtr<IClassFactory>& factory) const {
    auto* const get = Find<HRESULT WINAPI(REFCLSID, REFIID, void**)>("DllGetClassObject");
    return get == nullptr ? E_UNEXPECTED : get(class_id, IID_IClassFactory, factory.ReceiveVoid());
}

HRESULT HostServer::CanUnloadNow() const {
    auto* const can_unload = Find<HRESULT WINAPI()>("DllCanUnloadNow");
    return can_unload == nullptr ? E_UNEXPECTED : can_unload();
}

template <class Function>
Function* HostServer::Find(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(module_.Get(), name)));
}

std::string Text(const OwnedBstr& text) { return Utf8FromWide(View(text)); }

void HostTest::SetUp() {
    control_ = host_.Create<IReferenceHost>(CLSID_ReferenceHost);
    ASSERT_TRUE(control_);
    ASSERT_HRESULT(S_OK, control_->OpenCompanyFile(MakeBstr(sample_.Path()).Get()));
}

void HostTest::TearDown() {
    if (control_) {
        control_->CloseCompanyFile();
        control_->ClearFaults();
        control_->ClearCalls();
    }
}

std::vector<std::string> HostTest::Calls() const {
    LONG count = 0;
    EXPECT_HRESULT(S_OK, control_->get_CallCount(&count));
    std::vector<std::string> calls;
    for (LONG index = 0; index < count; ++index) {
        OwnedBstr call;
        EXPECT_HRESULT(S_OK, control_->Call(index, call.Receive()));
        calls.push_back(Text(call));
    }
    return calls;
}

std::string HostTest::LastDescription() {
    ComPtr<IErrorInfo> info;
    OwnedBstr description;
    EXPECT_HRESULT(S_OK, ::GetErrorInfo(0, info.Receive()));
    if (info) {
        EXPECT_HRESULT(S_OK, info->GetDescription(description.Receive()));
    }
    return Text(description);
}

}  // namespace paylodge::refhost
