#include "workbench/server/host_process.hpp"

#include <comdef.h>

#include <array>
#include <filesystem>
#include <utility>

#include "com/bstr.hpp"
#include "com/module.hpp"
#include "hostapi/application.hpp"
#include "hostapi/request_processor.hpp"
#include "refhost/commands/result_names.hpp"
#include "refhost/objects/utf8.hpp"
#include "refhost/oskerin/script_listener.hpp"

namespace paylodge::workbench {
namespace {

using refhost::Utf8FromWide;

constexpr const wchar_t* kComponent = L"Paylodge.dll";

[[nodiscard]] std::filesystem::path ProgramFolder() { return std::filesystem::path(Module::Path()).parent_path(); }

// The reference host is built into a folder beside this program's, the component above both.
[[nodiscard]] ModuleHandle Load(const std::filesystem::path& name) {
    const std::filesystem::path above = ProgramFolder().parent_path();
    for (const auto& folder : {ProgramFolder(), above, above / "refhost"}) {
        std::error_code error;
        if (std::filesystem::exists(folder / name, error)) {
            ModuleHandle module(::LoadLibraryExW((folder / name).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
            if (!module) {
                throw CannotStart(Utf8FromWide((folder / name).wstring()) + " cannot be loaded: " +
                                  refhost::DescribeResult(HRESULT_FROM_WIN32(::GetLastError())));
            }
            return module;
        }
    }
    throw CannotStart(Utf8FromWide(name.wstring()) + " is missing: it belongs beside this program");
}

template <class Function>
[[nodiscard]] Function* FindExport(const ModuleHandle& module, const char* name) {
    auto* const found = reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(module.Get(), name)));
    if (found == nullptr) {
        throw CannotStart(std::string("a library is not the one that belongs to this program: it has no ") + name);
    }
    return found;
}

[[nodiscard]] HRESULT GetClassObject(const ModuleHandle& module, const CLSID& class_id, IID interface_id,
                                     void** object) {
    return FindExport<decltype(::DllGetClassObject)>(module, "DllGetClassObject")(class_id, interface_id, object);
}

void Require(HRESULT result, const char* what) {
    if (FAILED(result)) {
        throw CannotStart(std::string(what) + " failed: " + refhost::DescribeResult(result));
    }
}

// "0.1.0.0" as the file's version resource has it.
[[nodiscard]] std::string VersionOf(const ModuleHandle& module) {
    const HRSRC found = ::FindResourceW(module.Get(), MAKEINTRESOURCEW(1), RT_VERSION);
    const HGLOBAL loaded = found == nullptr ? nullptr : ::LoadResource(module.Get(), found);
    const auto* const bytes = loaded == nullptr ? nullptr : static_cast<const char*>(::LockResource(loaded));
    if (bytes == nullptr) {
        return {};
    }
    constexpr DWORD kSignature = 0xFEEF04BD;
    const std::string_view resource(bytes, ::SizeofResource(module.Get(), found));
    const auto place = resource.find(std::string_view(reinterpret_cast<const char*>(&kSignature), sizeof kSignature));
    if (place == std::string_view::npos || place + sizeof(VS_FIXEDFILEINFO) > resource.size()) {
        return {};
    }
    VS_FIXEDFILEINFO info = {};
    resource.copy(reinterpret_cast<char*>(&info), sizeof info, place);
    return std::to_string(HIWORD(info.dwFileVersionMS)) + '.' + std::to_string(LOWORD(info.dwFileVersionMS)) + '.' +
           std::to_string(HIWORD(info.dwFileVersionLS));
}

// The component hands over scripts in the code page of the system.
[[nodiscard]] std::string Utf8FromAnsi(const char* text) {
    std::wstring wide(static_cast<std::size_t>(::MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0)), L'\0');
    const int size = ::MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), static_cast<int>(wide.size()));
    wide.resize(size > 0 ? static_cast<std::size_t>(size) - 1 : 0);
    return Utf8FromWide(wide);
}

using SetListener = void __cdecl(refhost::ScriptListener*, void*);

}  // namespace

HostProcess::HostProcess(const std::wstring& company_file, RunScript run_script)
    : run_script_(std::move(run_script)),
      reference_host_module_(Load(L"refhost.dll")),
      // Held, so that the component finds it by its bare name: it loads and frees it for each script.
      bridge_library_(Load(L"Oskerin.dll")),
      component_(Load(kComponent)),
      version_(VersionOf(component_)) {
    RegisterHostClasses();
    FindExport<SetListener>(bridge_library_, "SetScriptListener")(&OnScript, this);
    OpenCompany(company_file);
}

HostProcess::~HostProcess() {
    FindExport<SetListener>(bridge_library_, "SetScriptListener")(nullptr, nullptr);
    if (reference_host_) {
        reference_host_->CloseCompanyFile();
    }
}

void HostProcess::RegisterHostClasses() {
    for (const CLSID& class_id : {kHostObjectBrokerClass, kRequestProcessorClass, kHostApplicationLocatorClass}) {
        ComPtr<IUnknown> class_object;
        Require(GetClassObject(reference_host_module_, class_id, IID_IUnknown, class_object.ReceiveVoid()),
                "a class of the reference host");
        DWORD cookie = 0;
        Require(
            ::CoRegisterClassObject(class_id, class_object.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie),
            "CoRegisterClassObject");
        classes_.emplace_back(cookie);
    }
}

void HostProcess::OpenCompany(const std::wstring& company_file) {
    ComPtr<IClassFactory> factory;
    Require(GetClassObject(reference_host_module_, CLSID_ReferenceHost, IID_IClassFactory, factory.ReceiveVoid()),
            "the reference host's class");
    Require(factory->CreateInstance(nullptr, __uuidof(IReferenceHost), reference_host_.ReceiveVoid()),
            "the reference host");
    const OwnedBstr path = MakeBstr(company_file);
    const HRESULT result = reference_host_->OpenCompanyFile(path.Get());
    if (SUCCEEDED(result)) {
        return;
    }
    ComPtr<IErrorInfo> error;
    OwnedBstr description;
    if (::GetErrorInfo(0, error.Receive()) == S_OK && SUCCEEDED(error->GetDescription(description.Receive())) &&
        description) {
        throw CannotStart(Utf8FromWide(View(description)));
    }
    throw CannotStart("the company file cannot be opened: " + refhost::DescribeResult(result));
}

void __cdecl HostProcess::OnScript(void* context, const char* browser_instance, const char* script) {
    static_cast<HostProcess*>(context)->run_script_(Utf8FromAnsi(browser_instance), Utf8FromAnsi(script));
}

ComPtr<IDispatch> HostProcess::CreateObject(const CLSID& class_id) const {
    ComPtr<IClassFactory> factory;
    ComPtr<IDispatch> object;
    if (FAILED(GetClassObject(component_, class_id, IID_IClassFactory, factory.ReceiveVoid()))) {
        return object;
    }
    const HRESULT result = factory->CreateInstance(nullptr, IID_IDispatch, object.ReceiveVoid());
    if (FAILED(result)) {
        _com_issue_error(result);
    }
    return object;
}

bool HostProcess::IsComponentUnused() const {
    return FindExport<decltype(::DllCanUnloadNow)>(component_, "DllCanUnloadNow")() == S_OK;
}

void HostProcess::SetBrowserInstance(const std::string& instance) {
    using Function = void __cdecl(const wchar_t*);
    FindExport<Function>(component_, "SetBrowserInstance")(refhost::WideFromUtf8(instance).c_str());
}

std::vector<ProcessedRequest> HostProcess::TakeTraffic() {
    std::vector<ProcessedRequest> processed;
    LONG count = 0;
    reference_host_->get_RequestCount(&count);
    for (LONG i = 0; i < count; ++i) {
        OwnedBstr request;
        OwnedBstr response;
        reference_host_->Request(i, request.Receive());
        reference_host_->Response(i, response.Receive());
        processed.push_back({Utf8FromWide(View(request)), Utf8FromWide(View(response))});
    }
    // The host would keep them for ever.
    reference_host_->ClearCalls();
    return processed;
}

Outcome HostProcess::CallReferenceHost(const std::string& member, CallKind kind, const std::vector<Value>& arguments) {
    return CallMember(*reference_host_.Get(), member, kind, arguments);
}

std::string HostProcess::CompanyFile() const {
    OwnedBstr path;
    reference_host_->get_CompanyFile(path.Receive());
    return Utf8FromWide(View(path));
}

std::string HostProcess::CompanyFileName() const {
    const std::string path = CompanyFile();
    return path.substr(path.find_last_of('\\') + 1);
}

}  // namespace paylodge::workbench
