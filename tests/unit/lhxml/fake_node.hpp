// Stands in for an element whose attributes cannot all be read.
#pragma once

#include <windows.h>

#include <msxml2.h>

#include <map>
#include <string>

#include "com/com_ptr.hpp"

namespace paylodge::test {

// What the fake returns. An attribute that is in neither table is absent.
struct AttributePlan {
    HRESULT fetch = S_OK;
    bool has_map = true;
    std::map<std::wstring, HRESULT> failures{};
    std::map<std::wstring, std::wstring> values{};
};

[[nodiscard]] ComPtr<IXMLDOMNode> MakeFakeNode(AttributePlan plan);
[[nodiscard]] ComPtr<IXMLDOMNamedNodeMap> MakeFakeAttributes(AttributePlan plan);

}  // namespace paylodge::test
