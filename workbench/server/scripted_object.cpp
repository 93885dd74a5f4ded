#include "workbench/server/scripted_object.hpp"

#include <comdef.h>
#include <olectl.h>

#include <algorithm>
#include <deque>
#include <vector>

#include "com/bstr.hpp"
#include "com/variant.hpp"
#include "refhost/objects/utf8.hpp"
#include "workbench/server/script_values.hpp"

namespace paylodge::workbench {
namespace {

void Check(HRESULT result) {
    if (FAILED(result)) {
        _com_issue_error(result);
    }
}

// Owns what a type information hands out for a while.
class Function {
  public:
    Function(ITypeInfo& info, UINT index) : info_(&info) { Check(info.GetFuncDesc(index, &description_)); }
    ~Function() { info_->ReleaseFuncDesc(description_); }
    Function(const Function&) = delete;
    Function& operator=(const Function&) = delete;
    const FUNCDESC* operator->() const noexcept { return description_; }
    const FUNCDESC& operator*() const noexcept { return *description_; }

  private:
    ITypeInfo* info_;
    FUNCDESC* description_ = nullptr;
};

[[nodiscard]] UINT CountFunctions(ITypeInfo& info) {
    TYPEATTR* attributes = nullptr;
    Check(info.GetTypeAttr(&attributes));
    const UINT count = attributes->cFuncs;
    info.ReleaseTypeAttr(attributes);
    return count;
}

[[nodiscard]] VARTYPE Pointed(const TYPEDESC& type) noexcept {
    return type.vt == VT_PTR ? Pointed(*type.lptdesc) : type.vt;
}

[[nodiscard]] std::string TypeName(const TYPEDESC& type) {
    switch (Pointed(type)) {
        case VT_BSTR:
            return "string";
        case VT_BOOL:
            return "boolean";
        case VT_I2:
        case VT_I4:
        case VT_INT:
        case VT_R8:
            return "number";
        default:
            return "void";
    }
}

// The member's name and those of its arguments.
[[nodiscard]] std::vector<std::string> NamesOf(ITypeInfo& info, const FUNCDESC& function) {
    std::vector<BSTR> found(static_cast<std::size_t>(function.cParams) + 2, nullptr);
    UINT count = 0;
    Check(info.GetNames(function.memid, found.data(), static_cast<UINT>(found.size()), &count));
    std::vector<std::string> names;
    for (const BSTR name : found) {
        const OwnedBstr owned(name);
        names.push_back(refhost::Utf8FromWide(View(owned)));
    }
    return names;
}

[[nodiscard]] Json DescribeArguments(const FUNCDESC& function, const std::vector<std::string>& names,
                                     std::string& result) {
    Json arguments = Json::array();
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        if ((parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0) {
            result = TypeName(parameter.tdesc);
            continue;
        }
        arguments.push_back({{"name", names.at(static_cast<std::size_t>(i) + 1)},
                             {"type", TypeName(parameter.tdesc)},
                             {"out", (parameter.paramdesc.wParamFlags & PARAMFLAG_FOUT) != 0}});
    }
    return arguments;
}

[[nodiscard]] Json DescribeFunction(ITypeInfo& info, const FUNCDESC& function) {
    const std::vector<std::string> names = NamesOf(info, function);
    const TYPEDESC& returned = function.elemdescFunc.tdesc;
    std::string result = returned.vt == VT_HRESULT || returned.vt == VT_ERROR ? "void" : TypeName(returned);
    Json arguments = DescribeArguments(function, names, result);
    const bool is_property = function.invkind != INVOKE_FUNC;
    return {{"name", names.at(0)},
            {"id", function.memid},
            {"kind", is_property ? "property" : "method"},
            {"put", function.invkind == INVOKE_PROPERTYPUT},
            {"arguments", is_property ? Json::array() : std::move(arguments)},
            {"result", result}};
}

[[nodiscard]] bool IsForScript(const FUNCDESC& function) noexcept {
    return (function.wFuncFlags & (FUNCFLAG_FRESTRICTED | FUNCFLAG_FHIDDEN)) == 0 && function.memid > 0 &&
           function.memid < 0x60000000;
}

[[nodiscard]] ComPtr<ITypeInfo> TypeOf(IDispatch& object) {
    ComPtr<ITypeInfo> info;
    Check(object.GetTypeInfo(0, LOCALE_INVARIANT, info.Receive()));
    return info;
}

// What the argument is a reference to: the type that the type information names; a variant where it names none.
[[nodiscard]] VARTYPE ReferencedType(IDispatch& object, DISPID id, std::size_t argument) {
    const ComPtr<ITypeInfo> info = TypeOf(object);
    const UINT count = CountFunctions(*info.Get());
    for (UINT index = 0; index < count; ++index) {
        const Function function(*info.Get(), index);
        if (function->memid == id && argument < static_cast<std::size_t>(function->cParams)) {
            const TYPEDESC& type = function->lprgelemdescParam[argument].tdesc;
            return type.vt == VT_PTR ? Pointed(type) : VARTYPE{VT_VARIANT};
        }
    }
    return VT_VARIANT;
}

// The arguments of a call: in reverse order, as Invoke takes them, and where the ones by reference are kept meanwhile.
class Arguments {
  public:
    Arguments(IDispatch& object, DISPID id, const std::vector<Value>& values) : passed_(values.size()) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            VARIANT& slot = passed_[values.size() - 1 - i];
            if (values[i].is_reference) {
                Refer(slot, values[i].value, ReferencedType(object, id, i), i);
            } else {
                SetVariant(slot, values[i].value);
            }
        }
    }
    ~Arguments() {
        for (VARIANT& argument : passed_) {
            ::VariantClear(&argument);
        }
        for (Kept& kept : kept_) {
            ::VariantClear(&kept.variant);
        }
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    [[nodiscard]] DISPPARAMS Parameters(CallKind kind) noexcept {
        return {.rgvarg = passed_.data(),
                .rgdispidNamedArgs = kind == CallKind::kPut ? &put_ : nullptr,
                .cArgs = static_cast<UINT>(passed_.size()),
                .cNamedArgs = kind == CallKind::kPut ? 1U : 0U};
    }

    [[nodiscard]] std::map<std::size_t, Json> ReadReferences() const {
        std::map<std::size_t, Json> values;
        for (const Kept& kept : kept_) {
            values.emplace(kept.argument, ReadVariant(kept.variant));
        }
        return values;
    }

  private:
    struct Kept {
        std::size_t argument;
        VARIANT variant;
    };

    void Refer(VARIANT& slot, const Json& value, VARTYPE type, std::size_t argument) {
        VARIANT& kept = kept_.emplace_back(Kept{argument, {}}).variant;
        SetVariant(kept, value);
        if (type == VT_VARIANT ||
            FAILED(::VariantChangeTypeEx(&kept, &kept, LOCALE_INVARIANT, VARIANT_ALPHABOOL, type))) {
            V_VT(&slot) = VT_BYREF | VT_VARIANT;
            V_VARIANTREF(&slot) = &kept;
            return;
        }
        V_VT(&slot) = static_cast<VARTYPE>(VT_BYREF | type);
        // All members of the union begin at the same place.
        V_BYREF(&slot) = &V_I4(&kept);
    }

    std::vector<VARIANT> passed_;
    // Pointers into it stay valid.
    std::deque<Kept> kept_;
    DISPID put_ = DISPID_PROPERTYPUT;
};

[[nodiscard]] WORD FlagsOf(CallKind kind) noexcept {
    switch (kind) {
        case CallKind::kGet:
            return DISPATCH_PROPERTYGET;
        case CallKind::kPut:
            return DISPATCH_PROPERTYPUT;
        default:
            // As script engines do when the result is used.
            return DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    }
}

void ReadException(EXCEPINFO& exception, Outcome& outcome) {
    if (exception.pfnDeferredFillIn != nullptr) {
        exception.pfnDeferredFillIn(&exception);
    }
    const OwnedBstr source(exception.bstrSource);
    const OwnedBstr description(exception.bstrDescription);
    const OwnedBstr help(exception.bstrHelpFile);
    if (outcome.result == DISP_E_EXCEPTION) {
        outcome.result = FAILED(exception.scode) ? exception.scode : E_FAIL;
        outcome.description = refhost::Utf8FromWide(View(description));
    }
}

}  // namespace

Outcome CallMember(IDispatch& object, const std::string& member, CallKind kind, const std::vector<Value>& values) {
    Outcome outcome;
    std::wstring name = refhost::WideFromUtf8(member);
    LPOLESTR names = name.data();
    DISPID id = DISPID_UNKNOWN;
    outcome.result = object.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_INVARIANT, &id);
    if (FAILED(outcome.result)) {
        return outcome;
    }
    Arguments arguments(object, id, values);
    DISPPARAMS parameters = arguments.Parameters(kind);
    OwnedVariant result;
    EXCEPINFO exception = {};
    UINT wrong_argument = 0;
    outcome.result = object.Invoke(id, IID_NULL, LOCALE_INVARIANT, FlagsOf(kind), &parameters,
                                   kind == CallKind::kPut ? nullptr : result.Receive(), &exception, &wrong_argument);
    ReadException(exception, outcome);
    if (SUCCEEDED(outcome.result)) {
        outcome.value = ReadVariant(result.Get());
    }
    outcome.out = arguments.ReadReferences();
    return outcome;
}

Json DescribeMembers(IDispatch& object) {
    const ComPtr<ITypeInfo> info = TypeOf(object);
    std::map<MEMBERID, Json> members;
    const UINT count = CountFunctions(*info.Get());
    for (UINT index = 0; index < count; ++index) {
        const Function function(*info.Get(), index);
        if (!IsForScript(*function)) {
            continue;
        }
        Json described = DescribeFunction(*info.Get(), *function);
        const auto [known, is_new] = members.try_emplace(function->memid, described);
        if (!is_new) {
            // A property's get and put are two functions of one name.
            known->second["put"] = known->second["put"].get<bool>() || described["put"].get<bool>();
            if (function->invkind == INVOKE_PROPERTYGET) {
                known->second["result"] = described["result"];
            }
        }
    }
    Json list = Json::array();
    for (auto& [id, member] : members) {
        list.push_back(std::move(member));
    }
    return list;
}

ComPtr<ITypeInfo> EventsOf(IDispatch& object) {
    ComPtr<ITypeInfo> events;
    ComPtr<IProvideClassInfo2> class_info;
    IID id = {};
    if (FAILED(object.QueryInterface(IID_IProvideClassInfo2, class_info.ReceiveVoid())) ||
        FAILED(class_info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &id))) {
        return events;
    }
    ComPtr<ITypeLib> library;
    UINT index = 0;
    Check(TypeOf(object)->GetContainingTypeLib(library.Receive(), &index));
    Check(library->GetTypeInfoOfGuid(id, events.Receive()));
    return events;
}

Json DescribeEvents(ITypeInfo& events) {
    Json list = Json::array();
    const UINT count = CountFunctions(events);
    for (UINT index = 0; index < count; ++index) {
        const Function function(events, index);
        if (IsForScript(*function)) {
            const Json described = DescribeFunction(events, *function);
            list.push_back(
                {{"name", described["name"]}, {"id", described["id"]}, {"arguments", described["arguments"]}});
        }
    }
    return list;
}

}  // namespace paylodge::workbench
