#include "tests/unit/lhxml/document_fixture.hpp"

#include <string>

#include "lhxml/dom.hpp"

namespace paylodge::test {

ComPtr<IXMLDOMNode> TopElement(std::string_view text) {
    std::string error;
    const auto document = LoadXmlDocument(text, error);
    EXPECT_TRUE(document) << error;
    ComPtr<IXMLDOMNode> top;
    EXPECT_EQ(S_OK, FindFirstChildElement(document.Get(), top));
    EXPECT_TRUE(top) << text;
    return top;
}

}  // namespace paylodge::test
