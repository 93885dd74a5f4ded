// Lists the bank accounts of the company file through a Paylodge.dll that is not registered.
//
// In the folder of the program lie registration_free.exe.manifest, Paylodge.dll and Paylodge.manifest. Windows reads
// the manifests when the program starts; the program itself does what it would do with a registered component.

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <ole2.h>

#include <cstdio>
#include <memory>

#include "paylodge.h"

namespace {

struct Releaser {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};
using PaylodgePtr = std::unique_ptr<IPaylodge8, Releaser>;

struct StringFreer {
    void operator()(OLECHAR* text) const noexcept { ::SysFreeString(text); }
};
using StringPtr = std::unique_ptr<OLECHAR, StringFreer>;

// The object, or null with the HRESULT of what failed.
PaylodgePtr Create(HRESULT& result) {
    CLSID class_id = {};
    IPaylodge8* paylodge = nullptr;
    result = ::CLSIDFromProgID(L"Paylodge.Paylodge", &class_id);
    if (SUCCEEDED(result)) {
        result = ::CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&paylodge));
    }
    return PaylodgePtr(paylodge);
}

HRESULT ListBankAccounts() {
    HRESULT result = S_OK;
    const PaylodgePtr paylodge = Create(result);
    if (!paylodge) {
        std::printf("no object: 0x%08lx\n", static_cast<unsigned long>(result));
        return result;
    }
    const StringPtr type(::SysAllocString(L"Bank"));
    BSTR names = nullptr;
    result = paylodge->GetAccounts(type.get(), &names);
    const StringPtr owner(names);
    if (SUCCEEDED(result)) {
        std::printf("%ls", names == nullptr ? L"" : names);
    } else {
        std::printf("no accounts, is Ledgerhall there? 0x%08lx\n", static_cast<unsigned long>(result));
    }
    return result;
}

}  // namespace

int main() {
    // The names come with line ends of their own.
    ::_setmode(::_fileno(stdout), _O_BINARY);
    // The component lives in a single-threaded apartment.
    if (FAILED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        return 1;
    }
    const HRESULT result = ListBankAccounts();
    ::CoUninitialize();
    return SUCCEEDED(result) ? 0 : 1;
}
