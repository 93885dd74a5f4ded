#include "tests/component/type_description.hpp"

#include "com/ansi_text.hpp"
#include "tests/component/module_under_test.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

[[nodiscard]] std::string DescribeType(const TYPEDESC& type) {
    switch (type.vt) {
        case VT_PTR:
            return DescribeType(*type.lptdesc) + "*";
        case VT_BSTR:
            return "BSTR";
        case VT_BOOL:
            return "VARIANT_BOOL";
        case VT_I4:
            return "LONG";
        case VT_INT:
            return "INT";
        default:
            return "type " + std::to_string(type.vt);
    }
}

[[nodiscard]] std::string DescribeDirection(USHORT flags) {
    switch (flags) {
        case PARAMFLAG_FIN:
            return "[in] ";
        case PARAMFLAG_FOUT:
            return "[out] ";
        case PARAMFLAG_FOUT | PARAMFLAG_FRETVAL:
            return "[out,retval] ";
        default:
            return "[" + std::to_string(flags) + "] ";
    }
}

[[nodiscard]] std::string DescribeArguments(ITypeInfo& type, const FUNCDESC& function) {
    BSTR names[32] = {};
    UINT count = 0;
    EXPECT_HRESULT(S_OK, type.GetNames(function.memid, names, 32, &count));
    std::string text;
    for (SHORT index = 0; index < function.cParams; ++index) {
        const ELEMDESC& parameter = function.lprgelemdescParam[index];
        text += text.empty() ? "" : ", ";
        text += DescribeDirection(parameter.paramdesc.wParamFlags) + DescribeType(parameter.tdesc);
        if (function.invkind == INVOKE_FUNC) {
            text += " " + AnsiFromBstr(names[index + 1]);
        }
    }
    for (const BSTR name : names) {
        ::SysFreeString(name);
    }
    return text;
}

}  // namespace

ComPtr<ITypeLib> LoadModuleTypeLibrary() {
    ComPtr<ITypeLib> library;
    EXPECT_HRESULT(S_OK, ::LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, library.Receive()));
    return library;
}

ComPtr<ITypeInfo> TypeOf(ITypeLib& library, REFGUID id) {
    ComPtr<ITypeInfo> type;
    EXPECT_HRESULT(S_OK, library.GetTypeInfoOfGuid(id, type.Receive()));
    return type;
}

std::string NameOfType(ITypeInfo& type) {
    OwnedBstr name;
    EXPECT_HRESULT(S_OK, type.GetDocumentation(MEMBERID_NIL, name.Receive(), nullptr, nullptr, nullptr));
    return AnsiFromBstr(name.Get());
}

TYPEATTR AttributesOf(ITypeInfo& type) {
    TYPEATTR* attributes = nullptr;
    EXPECT_HRESULT(S_OK, type.GetTypeAttr(&attributes));
    const TYPEATTR copy = *attributes;
    type.ReleaseTypeAttr(attributes);
    return copy;
}

ComPtr<ITypeInfo> Referenced(ITypeInfo& type, UINT implemented) {
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> result;
    EXPECT_HRESULT(S_OK, type.GetRefTypeOfImplType(implemented, &reference));
    EXPECT_HRESULT(S_OK, type.GetRefTypeInfo(reference, result.Receive()));
    return result;
}

ComPtr<ITypeInfo> SlotsOf(ITypeInfo& dual) { return Referenced(dual, static_cast<UINT>(-1)); }

std::vector<std::string> ImplementedWith(ITypeInfo& coclass, INT flags) {
    std::vector<std::string> names;
    const UINT count = AttributesOf(coclass).cImplTypes;
    for (UINT index = 0; index < count; ++index) {
        INT actual = 0;
        EXPECT_HRESULT(S_OK, coclass.GetImplTypeFlags(index, &actual));
        if (actual == flags) {
            names.push_back(NameOfType(*Referenced(coclass, index).Get()));
        }
    }
    return names;
}

DescribedMember Describe(ITypeInfo& type, UINT index) {
    FUNCDESC* function = nullptr;
    EXPECT_HRESULT(S_OK, type.GetFuncDesc(index, &function));
    OwnedBstr name;
    OwnedBstr help;
    EXPECT_HRESULT(S_OK, type.GetDocumentation(function->memid, name.Receive(), help.Receive(), nullptr, nullptr));
    DescribedMember described{AnsiFromBstr(name.Get()),
                              function->memid,
                              function->oVft / static_cast<int>(sizeof(void*)),
                              function->invkind,
                              function->funckind,
                              function->elemdescFunc.tdesc.vt,
                              function->callconv,
                              DescribeArguments(type, *function),
                              AnsiFromBstr(help.Get())};
    type.ReleaseFuncDesc(function);
    return described;
}

DescribedMember DescribeSlot(ITypeInfo& slots, int slot) {
    const TYPEATTR attributes = AttributesOf(slots);
    const int first_slot = attributes.cbSizeVft / static_cast<int>(sizeof(void*)) - attributes.cFuncs;
    DescribedMember described = Describe(slots, static_cast<UINT>(slot - first_slot));
    EXPECT_EQ(slot, described.slot) << described.name;
    EXPECT_EQ(VT_HRESULT, described.returned) << described.name;
    EXPECT_EQ(CC_STDCALL, described.convention) << described.name;
    EXPECT_EQ(FUNC_PUREVIRTUAL, described.function_kind) << described.name;
    return described;
}

void ExpectDescribed(const InterfaceMember& member, const DescribedMember& described) {
    constexpr INVOKEKIND kKinds[] = {INVOKE_FUNC, INVOKE_PROPERTYGET, INVOKE_PROPERTYPUT};
    EXPECT_EQ(member.name, described.name);
    EXPECT_EQ(member.id, described.id) << member.name;
    EXPECT_EQ(kKinds[static_cast<int>(member.kind)], described.kind) << member.name;
    EXPECT_EQ(member.arguments, described.arguments) << member.name;
    // A property's id leads to the text of its get.
    if (member.help != nullptr && member.kind != Kind::kPut) {
        EXPECT_EQ(member.help, described.help) << member.name;
    }
}

void ExpectDualInterface(ITypeInfo& dual, const std::string& name, REFIID base) {
    EXPECT_TRUE(AttributesOf(dual).wTypeFlags & TYPEFLAG_FDUAL) << name;
    const auto slots = SlotsOf(dual);
    EXPECT_EQ(name, NameOfType(*slots.Get()));
    EXPECT_TRUE(IsEqualIID(base, AttributesOf(*Referenced(*slots.Get(), 0).Get()).guid)) << name;
}

}  // namespace paylodge::test
