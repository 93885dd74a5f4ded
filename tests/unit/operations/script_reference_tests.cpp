// The script reference names exactly the members that the type library has, with their dispatch ids.

#include <windows.h>

#include <gtest/gtest.h>
#include <oleauto.h>

#include <fstream>
#include <map>
#include <regex>
#include <string>

#include "com/ansi_text.hpp"
#include "com/com_ptr.hpp"
#include "com/module.hpp"
#include "paylodge.h"
#include "tests/support/hresult.hpp"
#include "tests/support/source_file.hpp"

namespace paylodge::test {
namespace {

using Members = std::map<std::string, long>;

// The members of the interface from this dispatch id on.
void AddMembers(ITypeLib& library, REFIID interface_id, MEMBERID first, Members& members) {
    ComPtr<ITypeInfo> type;
    ASSERT_HRESULT(S_OK, library.GetTypeInfoOfGuid(interface_id, type.Receive()));
    TYPEATTR* attributes = nullptr;
    ASSERT_HRESULT(S_OK, type->GetTypeAttr(&attributes));
    for (UINT index = 0; index < attributes->cFuncs; ++index) {
        FUNCDESC* function = nullptr;
        OwnedBstr name;
        ASSERT_HRESULT(S_OK, type->GetFuncDesc(index, &function));
        ASSERT_HRESULT(S_OK, type->GetDocumentation(function->memid, name.Receive(), nullptr, nullptr, nullptr));
        if (function->memid >= first && function->memid < 0x1000) {
            members[AnsiFromBstr(name.Get())] = function->memid;
        }
        type->ReleaseFuncDesc(function);
    }
    type->ReleaseTypeAttr(attributes);
}

[[nodiscard]] Members TypeLibraryMembers() {
    Members members;
    ComPtr<ITypeLib> library;
    EXPECT_HRESULT(S_OK, ::LoadTypeLibEx(Module::Path().c_str(), REGKIND_NONE, library.Receive()));
    for (const IID* id : {&IID_IPaylodge, &IID_IPaylodge2, &IID_IPaylodge3, &IID_IPaylodge4, &IID_IPaylodge5,
                          &IID_IPaylodge6, &IID_IPaylodge7, &IID_IPaylodge8}) {
        AddMembers(*library.Get(), *id, 1, members);
    }
    // Those of the control before ConnectDevice are the host's.
    constexpr MEMBERID kConnectDevice = 0x13;
    for (const IID* id : {&IID_IPaylodgeCtrl7, &IID_IPaylodgeCtrl8, &IID_IPaylodgeCtrl9, &IID_IPaylodgeCtrl10}) {
        AddMembers(*library.Get(), *id, kConnectDevice, members);
    }
    return members;
}

// Headings such as "### GetItems()", each followed by "Dispatch id 0x2."
[[nodiscard]] Members DocumentedMembers() {
    const std::regex heading(R"(### (\w+)(\(.*\))?)");
    const std::regex dispatch_id(R"(Dispatch id (0x[0-9a-f]+)\. .*)");
    std::ifstream file(SourceFile("docs/script-reference.md"));
    Members members;
    std::string name;
    std::smatch match;
    for (std::string line; std::getline(file, line);) {
        if (std::regex_match(line, match, heading)) {
            name = match[1];
        } else if (std::regex_match(line, match, dispatch_id)) {
            members[name] = std::stol(match[1], nullptr, 16);
        }
    }
    return members;
}

TEST(ScriptReference, NamesEveryMemberOfTheTypeLibraryAndNoOther) {
    const Members documented = DocumentedMembers();
    EXPECT_EQ(49U + 24U, documented.size());
    EXPECT_EQ(TypeLibraryMembers(), documented);
}

}  // namespace
}  // namespace paylodge::test
