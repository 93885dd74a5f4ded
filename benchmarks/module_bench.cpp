// The module as a host and its page use it: properties by name and through the slot, pushes in both modes, loading and
// unloading. Prints a table and writes JSON to the file that is named on the command line.

#include <windows.h>

#include <ocidl.h>
#include <oleauto.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "benchmarks/measure.hpp"
#include "com/ansi_text.hpp"
#include "com/com_ptr.hpp"
#include "com/object_root.hpp"
#include "com/owner.hpp"
#include "com/variant.hpp"
#include "hostapi/libraries.hpp"
#include "paylodge.h"
#include "refhost/objects/undispatched.hpp"

namespace paylodge::bench {
namespace {

using namespace std::string_literals;

void Require(bool is_so, const char* what) {
    if (!is_so) {
        std::fprintf(stderr, "module_bench: %s\n", what);
        std::exit(1);
    }
}

// The module in the folder above this program's.
[[nodiscard]] std::wstring ModulePath() {
    const std::wstring program = Module::Path();
    const size_t folder = program.rfind(L'\\');
    return program.substr(0, program.rfind(L'\\', folder - 1)) + L"\\Paylodge.dll";
}

template <class Function>
[[nodiscard]] Function* Export(HMODULE module, const char* name) {
    auto* const function = reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
    Require(function != nullptr, name);
    return function;
}

template <class Interface>
[[nodiscard]] ComPtr<Interface> Create(HMODULE module, REFCLSID class_id) {
    ComPtr<IClassFactory> factory;
    ComPtr<Interface> object;
    auto* const get = Export<HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**)>(module, "DllGetClassObject");
    Require(SUCCEEDED(get(class_id, IID_IClassFactory, factory.ReceiveVoid())) &&
                SUCCEEDED(factory->CreateInstance(nullptr, __uuidof(Interface), object.ReceiveVoid())),
            "an object of the module cannot be created");
    return object;
}

// What anyone would write: each name and each call goes to the type information of the whole interface.
class StockDispatch {
  public:
    StockDispatch(IPaylodge8& object, const std::wstring& library_path) : object_(object) {
        ComPtr<ITypeLib> library;
        Require(SUCCEEDED(::LoadTypeLibEx(library_path.c_str(), REGKIND_NONE, library.Receive())) &&
                    SUCCEEDED(library->GetTypeInfoOfGuid(IID_IPaylodge8, info_.Receive())),
                "the type library cannot be loaded");
    }
    HRESULT GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
        return info_->GetIDsOfNames(names, count, ids);
    }
    HRESULT Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                   EXCEPINFO* exception, UINT* wrong) {
        return info_->Invoke(&object_, member, flags, parameters, result, exception, wrong);
    }

  private:
    IPaylodge8& object_;
    ComPtr<ITypeInfo> info_;
};

template <class Dispatch>
[[nodiscard]] DISPID FindId(Dispatch& object, const wchar_t* name) {
    std::wstring text = name;
    LPOLESTR names[] = {text.data()};
    DISPID id = DISPID_UNKNOWN;
    Require(SUCCEEDED(object.GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)), "a name is unknown");
    return id;
}

// As a script engine does it: the name is looked up in each statement.
template <class Dispatch>
void GetByName(Dispatch& object, const wchar_t* name) {
    DISPPARAMS none{};
    OwnedVariant result;
    Require(SUCCEEDED(object.Invoke(FindId(object, name), IID_NULL, LOCALE_USER_DEFAULT,
                                    DISPATCH_PROPERTYGET | DISPATCH_METHOD, &none, result.Receive(), nullptr, nullptr)),
            "a property cannot be read");
}

template <class Dispatch>
void PutByName(Dispatch& object, const wchar_t* name, BSTR text) {
    VARIANT value{};
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = text;
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{&value, &put, 1, 1};
    Require(SUCCEEDED(object.Invoke(FindId(object, name), IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT,
                                    &parameters, nullptr, nullptr, nullptr)),
            "a property cannot be written");
}

// What a slot cannot do without: a copy of the string.
[[nodiscard]] size_t CopyText(BSTR text) { return ::SysStringLen(CopyBstr(text).Get()); }

class Bench {
  public:
    Bench(HMODULE module, const Limits& limits) : module_(module), limits_(limits) {}

    // One property of the oldest interface that has any, and one of the newest.
    void MeasureProperties() {
        const auto object = Create<IPaylodge8>(module_, CLSID_Paylodge);
        StockDispatch stock(*object.Get(), ModulePath());
        const OwnedBstr text = MakeBstr(L"1F2-1234567890");
        for (const wchar_t* name : {L"ScanTxnListForDeposit", L"ItemData", L"SearchCustomerNameForRebill"}) {
            const std::string label = AnsiFromWide(name);
            Add(
                "put " + label, [&] { PutByName(*object.Get(), name, text.Get()); },
                [&] { PutByName(stock, name, text.Get()); });
            Add("get " + label, [&] { GetByName(*object.Get(), name); }, [&] { GetByName(stock, name); });
        }
        Add(
            "get ItemData through the slot",
            [&] {
                OwnedBstr result;
                object->get_ItemData(result.Receive());
            },
            [&] { static_cast<void>(CopyText(text.Get())); });
        Add(
            "put ItemData through the slot", [&] { object->put_ItemData(text.Get()); },
            [&] { static_cast<void>(CopyText(text.Get())); });
    }

    void MeasurePushes();
    void MeasureLoading();

    [[nodiscard]] const std::vector<Row>& Rows() const noexcept { return rows_; }

  private:
    template <class Action, class Floor>
    void Add(const std::string& name, const Action& action, const Floor& floor) {
        rows_.push_back(Compare(name, 0, limits_, action, floor));
        Print(rows_.back());
    }

    HMODULE module_;
    Limits limits_;
    std::vector<Row> rows_;
};

// Takes what comes and does nothing with it.
class Sink : public refhost::Undispatched<_IPaylodgeCtrlEvents> {
  public:
    using Row = InterfaceRow<Sink>;
    static constexpr std::array kInterfaces = {Row::Of<_IPaylodgeCtrlEvents>(), Row::Of<IDispatch>()};

    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) override {
        length_ += ::SysStringLen(V_BSTR(&parameters->rgvarg[0]));
        return S_OK;
    }

  protected:
    ~Sink() = default;

  private:
    size_t length_ = 0;
};

void Bench::MeasurePushes() {
    const auto control = Create<IPaylodgeCtrl10>(module_, CLSID_PaylodgeCtrl);
    const auto sink = ComObject<Sink>::Create();
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IConnectionPoint> events;
    DWORD cookie = 0;
    Require(SUCCEEDED(control.As(container)) &&
                SUCCEEDED(container->FindConnectionPoint(DIID__IPaylodgeCtrlEvents, events.Receive())) &&
                SUCCEEDED(events->Advise(sink.Get(), &cookie)) && SUCCEEDED(control->SubscribeToNotifications()),
            "the control cannot be subscribed");
    const OwnedBstr data = MakeBstr(std::wstring(200, L'x'));
    Add(
        "push as an event", [&] { Require(SUCCEEDED(control->SetCustomerListData(data.Get())), "a push failed"); },
        [&] {
            const OwnedVariant value(CopyBstr(data.Get()));
            VARIANT argument = value.Get();
            DISPPARAMS parameters{&argument, nullptr, 1, 0};
            sink->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr);
        });

    auto* const set_browser = Export<void __cdecl(const wchar_t*)>(module_, "SetBrowserInstance");
    set_browser(L"browser");
    Add(
        "push as a script", [&] { Require(SUCCEEDED(control->SetCustomerListData(data.Get())), "a push failed"); },
        [&] {
            const ModuleHandle library(::LoadLibraryA(kBridgeLibrary));
            auto* const execute = Export<ExecuteJavaScriptFunction>(library.Get(), kExecuteJavaScript);
            const std::string script = "app.lhProxy.customerDataFromLH(\"" + AnsiFromBstr(data.Get()) + "\")";
            execute("browser", script.c_str());
        });
    set_browser(L"");
    control->UnSubscribeFromNotifications();
    events->Unadvise(cookie);
}

// Beside a smaller library that is built the same way and does nothing at its start.
void Bench::MeasureLoading() {
    const std::wstring path = ModulePath();
    Add(
        "load, create an object, unload",
        [&] {
            const ModuleHandle module(::LoadLibraryW(path.c_str()));
            const auto object = Create<IPaylodge8>(module.Get(), CLSID_Paylodge);
        },
        [&] { const ModuleHandle module(::LoadLibraryW(kUtilityLibrary)); });
}

int Run(const char* json_file, const Limits& limits) {
    // As in a host with a browser.
    const ModuleHandle url_library(::LoadLibraryW(L"urlmon.dll"));
    PrintHeading();
    std::vector<Row> rows;
    {
        const ModuleHandle module(::LoadLibraryW(ModulePath().c_str()));
        Require(static_cast<bool>(module), "Paylodge.dll cannot be loaded");
        Bench bench(module.Get(), limits);
        bench.MeasureProperties();
        bench.MeasurePushes();
        rows = bench.Rows();
    }
    Bench bench(nullptr, limits);
    bench.MeasureLoading();
    rows.insert(rows.end(), bench.Rows().begin(), bench.Rows().end());
    WriteJson(json_file, rows);
    return 0;
}

}  // namespace
}  // namespace paylodge::bench

int main(int argc, char** argv) {
    const bool is_quick = argc == 3 && argv[2] == std::string("--quick");
    if (argc != 2 && !is_quick) {
        std::fprintf(stderr, "Usage: module_bench FILE.json [--quick]\n");
        return 2;
    }
    if (FAILED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        return 1;
    }
    const int result = paylodge::bench::Run(argv[1], is_quick ? paylodge::bench::kQuick : paylodge::bench::kThorough);
    ::CoUninitialize();
    return result;
}
