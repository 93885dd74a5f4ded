#include "operations/account_types.hpp"

#include <algorithm>

#include "com/ascii_case.hpp"

namespace paylodge {

std::vector<std::string_view> SplitAccountTypes(std::string_view account_types) {
    constexpr std::string_view kSeparators = ", ";
    std::vector<std::string_view> types;
    size_t start = account_types.find_first_not_of(kSeparators);
    while (start != std::string_view::npos) {
        const size_t end = std::min(account_types.find_first_of(kSeparators, start), account_types.size());
        types.push_back(account_types.substr(start, end - start));
        start = account_types.find_first_not_of(kSeparators, end);
    }
    return types;
}

bool IsBankAccountType(std::string_view account_type) noexcept { return EqualsIgnoringAsciiCase(account_type, "bank"); }

}  // namespace paylodge
