#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "com/bstr.hpp"
#include "tests/component/control_under_test.hpp"
#include "tests/component/members.hpp"
#include "tests/component/module_under_test.hpp"
#include "tests/component/type_description.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

constexpr GUID kLibraryId = {0xC29F0A7C, 0x64E9, 0x4345, {0xA1, 0x5A, 0xEB, 0xCB, 0x89, 0xE5, 0x47, 0x84}};

class TypeLibrary : public ::testing::Test {
  protected:
    [[nodiscard]] ComPtr<ITypeInfo> Type(REFGUID id) { return TypeOf(*library.Get(), id); }
    [[nodiscard]] ComPtr<ITypeInfo> Slots(int interface_number) {
        return SlotsOf(*Type(InterfaceIds()[static_cast<size_t>(interface_number - 1)]).Get());
    }

    const ComPtr<ITypeLib> library = LoadModuleTypeLibrary();
};

TEST_F(TypeLibrary, HasItsIdVersionAndName) {
    TLIBATTR* attributes = nullptr;
    ASSERT_HRESULT(S_OK, library->GetLibAttr(&attributes));
    EXPECT_TRUE(IsEqualGUID(kLibraryId, attributes->guid));
    EXPECT_EQ(1, attributes->wMajorVerNum);
    EXPECT_EQ(0, attributes->wMinorVerNum);
    EXPECT_EQ(sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32, attributes->syskind);
    library->ReleaseTLibAttr(attributes);
    OwnedBstr name;
    ASSERT_HRESULT(S_OK, library->GetDocumentation(-1, name.Receive(), nullptr, nullptr, nullptr));
    EXPECT_EQ(L"PAYLODGELib", View(name));
}

TEST_F(TypeLibrary, IsResourceNumberOne) {
    ComPtr<ITypeLib> numbered;
    EXPECT_HRESULT(S_OK, ::LoadTypeLibEx((ModulePath() + L"\\1").c_str(), REGKIND_NONE, numbered.Receive()));
    ComPtr<ITypeLib> missing;
    EXPECT_HRESULT(TYPE_E_CANTLOADLIBRARY,
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
    EXPECT_EQ(std::vector<std::string>{"IPaylodge8"}, ImplementedWith(*paylodge.Get(), IMPLTYPEFLAG_FDEFAULT));
}

TEST_F(TypeLibrary, InterfacesAreOneDualChain) {
    for (int number = 1; number <= kInterfaces; ++number) {
        ExpectDualInterface(*Type(InterfaceIds()[static_cast<size_t>(number - 1)]).Get(),
                            number == 1 ? "IPaylodge" : "IPaylodge" + std::to_string(number),
                            number == 1 ? IID_IDispatch : InterfaceIds()[static_cast<size_t>(number - 2)]);
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
    for (const Member& member : Members()) {
        const DescribedMember described = DescribeSlot(*Slots(member.interface_number).Get(), member.slot);
        ExpectDescribed(member, described);
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
            EXPECT_HRESULT(S_OK, paylodge->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)) << member.name;
            EXPECT_EQ(member.id, id) << member.name;
        }
    }
}

TEST_F(TypeLibraryNames, SlotBehindTheLastIsNotReachedByName) {
    std::wstring text = L"SetNotificationChannel";
    LPOLESTR names[] = {text.data()};
    DISPID id = 7;
    EXPECT_HRESULT(DISP_E_UNKNOWNNAME, paylodge->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id));
    EXPECT_EQ(DISPID_UNKNOWN, id);
}

TEST_F(TypeLibraryNames, ObjectHandsOutTheTypeOfItsLatestInterface) {
    UINT count = 0;
    EXPECT_HRESULT(S_OK, paylodge->GetTypeInfoCount(&count));
    EXPECT_EQ(1U, count);
    ComPtr<ITypeInfo> type;
    ASSERT_HRESULT(S_OK, paylodge->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.Receive()));
    EXPECT_TRUE(IsEqualIID(InterfaceIds().back(), AttributesOf(*type.Get()).guid));
    EXPECT_HRESULT(DISP_E_BADINDEX, paylodge->GetTypeInfo(1, LOCALE_USER_DEFAULT, ComPtr<ITypeInfo>().Receive()));
}

}  // namespace
}  // namespace paylodge::test
