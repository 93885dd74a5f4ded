// What a type library says, in the words in which the tests write it down.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <oaidl.h>

#include <string>
#include <vector>

#include "com/com_ptr.hpp"
#include "tests/component/members.hpp"

namespace paylodge::test {

// The type library of the module, as the platform's loader finds it.
[[nodiscard]] ComPtr<ITypeLib> LoadModuleTypeLibrary();
[[nodiscard]] ComPtr<ITypeInfo> TypeOf(ITypeLib& library, REFGUID id);

[[nodiscard]] std::string NameOfType(ITypeInfo& type);
[[nodiscard]] TYPEATTR AttributesOf(ITypeInfo& type);
// The type that a class or an interface implements in this place.
[[nodiscard]] ComPtr<ITypeInfo> Referenced(ITypeInfo& type, UINT implemented);
// The slots of a dual interface, whose type itself describes its dispatch side.
[[nodiscard]] ComPtr<ITypeInfo> SlotsOf(ITypeInfo& dual);
// The names of the interfaces that a class implements with exactly these flags.
[[nodiscard]] std::vector<std::string> ImplementedWith(ITypeInfo& coclass, INT flags);

struct DescribedMember {
    std::string name;
    DISPID id;
    int slot;
    INVOKEKIND kind;
    FUNCKIND function_kind;
    VARTYPE returned;
    CALLCONV convention;
    std::string arguments;  // those of properties without names
    std::string help;
};
[[nodiscard]] DescribedMember Describe(ITypeInfo& type, UINT index);
// The member that stands in this slot of the interface that adds it.
[[nodiscard]] DescribedMember DescribeSlot(ITypeInfo& slots, int slot);

// That the library describes a member as the tests have it.
void ExpectDescribed(const InterfaceMember& member, const DescribedMember& described);

// That a dual interface is one, has the name, and extends the other interface.
void ExpectDualInterface(ITypeInfo& dual, const std::string& name, REFIID base);

}  // namespace paylodge::test
