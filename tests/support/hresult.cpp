#include "tests/support/hresult.hpp"

#include <array>
#include <cstdio>
#include <string>

#include "com/hresult_names.hpp"

namespace paylodge::test {
namespace {

// "E_FAIL 0x80004005", or the number alone.
[[nodiscard]] std::string NameAndNumber(HRESULT result) {
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), "0x%08lX", static_cast<unsigned long>(result));
    const std::string name(HResultName(result));
    return name.empty() ? number.data() : name + ' ' + number.data();
}

}  // namespace

testing::AssertionResult CompareHResults(const char* call, HRESULT expected, HRESULT returned) {
    if (expected == returned) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << call << "\n  expected: " << NameAndNumber(expected)
                                       << "\n  returned: " << NameAndNumber(returned);
}

}  // namespace paylodge::test
