#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "frame/com/ansi_text.hpp"
#include "tests/component/members.hpp"
#include "tests/component/module_under_test.hpp"

namespace paylodge::test {
namespace {

constexpr GUID kLibraryId = {0xC29F0A7C, 0x64E9, 0x4345, {0xA1, 0x5A, 0xEB, 0xCB, 0x89, 0xE5, 0x47, 0x84}};
constexpr CLSID kControlClass = {0x00A0CCCE, 0x89E6, 0x4779, {0xAA, 0xCD, 0xE7, 0x74, 0x65, 0x1C, 0xB5, 0xAD}};

[[nodiscard]] std::string NameOfType(ITypeInfo& type) {
    OwnedBstr name;
    EXPECT_EQ(S_OK, type.GetDocumentation(MEMBERID_NIL, name.Receive(), nullptr, nullptr, nullptr));
    return AnsiFromBstr(name.Get());
}

[[nodiscard]] ComPtr<ITypeInfo> Referenced(ITypeInfo& type, UINT implemented) {
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> result;
    EXPECT_EQ(S_OK, type.GetRefTypeOfImplType(implemented, &reference));
    EXPECT_EQ(S_OK, type.GetRefTypeInfo(reference, result.Receive()));
    return result;
}

[[nodiscard]] TYPEATTR AttributesOf(ITypeInfo& type) {
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(S_OK, type.GetTypeAttr(&attributes));
    const TYPEATTR copy = *attributes;
    type.ReleaseTypeAttr(attributes);
    return copy;
}

// A member as the type library describes it, in the words of the hand-written table.
struct Described {
    std::string name;
    DISPID id;
    int slot;
    INVOKEKIND kind;
    std::string arguments;
    std::string help;
};

[[nodiscard]] std::string DescribeType(const TYPEDESC& type) {
    if (type.vt == VT_PTR) {
        return DescribeType(*type.lptdesc) + "*";
    }
    return type.vt == VT_BSTR ? "BSTR" : type.vt == VT_BOOL ? "VARIANT_BOOL" : "type " + std::to_string(type.vt);
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
    EXPECT_EQ(S_OK, type.GetNames(function.memid, names, 32, &count));
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

[[nodiscard]] Described Describe(ITypeInfo& type, UINT index) {
    FUNCDESC* function = nullptr;
    EXPECT_EQ(S_OK, type.GetFuncDesc(index, &function));
    OwnedBstr name;
    OwnedBstr help;
    EXPECT_EQ(S_OK, type.GetDocumentation(function->memid, name.Receive(), help.Receive(), nullptr, nullptr));
    Described described{AnsiFromBstr(name.Get()),
                        function->memid,
                        function->oVft / static_cast<int>(sizeof(void*)),
                        function->invkind,
                        DescribeArguments(type, *function),
                        AnsiFromBstr(help.Get())};
    EXPECT_EQ(VT_HRESULT, function->elemdescFunc.tdesc.vt);
    EXPECT_EQ(CC_STDCALL, function->callconv);
    EXPECT_EQ(FUNC_PUREVIRTUAL, function->funckind);
    type.ReleaseFuncDesc(function);
    return described;
}

class TypeLibrary : public ::testing::Test {
  protected:
    TypeLibrary() { EXPECT_EQ(S_OK, ::LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, library.Receive())); }

    [[nodiscard]] ComPtr<ITypeInfo> Type(REFGUID id) {
        ComPtr<ITypeInfo> type;
        EXPECT_EQ(S_OK, library->GetTypeInfoOfGuid(id, type.Receive()));
        return type;
    }
    // The slots of IPaylodgeN; the type of a dual interface itself describes its dispatch side.
    [[nodiscard]] ComPtr<ITypeInfo> Slots(int interface_number) {
        return Referenced(*Type(InterfaceIds()[static_cast<size_t>(interface_number - 1)]).Get(),
                          static_cast<UINT>(-1));
    }

    ComPtr<ITypeLib> library;
};

TEST_F(TypeLibrary, HasItsIdVersionAndName) {
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, library->GetLibAttr(&attributes));
    EXPECT_TRUE(IsEqualGUID(kLibraryId, attributes->guid));
    EXPECT_EQ(1, attributes->wMajorVerNum);
    EXPECT_EQ(0, attributes->wMinorVerNum);
    EXPECT_EQ(sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32, attributes->syskind);
    library->ReleaseTLibAttr(attributes);
    OwnedBstr name;
    ASSERT_EQ(S_OK, library->GetDocumentation(-1, name.Receive(), nullptr, nullptr, nullptr));
    EXPECT_EQ(L"PAYLODGELib", View(name));
}

TEST_F(TypeLibrary, IsResourceNumberOne) {
    ComPtr<ITypeLib> numbered;
    EXPECT_EQ(S_OK, ::LoadTypeLibEx((ModulePath() + L"\\1").c_str(), REGKIND_NONE, numbered.Receive()));
    ComPtr<ITypeLib> missing;
    EXPECT_EQ(TYPE_E_CANTLOADLIBRARY,
              ::LoadTypeLibEx((ModulePath() + L"\\2").c_str(), REGKIND_NONE, missing.Receive()));
}

TEST_F(TypeLibrary, NamesBothClasses) {
    const auto paylodge = Type(CLSID_Paylodge);
    EXPECT_EQ("Paylodge", NameOfType(*paylodge.Get()));
    EXPECT_EQ(TKIND_COCLASS, AttributesOf(*paylodge.Get()).typekind);
    const auto control = Type(kControlClass);
    EXPECT_EQ("PaylodgeCtrl", NameOfType(*control.Get()));
    EXPECT_EQ(TKIND_COCLASS, AttributesOf(*control.Get()).typekind);
}

TEST_F(TypeLibrary, LatestInterfaceIsTheDefaultOfItsClass) {
    const auto paylodge = Type(CLSID_Paylodge);
    const UINT count = AttributesOf(*paylodge.Get()).cImplTypes;
    std::vector<std::string> defaults;
    for (UINT index = 0; index < count; ++index) {
        INT flags = 0;
        EXPECT_EQ(S_OK, paylodge->GetImplTypeFlags(index, &flags));
        if (flags == IMPLTYPEFLAG_FDEFAULT) {
            defaults.push_back(NameOfType(*Referenced(*paylodge.Get(), index).Get()));
        }
    }
    EXPECT_EQ(std::vector<std::string>{"IPaylodge8"}, defaults);
}

TEST_F(TypeLibrary, InterfacesAreOneDualChain) {
    for (int number = 1; number <= kInterfaces; ++number) {
        const auto dispatch = Type(InterfaceIds()[static_cast<size_t>(number - 1)]);
        EXPECT_TRUE(AttributesOf(*dispatch.Get()).wTypeFlags & TYPEFLAG_FDUAL);
        const auto slots = Slots(number);
        EXPECT_EQ(number == 1 ? "IPaylodge" : "IPaylodge" + std::to_string(number), NameOfType(*slots.Get()));
        const auto base = Referenced(*slots.Get(), 0);
        const IID expected = number == 1 ? IID_IDispatch : InterfaceIds()[static_cast<size_t>(number - 2)];
        EXPECT_TRUE(IsEqualIID(expected, AttributesOf(*base.Get()).guid));
    }
}

TEST_F(TypeLibrary, DescribesExactlyTheMembersOfEachInterface) {
    for (int number = 1; number <= kInterfaces; ++number) {
        const auto slots = Slots(number);
        const auto expected = std::ranges::count(Members(), number, &Member::interface_number);
        EXPECT_EQ(expected, AttributesOf(*slots.Get()).cFuncs) << number;
    }
    const Member& last = Members().back();
    EXPECT_EQ(kSetNotificationChannelSlot, last.slot + 1);
    EXPECT_EQ((last.slot + 1) * static_cast<int>(sizeof(void*)), AttributesOf(*Slots(kInterfaces).Get()).cbSizeVft);
}

TEST_F(TypeLibrary, DescribesEachMemberAsItIsCalled) {
    constexpr INVOKEKIND kKinds[] = {INVOKE_FUNC, INVOKE_PROPERTYGET, INVOKE_PROPERTYPUT};
    for (const Member& member : Members()) {
        const auto slots = Slots(member.interface_number);
        const TYPEATTR attributes = AttributesOf(*slots.Get());
        const int first_slot = attributes.cbSizeVft / static_cast<int>(sizeof(void*)) - attributes.cFuncs;
        const Described described = Describe(*slots.Get(), static_cast<UINT>(member.slot - first_slot));
        EXPECT_EQ(member.name, described.name);
        EXPECT_EQ(member.id, described.id) << member.name;
        EXPECT_EQ(member.slot, described.slot) << member.name;
        EXPECT_EQ(kKinds[static_cast<int>(member.kind)], described.kind) << member.name;
        EXPECT_EQ(member.arguments, described.arguments) << member.name;
        // A property's id leads to the text of its get.
        if (member.help != nullptr && member.kind != Kind::kPut) {
            EXPECT_EQ(member.help, described.help) << member.name;
        }
        EXPECT_NE("", described.help) << member.name;
    }
}

class TypeLibraryNames : public Component {};

TEST_F(TypeLibraryNames, AreFoundInAnyLetterCase) {
    for (const Member& member : Members()) {
        std::wstring name(member.name, member.name + std::strlen(member.name));
        std::wstring upper = name;
        std::wstring lower = name;
        ::CharUpperW(upper.data());
        ::CharLowerW(lower.data());
        for (std::wstring text : {name, upper, lower}) {
            LPOLESTR names[] = {text.data()};
            DISPID id = DISPID_UNKNOWN;
            EXPECT_EQ(S_OK, paylodge->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)) << member.name;
            EXPECT_EQ(member.id, id) << member.name;
        }
    }
}

TEST_F(TypeLibraryNames, SlotBehindTheLastIsNotReachedByName) {
    std::wstring text = L"SetNotificationChannel";
    LPOLESTR names[] = {text.data()};
    DISPID id = 7;
    EXPECT_EQ(DISP_E_UNKNOWNNAME, paylodge->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id));
    EXPECT_EQ(DISPID_UNKNOWN, id);
}

TEST_F(TypeLibraryNames, ObjectHandsOutTheTypeOfItsLatestInterface) {
    UINT count = 0;
    EXPECT_EQ(S_OK, paylodge->GetTypeInfoCount(&count));
    EXPECT_EQ(1U, count);
    ComPtr<ITypeInfo> type;
    ASSERT_EQ(S_OK, paylodge->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.Receive()));
    EXPECT_TRUE(IsEqualIID(InterfaceIds().back(), AttributesOf(*type.Get()).guid));
    EXPECT_EQ(DISP_E_BADINDEX, paylodge->GetTypeInfo(1, LOCALE_USER_DEFAULT, ComPtr<ITypeInfo>().Receive()));
}

}  // namespace
}  // namespace paylodge::test
