// Hides card numbers in whatever is shown or kept.
#pragma once

#include <string>
#include <string_view>

namespace paylodge::workbench {

// The text with each card number masked but for its last four digits. A card number is 13 to 19 digits that pass the
// check digit, also with blanks and dashes between them; the account number of chip card data in hexadecimal (tags 5A
// and 57); and the number in a track of a magnetic stripe, whose remainder is masked as well.
[[nodiscard]] std::string MaskCardNumbers(std::string_view text);

}  // namespace paylodge::workbench
