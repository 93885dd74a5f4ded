#include "tests/unit/lhxml/document_fixture.hpp"

#include <string>

#include "lhxml/dom.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {

ComPtr<IXMLDOMNode> TopElement(std::string_view text) {
    std::string error;
    const auto document = LoadXmlDocument(text, error);
    EXPECT_TRUE(document) << error;
    ComPtr<IXMLDOMNode> top;
    EXPECT_HRESULT(S_OK, FindFirstChildElement(document.Get(), top));
    EXPECT_TRUE(top) << text;
    return top;
}

}  // namespace paylodge::test
