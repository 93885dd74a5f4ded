// A page's process that stores a download time and may die over it:
// download_time_writer COMPANY_FILE ACCOUNT TIME STEP
// ends before the host's STEPth call or step of saving; 0: not at all. Its exit code is 0 when the time was stored.

#include "com/bstr.hpp"
#include "paylodge.h"
#include "refhost/objects/application_locator.hpp"
#include "tests/refhost/objects/host_server.hpp"

namespace {

using paylodge::ComPtr;
using paylodge::MakeBstr;

// The locator's class object is the reference host's for as long as the process lives.
[[nodiscard]] bool OfferApplication(const paylodge::refhost::HostServer& host) {
    ComPtr<IClassFactory> locators;
    DWORD registration = 0;
    return SUCCEEDED(host.GetClassObject(paylodge::kHostApplicationLocatorClass, locators)) &&
           SUCCEEDED(::CoRegisterClassObject(paylodge::kHostApplicationLocatorClass, locators.Get(),
                                             CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration));
}

[[nodiscard]] ComPtr<IPaylodge8> CreatePaylodge() {
    ComPtr<IPaylodge8> object;
    ComPtr<IClassFactory> factory;
    const HMODULE module = ::LoadLibraryW(paylodge::refhost::PathBesideProgram(L"../Paylodge.dll").c_str());
    auto* const get_class_object =
        reinterpret_cast<LPFNGETCLASSOBJECT>(reinterpret_cast<void*>(::GetProcAddress(module, "DllGetClassObject")));
    if (get_class_object != nullptr &&
        SUCCEEDED(get_class_object(CLSID_Paylodge, IID_IClassFactory, factory.ReceiveVoid()))) {
        static_cast<void>(factory->CreateInstance(nullptr, IID_IPaylodge8, object.ReceiveVoid()));
    }
    return object;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 5 || FAILED(::CoInitialize(nullptr))) {
        return 2;
    }
    const paylodge::refhost::HostServer host;
    const auto control = host.Create<IReferenceHost>(CLSID_ReferenceHost);
    const auto object = CreatePaylodge();
    if (!OfferApplication(host) || !control || !object ||
        FAILED(control->OpenCompanyFile(MakeBstr(arguments[1]).Get())) ||
        FAILED(control->EndProcessAt(std::stol(arguments[4])))) {
        return 3;
    }
    return SUCCEEDED(object->SetLastTxnDownloadTime(MakeBstr(arguments[2]).Get(), MakeBstr(arguments[3]).Get())) ? 0
                                                                                                                 : 4;
}
