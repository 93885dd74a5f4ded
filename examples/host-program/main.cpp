// A small host program: it creates the control, subscribes it, pushes to the page in both ways, and prints what
// arrives.
//
//     host-program [FOLDER\Paylodge.dll]
//
// Nothing has to be registered. Scripts need the host's bridge library, Oskerin.dll; that of the reference host prints
// them when the environment has OSKERIN_SCRIPT_ECHO=1.

#include <windows.h>

#include <ocidl.h>
#include <wrl/client.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "paylodge.h"

using Microsoft::WRL::ComPtr;

namespace {

void Check(HRESULT result, const char* what) {
    if (FAILED(result)) {
        char message[200];
        std::snprintf(message, sizeof message, "%s failed with 0x%08lX", what, static_cast<unsigned long>(result));
        throw std::runtime_error(message);
    }
}

// A COM string for the length of a call.
class Text {
  public:
    explicit Text(const wchar_t* text) : text_(::SysAllocString(text)) {}
    ~Text() { ::SysFreeString(text_); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    operator BSTR() const noexcept { return text_; }  // NOLINT(google-explicit-constructor)

  private:
    BSTR text_;
};

// Prints the control's events. It lives on the stack of main, so nothing counts its references.
class EventPrinter : public IDispatch {
  public:
    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        const bool is_known = id == IID_IUnknown || id == IID_IDispatch || id == DIID__IPaylodgeCtrlEvents;
        *object = is_known ? this : nullptr;
        return is_known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }

    // Arguments stand in reverse order.
    STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*, EXCEPINFO*, UINT*) override {
        std::printf("event %ld:", static_cast<long>(event));
        for (UINT left = arguments->cArgs; left > 0; --left) {
            const VARIANT& argument = arguments->rgvarg[left - 1];
            if (argument.vt == VT_BSTR) {
                std::printf(" \"%ls\"", argument.bstrVal == nullptr ? L"" : argument.bstrVal);
            } else {
                std::printf(" %s", argument.boolVal == VARIANT_FALSE ? "false" : "true");
            }
        }
        std::printf("\n");
        return S_OK;
    }
};

template <class Function>
Function* FindExport(HMODULE module, const char* name) {
    auto* const found = reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
    if (found == nullptr) {
        throw std::runtime_error(std::string("Paylodge.dll has no ") + name);
    }
    return found;
}

ComPtr<IPaylodgeCtrl10> CreateControl(HMODULE module) {
    ComPtr<IClassFactory> factory;
    ComPtr<IPaylodgeCtrl10> control;
    auto* const get_class_object = FindExport<decltype(::DllGetClassObject)>(module, "DllGetClassObject");
    Check(get_class_object(CLSID_PaylodgeCtrl, IID_PPV_ARGS(&factory)), "DllGetClassObject");
    Check(factory->CreateInstance(nullptr, IID_PPV_ARGS(&control)), "CreateInstance");
    return control;
}

ComPtr<IConnectionPoint> EventsOf(IPaylodgeCtrl10& control) {
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IConnectionPoint> events;
    Check(control.QueryInterface(IID_PPV_ARGS(&container)), "QueryInterface");
    Check(container->FindConnectionPoint(DIID__IPaylodgeCtrlEvents, &events), "FindConnectionPoint");
    return events;
}

void Push(IPaylodgeCtrl10& control) {
    Check(control.SetTransactionID(Text(L"R-1001")), "SetTransactionID");
    Check(control.SetReconPaymentData(Text(L"<Payments/>"), Text(L"2026-01-15"), VARIANT_TRUE), "SetReconPaymentData");
    Check(control.SetCustomerSearchResult(Text(L"[{\"name\":\"Alder Court\"}]")), "SetCustomerSearchResult");
}

void Run(HMODULE module) {
    using SetBrowserInstance = void __cdecl(const wchar_t*);
    const ComPtr<IPaylodgeCtrl10> control = CreateControl(module);
    const ComPtr<IConnectionPoint> events = EventsOf(*control.Get());
    EventPrinter printer;
    DWORD cookie = 0;
    Check(events->Advise(&printer, &cookie), "Advise");

    // The pushes of the channel "Default" go to this control from now on.
    Check(control->SubscribeToNotifications(), "SubscribeToNotifications");
    std::printf("As events:\n");
    Push(*control.Get());

    // With a browser instance named, the same pushes run as scripts in its page.
    std::printf("As scripts:\n");
    FindExport<SetBrowserInstance>(module, "SetBrowserInstance")(L"browser-1");
    Push(*control.Get());

    Check(control->UnSubscribeFromNotifications(), "UnSubscribeFromNotifications");
    Check(events->Unadvise(cookie), "Unadvise");
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const wchar_t* const path = count > 1 ? arguments[1] : L"Paylodge.dll";
    Check(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), "CoInitializeEx");
    int exit_code = 0;
    if (const HMODULE module = ::LoadLibraryW(path)) {
        try {
            Run(module);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s\n", error.what());
            exit_code = 1;
        }
        ::FreeLibrary(module);
    } else {
        std::fprintf(stderr, "%ls cannot be loaded: name its path as the argument\n", path);
        exit_code = 1;
    }
    ::CoUninitialize();
    return exit_code;
}
