// What the tests of the DOM helpers share.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <msxml2.h>

#include <string_view>

#include "com/com_ptr.hpp"
#include "com/module.hpp"

namespace paylodge::test {

// The element at the top of a document that has to load.
[[nodiscard]] ComPtr<IXMLDOMNode> TopElement(std::string_view text);

// Nothing that the library makes may be left behind.
class DocumentTest : public testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(references_, Module::References()); }

  private:
    LONG references_ = Module::References();
};

}  // namespace paylodge::test
