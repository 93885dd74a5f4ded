// What the built module's type library says of the control, and that the control is as it says.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "com/bstr.hpp"
#include "tests/component/control_under_test.hpp"
#include "tests/component/member_call.hpp"
#include "tests/component/type_description.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

constexpr int kInterfaceCount = 10;

class ControlTypeLibrary : public ::testing::Test {
  protected:
    [[nodiscard]] ComPtr<ITypeInfo> Type(REFGUID id) { return TypeOf(*library.Get(), id); }
    [[nodiscard]] ComPtr<ITypeInfo> Interface(int number) {
        return Type(ControlInterfaceIds()[static_cast<size_t>(number - 1)]);
    }
    [[nodiscard]] ComPtr<ITypeInfo> Slots(int number) { return SlotsOf(*Interface(number).Get()); }

    const ComPtr<ITypeLib> library = LoadModuleTypeLibrary();
};

TEST_F(ControlTypeLibrary, InterfacesAreOneDualChain) {
    ASSERT_EQ(kInterfaceCount, static_cast<int>(ControlInterfaceIds().size()));
    for (int number = 1; number <= kInterfaceCount; ++number) {
        ExpectDualInterface(*Interface(number).Get(), ControlInterfaceName(number),
                            number == 1 ? IID_IDispatch : ControlInterfaceIds()[static_cast<size_t>(number - 2)]);
    }
}

TEST_F(ControlTypeLibrary, DescribesExactlyTheMembersOfEachInterface) {
    for (int number = 1; number <= kInterfaceCount; ++number) {
        const auto expected = std::ranges::count(ControlMembers(), number, &InterfaceMember::interface_number);
        EXPECT_EQ(expected, AttributesOf(*Slots(number).Get()).cFuncs) << number;
    }
    const int slots = ControlMembers().back().slot + 1;
    EXPECT_EQ(slots * static_cast<int>(sizeof(void*)), AttributesOf(*Slots(kInterfaceCount).Get()).cbSizeVft);
}

TEST_F(ControlTypeLibrary, DescribesEachMemberAsItIsCalled) {
    for (const InterfaceMember& member : ControlMembers()) {
        ExpectDescribed(member, DescribeSlot(*Slots(member.interface_number).Get(), member.slot));
    }
}

// The loader returns the text of a put to nobody, so it is looked for in the library's bytes.
TEST_F(ControlTypeLibrary, HoldsTheHelpTextOfThePut) {
    const ModuleUnderTest module;
    const HRSRC resource = ::FindResourceW(module.Handle(), MAKEINTRESOURCEW(1), L"TYPELIB");
    ASSERT_NE(nullptr, resource);
    const std::string_view bytes(static_cast<const char*>(::LockResource(::LoadResource(module.Handle(), resource))),
                                 ::SizeofResource(module.Handle(), resource));
    EXPECT_NE(bytes.npos, bytes.find(FindControlMember("LHTransactionNotificationData", Kind::kPut).help));
}

TEST_F(ControlTypeLibrary, ClassHasTheLatestInterfaceAndTheEventsAsDefaults) {
    const auto coclass = Type(kControlClass);
    EXPECT_EQ(std::vector<std::string>{"IPaylodgeCtrl10"}, ImplementedWith(*coclass.Get(), IMPLTYPEFLAG_FDEFAULT));
    EXPECT_EQ(std::vector<std::string>{"_IPaylodgeCtrlEvents"},
              ImplementedWith(*coclass.Get(), IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE));
    EXPECT_EQ(std::vector<std::string>{}, ImplementedWith(*coclass.Get(), IMPLTYPEFLAG_FSOURCE));
}

TEST_F(ControlTypeLibrary, EventsAreForDispatchOnly) {
    const auto events = Type(kControlEvents);
    EXPECT_EQ("_IPaylodgeCtrlEvents", NameOfType(*events.Get()));
    const TYPEATTR attributes = AttributesOf(*events.Get());
    EXPECT_EQ(TKIND_DISPATCH, attributes.typekind);
    EXPECT_FALSE(attributes.wTypeFlags & TYPEFLAG_FDUAL);
    EXPECT_EQ(0, attributes.cVars);
}

TEST_F(ControlTypeLibrary, DescribesEachEventAsItIsRaised) {
    const auto events = Type(kControlEvents);
    ASSERT_EQ(ControlEvents().size(), AttributesOf(*events.Get()).cFuncs);
    for (UINT index = 0; index < ControlEvents().size(); ++index) {
        const ControlEvent& event = ControlEvents()[index];
        const DescribedMember described = Describe(*events.Get(), index);
        EXPECT_EQ(event.name, described.name);
        EXPECT_EQ(event.id, described.id) << event.name;
        EXPECT_EQ(INVOKE_FUNC, described.kind) << event.name;
        EXPECT_EQ(FUNC_DISPATCH, described.function_kind) << event.name;
        EXPECT_EQ(VT_HRESULT, described.returned) << event.name;
        EXPECT_EQ(event.arguments, described.arguments) << event.name;
    }
}

class ControlSlots : public ControlComponent {};

TEST_F(ControlSlots, AreOneTableForTheWholeChain) {
    for (const IID& id : ControlInterfaceIds()) {
        ComPtr<IUnknown> found;
        ASSERT_HRESULT(S_OK, control->QueryInterface(id, found.ReceiveVoid()));
        EXPECT_EQ(static_cast<IUnknown*>(control.Get()), found.Get());
    }
}

TEST_F(ControlSlots, GetStandsBeforePut) {
    const OwnedBstr data = MakeBstr(L"data");
    EXPECT_HRESULT(S_OK, CallSlot(*control.Get(), 14, data.Get()));
    OwnedBstr got;
    EXPECT_HRESULT(S_OK, CallThroughSlot(*control.Get(), 13, got.Receive()));
    EXPECT_EQ(L"data", View(got));
}

TEST_F(ControlSlots, ObjectHandsOutTheTypeOfItsLatestInterface) {
    UINT count = 0;
    EXPECT_HRESULT(S_OK, control->GetTypeInfoCount(&count));
    EXPECT_EQ(1U, count);
    ComPtr<ITypeInfo> type;
    ASSERT_HRESULT(S_OK, control->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.Receive()));
    EXPECT_TRUE(IsEqualIID(ControlInterfaceIds().back(), AttributesOf(*type.Get()).guid));
}

}  // namespace
}  // namespace paylodge::test
