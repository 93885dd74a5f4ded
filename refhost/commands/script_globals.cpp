#include "refhost/commands/script_globals.hpp"

#include <algorithm>
#include <cwchar>

#include "com/bstr.hpp"
#include "com/module.hpp"
#include "com/variant.hpp"
#include "refhost/objects/host_boundary.hpp"
#include "refhost/objects/utf8.hpp"

namespace paylodge::refhost {
namespace {

enum : DISPID { kEcho = 1, kQuit, kArguments, kScriptFullName, kFullName, kCreateObject, kLength };

// As the language writes it, and the same whatever the user's country.
[[nodiscard]] HRESULT AppendText(const VARIANT& value, std::wstring& text) {
    if (V_VT(&value) == VT_BOOL) {
        text += V_BOOL(&value) == VARIANT_FALSE ? L"false" : L"true";
        return S_OK;
    }
    OwnedVariant converted;
    VARIANT source = value;
    const HRESULT result =
        V_VT(&value) == VT_NULL
            ? S_FALSE
            : ::VariantChangeTypeEx(converted.Receive(), &source, LOCALE_INVARIANT, VARIANT_ALPHABOOL, VT_BSTR);
    if (SUCCEEDED(result)) {
        text += result == S_FALSE ? std::wstring_view(L"null") : View(converted.Bstr());
    }
    return result;
}

// The number of an argument; the first one is number 0.
[[nodiscard]] HRESULT NumberOf(const DISPPARAMS& parameters, LONG& number) {
    if (parameters.cArgs != 1) {
        return DISP_E_BADPARAMCOUNT;
    }
    VARIANT converted;
    ::VariantInit(&converted);
    VARIANT source = parameters.rgvarg[0];
    const HRESULT result = ::VariantChangeTypeEx(&converted, &source, LOCALE_INVARIANT, 0, VT_I4);
    number = V_I4(&converted);
    return result;
}

// The words behind the script's name: length, Count(), and each by its number.
class CScriptArguments : public NamedMembers {
  public:
    using Row = InterfaceRow<CScriptArguments>;
    static constexpr std::array kInterfaces = {Row::Of<IDispatch>()};

    explicit CScriptArguments(const std::vector<std::wstring>* words) noexcept : words_(words) {}

  protected:
    ~CScriptArguments() = default;

    [[nodiscard]] std::span<const Member> Members() const noexcept override {
        static constexpr std::array kMembers{Member{L"Item", DISPID_VALUE}, Member{L"length", kLength},
                                             Member{L"Count", kLength}};
        return kMembers;
    }

    [[nodiscard]] HRESULT Call(DISPID member, const DISPPARAMS& parameters, VARIANT* result) override {
        if (member == kLength) {
            V_VT(result) = VT_I4;
            V_I4(result) = static_cast<LONG>(words_->size());
            return S_OK;
        }
        LONG number = 0;
        const HRESULT converted = NumberOf(parameters, number);
        if (FAILED(converted)) {
            return converted;
        }
        if (number < 0 || static_cast<size_t>(number) >= words_->size()) {
            return DISP_E_BADINDEX;
        }
        V_VT(result) = VT_BSTR;
        V_BSTR(result) = MakeBstr((*words_)[static_cast<size_t>(number)]).Detach();
        return S_OK;
    }

  private:
    const std::vector<std::wstring>* words_;
};

[[nodiscard]] HRESULT Echo(const DISPPARAMS& parameters) {
    std::wstring line;
    for (UINT left = parameters.cArgs; left > 0; --left) {
        line += left == parameters.cArgs ? L"" : L" ";
        const HRESULT result = AppendText(parameters.rgvarg[left - 1], line);
        if (FAILED(result)) {
            return result;
        }
    }
    std::erase(line, L'\r');
    PrintText(Utf8FromWide(line) + '\n');
    return S_OK;
}

// The object of a class that is named by its program id or by its class id in braces.
[[nodiscard]] HRESULT CreateNamedObject(const DISPPARAMS& parameters, VARIANT* result) {
    if (parameters.cArgs != 1 || V_VT(parameters.rgvarg) != VT_BSTR) {
        return parameters.cArgs == 1 ? DISP_E_TYPEMISMATCH : DISP_E_BADPARAMCOUNT;
    }
    const std::wstring_view name = View(V_BSTR(parameters.rgvarg));
    CLSID class_id = {};
    // Of the two only CLSIDFromProgID also knows the classes of a manifest.
    HRESULT found =
        name.starts_with(L'{') ? ::CLSIDFromString(name.data(), &class_id) : ::CLSIDFromProgID(name.data(), &class_id);
    if (SUCCEEDED(found)) {
        V_VT(result) = VT_DISPATCH;
        V_DISPATCH(result) = nullptr;
        found = ::CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&V_DISPATCH(result)));
    }
    return found;
}

}  // namespace

void PrintText(std::string_view text) {
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD written = 0;
    ::WriteFile(output, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

HRESULT NamedMembers::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = 0;
    return S_OK;
}

HRESULT NamedMembers::GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*info*/) { return E_NOTIMPL; }

HRESULT NamedMembers::GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* names, UINT count, LCID /*locale*/, DISPID* ids) {
    if (names == nullptr || ids == nullptr || count == 0) {
        return E_INVALIDARG;
    }
    std::fill_n(ids, count, DISPID_UNKNOWN);
    const auto members = Members();
    const auto found =
        std::ranges::find_if(members, [&](const Member& member) { return ::_wcsicmp(member.name, names[0]) == 0; });
    if (found == members.end() || count > 1) {
        return DISP_E_UNKNOWNNAME;
    }
    ids[0] = found->id;
    return S_OK;
}

HRESULT NamedMembers::Invoke(DISPID member, REFIID /*reserved*/, LCID /*locale*/, WORD flags, DISPPARAMS* parameters,
                             VARIANT* result, EXCEPINFO* /*exception*/, UINT* /*argument_error*/) {
    return Guarded([&]() -> HRESULT {
        const auto members = Members();
        const bool is_known = std::ranges::find(members, member, &Member::id) != members.end();
        if (!is_known || (flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET)) == 0) {
            return DISP_E_MEMBERNOTFOUND;
        }
        VARIANT unused;
        ::VariantInit(&unused);
        if (result != nullptr) {
            ::VariantInit(result);
        }
        const HRESULT called = Call(member, *parameters, result == nullptr ? &unused : result);
        ::VariantClear(&unused);
        return called;
    });
}

std::span<const NamedMembers::Member> CScriptGlobals::Members() const noexcept {
    static constexpr std::array kMembers{Member{L"Echo", kEcho},           Member{L"Quit", kQuit},
                                         Member{L"Arguments", kArguments}, Member{L"ScriptFullName", kScriptFullName},
                                         Member{L"FullName", kFullName},   Member{L"CreateObject", kCreateObject}};
    return kMembers;
}

HRESULT CScriptGlobals::Call(DISPID member, const DISPPARAMS& parameters, VARIANT* result) {
    switch (member) {
        case kEcho:
            return Echo(parameters);
        case kQuit: {
            LONG status = 0;
            const HRESULT converted = parameters.cArgs == 0 ? S_OK : NumberOf(parameters, status);
            if (FAILED(converted)) {
                return converted;
            }
            session_->quit = static_cast<int>(status);
            // An error is the one way to leave a script from within a call.
            return E_ABORT;
        }
        case kArguments: {
            auto arguments = ComObject<CScriptArguments>::Create(&session_->arguments);
            if (!arguments) {
                return E_OUTOFMEMORY;
            }
            V_VT(result) = VT_DISPATCH;
            V_DISPATCH(result) = arguments.Detach();
            // Called with a number, as scripts of every host do: Arguments(0).
            if (parameters.cArgs == 0) {
                return S_OK;
            }
            OwnedVariant object;
            *object.Receive() = *result;
            ::VariantInit(result);
            DISPPARAMS same = parameters;
            return V_DISPATCH(&object.Get())
                ->Invoke(DISPID_VALUE, IID_NULL, LOCALE_INVARIANT, DISPATCH_PROPERTYGET, &same, result, nullptr,
                         nullptr);
        }
        case kFullName:
            V_VT(result) = VT_BSTR;
            V_BSTR(result) = MakeBstr(Module::Path()).Detach();
            return S_OK;
        case kCreateObject:
            return CreateNamedObject(parameters, result);
        default:
            V_VT(result) = VT_BSTR;
            V_BSTR(result) = MakeBstr(session_->file).Detach();
            return S_OK;
    }
}

}  // namespace paylodge::refhost
