// Account types as the page names them.
#pragma once

#include <string_view>
#include <vector>

namespace paylodge {

// The types in a list that commas and blanks separate, in any number and mixture. The views point into the list.
[[nodiscard]] std::vector<std::string_view> SplitAccountTypes(std::string_view account_types);

// Whether this is the type of bank accounts, in any letter case.
[[nodiscard]] bool IsBankAccountType(std::string_view account_type) noexcept;

}  // namespace paylodge
